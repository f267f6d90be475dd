#include "dialogs/dialog_launcher.h"

#include "dialogs/frmAbout.h"
#include "dialogs/frmAnnotation.h"
#include "dialogs/frmChannelLabel.h"
#include "dialogs/frmMath.h"
#include "dialogs/frmWGEN.h"
#include "dialogs/help_window.h"

namespace quarvelo::dialogs {
namespace {

void BringToFront(QWidget* window) {
  window->show();
  window->raise();
  window->activateWindow();
}

}  // namespace

DialogLauncher::DialogLauncher(const DialogServices& services, QWidget* owner)
    : services_(services), owner_(owner) {}

DialogLauncher::~DialogLauncher() {
  delete wgen_.data();
  delete help_.data();
}

void DialogLauncher::ShowMathDialog() {
  frmMath dialog(services_, owner_);
  dialog.exec();
}

void DialogLauncher::ShowWgenDialog() {
  if (wgen_ == nullptr || !services_.Scope.WgenDialogOpen) {
    delete wgen_.data();  // closed but not yet deleted
    wgen_ = new frmWGEN(services_, owner_);
    wgen_->setAttribute(Qt::WA_DeleteOnClose);
  } else {
    wgen_->ShowState();
  }
  BringToFront(wgen_);
}

void DialogLauncher::CloseWgenDialog() {
  if (wgen_ != nullptr) wgen_->close();
}

void DialogLauncher::ShowChannelLabelDialog(int channel) {
  frmChannelLabel dialog(services_, channel, owner_);
  dialog.exec();
}

void DialogLauncher::ShowAnnotationDialog() {
  frmAnnotation dialog(services_, owner_);
  dialog.exec();
}

void DialogLauncher::ShowAbout() {
  frmAbout dialog(services_.Ui, owner_);
  dialog.exec();
}

void DialogLauncher::ShowHelp() {
  if (help_ == nullptr) {
    help_ = new frmHelp(services_.Ui);
    // The guide has no owner; it must not keep the program running once the main window is
    // closed.
    help_->setAttribute(Qt::WA_QuitOnClose, false);
  } else {
    help_->ShowIndex();
  }
  BringToFront(help_);
}

}  // namespace quarvelo::dialogs
