#include "app/macro_editing.h"

#include "dialogs/frmMacro.h"

namespace quarvelo::app {

bool EditMacro(QWidget* parent, settings::SettingsStore& store, int n, Macro& macro) {
  dialogs::frmMacro dialog(
      n, dialogs::MacroFields{macro.Caption, macro.Command1, macro.Command2, macro.SweepAfter},
      parent);
  if (dialog.exec() != QDialog::Accepted) return false;
  SaveMacro(store, n, macro);
  return true;
}

}  // namespace quarvelo::app
