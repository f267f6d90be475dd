// The user's guide in a window of its own (no owner window, so it stays open beside the main
// window and the dialogs). Pages inside the guide open here; web and mail addresses go to the
// desktop's opener.
#ifndef QUARVELO_DIALOGS_HELP_WINDOW_H_
#define QUARVELO_DIALOGS_HELP_WINDOW_H_

#include <QWidget>

#include "platform/ui/ui_services.h"

class QTextBrowser;
class QUrl;

namespace quarvelo::dialogs {

class frmHelp : public QWidget {
  Q_OBJECT

 public:
  // `ui` reports addresses the desktop cannot open; it outlives the window.
  explicit frmHelp(ui::UiServices& ui);

  // Shows the guide's first page.
  void ShowIndex();

 private:
  void OpenLink(const QUrl& url);

  ui::UiServices& ui_;
  QTextBrowser* browser_ = nullptr;
};

}  // namespace quarvelo::dialogs

#endif  // QUARVELO_DIALOGS_HELP_WINDOW_H_
