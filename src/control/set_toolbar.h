// Configures the toolbar for the instrument model, the channel count and the installed options,
// selects the stored combo entries and fills the time-base combo. Called at start-up, after the
// settings dialog, and when remote control is switched on or off.
#ifndef QUARVELO_CONTROL_SET_TOOLBAR_H_
#define QUARVELO_CONTROL_SET_TOOLBAR_H_

#include "acquisition/scope_state.h"
#include "platform/settings/settings_store.h"
#include "platform/ui/tool_host.h"

namespace quarvelo::control {

// The combo selections the spectrum settings keep between rebuilds.
struct ToolbarSelections {
  int BinsIndex = 8;     // "ID_Bins": 256 * 2^index points
  int SpectrumUnit = 0;  // "ID_Scale": 0 dBV, 1 dBm, 2 V RMS
  int WindowIndex = 6;   // "ID_Window": 6 = Hanning
};

// Reads "Setup" "DSO" into `Model` (1 = X3000, anything else 0) and, while remote control is
// on, "Setup" "Channels" into `ChannelCount` (4 when it reads 4, otherwise 2); offline the
// count is 4 so that files of any channel can be opened. Sets the math and generator prefixes
// for the model and refills `VoltsPerDivTable`.
void SetToolbar(ui::ToolHost& tools, const settings::SettingsStore& settings, bool remote_on,
                const ToolbarSelections& selections, acquisition::ScopeState& state);

}  // namespace quarvelo::control

#endif  // QUARVELO_CONTROL_SET_TOOLBAR_H_
