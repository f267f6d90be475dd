#include "platform/qt/qt_ui_services.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QTimer>
#include <QWidget>

namespace quarvelo::qt {
namespace {

class QtUiServicesTest : public testing::Test {
 protected:
  QtUiServicesTest()
      : status_(new QLabel(&window_)),
        activity_(new ActivityIndicator(&window_)),
        refresh_(new QTimer(&window_)),
        single_(new QTimer(&window_)),
        ui_({&window_, status_, activity_, refresh_, single_}) {
    refresh_->setInterval(1000);
    single_->setInterval(1000);
  }

  QWidget window_;
  QLabel* status_;
  ActivityIndicator* activity_;
  QTimer* refresh_;
  QTimer* single_;
  QtUiServices ui_;
};

TEST_F(QtUiServicesTest, IndicatorAndTimersFollowTheCalls) {
  ui_.SetActivityColour(ui::MakeRgb(255, 0, 0));
  EXPECT_EQ(activity_->Colour(), QColor(255, 0, 0));
  ui_.SetRefreshTimerEnabled(true);
  ui_.SetSingleTimerEnabled(true);
  EXPECT_TRUE(refresh_->isActive());
  EXPECT_TRUE(single_->isActive());
  ui_.SetRefreshTimerEnabled(false);
  EXPECT_FALSE(refresh_->isActive());
  EXPECT_EQ(refresh_->interval(), 1000);
}

TEST_F(QtUiServicesTest, ServicesOutlivingTheirWidgetsDoNothing) {
  delete status_;
  delete refresh_;
  ui_.ShowStatus("x");
  ui_.SetRefreshTimerEnabled(true);
  // The widgets still there keep working.
  ui_.SetSingleTimerEnabled(true);
  EXPECT_TRUE(single_->isActive());
}

TEST_F(QtUiServicesTest, MessageBoxHasItsTitleIconAndReturnsTheButton) {
  const struct {
    const char* title;  // nullptr: the program's
    ui::MessageIcon icon;
    QMessageBox::Icon qt_icon;
    ui::MessageButtons buttons;
    QMessageBox::StandardButton press;
    ui::MessageResult expected;
  } cases[] = {
      {nullptr, ui::MessageIcon::kCritical, QMessageBox::Critical, ui::MessageButtons::kOk,
       QMessageBox::Ok, ui::MessageResult::kOk},
      {nullptr, ui::MessageIcon::kExclamation, QMessageBox::Warning, ui::MessageButtons::kOkCancel,
       QMessageBox::Cancel, ui::MessageResult::kCancel},
      {nullptr, ui::MessageIcon::kQuestion, QMessageBox::Question, ui::MessageButtons::kYesNo,
       QMessageBox::No, ui::MessageResult::kNo},
      {"Error!", ui::MessageIcon::kCritical, QMessageBox::Critical, ui::MessageButtons::kOk,
       QMessageBox::Ok, ui::MessageResult::kOk},
  };
  const QString message = QStringLiteral("RESET WGEN\r\nAre you sure?");
  for (const auto& c : cases) {
    QString shown;  // the box's title, icon and text
    QTimer::singleShot(0, [&] {
      auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
      ASSERT_NE(box, nullptr);
      shown = QStringLiteral("%1|%2|%3").arg(box->windowTitle()).arg(box->icon()).arg(box->text());
      box->button(c.press)->click();
    });
    const std::string text = message.toStdString();
    EXPECT_EQ(c.title == nullptr ? ui_.ShowMessage(text, c.icon, c.buttons)
                                 : ui_.ShowTitledMessage(c.title, text, c.icon, c.buttons),
              c.expected);
    EXPECT_EQ(shown, QStringLiteral("%1|%2|%3")
                         .arg(c.title == nullptr ? "QUARVELO" : c.title)
                         .arg(c.qt_icon)
                         .arg(message));
  }
}

TEST_F(QtUiServicesTest, PointerOverrideIsBalanced) {
  ui_.SetPointer(ui::PointerShape::kHourglass);
  ui_.SetPointer(ui::PointerShape::kCross);
  ASSERT_NE(QApplication::overrideCursor(), nullptr);
  EXPECT_EQ(QApplication::overrideCursor()->shape(), Qt::CrossCursor);
  ui_.SetPointer(ui::PointerShape::kDefault);
  EXPECT_EQ(QApplication::overrideCursor(), nullptr);
  ui_.SetPointer(ui::PointerShape::kDefault);  // twice is harmless
  EXPECT_EQ(QApplication::overrideCursor(), nullptr);
}

TEST_F(QtUiServicesTest, PauseLetsTimersRun) {
  int ticks = 0;
  QTimer::singleShot(5, [&] { ++ticks; });
  ui_.Pause(30);
  EXPECT_EQ(ticks, 1);
}

}  // namespace
}  // namespace quarvelo::qt
