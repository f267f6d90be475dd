#include "platform/qt/qt_ui_services.h"

#include <QApplication>
#include <QCursor>
#include <QEventLoop>
#include <QFileDialog>
#include <QLabel>
#include <QMessageBox>

#include "platform/qt/file_filter.h"
#include "platform/ui/status_text.h"

namespace quarvelo::qt {
namespace {

QString ToQString(std::string_view text) {
  return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

QMessageBox::Icon ToQtIcon(ui::MessageIcon icon) {
  switch (icon) {
    case ui::MessageIcon::kNone:
      return QMessageBox::NoIcon;
    case ui::MessageIcon::kCritical:
      return QMessageBox::Critical;
    case ui::MessageIcon::kQuestion:
      return QMessageBox::Question;
    case ui::MessageIcon::kExclamation:
      return QMessageBox::Warning;
    case ui::MessageIcon::kInformation:
      return QMessageBox::Information;
  }
  return QMessageBox::NoIcon;
}

QMessageBox::StandardButtons ToQtButtons(ui::MessageButtons buttons) {
  switch (buttons) {
    case ui::MessageButtons::kOk:
      return QMessageBox::Ok;
    case ui::MessageButtons::kOkCancel:
      return QMessageBox::Ok | QMessageBox::Cancel;
    case ui::MessageButtons::kYesNo:
      return QMessageBox::Yes | QMessageBox::No;
    case ui::MessageButtons::kYesNoCancel:
      return QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel;
  }
  return QMessageBox::Ok;
}

ui::MessageResult FromQtButton(int button, ui::MessageButtons buttons) {
  switch (button) {
    case QMessageBox::Ok:
      return ui::MessageResult::kOk;
    case QMessageBox::Yes:
      return ui::MessageResult::kYes;
    case QMessageBox::No:
      return ui::MessageResult::kNo;
    case QMessageBox::Cancel:
      return ui::MessageResult::kCancel;
    default:
      break;
  }
  // Closed by the window manager: the answer that does nothing.
  switch (buttons) {
    case ui::MessageButtons::kOk:
      return ui::MessageResult::kOk;
    case ui::MessageButtons::kYesNo:
      return ui::MessageResult::kNo;
    case ui::MessageButtons::kOkCancel:
    case ui::MessageButtons::kYesNoCancel:
      return ui::MessageResult::kCancel;
  }
  return ui::MessageResult::kCancel;
}

Qt::CursorShape ToQtCursor(ui::PointerShape shape) {
  switch (shape) {
    case ui::PointerShape::kDefault:
      return Qt::ArrowCursor;
    case ui::PointerShape::kHourglass:
      return Qt::WaitCursor;
    case ui::PointerShape::kCross:
      return Qt::CrossCursor;
    case ui::PointerShape::kSizeAll:
      return Qt::SizeAllCursor;
    case ui::PointerShape::kSizeHorizontal:
      return Qt::SizeHorCursor;
    case ui::PointerShape::kArrowQuestion:
      return Qt::WhatsThisCursor;
  }
  return Qt::ArrowCursor;
}

std::optional<std::string> Chosen(const QString& path) {
  if (path.isEmpty()) return std::nullopt;
  return path.toStdString();
}

}  // namespace

QtUiServices::QtUiServices(const QtUiWidgets& widgets)
    : window_(widgets.window),
      status_line_(widgets.status_line),
      activity_(widgets.activity),
      refresh_timer_(widgets.refresh_timer),
      single_timer_(widgets.single_timer) {}

QtUiServices::~QtUiServices() {
  if (pointer_overridden_) QApplication::restoreOverrideCursor();
}

void QtUiServices::ShowStatus(std::string_view text) {
  if (status_line_ == nullptr) return;
  status_line_->setText(QString::fromStdString(ui::StatusLineText(text)));
  // The line must show at once, also in the middle of a long operation.
  status_line_->repaint();
}

ui::MessageResult QtUiServices::ShowMessage(std::string_view text, ui::MessageIcon icon,
                                            ui::MessageButtons buttons) {
  return ShowTitledMessage("QUARVELO", text, icon, buttons);
}

ui::MessageResult QtUiServices::ShowTitledMessage(std::string_view title, std::string_view text,
                                                  ui::MessageIcon icon,
                                                  ui::MessageButtons buttons) {
  QMessageBox box(ToQtIcon(icon), ToQString(title), ToQString(text), ToQtButtons(buttons), window_);
  box.setObjectName(QStringLiteral("QuarveloMessageBox"));
  // A busy pointer must not hide over the question the user has to answer.
  const bool overridden = pointer_overridden_;
  if (overridden) QApplication::setOverrideCursor(Qt::ArrowCursor);
  const int button = box.exec();
  if (overridden) QApplication::restoreOverrideCursor();
  return FromQtButton(button, buttons);
}

std::optional<std::string> QtUiServices::AskOpenFile(const ui::FileDialogRequest& request) {
  return Chosen(QFileDialog::getOpenFileName(window_, ToQString(request.title),
                                             ToQString(request.initial_path),
                                             QtFileFilter(request.filter)));
}

std::optional<std::string> QtUiServices::AskSaveFile(const ui::FileDialogRequest& request) {
  return Chosen(QFileDialog::getSaveFileName(window_, ToQString(request.title),
                                             ToQString(request.initial_path),
                                             QtFileFilter(request.filter)));
}

void QtUiServices::SetPointer(ui::PointerShape shape) {
  if (shape == ui::PointerShape::kDefault) {
    if (pointer_overridden_) QApplication::restoreOverrideCursor();
    pointer_overridden_ = false;
    return;
  }
  if (pointer_overridden_) {
    QApplication::changeOverrideCursor(QCursor(ToQtCursor(shape)));
  } else {
    QApplication::setOverrideCursor(QCursor(ToQtCursor(shape)));
    pointer_overridden_ = true;
  }
}

void QtUiServices::ProcessPendingEvents() { QCoreApplication::processEvents(); }

void QtUiServices::Pause(int milliseconds) {
  if (milliseconds <= 0) {
    ProcessPendingEvents();
    return;
  }
  QEventLoop loop;
  QTimer::singleShot(milliseconds, &loop, &QEventLoop::quit);
  loop.exec();
}

void QtUiServices::SetActivityColour(ui::Rgb colour) {
  if (activity_ == nullptr) return;
  activity_->SetColour(QColor((colour >> 16) & 0xFF, (colour >> 8) & 0xFF, colour & 0xFF));
}

void QtUiServices::SetRefreshTimerEnabled(bool enabled) {
  if (refresh_timer_ == nullptr) return;
  // Enabling a running timer leaves its period alone, or repeated enabling would starve it.
  if (enabled) {
    if (!refresh_timer_->isActive()) refresh_timer_->start();
  } else {
    refresh_timer_->stop();
  }
}

void QtUiServices::SetSingleTimerEnabled(bool enabled) {
  if (single_timer_ == nullptr) return;
  // Enabling a running timer leaves its period alone, or repeated enabling would starve it.
  if (enabled) {
    if (!single_timer_->isActive()) single_timer_->start();
  } else {
    single_timer_->stop();
  }
}

}  // namespace quarvelo::qt
