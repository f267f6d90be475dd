#include "dialogs/frmMacro.h"

#include <QCheckBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include "dialogs/dialog_widgets.h"

namespace quarvelo::dialogs {

frmMacro::frmMacro(int n, const MacroFields& macro, QWidget* parent)
    : QDialog(parent), macro_(macro) {
  setObjectName(QStringLiteral("frmMacro"));
  setWindowTitle(QStringLiteral("Macro button : %1").arg(n));
  setModal(true);

  auto* frame = Named(new QGroupBox(tr("Macro Button")), "fraMacro", QString(), tr("Macro Button"));
  auto* grid = new QGridLayout(frame);
  const QString labels[3] = {tr("Caption"), tr("VISA Command (1)"), tr("VISA Command (2)")};
  const std::string* texts[3] = {&macro_.Caption, &macro_.Command1, &macro_.Command2};
  for (int i = 0; i < 3; ++i) {
    QLineEdit* box = Indexed(Named(new QLineEdit, "txtCommand", QString(), labels[i]), i);
    box->setText(QString::fromStdString(*texts[i]));
    box->setMinimumWidth(320);
    grid->addWidget(new QLabel(labels[i]), i, 0);
    grid->addWidget(box, i, 1);
    txt_command_[static_cast<std::size_t>(i)] = box;
  }
  chk_sweep_ = Named(new QCheckBox(tr("Sweep")), "chkSweep",
                     tr("Check here to request a Sweep after the macro"), tr("Sweep"));
  chk_sweep_->setChecked(macro_.SweepAfter);
  grid->addWidget(chk_sweep_, 3, 1);

  auto* ok = Named(new QPushButton(tr("OK")), "cmdOk", QString(), tr("OK"));
  auto* cancel = Named(new QPushButton(tr("&Cancel")), "cmdCancel", QString(), tr("Cancel"));
  ok->setDefault(true);
  connect(ok, &QPushButton::clicked, this, &frmMacro::cmdOk_Click);
  connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
  auto* buttons = new QHBoxLayout;
  buttons->addStretch(1);
  buttons->addWidget(ok);
  buttons->addWidget(cancel);

  auto* layout = new QVBoxLayout(this);
  layout->addWidget(frame);
  layout->addLayout(buttons);
}

void frmMacro::cmdOk_Click() {
  macro_.Caption = txt_command_[0]->text().toStdString();
  macro_.Command1 = txt_command_[1]->text().toStdString();
  macro_.Command2 = txt_command_[2]->text().toStdString();
  macro_.SweepAfter = chk_sweep_->isChecked();
  accept();
}

}  // namespace quarvelo::dialogs
