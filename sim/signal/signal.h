// What a channel's input sees: a sum of periodic components, DC and noise, or the waveform
// generator's output with its modulation and added noise. Evaluated at any instant.
#ifndef QUARVELO_SIM_SIGNAL_SIGNAL_H_
#define QUARVELO_SIM_SIGNAL_SIGNAL_H_

#include <cstdint>
#include <string>
#include <vector>

namespace quarvelo::sim {

enum class Shape {
  kSine,
  kSquare,  // parameter: duty cycle, percent
  kRamp,    // parameter: symmetry, percent of the period rising
  kPulse,   // parameter: width, seconds
  kNoise,   // amplitude: RMS volts
  kDc,      // offset only
  kSinc,
  kExpRise,
  kExpFall,
  kCardiac,
  kGaussian,
};

struct Component {
  Shape shape = Shape::kSine;
  double frequency = 1000;  // hertz
  double amplitude = 1;     // volts peak-to-peak (noise: RMS)
  double offset = 0;        // volts
  double parameter = 50;    // see Shape
  double edge = 0;          // squares and pulses: 10-90 % transition time, seconds (0: ideal)
};

struct Modulation {
  enum class Type { kNone, kAm, kFm, kFsk };
  Type type = Type::kNone;
  Shape function = Shape::kSine;  // kSine, kSquare or kRamp
  double symmetry = 100;          // ramp symmetry of the modulating wave, percent
  double depth = 100;             // AM depth, percent
  double frequency = 100;         // AM/FM modulating frequency; FSK rate
  double deviation = 100;         // FM deviation, hertz
  double hop_frequency = 100;     // FSK
};

struct Signal {
  std::vector<Component> components;
  Modulation modulation;  // applies to the first component (the generator's carrier)
  double noise_rms = 0;   // added to everything

  // The period after which the noiseless signal repeats (that of its slowest component, or of
  // the modulation); 0 when it never does.
  double RepetitionPeriod() const;
  // The noiseless value at time t (seconds).
  double ValueAt(double t) const;
  // Mean of the noiseless signal over one repetition period (its DC content).
  double Mean() const;
  bool HasNoise() const;
  // out[i] = value at t0 + i * dt, noise from `seed` included.
  void Sample(double t0, double dt, size_t count, std::uint64_t seed, double* out) const;
  // A readable description: "SIN,1000,1,0;NOIS,0.01".
  std::string Describe() const;
};

}  // namespace quarvelo::sim

#endif  // QUARVELO_SIM_SIGNAL_SIGNAL_H_
