#include "app/startup.h"

#include <gtest/gtest.h>

#include <map>

#include "platform/settings/memory_settings_store.h"
#include "platform/ui/recording_ui.h"

namespace quarvelo::app {
namespace {

// The window in memory: remembers what the sequences did to it, in order.
class FakeWindow : public MainWindowView {
 public:
  void SetLoading(bool loading) override {
    loading_ = loading;
    log.push_back(loading ? "loading on" : "loading off");
  }
  void SetCaption(const std::string& text) override {
    caption = text;
    log.push_back("caption");
  }
  TwipsGeometry Geometry() const override { return geometry; }
  void Move(int top, int left) override {
    geometry.Top = top;
    geometry.Left = left;
    log.push_back("move");
  }
  void Resize(std::optional<int> height, std::optional<int> width) override {
    if (height) geometry.Height = *height;
    if (width) geometry.Width = *width;
    log.push_back("resize");
  }
  bool IsMinimised() const override { return minimised; }
  void SetBandwidthLimit(bool down, const std::string& text) override {
    bandwidth_down = down;
    upper_limit_text = text;
    log.push_back("bandwidth");
  }
  void SetMacroCaption(int n, const std::string& caption_text) override {
    macro_captions[n] = caption_text;
    if (n == 1) log.push_back("macros");
  }
  void StartDisplay() override { log.push_back(loading_ ? "display" : "display after loading"); }
  void RebuildToolbar() override { log.push_back(loading_ ? "toolbar" : "toolbar late"); }
  void CloseInstrument() override { log.push_back("close instrument"); }

  std::vector<std::string> log;
  std::string caption;
  TwipsGeometry geometry{100, 200, 3000, 4000};
  bool minimised = false;
  bool bandwidth_down = false;
  std::string upper_limit_text;
  std::map<int, std::string> macro_captions;

 private:
  bool loading_ = false;
};

class FakePlatform : public StartupPlatform {
 public:
  std::optional<std::string> UserDataFolder() override { return user_folder; }
  std::string ProgramFolder() override { return "/opt/quarvelo/bin"; }
  bool CreateFolder(const std::string& path) override {
    created.push_back(path);
    return true;
  }
  bool AcquireInstanceLock(const std::string& folder) override {
    lock_folder = folder;
    return !other_instance;
  }

  std::optional<std::string> user_folder = "/home/u/.local/share";
  bool other_instance = false;
  std::vector<std::string> created;
  std::string lock_folder;
};

class StartupTest : public testing::Test {
 protected:
  StartupTest() {
    tools_.SetComboItems("ID_AVG", {"1", "2", "4", "8", "16"});
    scope_.ChannelCount = 2;
  }

