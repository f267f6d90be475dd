// A macro button's right click: the macro dialog edits the button's record, and OK stores its
// four keys ("Caption" n, "Command1_" n, "Command2_" n, "Sweep" n).
#ifndef QUARVELO_APP_MACRO_EDITING_H_
#define QUARVELO_APP_MACRO_EDITING_H_

#include "app/app_settings.h"
#include "platform/settings/settings_store.h"

class QWidget;

namespace quarvelo::app {

// Shows frmMacro modally for macro `n` (1..10); true when the user pressed OK.
bool EditMacro(QWidget* parent, settings::SettingsStore& store, int n, Macro& macro);

}  // namespace quarvelo::app

#endif  // QUARVELO_APP_MACRO_EDITING_H_
