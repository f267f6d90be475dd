// Edits one channel's label on the oscilloscope's screen. Modal.
#ifndef QUARVELO_DIALOGS_FRMCHANNELLABEL_H_
#define QUARVELO_DIALOGS_FRMCHANNELLABEL_H_

#include <QDialog>

#include "dialogs/dialog_services.h"

class QLineEdit;

namespace quarvelo::dialogs {

class frmChannelLabel : public QDialog {
  Q_OBJECT

 public:
  // `channel` (1..4): the channel whose menu was opened last.
  frmChannelLabel(const DialogServices& services, int channel, QWidget* parent = nullptr);

 private:
  void cmdOk_Click();

  DialogServices services_;
  int channel_;
  QLineEdit* txt_label_ = nullptr;
};

}  // namespace quarvelo::dialogs

#endif  // QUARVELO_DIALOGS_FRMCHANNELLABEL_H_
