// The about box: the program's name and version, what it is, the VISA layer it uses, a
// notice, and a link to the instrument maker's web site.
#ifndef QUARVELO_DIALOGS_FRMABOUT_H_
#define QUARVELO_DIALOGS_FRMABOUT_H_

#include <QDialog>
#include <string>

#include "platform/ui/ui_services.h"

namespace quarvelo::dialogs {

// "QUARVELO V" and the build's major.minor.revision.
std::string VersionText();

// Where the link of the about box leads.
inline constexpr char kWebAddress[] = "https://www.keysight.com";

class frmAbout : public QDialog {
  Q_OBJECT

 public:
  // `ui` reports an address the desktop cannot open; it outlives the box.
  explicit frmAbout(ui::UiServices& ui, QWidget* parent = nullptr);

 private:
  ui::UiServices& ui_;
};

}  // namespace quarvelo::dialogs

#endif  // QUARVELO_DIALOGS_FRMABOUT_H_
