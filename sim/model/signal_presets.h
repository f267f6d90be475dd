// The signals a new instrument's inputs carry, by preset: those of a scope with its probes
// connected (the probe-compensation square, a sine with harmonics, a modulated carrier and the
// generator's output, over the front end's noise floor) or none at all, for tests that need
// silence.
#ifndef QUARVELO_SIM_MODEL_SIGNAL_PRESETS_H_
#define QUARVELO_SIM_MODEL_SIGNAL_PRESETS_H_

#include <optional>
#include <string_view>

#include "sim/model/instrument_state.h"

namespace quarvelo::sim {

// "probes" or "flat"; nullopt for another name.
std::optional<SignalPreset> SignalPresetNamed(std::string_view name);

// Connects the preset's signals to every input and sets the front end's noise floor.
void ConnectSignalPreset(InstrumentState& state, SignalPreset preset);

// The noise the front end adds, volts RMS at the instrument, for a channel's scale and probe.
double FrontEndNoiseRms(double scale, double probe);

}  // namespace quarvelo::sim

#endif  // QUARVELO_SIM_MODEL_SIGNAL_PRESETS_H_