  StartupResult Start() { return RunStartup(Services(), Records(), "QUARVELO 1.2.3"); }
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

TEST_F(StartupTest, RunsItsStepsInOrderInsideTheLoadingFlag) {
  ASSERT_EQ(Start(), StartupResult::kRunning);
  EXPECT_EQ(window_.log,
            (std::vector<std::string>{"loading on", "caption", "move", "resize", "bandwidth",
                                      "macros", "display", "toolbar", "loading off"}));
  EXPECT_EQ(window_.caption, "QUARVELO 1.2.3");
}

TEST_F(StartupTest, FirstStartWithEmptyStore) {
  Start();
  EXPECT_EQ(window_.geometry, (TwipsGeometry{0, 0, 11760, 14580}));
  EXPECT_EQ(settings_.Algorithm, 2);
  EXPECT_EQ(settings_.AverageCount, 1);
  EXPECT_EQ(tools_.ComboIndex("ID_AVG"), 0);
  EXPECT_EQ(window_.upper_limit_text, "200");
  EXPECT_FALSE(window_.bandwidth_down);
  // The real count comes from the toolbar rebuild; until then files of any channel open.
  EXPECT_EQ(scope_.ChannelCount, 4);
  EXPECT_EQ(window_.macro_captions.size(), 10u);
  EXPECT_EQ(window_.macro_captions[10], "MAC10");
  EXPECT_EQ(data_folder_, "/home/u/.local/share/QUARVELO");
  EXPECT_EQ(platform_.created, (std::vector<std::string>{"/home/u/.local/share/QUARVELO"}));
  // Loading writes nothing.
  EXPECT_EQ(store_.writes(), 0);
}

TEST_F(StartupTest, StoredValuesReachTheWindowTheToolbarAndTheRecords) {
  store_.Set("Setup", "Top", "1500");
  store_.Set("Setup", "Left", "3000");
  store_.Set("Setup", "Height", "0");  // not applied
  store_.Set("Setup", "Width", "9000");
  store_.Set("Setup", "DVM", "1");
  store_.Set("Setup", "WGEN", "1");
  store_.Set("FFT", "AVG", "3");
  store_.Set("FFT", "BW", "1");
  store_.Set("FFT", "BWL", "5");
  store_.Set("Macros", "Caption4", "Reset");
  store_.Set("Setup", "VISA", "USB0::0x0957::0x1797::MY123::0::INSTR");
  Start();
  EXPECT_EQ(address_, "USB0::0x0957::0x1797::MY123::0::INSTR");
  EXPECT_EQ(window_.geometry, (TwipsGeometry{1500, 3000, 3000, 9000}));
  EXPECT_TRUE(scope_.HasDvm);
  EXPECT_TRUE(scope_.HasWgen);
  EXPECT_EQ(settings_.AverageCount, 8);
  EXPECT_EQ(tools_.ComboIndex("ID_AVG"), 3);
  EXPECT_TRUE(window_.bandwidth_down);
  EXPECT_EQ(window_.upper_limit_text, "20");
  EXPECT_EQ(window_.macro_captions[4], "Reset");
}

TEST_F(StartupTest, SecondInstanceEndsBeforeTouchingTheWindow) {
  platform_.other_instance = true;
  EXPECT_EQ(Start(), StartupResult::kOtherInstanceRunning);
  EXPECT_EQ(window_.log, (std::vector<std::string>{"loading on"}));
  EXPECT_EQ(platform_.lock_folder, "/home/u/.local/share/QUARVELO");
}

TEST_F(StartupTest, WithoutAUserFolderTheProgramFolderIsUsed) {
  platform_.user_folder = std::nullopt;
  Start();
  EXPECT_EQ(data_folder_, "/opt/quarvelo/bin");
  EXPECT_EQ(platform_.lock_folder, "/opt/quarvelo/bin");
}

TEST_F(StartupTest, ShutdownStoresEverythingAsTextAndClosesTheLinkLast) {
  store_.Set("FFT", "Window", "2");
  store_.Set("FFT", "SCALE", "1");
  Start();
  window_.log.clear();
  settings_.AverageCount = 16;  // the choices the toolbar and the ribbon wrote
  settings_.BandwidthLimitOn = true;
  settings_.UpperLimitMhz = 75.5;
  scope_.HasDvm = true;
  window_.geometry = {450, 600, 9000, 12000};
  Stop();
  const std::map<std::pair<std::string, std::string>, std::string> expected = {
      {{"FFT", "Window"}, "2"},      {{"FFT", "AVG"}, "4"},        {{"FFT", "SCALE"}, "1"},
      {{"FFT", "BWL"}, "75.5"},      {{"FFT", "BW"}, "1"},         {{"Setup", "DVM"}, "1"},
      {{"Setup", "WGEN"}, "0"},      {{"Setup", "Top"}, "450"},    {{"Setup", "Left"}, "600"},
      {{"Setup", "Height"}, "9000"}, {{"Setup", "Width"}, "12000"}};
  for (const auto& [key, text] : expected) {
    EXPECT_EQ(store_.Find(key.first, key.second), text) << key.first << "/" << key.second;
  }
  EXPECT_EQ(window_.log, (std::vector<std::string>{"close instrument"}));
}

TEST_F(StartupTest, ClosingWhileMinimisedKeepsTheStoredGeometry) {
  store_.Set("Setup", "Top", "1500");
  store_.Set("Setup", "Height", "7000");
  Start();
  window_.minimised = true;
  window_.geometry = {-32000, -32000, 300, 2400};
  Stop();
  EXPECT_EQ(store_.Find("Setup", "Top"), "1500");
  EXPECT_EQ(store_.Find("Setup", "Height"), "7000");
  EXPECT_FALSE(store_.Find("Setup", "Left").has_value());
  EXPECT_EQ(store_.Find("FFT", "AVG"), "0");  // the rest is still saved
}

}  // namespace
}  // namespace quarvelo::app
