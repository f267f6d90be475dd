// The main window against the simulated oscilloscope over loopback TCP: the composition root
// hands the settings' address to the link, and the settings tool and the shutdown close it.
#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QApplication>
#include <QTemporaryDir>
#include <QTimer>
#include <algorithm>
#include <memory>

#include "app/frmKeysight.h"
#include "app/qt_startup_platform.h"
#include "platform/qt/activity_indicator.h"
#include "platform/qt/qsettings_store.h"
#include "sim/simulator.h"

namespace quarvelo::app {
namespace {

class FrmKeysightLinkTest : public testing::Test {
 protected:
  void SetUp() override {
    qputenv("XDG_DATA_HOME", (dir_.path() + "/data").toUtf8());
    sim::SimulatorOptions options;
    options.vxi11_port = -1;
    options.portmapper_port = -1;
    options.hislip_port = -1;
    std::string error;
    simulator_ = sim::Simulator::Start(options, &error);
    ASSERT_NE(simulator_, nullptr) << error;
    store_ = std::make_unique<qt::QSettingsStore>(dir_.path() + "/QUARVELO.conf");
    store_->Set("Setup", "VISA", simulator_->SocketResource());
    store_->Set("Setup", "Channels", "4");
    window_ = std::make_unique<frmKeysight>(*store_, platform_);
    ASSERT_TRUE(window_->Form_Load());
  }

  QColor Indicator() const {
    return window_->findChild<qt::ActivityIndicator*>("shaActivity")->Colour();
  }
  bool RefreshTimerRunning() const { return window_->findChild<QTimer*>("tmrRefresh")->isActive(); }

  QTemporaryDir dir_;
  std::unique_ptr<sim::Simulator> simulator_;
  std::unique_ptr<qt::QSettingsStore> store_;
  QtStartupPlatform platform_;
  std::unique_ptr<frmKeysight> window_;
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
  const std::vector<std::string> received = simulator_->ReceivedMessages();
  EXPECT_NE(std::find(received.begin(), received.end(), ":RUN"), received.end());
}

}  // namespace
}  // namespace quarvelo::app
