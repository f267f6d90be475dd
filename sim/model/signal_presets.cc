#include "sim/model/signal_presets.h"

#include <cmath>

namespace quarvelo::sim {
namespace {

// Levels relative to a carrier, in dB, as peak-to-peak volts.
double Below(double vpp, double db) { return vpp * std::pow(10.0, db / 20.0); }

// The probe-compensation output: a 1 kHz square from 0 to 2.5 V with edges of about a
// microsecond.
Signal ProbeCompensation() {
  Signal signal;
  Component square{Shape::kSquare, 1e3, 2.5, 1.25, 50};
  square.edge = 1e-6;
  signal.components.push_back(square);
  return signal;
}

// A 10 kHz sine of 2 Vpp with the low harmonics of an ordinary amplifier.
Signal SineWithHarmonics() {
  Signal signal;
  constexpr double kVpp = 2.0;
  signal.components.push_back({Shape::kSine, 10e3, kVpp, 0, 50});
  signal.components.push_back({Shape::kSine, 20e3, Below(kVpp, -45), 0, 50});
  signal.components.push_back({Shape::kSine, 30e3, Below(kVpp, -50), 0, 50});
  signal.components.push_back({Shape::kSine, 50e3, Below(kVpp, -60), 0, 50});
  return signal;
}

// A 20 kHz carrier amplitude-modulated 50 % by 1 kHz, 2 Vpp at the envelope's peaks.
Signal ModulatedCarrier() {
  Signal signal;
  signal.components.push_back({Shape::kSine, 20e3, 2.0, 0, 50});
  signal.modulation.type = Modulation::Type::kAm;
  signal.modulation.function = Shape::kSine;
  signal.modulation.frequency = 1e3;
  signal.modulation.depth = 50;
  return signal;
}

}  // namespace

std::optional<SignalPreset> SignalPresetNamed(std::string_view name) {
  if (name == "probes") return SignalPreset::kProbes;
  if (name == "flat") return SignalPreset::kFlat;
  return std::nullopt;
}

void ConnectSignalPreset(InstrumentState& state, SignalPreset preset) {
  for (ChannelSource& source : state.sources) source = ChannelSource{};
  state.front_end_noise = preset == SignalPreset::kProbes;
  if (preset == SignalPreset::kFlat) return;
  state.sources[1].signal = ProbeCompensation();
  state.sources[2].signal = SineWithHarmonics();
  state.sources[3].signal = ModulatedCarrier();
  state.sources[4].generator = 1;
}

double FrontEndNoiseRms(double scale, double probe) {
  // About 100 uV at the input and a hundredth of a division after the attenuator: a quarter
  // of a code at any scale, enough to dither the 8-bit quantisation as on the instrument.
  constexpr double kInputVolts = 100e-6;
  constexpr double kDivisions = 0.01;
  return std::hypot(kInputVolts * probe, kDivisions * scale);
}

}  // namespace quarvelo::sim
