// The macro button dialog: a button's caption, its two command lines and whether a sweep
// follows them. OK writes the four values into the macro; Cancel changes nothing.
#ifndef QUARVELO_DIALOGS_FRMMACRO_H_
#define QUARVELO_DIALOGS_FRMMACRO_H_

#include <QDialog>
#include <array>
#include <string>

class QCheckBox;
class QLineEdit;

namespace quarvelo::dialogs {

// One macro button's record; it belongs to the main window's settings.
struct MacroFields {
  std::string& Caption;
  std::string& Command1;
  std::string& Command2;
  bool& SweepAfter;
};

class frmMacro : public QDialog {
  Q_OBJECT

 public:
  // `n` is the button's number, 1..10.
  frmMacro(int n, const MacroFields& macro, QWidget* parent = nullptr);

 private:
  void cmdOk_Click();

  MacroFields macro_;
  std::array<QLineEdit*, 3> txt_command_{};  // caption, first command, second command
  QCheckBox* chk_sweep_ = nullptr;
};

}  // namespace quarvelo::dialogs

#endif  // QUARVELO_DIALOGS_FRMMACRO_H_
