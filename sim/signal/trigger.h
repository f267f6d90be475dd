// Where an edge trigger fires on a repetitive signal: the instant in its first repetition
// period at which it crosses the level with the chosen slope. Sampling relative to that
// instant makes the signal stand still from one acquisition to the next.
#ifndef QUARVELO_SIM_SIGNAL_TRIGGER_H_
#define QUARVELO_SIM_SIGNAL_TRIGGER_H_

#include <functional>
#include <optional>

namespace quarvelo::sim {

enum class TriggerSlope { kPositive, kNegative, kEither };

// `value` is the noiseless trigger signal; nullopt when it never crosses `level` within one
// `period` (or when `period` is 0).
std::optional<double> FindTriggerInstant(const std::function<double(double)>& value, double period,
                                         double level, TriggerSlope slope);

}  // namespace quarvelo::sim

#endif  // QUARVELO_SIM_SIGNAL_TRIGGER_H_
