#include "sim/signal/signal.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "sim/signal/noise_source.h"

namespace quarvelo::sim {
namespace {

constexpr double kTwoPi = 6.283185307179586;

// A two-level wave high from 0 to `high` (fractions of a period) with straight edges `width`
// wide centred on 0 and on `high`.
double Trapezoid(double x, double high, double width) {
  double half = width / 2;
  if (x < half) return -1.0 + 2.0 * (x + half) / width;
  if (x < high - half) return 1.0;
  if (x < high + half) return 1.0 - 2.0 * (x - (high - half)) / width;
  if (x > 1.0 - half) return -1.0 + 2.0 * (x - (1.0 - half)) / width;
  return -1.0;
}

// The shape in -1..1 at phase fraction x (0 <= x < 1); `edge` is the 10-90 % transition time
// of squares and pulses.
double ShapeAt(Shape shape, double x, double parameter, double frequency, double edge = 0) {
  // A straight edge rises 10-90 % in 0.8 of its whole width.
  double edge_width = std::min(edge / 0.8 * frequency, 0.25);
  switch (shape) {
    case Shape::kSine:
      return std::sin(kTwoPi * x);
    case Shape::kSquare:
      if (edge_width > 0) return Trapezoid(x, parameter / 100.0, edge_width);
      return x < parameter / 100.0 ? 1.0 : -1.0;
    case Shape::kRamp: {
      double rise = std::clamp(parameter / 100.0, 0.0, 1.0);
      if (x < rise) return -1.0 + 2.0 * x / rise;
      return 1.0 - 2.0 * (x - rise) / (1.0 - rise);
    }
    case Shape::kPulse:
      if (edge_width > 0) return Trapezoid(x, parameter * frequency, edge_width);
      return x < parameter * frequency ? 1.0 : -1.0;
    case Shape::kSinc: {
      double k = (x - 0.5) * 20.0;
      double value =
          std::abs(k) < 1e-9 ? 1.0 : std::sin(3.141592653589793 * k) / (3.141592653589793 * k);
      return 2.0 * (value + 0.2172) / 1.2172 - 1.0;
    }
    case Shape::kExpRise:
      return 2.0 * (1.0 - std::exp(-5.0 * x)) / (1.0 - std::exp(-5.0)) - 1.0;
    case Shape::kExpFall:
      return 2.0 * std::exp(-5.0 * x) - 1.0;
    case Shape::kCardiac: {
      double qrs = std::exp(-std::pow((x - 0.4) / 0.015, 2));
      double p = 0.15 * std::exp(-std::pow((x - 0.2) / 0.04, 2));
      double t = 0.3 * std::exp(-std::pow((x - 0.7) / 0.06, 2));
      return 2.0 * (qrs + p + t) / 1.0 - 1.0;
    }
    case Shape::kGaussian:
      return 2.0 * std::exp(-std::pow((x - 0.5) * 6.0, 2)) - 1.0;
    case Shape::kNoise:
    case Shape::kDc:
      return 0.0;
  }
  return 0.0;
}

double Fraction(double cycles) { return cycles - std::floor(cycles); }

bool Periodic(const Component& component) {
  return component.shape != Shape::kNoise && component.shape != Shape::kDc &&
         component.frequency > 0;
}

// The modulating wave in -1..1 at time t.
double ModulatingAt(const Modulation& modulation, double t) {
  return ShapeAt(modulation.function, Fraction(t * modulation.frequency), modulation.symmetry,
                 modulation.frequency);
}

// Cycles of the carrier elapsed at time t, including frequency modulation.
double CarrierCycles(const Component& carrier, const Modulation& modulation, double t) {
  switch (modulation.type) {
    case Modulation::Type::kFm: {
      if (modulation.frequency <= 0) return carrier.frequency * t;
      // The integral of the modulating wave over time; exact for a sine, and for the other
      // shapes a triangle (square) or the sine's as a close stand-in (ramp).
      double fm = modulation.frequency;
      double x = Fraction(t * fm);
      double integral;
      if (modulation.function == Shape::kSquare) {
        integral = (x < 0.5 ? x : 1.0 - x) / fm;
      } else {
        integral = (1.0 - std::cos(kTwoPi * x)) / (kTwoPi * fm);
      }
      return carrier.frequency * t + modulation.deviation * integral;
    }
    case Modulation::Type::kFsk: {
      if (modulation.frequency <= 0) return carrier.frequency * t;
      // Half of each rate period at the carrier, half at the hop frequency.
      double period = 1.0 / modulation.frequency;
      double whole = std::floor(t / period);
      double x = t - whole * period;
      double cycles = whole * period / 2.0 * (carrier.frequency + modulation.hop_frequency);
      if (x < period / 2.0) return cycles + carrier.frequency * x;
      return cycles + carrier.frequency * period / 2.0 +
             modulation.hop_frequency * (x - period / 2.0);
    }
    case Modulation::Type::kNone:
    case Modulation::Type::kAm:
      return carrier.frequency * t;
  }
  return carrier.frequency * t;
}

}  // namespace

double Signal::RepetitionPeriod() const {
  if (modulation.type != Modulation::Type::kNone && !components.empty() &&
      modulation.frequency > 0) {
    return 1.0 / modulation.frequency;
  }
  double slowest = 0;
  for (const Component& component : components) {
    if (!Periodic(component)) continue;
    if (slowest == 0 || component.frequency < slowest) slowest = component.frequency;
  }
  return slowest > 0 ? 1.0 / slowest : 0.0;
}

double Signal::ValueAt(double t) const {
  double value = 0;
  for (size_t i = 0; i < components.size(); ++i) {
    const Component& component = components[i];
    value += component.offset;
    if (!Periodic(component)) continue;
    bool modulated = i == 0 && modulation.type != Modulation::Type::kNone;
    double cycles = modulated ? CarrierCycles(component, modulation, t) : component.frequency * t;
    double shape = ShapeAt(component.shape, Fraction(cycles), component.parameter,
                           component.frequency, component.edge);
    double amplitude = component.amplitude / 2.0;
    if (modulated && modulation.type == Modulation::Type::kAm) {
      amplitude *= 1.0 + modulation.depth / 100.0 * ModulatingAt(modulation, t);
      amplitude /= 1.0 + modulation.depth / 100.0;
    }
    value += amplitude * shape;
  }
  return value;
}

double Signal::Mean() const {
  double period = RepetitionPeriod();
  if (period <= 0) return ValueAt(0);
  constexpr int kSteps = 4096;
  double sum = 0;
  for (int i = 0; i < kSteps; ++i) sum += ValueAt(period * (i + 0.5) / kSteps);
  return sum / kSteps;
}

bool Signal::HasNoise() const {
  if (noise_rms > 0) return true;
  return std::any_of(components.begin(), components.end(), [](const Component& c) {
    return c.shape == Shape::kNoise && c.amplitude > 0;
  });
}

void Signal::Sample(double t0, double dt, size_t count, std::uint64_t seed, double* out) const {
  std::fill(out, out + count, 0.0);
  for (size_t k = 0; k < components.size(); ++k) {
    const Component& component = components[k];
    bool modulated = k == 0 && modulation.type != Modulation::Type::kNone;
    if (component.offset != 0) {
      for (size_t i = 0; i < count; ++i) out[i] += component.offset;
    }
    if (!Periodic(component)) continue;
    double half = component.amplitude / 2.0;
    if (!modulated && component.shape == Shape::kSine) {
      // A rotating phasor instead of one sin() per sample, re-anchored every 1024 samples so
      // that rounding never accumulates.
      for (size_t block = 0; block < count; block += 1024) {
        size_t end = std::min(count, block + 1024);
        double phase = kTwoPi * Fraction(component.frequency * (t0 + block * dt));
        double step = kTwoPi * component.frequency * dt;
        double c = std::cos(phase), s = std::sin(phase);
        double cs = std::cos(step), ss = std::sin(step);
        for (size_t i = block; i < end; ++i) {
          out[i] += half * s;
          double next_s = s * cs + c * ss;
          c = c * cs - s * ss;
          s = next_s;
        }
      }
      continue;
    }
    for (size_t i = 0; i < count; ++i) {
      double t = t0 + static_cast<double>(i) * dt;
      double cycles = modulated ? CarrierCycles(component, modulation, t) : component.frequency * t;
      double amplitude = half;
      if (modulated && modulation.type == Modulation::Type::kAm) {
        amplitude *= (1.0 + modulation.depth / 100.0 * ModulatingAt(modulation, t)) /
                     (1.0 + modulation.depth / 100.0);
      }
      out[i] += amplitude * ShapeAt(component.shape, Fraction(cycles), component.parameter,
                                    component.frequency, component.edge);
    }
  }
  double rms = noise_rms;
  for (const Component& component : components) {
    if (component.shape == Shape::kNoise) rms = std::hypot(rms, component.amplitude);
  }
  if (rms > 0) {
    NoiseSource noise(seed);
    for (size_t i = 0; i < count; ++i) out[i] += rms * noise.Normal();
  }
}

std::string Signal::Describe() const {
  static constexpr const char* kNames[] = {"SIN",  "SQU",  "RAMP", "PULS", "NOIS", "DC",
                                           "SINC", "EXPR", "EXPF", "CARD", "GAUS"};
  std::string text;
  char buffer[160];
  for (const Component& component : components) {
    if (!text.empty()) text += ";";
    std::snprintf(buffer, sizeof buffer, "%s,%.6g,%.6g,%.6g",
                  kNames[static_cast<int>(component.shape)], component.frequency,
                  component.amplitude, component.offset);
    text += buffer;
  }
  if (noise_rms > 0) {
    std::snprintf(buffer, sizeof buffer, "%sNOIS,%.6g", text.empty() ? "" : ";", noise_rms);
    text += buffer;
  }
  return text.empty() ? "NONE" : text;
}

}  // namespace quarvelo::sim
