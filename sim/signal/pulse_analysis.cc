#include "sim/signal/pulse_analysis.h"

#include <algorithm>
#include <cmath>

namespace quarvelo::sim {
namespace {

constexpr int kBins = 100;
// A level is the top (or base) when its histogram bin holds this share of the samples;
// otherwise (a sine, a triangle) the extreme stands for it.
constexpr double kPlateauShare = 0.05;

// The mean of the samples in the fullest bin of [first, last) and its neighbours, or nullopt
// when that bin is no plateau.
std::optional<double> Plateau(const std::vector<double>& volts, double low, double width, int first,
                              int last) {
  std::vector<int> counts(kBins, 0);
  for (double v : volts) counts[std::clamp(static_cast<int>((v - low) / width), 0, kBins - 1)]++;
  int mode = first;
  for (int bin = first; bin < last; ++bin) {
    if (counts[bin] > counts[mode]) mode = bin;
  }
  if (counts[mode] < kPlateauShare * volts.size()) return std::nullopt;
  double sum = 0;
  int count = 0;
  for (double v : volts) {
    int bin = std::clamp(static_cast<int>((v - low) / width), 0, kBins - 1);
    if (std::abs(bin - mode) <= 1) {
      sum += v;
      ++count;
    }
  }
  return sum / count;
}

// Time at which the waveform crosses `level` between samples i and i + 1.
double Crossing(const std::vector<double>& volts, double t0, double dt, size_t i, double level) {
  double a = volts[i], b = volts[i + 1];
  double fraction = a == b ? 0.5 : std::clamp((level - a) / (b - a), 0.0, 1.0);
  return t0 + (static_cast<double>(i) + fraction) * dt;
}

// The first crossing of `level` in [from, to] (sample indices), in the edge's direction.
double FirstCrossing(const std::vector<double>& volts, double t0, double dt, size_t from, size_t to,
                     double level, bool rising) {
  for (size_t i = from; i < to; ++i) {
    bool crosses = rising ? volts[i] <= level && volts[i + 1] > level
                          : volts[i] >= level && volts[i + 1] < level;
    if (crosses) return Crossing(volts, t0, dt, i, level);
  }
  return Crossing(volts, t0, dt, from, level);
}

template <typename Score>
std::optional<double> Nearest(const std::vector<Edge>& edges, double reference, Score score) {
  std::optional<double> best;
  double best_distance = 0;
  for (size_t i = 0; i < edges.size(); ++i) {
    double centre = 0;
    std::optional<double> value = score(i, &centre);
    if (!value) continue;
    double distance = std::abs(centre - reference);
    if (!best || distance < best_distance) {
      best = value;
      best_distance = distance;
    }
  }
  return best;
}

}  // namespace

PulseAnalysis AnalysePulses(const std::vector<double>& volts, double t0, double dt) {
  PulseAnalysis analysis;
  if (volts.size() < 2) return analysis;
  auto [low, high] = std::minmax_element(volts.begin(), volts.end());
  analysis.minimum = *low;
  analysis.maximum = *high;
  double range = *high - *low;
  analysis.top = analysis.maximum;
  analysis.base = analysis.minimum;
  if (range <= 0) return analysis;
  double width = range / kBins;
  analysis.top = Plateau(volts, *low, width, kBins / 2, kBins).value_or(analysis.maximum);
  analysis.base = Plateau(volts, *low, width, 0, kBins / 2).value_or(analysis.minimum);
  double amplitude = analysis.amplitude();
  if (amplitude <= 0) return analysis;
  double lower = analysis.base + 0.1 * amplitude;
  double middle = analysis.base + 0.5 * amplitude;
  double upper = analysis.base + 0.9 * amplitude;
  // An edge runs from the last sample beyond one threshold to the first beyond the other.
  enum class Side { kUnknown, kLow, kHigh };
  Side side = Side::kUnknown;
  size_t last_on_side = 0;
  for (size_t i = 0; i < volts.size(); ++i) {
    Side now = volts[i] < lower ? Side::kLow : volts[i] > upper ? Side::kHigh : Side::kUnknown;
    if (now == Side::kUnknown) continue;
    if (side != Side::kUnknown && now != side) {
      // Every sample between last_on_side and i lies between the thresholds.
      bool rising = now == Side::kHigh;
      Edge edge;
      edge.rising = rising;
      edge.start = Crossing(volts, t0, dt, last_on_side, rising ? lower : upper);
      edge.middle = FirstCrossing(volts, t0, dt, last_on_side, i, middle, rising);
      edge.end = Crossing(volts, t0, dt, i - 1, rising ? upper : lower);
      analysis.edges.push_back(edge);
    }
    side = now;
    last_on_side = i;
  }
  return analysis;
}

std::optional<double> PulseAnalysis::RiseTime(double reference) const {
  return Nearest(edges, reference, [this](size_t i, double* centre) -> std::optional<double> {
    if (!edges[i].rising) return std::nullopt;
    *centre = edges[i].middle;
    return edges[i].end - edges[i].start;
  });
}

std::optional<double> PulseAnalysis::FallTime(double reference) const {
  return Nearest(edges, reference, [this](size_t i, double* centre) -> std::optional<double> {
    if (edges[i].rising) return std::nullopt;
    *centre = edges[i].middle;
    return edges[i].end - edges[i].start;
  });
}

std::optional<double> PulseAnalysis::PositiveWidth(double reference) const {
  return Nearest(edges, reference, [this](size_t i, double* centre) -> std::optional<double> {
    if (!edges[i].rising || i + 1 >= edges.size()) return std::nullopt;
    *centre = (edges[i].middle + edges[i + 1].middle) / 2;
    return edges[i + 1].middle - edges[i].middle;
  });
}

std::optional<double> PulseAnalysis::NegativeWidth(double reference) const {
  return Nearest(edges, reference, [this](size_t i, double* centre) -> std::optional<double> {
    if (edges[i].rising || i + 1 >= edges.size()) return std::nullopt;
    *centre = (edges[i].middle + edges[i + 1].middle) / 2;
    return edges[i + 1].middle - edges[i].middle;
  });
}

std::optional<double> PulseAnalysis::Period() const {
  if (edges.size() < 3) return std::nullopt;
  // Whole cycles between the first and the last edge of the same direction.
  size_t last = edges.size() - 1;
  if ((last % 2) == 1) --last;
  return (edges[last].middle - edges[0].middle) / static_cast<double>(last / 2);
}

std::optional<double> PulseAnalysis::EdgeNear(double reference, bool rising) const {
  return Nearest(edges, reference,
                 [this, rising](size_t i, double* centre) -> std::optional<double> {
                   if (edges[i].rising != rising) return std::nullopt;
                   *centre = edges[i].middle;
                   return edges[i].middle;
                 });
}

}  // namespace quarvelo::sim
