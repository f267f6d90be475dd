#include "dialogs/frmChannelLabel.h"

#include <QDialogButtonBox>
#include <QGroupBox>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>
#include <string>

#include "dialogs/dialog_widgets.h"

namespace quarvelo::dialogs {

frmChannelLabel::frmChannelLabel(const DialogServices& services, int channel, QWidget* parent)
    : QDialog(parent), services_(services), channel_(channel) {
  setObjectName(QStringLiteral("frmChannelLabel"));
  setWindowTitle(QStringLiteral("Channel Label"));
  setModal(true);
  auto* layout = new QVBoxLayout(this);
  const QString caption = QStringLiteral("Channel[%1]").arg(channel);
  auto* frame = Named(new QGroupBox(caption), "faLabel", QString(), caption);
  auto* frame_layout = new QVBoxLayout(frame);
  txt_label_ = Named(new QLineEdit, "txtLabel", QStringLiteral("Channel Label"));
  txt_label_->setAccessibleName(QStringLiteral("Channel %1 label").arg(channel));
  frame_layout->addWidget(txt_label_);
  layout->addWidget(frame);

  auto* buttons = new QDialogButtonBox;
  auto* ok = Named(new QPushButton(QStringLiteral("OK")), "cmdOk", QString(), "OK");
  ok->setDefault(true);
  auto* clear = Named(new QPushButton(QStringLiteral("Clear")), "cmdClear", QString(), "Clear");
  auto* cancel = Named(new QPushButton(QStringLiteral("&Cancel")), "cmdCancel", QString(),
                       QStringLiteral("Cancel"));
  buttons->addButton(ok, QDialogButtonBox::AcceptRole);
  buttons->addButton(clear, QDialogButtonBox::ResetRole);
  buttons->addButton(cancel, QDialogButtonBox::RejectRole);
  connect(ok, &QPushButton::clicked, this, [this] { cmdOk_Click(); });
  connect(clear, &QPushButton::clicked, txt_label_, &QLineEdit::clear);
  connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
  layout->addWidget(buttons);

  if (channel >= 1 && channel <= acquisition::kMaxChannels) {
    txt_label_->setText(QString::fromStdString(services_.Scope.Channels[channel].Label));
  }
  txt_label_->selectAll();
}

void frmChannelLabel::cmdOk_Click() {
  const std::string text = TrimmedText(txt_label_->text());
  services_.Link.SendCommand(":CHANnel" + std::to_string(channel_) + ":LABel " + Quoted(text));
  if (channel_ >= 1 && channel_ <= acquisition::kMaxChannels) {
    services_.Scope.Channels[channel_].Label = text;
  }
  SweepIfRunning(services_);
  accept();
}

}  // namespace quarvelo::dialogs
