// The rules that tie settings together: limits that follow other settings (channel scale with
// the probe factor, generator frequency with its function) and the knock-on effects of a
// change (a new probe factor rescales the channel), plus the preset state.
#ifndef QUARVELO_SIM_MODEL_SETTING_RULES_H_
#define QUARVELO_SIM_MODEL_SETTING_RULES_H_

#include "sim/model/instrument_state.h"

namespace quarvelo::sim {

LimitFunction LimitsFor(const InstrumentState& state);

// Called after a row's value changed from `old_number` (numbers) or `old_text` (enumerations).
void ApplyKnockOnEffects(InstrumentState& state, const SettingRow& row, int instance,
                         double old_number, const std::string& old_text);

// *RST / :SYSTem:PRESet: settings to their defaults, channel 1 on, running. The signals on the
// inputs belong to the outside world and stay.
void Preset(InstrumentState& state);

// Round up to the next 1-2-5 step ("autoscale" scales).
double NextStep125(double value);

}  // namespace quarvelo::sim

#endif  // QUARVELO_SIM_MODEL_SETTING_RULES_H_
