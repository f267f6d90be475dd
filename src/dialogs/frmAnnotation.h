// Edits the annotation on the oscilloscope's screen: its text, colour, background and whether
// it shows. Modal.
#ifndef QUARVELO_DIALOGS_FRMANNOTATION_H_
#define QUARVELO_DIALOGS_FRMANNOTATION_H_

#include <QDialog>

#include "dialogs/dialog_services.h"

class QComboBox;
class QLineEdit;
class QToolButton;

namespace quarvelo::dialogs {

class frmAnnotation : public QDialog {
  Q_OBJECT

 public:
  // Load: reads the annotation back and shows it.
  explicit frmAnnotation(const DialogServices& services, QWidget* parent = nullptr);

 private:
  void BuildControls();
  void Load();
  void cboColor_Click(int item);
  void cboBackGround_Click(int item);
  void ssrON_Click(bool on);
  void cmdSet_Click();
  void cmdOk_Click();

  DialogServices services_;
  acquisition::ScopeState& scope_;
  bool Refreshing = false;

  QLineEdit* txt_label_ = nullptr;
  QComboBox* cbo_color_ = nullptr;
  QComboBox* cbo_background_ = nullptr;
  QToolButton* ssr_on_ = nullptr;
};

}  // namespace quarvelo::dialogs

#endif  // QUARVELO_DIALOGS_FRMANNOTATION_H_
