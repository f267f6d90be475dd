// The main window against the simulated oscilloscope over loopback TCP: the composition root
// hands the settings' address to the link, and the settings tool and the shutdown close it.
#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QApplication>
#include <QTimer>

#include "platform/qt/activity_indicator.h"
#include "tests/app/window_on_simulator.h"

namespace quarvelo::app {
namespace {

class FrmKeysightLinkTest : public testing_support::WindowOnSimulator {
 protected:
  void SetUp() override {
    WindowOnSimulator::SetUp();
    if (!HasFatalFailure()) Load({}, false);
  }

  QColor Indicator() const {
    return window_->findChild<qt::ActivityIndicator*>("shaActivity")->Colour();
  }
  bool RefreshTimerRunning() const { return window_->findChild<QTimer*>("tmrRefresh")->isActive(); }
};

TEST_F(FrmKeysightLinkTest, StoredAddressOpensTheLinkAndTheSettingsToolClosesIt) {
  EXPECT_FALSE(window_->Session().RemoteOn);  // never opened at start-up
  window_->Link().OpenInstrument();
  ASSERT_TRUE(window_->Session().RemoteOn);
  EXPECT_EQ(Indicator(), QColor(0, 255, 0));
  EXPECT_TRUE(RefreshTimerRunning());
  EXPECT_NE(window_->Link().QueryString("*IDN?").find("KEYSIGHT"), std::string::npos);

  QTimer::singleShot(0, [] {
    QWidget* dialog = QApplication::activeModalWidget();
    ASSERT_NE(dialog, nullptr);
    dialog->findChild<QAbstractButton*>("cmdCancel")->click();
  });
  window_->ShowSettingsDialog();
  EXPECT_FALSE(window_->Session().RemoteOn);
  EXPECT_EQ(Indicator(), QColor(192, 192, 192));
  EXPECT_FALSE(RefreshTimerRunning());
  EXPECT_FALSE(window_->Tools().ToolState("ID_Remote"));
  EXPECT_EQ(window_->Scope().ChannelCount, 4);
}

TEST_F(FrmKeysightLinkTest, ClosingTheWindowClosesAnOpenLink) {
  window_->Link().OpenInstrument();
  ASSERT_TRUE(window_->Session().RemoteOn);
  window_->Link().SendCommand(":RUN");
  window_->close();
  EXPECT_FALSE(window_->Session().RemoteOn);
  EXPECT_EQ(window_->Session().Instrument, VI_NULL);
  EXPECT_TRUE(Received({":RUN"}));
}

}  // namespace
}  // namespace quarvelo::app
