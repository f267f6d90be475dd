// The start-up and shutdown sequences on a window in memory; what they store and apply is
// checked on the real window (frm_keysight_test.cc).
#include "app/startup.h"

#include <gtest/gtest.h>

#include "platform/settings/memory_settings_store.h"
#include "platform/ui/recording_ui.h"

namespace quarvelo::app {
namespace {

// Logs what the sequences do to the window, in order.
class FakeWindow : public MainWindowView {
 public:
  void SetLoading(bool on) override {
    loading_ = on;
    log.push_back(on ? "loading on" : "loading off");
  }
  void SetCaption(const std::string&) override { log.push_back("caption"); }
  TwipsGeometry Geometry() const override { return geometry; }
  void Move(int top, int left) override {
    geometry.Top = top;
    geometry.Left = left;
    log.push_back("move");
  }
  void Resize(std::optional<int>, std::optional<int>) override { log.push_back("resize"); }
  bool IsMinimised() const override { return minimised; }
  void SetBandwidthLimit(bool, const std::string&) override { log.push_back("bandwidth"); }
  void SetMacroCaption(int n, const std::string&) override {
    if (n == 1) log.push_back("macros");
  }
  void StartDisplay() override { log.push_back(loading_ ? "display" : "display late"); }
  void RebuildToolbar() override { log.push_back(loading_ ? "toolbar" : "toolbar late"); }
  void CloseInstrument() override { log.push_back("close instrument"); }

  std::vector<std::string> log;
  TwipsGeometry geometry{100, 200, 3000, 4000};
  bool minimised = false;

 private:
  bool loading_ = false;
};

class FakePlatform : public StartupPlatform {
 public:
  std::optional<std::string> UserDataFolder() override { return user_folder; }
  std::string ProgramFolder() override { return "/opt/quarvelo/bin"; }
  bool CreateFolder(const std::string&) override { return true; }
  bool AcquireInstanceLock(const std::string& folder) override {
    lock_folder = folder;
    return true;
  }

  std::optional<std::string> user_folder = "/home/u/.local/share";
  std::string lock_folder;
};

class StartupTest : public testing::Test {
 protected:
  void Start() { RunStartup(Services(), Records(), "QUARVELO 1.2.3"); }
  void Stop() { RunShutdown(Services(), Records()); }
  StartupServices Services() { return {store_, tools_, window_, platform_}; }
  StartupRecords Records() { return {settings_, scope_, address_, data_folder_}; }

  settings::MemorySettingsStore store_;
  ui::RecordingToolHost tools_;
  FakeWindow window_;
  FakePlatform platform_;
  AppSettings settings_;
  acquisition::ScopeState scope_;
  std::string address_;
  std::string data_folder_;
};

// Without a user folder, the program's own holds the data and the instance lock.
TEST_F(StartupTest, RunsItsStepsInOrderInsideTheLoadingFlagWritesNothingAndFindsAFolder) {
  scope_.ChannelCount = 2;
  platform_.user_folder = std::nullopt;
  Start();
  EXPECT_EQ(window_.log,
            (std::vector<std::string>{"loading on", "caption", "move", "resize", "bandwidth",
                                      "macros", "display", "toolbar", "loading off"}));
  // The real count comes from the toolbar rebuild; until then files of any channel open.
  EXPECT_EQ(scope_.ChannelCount, 4);
  EXPECT_EQ(store_.writes(), 0);
  EXPECT_EQ(data_folder_ + "|" + platform_.lock_folder, "/opt/quarvelo/bin|/opt/quarvelo/bin");
}

TEST_F(StartupTest, ClosingWhileMinimisedKeepsTheStoredGeometryAndClosesTheLinkLast) {
  store_.Set("Setup", "Top", "1500");
  Start();
  window_.log.clear();
  window_.minimised = true;
  window_.geometry = {-32000, -32000, 300, 2400};
  Stop();
  EXPECT_EQ(store_.Find("Setup", "Top"), "1500");
  EXPECT_FALSE(store_.Find("Setup", "Height").has_value());
  EXPECT_EQ(store_.Find("FFT", "AVG"), "0");  // the rest is still saved
  EXPECT_EQ(window_.log, (std::vector<std::string>{"close instrument"}));
}

}  // namespace
}  // namespace quarvelo::app
