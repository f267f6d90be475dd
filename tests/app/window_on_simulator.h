// The real main window with its own data folder and settings file, the settings pointing at a
// simulated oscilloscope on loopback TCP (socket only, unless a test chooses) with four channels.
#ifndef QUARVELO_TESTS_APP_WINDOW_ON_SIMULATOR_H_
#define QUARVELO_TESTS_APP_WINDOW_ON_SIMULATOR_H_

#include <gtest/gtest.h>

#include <QAction>
#include <QByteArray>
#include <QTemporaryDir>
#include <algorithm>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "app/frmKeysight.h"
#include "app/qt_startup_platform.h"
#include "platform/qt/qsettings_store.h"
#include "sim/simulator.h"

namespace quarvelo::app::testing_support {

class WindowOnSimulator : public ::testing::Test {
 protected:
  void SetUp() override {
    qputenv("XDG_DATA_HOME", (dir_.path() + "/data").toUtf8());
    std::string error;
    simulator_ = sim::Simulator::Start(Options(), &error);
    ASSERT_NE(simulator_, nullptr) << error;
    store_ = std::make_unique<qt::QSettingsStore>(dir_.path() + "/QUARVELO.conf");
    store_->Set("Setup", "VISA", Resource());
    store_->Set("Setup", "Channels", "4");
    window_ = std::make_unique<frmKeysight>(*store_, platform_);
  }

  // The simulator's transports, and the address the settings give the window.
  virtual sim::SimulatorOptions Options() const {
    sim::SimulatorOptions options;
    options.vxi11_port = options.portmapper_port = options.hislip_port = -1;
    return options;
  }
  virtual std::string Resource() const { return simulator_->SocketResource(); }

  // Stores the further "Setup" keys, loads the window and, when asked, opens the link.
  void Load(const std::vector<std::pair<std::string, std::string>>& setup, bool open_link) {
    for (const auto& [key, value] : setup) store_->Set("Setup", key, value);
    ASSERT_TRUE(window_->Form_Load());
    if (!open_link) return;
    window_->Link().OpenInstrument();
    ASSERT_TRUE(window_->Session().RemoteOn);
  }

  void Trigger(const std::string& tool) {
    auto* action = window_->findChild<QAction*>(QString::fromStdString(tool));
    ASSERT_NE(action, nullptr) << tool;
    action->trigger();
  }

  // True when `expected` appears in the traffic in this order (other messages between).
  bool Received(const std::vector<std::string>& expected) const {
    const std::vector<std::string> received = simulator_->ReceivedMessages();
    auto at = received.begin();
    for (const std::string& message : expected) {
      at = std::find(at, received.end(), message);
      if (at == received.end()) return false;
      ++at;
    }
    return true;
  }

  QTemporaryDir dir_;
  std::unique_ptr<sim::Simulator> simulator_;
  std::unique_ptr<qt::QSettingsStore> store_;
  QtStartupPlatform platform_;
  std::unique_ptr<frmKeysight> window_;
};

}  // namespace quarvelo::app::testing_support

#endif  // QUARVELO_TESTS_APP_WINDOW_ON_SIMULATOR_H_
