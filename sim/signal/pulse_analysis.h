// The instrument's pulse parameters of a displayed waveform: top and base from the histogram
// of its levels, and its edges found between the 10 % and 90 % thresholds of the amplitude
// with the 50 % crossing as each edge's time.
#ifndef QUARVELO_SIM_SIGNAL_PULSE_ANALYSIS_H_
#define QUARVELO_SIM_SIGNAL_PULSE_ANALYSIS_H_

#include <optional>
#include <vector>

namespace quarvelo::sim {

struct Edge {
  bool rising = true;
  double start = 0;   // crossing of the first threshold passed (10 % rising, 90 % falling)
  double middle = 0;  // crossing of the 50 % level
  double end = 0;     // crossing of the other threshold
};

struct PulseAnalysis {
  double minimum = 0;
  double maximum = 0;
  double top = 0;           // the most common level of the upper half, or the maximum
  double base = 0;          // the most common level of the lower half, or the minimum
  std::vector<Edge> edges;  // in time order, alternating rising and falling

  double amplitude() const { return top - base; }
  // Each is measured on the edge or pulse nearest `reference` (the time at the screen's
  // reference point); nullopt when the screen does not hold what it needs.
  std::optional<double> RiseTime(double reference) const;
  std::optional<double> FallTime(double reference) const;
  std::optional<double> PositiveWidth(double reference) const;
  std::optional<double> NegativeWidth(double reference) const;
  std::optional<double> Period() const;
  // The 50 % crossing of the first edge of that direction nearest `reference`.
  std::optional<double> EdgeNear(double reference, bool rising) const;
};

// `volts[i]` is the waveform at t0 + i * dt.
PulseAnalysis AnalysePulses(const std::vector<double>& volts, double t0, double dt);

}  // namespace quarvelo::sim

#endif  // QUARVELO_SIM_SIGNAL_PULSE_ANALYSIS_H_
