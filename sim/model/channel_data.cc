#include "sim/model/channel_data.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "sim/model/signal_presets.h"
#include "sim/signal/noise_source.h"
#include "sim/signal/trigger.h"

namespace quarvelo::sim {
namespace {

constexpr double kTwoPi = 6.283185307179586;
constexpr double kBandwidthLimitHz = 20e6;
constexpr double kLineFrequencyHz = 50;

std::string ChannelKey(const char* tail) { return std::string(":CHANnel#C:") + tail; }

Shape ShapeOf(const std::string& function) {
  if (function == "SQU") return Shape::kSquare;
  if (function == "RAMP") return Shape::kRamp;
  if (function == "PULS") return Shape::kPulse;
  if (function == "NOIS") return Shape::kNoise;
  if (function == "DC") return Shape::kDc;
  if (function == "SINC") return Shape::kSinc;
  if (function == "EXPR") return Shape::kExpRise;
  if (function == "EXPF") return Shape::kExpFall;
  if (function == "CARD") return Shape::kCardiac;
  if (function == "GAUS") return Shape::kGaussian;
  return Shape::kSine;
}

Signal Scaled(Signal signal, double factor) {
  for (Component& component : signal.components) {
    component.amplitude *= factor;
    component.offset *= factor;
  }
  signal.noise_rms *= factor;
  return signal;
}

double ReferenceDivisions(const std::string& reference) {
  if (reference == "LEFT") return 1;
  if (reference == "RIGH") return 9;
  return 5;
}

// The trigger source's signal as the trigger circuit sees it.
std::optional<Signal> TriggerSignal(const InstrumentState& state) {
  const std::string& source = state.settings.Text(":TRIGger[:EDGE]:SOURce");
  Signal signal;
  if (int channel = ChannelOf(source); channel > 0) {
    signal = ChannelInput(state, channel);
  } else if (source == "WGEN") {
    signal = GeneratorSignal(state, 1);
  } else if (source == "LINE") {
    signal.components.push_back({Shape::kSine, kLineFrequencyHz, 2.0, 0, 50});
  } else {
    return std::nullopt;
  }
  const std::string& coupling = state.settings.Text(":TRIGger[:EDGE]:COUPling");
  if (coupling == "AC" || coupling == "LFR") {
    signal.components.push_back({Shape::kDc, 0, 0, -signal.Mean(), 0});
  }
  return signal;
}

std::optional<double> FindInstant(const InstrumentState& state) {
  std::optional<Signal> signal = TriggerSignal(state);
  if (!signal) return std::nullopt;
  const std::string& slope_text = state.settings.Text(":TRIGger[:EDGE]:SLOPe");
  TriggerSlope slope = slope_text == "NEG"   ? TriggerSlope::kNegative
                       : slope_text == "POS" ? TriggerSlope::kPositive
                                             : TriggerSlope::kEither;
  double level = state.settings.Number(":TRIGger[:EDGE]:LEVel");
  const Signal& trigger = *signal;
  return FindTriggerInstant([&trigger](double t) { return trigger.ValueAt(t); },
                            trigger.RepetitionPeriod(), level, slope);
}

}  // namespace

int ChannelOf(const std::string& source) {
  if (source.size() == 5 && source.compare(0, 4, "CHAN") == 0 && source[4] >= '1' &&
      source[4] <= '4') {
    return source[4] - '0';
  }
  return 0;
}

Signal GeneratorSignal(const InstrumentState& state, int generator) {
  Signal signal;
  const SettingStore& settings = state.settings;
  if (!state.config.has_wgen || !settings.Flag(":WGEN#W:OUTPut", generator)) return signal;
  const std::string& function = settings.Text(":WGEN#W:FUNCtion", generator);
  Component carrier;
  carrier.shape = ShapeOf(function);
  carrier.frequency = settings.Number(":WGEN#W:FREQuency", generator);
  carrier.amplitude = settings.Number(":WGEN#W:VOLTage", generator);
  carrier.offset = settings.Number(":WGEN#W:VOLTage:OFFSet", generator);
  switch (carrier.shape) {
    case Shape::kSquare:
      carrier.parameter = settings.Number(":WGEN#W:FUNCtion:SQUare:DCYCle", generator);
      break;
    case Shape::kRamp:
      carrier.parameter = settings.Number(":WGEN#W:FUNCtion:RAMP:SYMMetry", generator);
      break;
    case Shape::kPulse:
      carrier.parameter = settings.Number(":WGEN#W:FUNCtion:PULSe:WIDTh", generator);
      break;
    case Shape::kNoise:
      // Peak-to-peak of Gaussian noise read as six standard deviations.
      carrier.amplitude /= 6.0;
      break;
    case Shape::kDc:
      carrier.amplitude = 0;
      break;
    default:
      break;
  }
  signal.components.push_back(carrier);
  bool can_modulate = carrier.shape == Shape::kSine || carrier.shape == Shape::kRamp;
  if (can_modulate && settings.Flag(":WGEN#W:MODulation:STATe", generator)) {
    Modulation& modulation = signal.modulation;
    const std::string& type = settings.Text(":WGEN#W:MODulation:TYPE", generator);
    modulation.type = type == "FM"    ? Modulation::Type::kFm
                      : type == "FSK" ? Modulation::Type::kFsk
                                      : Modulation::Type::kAm;
    modulation.function = ShapeOf(settings.Text(":WGEN#W:MODulation:FUNCtion", generator));
    modulation.symmetry = settings.Number(":WGEN#W:MODulation:FUNCtion:RAMP:SYMMetry", generator);
    modulation.depth = settings.Number(":WGEN#W:MODulation:AM:DEPTh", generator);
    modulation.deviation = settings.Number(":WGEN#W:MODulation:FM:DEViation", generator);
    modulation.hop_frequency = settings.Number(":WGEN#W:MODulation:FSKey:FREQuency", generator);
    modulation.frequency = modulation.type == Modulation::Type::kAm
                               ? settings.Number(":WGEN#W:MODulation:AM:FREQuency", generator)
                           : modulation.type == Modulation::Type::kFm
                               ? settings.Number(":WGEN#W:MODulation:FM:FREQuency", generator)
                               : settings.Number(":WGEN#W:MODulation:FSKey:RATE", generator);
  }
  double noise_percent = settings.Number(":WGEN#W:MODulation:NOISe", generator);
  signal.noise_rms = settings.Number(":WGEN#W:VOLTage", generator) * noise_percent / 100.0 / 6.0;
  return signal;
}

Signal ChannelInput(const InstrumentState& state, int channel) {
  if (channel < 1 || channel > state.config.channels) return {};
  const ChannelSource& source = state.sources[channel];
  double factor = state.settings.Number(ChannelKey("PROBe"), channel);
  if (source.generator == 0) return Scaled(source.signal, factor);
  // The generator's levels hold into the load it is set for; a 1 MOhm input across a
  // generator set for 50 Ohm sees twice the voltage, and the other way round half.
  const std::string& load = state.settings.Text(":WGEN#W:OUTPut:LOAD", source.generator);
  const std::string& impedance = state.settings.Text(ChannelKey("IMPedance"), channel);
  if (load == "FIFT" && impedance == "ONEM") factor *= 2;
  if (load == "ONEM" && impedance == "FIFT") factor *= 0.5;
  return Scaled(GeneratorSignal(state, source.generator), factor);
}

AcquisitionGeometry CurrentGeometry(const InstrumentState& state) {
  const SettingStore& settings = state.settings;
  AcquisitionInputs inputs;
  inputs.max_sample_rate = state.config.max_sample_rate();
  inputs.memory_points = state.config.memory_points();
  auto on = [&](int channel) {
    return channel <= state.config.channels && settings.Flag(ChannelKey("DISPlay"), channel);
  };
  inputs.interleave_broken = (on(1) && on(2)) || (on(3) && on(4));
  inputs.timebase_scale = settings.Number(":TIMebase:SCALe");
  inputs.timebase_position = settings.Number(":TIMebase:POSition");
  inputs.reference_divisions = ReferenceDivisions(settings.Text(":TIMebase:REFerence"));
  const std::string& mode = settings.Text(":WAVeform:POINts:MODE");
  inputs.points_mode = mode == "RAW"   ? AcquisitionInputs::PointsMode::kRaw
                       : mode == "MAX" ? AcquisitionInputs::PointsMode::kMaximum
                                       : AcquisitionInputs::PointsMode::kNormal;
  inputs.requested_points = state.requested_points;
  inputs.stopped = state.run_state == RunState::kStopped;
  inputs.averaging =
      settings.Text(":ACQuire:TYPE") == "AVER" && settings.Number(":ACQuire:COUNt") > 1;
  inputs.peak_detect = settings.Text(":ACQuire:TYPE") == "PEAK";
  return ComputeGeometry(inputs);
}

bool TriggerFinds(const InstrumentState& state) { return FindInstant(state).has_value(); }

double TriggerInstant(const InstrumentState& state) {
  if (std::optional<double> instant = FindInstant(state)) return *instant;
  NoiseSource roll(state.acquisition_number);
  return roll.Uniform();
}

std::vector<double> ChannelVolts(const InstrumentState& state, int channel, double t0, double dt,
                                 size_t count) {
  std::vector<double> volts(count);
  if (count == 0) return volts;
  Signal input = ChannelInput(state, channel);
  if (state.settings.Text(ChannelKey("COUPling"), channel) == "AC") {
    input.components.push_back({Shape::kDc, 0, 0, -input.Mean(), 0});
  }
  input.Sample(t0 + TriggerInstant(state), dt, count, state.acquisition_number * 8 + channel,
               volts.data());
  if (state.front_end_noise) {
    double rms = FrontEndNoiseRms(state.settings.Number(ChannelKey("SCALe"), channel),
                                  state.settings.Number(ChannelKey("PROBe"), channel));
    NoiseSource noise(state.acquisition_number * 8 + channel + 4);
    for (double& value : volts) value += rms * noise.Normal();
  }
  if (state.settings.Flag(ChannelKey("BWLimit"), channel)) {
    double alpha = 1.0 - std::exp(-kTwoPi * kBandwidthLimitHz * dt);
    double filtered = volts[0];
    for (double& value : volts) {
      filtered += alpha * (value - filtered);
      value = filtered;
    }
  }
  if (state.settings.Flag(ChannelKey("INVert"), channel)) {
    for (double& value : volts) value = -value;
  }
  return volts;
}

// Peak detection: each pair of points holds the lowest and the highest level over the two
// points' time, found on a finer grid, so that glitches narrower than a point still show.
std::vector<double> PeakPairs(const InstrumentState& state, int channel, double t0, double dt,
                              size_t count) {
  constexpr size_t kFinePerPoint = 8;
  std::vector<double> fine =
      ChannelVolts(state, channel, t0, dt / kFinePerPoint, count * kFinePerPoint);
  std::vector<double> volts(count);
  for (size_t pair = 0; pair + 1 < count; pair += 2) {
    auto first = fine.begin() + static_cast<std::ptrdiff_t>(pair * kFinePerPoint);
    auto [low, high] = std::minmax_element(first, first + 2 * kFinePerPoint);
    volts[pair] = *low;
    volts[pair + 1] = *high;
  }
  if (count % 2 == 1) volts[count - 1] = fine[(count - 1) * kFinePerPoint];
  return volts;
}

double YIncrement(double scale) { return 10.0 * scale / 255.0; }

ByteRecord ChannelBytes(const InstrumentState& state, int channel) {
  ByteRecord record;
  record.geometry = CurrentGeometry(state);
  double scale = state.settings.Number(ChannelKey("SCALe"), channel);
  record.y_increment = YIncrement(scale);
  record.y_origin = state.settings.Number(ChannelKey("OFFSet"), channel);
  const size_t count = static_cast<size_t>(record.geometry.delivered_points);
  std::vector<double> volts;
  if (state.settings.Text(":ACQuire:TYPE") == "PEAK" && count >= 2) {
    volts = PeakPairs(state, channel, record.geometry.x_origin, record.geometry.x_increment, count);
  } else {
    volts =
        ChannelVolts(state, channel, record.geometry.x_origin, record.geometry.x_increment, count);
  }
  record.codes.resize(volts.size());
  const double inverse = 1.0 / record.y_increment;
  for (size_t i = 0; i < volts.size(); ++i) {
    // Code 0 is a hole; 1 and 255 mark a signal clipped below and above the ADC's range.
    double code = std::nearbyint((volts[i] - record.y_origin) * inverse) + record.y_reference;
    record.codes[i] = static_cast<char>(static_cast<unsigned char>(std::clamp(code, 1.0, 255.0)));
  }
  return record;
}

}  // namespace quarvelo::sim
