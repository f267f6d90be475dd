#include "sim/signal/trigger.h"

namespace quarvelo::sim {

std::optional<double> FindTriggerInstant(const std::function<double(double)>& value, double period,
                                         double level, TriggerSlope slope) {
  if (period <= 0) return std::nullopt;
  constexpr int kSteps = 4096;
  double step = period / kSteps;
  double previous = value(0);
  for (int i = 1; i <= kSteps; ++i) {
    double t = i * step;
    double current = value(t);
    // A signal that rests on the level and leaves it crosses it too (a square wave whose
    // base sits on a 0 V level triggers on its rising edge).
    bool rising = (previous < level && current >= level) || (previous <= level && current > level);
    bool falling = (previous > level && current <= level) || (previous >= level && current < level);
    bool wanted = (slope == TriggerSlope::kPositive && rising) ||
                  (slope == TriggerSlope::kNegative && falling) ||
                  (slope == TriggerSlope::kEither && (rising || falling));
    if (wanted) {
      // Linear interpolation inside the step; a step edge (square wave) lands on its middle.
      double fraction = current == previous ? 0.5 : (level - previous) / (current - previous);
      return t - step + fraction * step;
    }
    previous = current;
  }
  return std::nullopt;
}

}  // namespace quarvelo::sim
