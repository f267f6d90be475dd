#include "dialogs/instrument_finder.h"

#include <QCoreApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QPointer>
#include <QPushButton>
#include <QVBoxLayout>

namespace quarvelo::dialogs {
namespace {

constexpr int kStepMs = 20;

}  // namespace

InstrumentFinder::InstrumentFinder(QWidget* parent) : QWidget(parent) {
  setObjectName(QStringLiteral("fraFind"));
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  auto* row = new QHBoxLayout;
  cmd_find_ = new QPushButton(tr("&Find"));
  cmd_find_->setObjectName(QStringLiteral("cmdFind"));
  cmd_find_->setToolTip(tr("List the instruments on USB and on the local networks"));
  cmd_find_->setAccessibleName(tr("Find instruments"));
  lbl_find_ = new QLabel;
  lbl_find_->setObjectName(QStringLiteral("lblFind"));
  // Read by its text as the search goes on; the description says what it is.
  lbl_find_->setAccessibleDescription(tr("Search status"));
  row->addWidget(cmd_find_);
  row->addWidget(lbl_find_, 1);
  layout->addLayout(row);
  lst_found_ = new QListWidget;
  lst_found_->setObjectName(QStringLiteral("lstFound"));
  lst_found_->setAccessibleName(tr("Instruments found"));
  lst_found_->setToolTip(tr("Pick an instrument to use its resource string"));
  lst_found_->setMaximumHeight(110);
  lst_found_->hide();
  layout->addWidget(lst_found_);
  connect(cmd_find_, &QPushButton::clicked, this, [this] { cmdFind_Click(); });
  connect(lst_found_, &QListWidget::itemClicked, this,
          [this](QListWidgetItem* item) { emit Picked(item->data(Qt::UserRole).toString()); });
  connect(lst_found_, &QListWidget::itemActivated, this,
          [this](QListWidgetItem* item) { emit Picked(item->data(Qt::UserRole).toString()); });
}

void InstrumentFinder::hideEvent(QHideEvent* event) {
  cancel_requested_ = true;  // the dialog closed: stop at the next step
  QWidget::hideEvent(event);
}

void InstrumentFinder::cmdFind_Click() {
  if (searching_) {
    cancel_requested_ = true;
    return;
  }
  searching_ = true;
  cancel_requested_ = false;
  cmd_find_->setText(tr("Stop &search"));
  lst_found_->clear();
  lst_found_->hide();
  lbl_find_->setText(tr("Searching…"));
  discovery::InstrumentSearch search(options_, &usb_);
  const QPointer<InstrumentFinder> alive(this);
  while (search.Step(kStepMs)) {
    QCoreApplication::processEvents(QEventLoop::AllEvents, kStepMs);
    if (alive == nullptr) return;  // the dialog went away with its finder
    if (cancel_requested_) search.Cancel();
  }
  searching_ = false;
  cmd_find_->setText(tr("&Find"));
  ShowResults(search);
}

void InstrumentFinder::ShowResults(const discovery::InstrumentSearch& search) {
  for (const discovery::FoundInstrument& instrument : search.found()) {
    const QString resource = QString::fromStdString(instrument.resource);
    auto* item = new QListWidgetItem(
        QStringLiteral("%1 — %2").arg(QString::fromStdString(instrument.identity), resource));
    item->setData(Qt::UserRole, resource);
    item->setToolTip(resource);
    lst_found_->addItem(item);
  }
  lst_found_->setVisible(!search.found().empty());
  QString text;
  if (search.cancelled()) {
    text = tr("Search stopped.");
  } else if (search.found().empty()) {
    text = tr("No instruments found.");
  } else {
    text =
        tr("%n instrument(s) found: pick one.", nullptr, static_cast<int>(search.found().size()));
  }
  if (!search.lan_problem().empty()) {
    text += QStringLiteral(" (LAN: %1)").arg(QString::fromStdString(search.lan_problem()));
  }
  lbl_find_->setText(text);
}

}  // namespace quarvelo::dialogs
