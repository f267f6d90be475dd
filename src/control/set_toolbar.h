// Configures the toolbar for the instrument model, the channel count and the installed options,
// selects the stored combo entries and fills the time-base combo. Called at start-up, after the
// settings dialog, and when remote control is switched on or off.
#ifndef QUARVELO_CONTROL_SET_TOOLBAR_H_
#define QUARVELO_CONTROL_SET_TOOLBAR_H_

#include "acquisition/scope_state.h"
#include "control/spectrum_choices.h"
#include "platform/settings/settings_store.h"
#include "platform/ui/tool_host.h"

namespace quarvelo::control {

// Reads "Setup" "DSO" into `Model` (1 = X3000, anything else 0) and, while remote control is
// on, "Setup" "Channels" into `ChannelCount` (4 when it reads 4, otherwise 2); offline the
// count is 4 so that files of any channel can be opened. Sets the math and generator prefixes
// for the model and refills `VoltsPerDivTable`. The Bins, Scale and Window combos show the
// user's choices, so that a rebuild never resets them.
void SetToolbar(ui::ToolHost& tools, const settings::SettingsStore& settings, bool remote_on,
                const SpectrumChoices& choices, acquisition::ScopeState& state);

}  // namespace quarvelo::control

#endif  // QUARVELO_CONTROL_SET_TOOLBAR_H_
