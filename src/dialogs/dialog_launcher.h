// Opens the program's dialogs for the toolbar: the modal math, label, annotation and about
// dialogs, the generator panel (one at a time, not modal) and the user's guide. The main
// window owns one launcher; it must go before the records it lends, and takes the generator
// panel and the guide with it.
#ifndef QUARVELO_DIALOGS_DIALOG_LAUNCHER_H_
#define QUARVELO_DIALOGS_DIALOG_LAUNCHER_H_

#include <QPointer>

#include "dialogs/dialog_services.h"
#include "dialogs/frmWGEN.h"
#include "dialogs/help_window.h"

class QWidget;

namespace quarvelo::dialogs {

class DialogLauncher {
 public:
  // `owner`: the main window, parent of the dialogs.
  DialogLauncher(const DialogServices& services, QWidget* owner);
  ~DialogLauncher();
  DialogLauncher(const DialogLauncher&) = delete;
  DialogLauncher& operator=(const DialogLauncher&) = delete;

  void ShowMathDialog();
  // Shows the generator panel from ScopeState (read back by the caller), bringing an open one
  // to the front.
  void ShowWgenDialog();
  void CloseWgenDialog();
  void ShowChannelLabelDialog(int channel);
  void ShowAnnotationDialog();
  void ShowAbout();
  // Opens the user's guide at its first page, or brings the open guide to the front.
  void ShowHelp();

  frmWGEN* WgenDialog() const { return wgen_.data(); }
  frmHelp* HelpWindow() const { return help_.data(); }

 private:
  DialogServices services_;
  QWidget* owner_;
  QPointer<frmWGEN> wgen_;
  QPointer<frmHelp> help_;
};

}  // namespace quarvelo::dialogs

#endif  // QUARVELO_DIALOGS_DIALOG_LAUNCHER_H_
