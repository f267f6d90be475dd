// "Find" in the settings dialog against two simulated oscilloscopes on loopback.
#include <gtest/gtest.h>

#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QTimer>
#include <memory>
#include <utility>

#include "dialogs/frmSettings.h"
#include "platform/settings/memory_settings_store.h"
#include "sim/simulator.h"

namespace quarvelo::dialogs {
namespace {

std::unique_ptr<sim::Simulator> StartSimulator(const std::string& address, int portmapper_port) {
  sim::SimulatorOptions options;
  options.bind_address = address;
  options.socket_port = -1;
  options.hislip_port = -1;
  options.portmapper_port = portmapper_port;
  return sim::Simulator::Start(options, nullptr);  // a failure is retried by the caller
}

// Two simulators on 127.0.0.1 and 127.0.0.2 with their portmappers on one port (picked free on
// the first address; tried again if another program holds it on the second).
std::pair<std::unique_ptr<sim::Simulator>, std::unique_ptr<sim::Simulator>> StartTwo() {
  for (int attempt = 0; attempt < 5; ++attempt) {
    auto first = StartSimulator("127.0.0.1", 0);
    if (first == nullptr) continue;
    auto second = StartSimulator("127.0.0.2", first->portmapper_port());
    if (second != nullptr) return {std::move(first), std::move(second)};
  }
  return {};
}

class SettingsFindTest : public testing::Test {
 protected:
  settings::MemorySettingsStore store_;
  std::string address_;
  int algorithm_ = 2;
  bool auto_ = false;
  acquisition::ScopeState scope_;
  frmSettings dialog_{store_, SettingsDialogRecords{address_, algorithm_, auto_, scope_}};

  QPushButton* FindButton() { return dialog_.findChild<QPushButton*>("cmdFind"); }
  QListWidget* Found() { return dialog_.findChild<QListWidget*>("lstFound"); }
  std::string Status() { return dialog_.findChild<QLabel*>("lblFind")->text().toStdString(); }
};

TEST_F(SettingsFindTest, ListsBothSimulatorsAndPickingOneFillsTheAddress) {
  auto [first, second] = StartTwo();
  ASSERT_NE(second, nullptr);
  const std::uint16_t port = first->portmapper_port();
  discovery::SearchOptions options;
  options.portmapper_port = port;
  options.lan_addresses = {"127.0.0.1", "127.0.0.2"};
  options.answer_window_ms = 200;
  dialog_.SetSearchOptions(options);
  FindButton()->click();
  const QString suffix = QStringLiteral(":%1::inst0::INSTR").arg(port);
  QStringList resources;
  for (int i = 0; i < Found()->count(); ++i) {
    resources << Found()->item(i)->data(Qt::UserRole).toString();
  }
  // USB devices of the test machine, if any, come first.
  ASSERT_GE(resources.size(), 2);
  EXPECT_EQ(resources.mid(resources.size() - 2),
            QStringList({"TCPIP0::127.0.0.1" + suffix, "TCPIP0::127.0.0.2" + suffix}));
  EXPECT_TRUE(Found()
                  ->item(resources.size() - 1)
                  ->text()
                  .startsWith(QString::fromStdString(second->Execute("*IDN?"))));
  emit Found()->itemClicked(Found()->item(resources.size() - 1));
  EXPECT_EQ(dialog_.findChild<QLineEdit*>("txtVISA")->text(), "TCPIP0::127.0.0.2" + suffix);
}

TEST_F(SettingsFindTest, NothingFoundSaysSoAndASecondPressStopsTheSearch) {
  discovery::SearchOptions options;
  options.lan_addresses = {"192.0.2.1"};  // reserved for documentation: nothing answers
  options.answer_window_ms = 200;
  dialog_.SetSearchOptions(options);
  FindButton()->click();
  // USB instruments of the test machine, if any, are found; the LAN search finds nothing.
  EXPECT_TRUE(Found()->count() > 0 || Status().starts_with("No instruments found")) << Status();

  options.answer_window_ms = 60000;
  options.time_limit_ms = 60000;
  dialog_.SetSearchOptions(options);
  QTimer::singleShot(50, FindButton(), &QPushButton::click);
  FindButton()->click();  // returns when the second press has stopped it
  EXPECT_TRUE(Status().starts_with("Search stopped")) << Status();
  EXPECT_EQ(FindButton()->text(), "&Find");
}

}  // namespace
}  // namespace quarvelo::dialogs
