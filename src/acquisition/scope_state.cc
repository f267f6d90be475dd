#include "acquisition/scope_state.h"

namespace quarvelo::acquisition {

void FillVoltsPerDivTable(ScopeState& state) { state.VoltsPerDivTable = kVoltsPerDivMillivolts; }

std::int16_t MatchTriggerScaleIndex(const std::array<double, kVoltsPerDivSteps>& table,
                                    double scale_volts, std::int16_t current) {
  std::int16_t index = current;
  for (int i = 0; i < kVoltsPerDivSteps; ++i) {
    if (table[i] / 1000 == scale_volts) index = static_cast<std::int16_t>(i);
  }
  return index;
}

// Above these the instrument is reporting "no value" (9.9E+37), not a measurement.
double DvmReadingFromReply(double reply) { return reply > 1000 ? 0 : reply; }
double DvmFrequencyFromReply(double reply) { return reply > 1e10 ? 0 : reply; }

}  // namespace quarvelo::acquisition
