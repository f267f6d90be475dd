#include "app/startup.h"

#include "platform/settings/settings_text.h"

namespace quarvelo::app {
namespace {

using settings::FlagText;
using settings::NumberText;

// The data folder: the per-user folder + "/QUARVELO", or the program's folder when the
// per-user one cannot be determined. Created if missing; a failure is ignored here (the lock
// and the screen image then fail on their own, quietly).
std::string PrepareDataFolder(StartupPlatform& platform) {
  const std::optional<std::string> user = platform.UserDataFolder();
  std::string folder =
      (user.has_value() && !user->empty()) ? *user + "/QUARVELO" : platform.ProgramFolder();
  platform.CreateFolder(folder);
  return folder;
}

}  // namespace

std::string WindowCaption(int major, int minor, int revision) {
  return "QUARVELO " + std::to_string(major) + "." + std::to_string(minor) + "." +
         std::to_string(revision);
}

StartupResult RunStartup(const StartupServices& services, const StartupRecords& records,
                         const std::string& caption) {
  MainWindowView& window = services.window;
  window.SetLoading(true);

  // The lock lives in the data folder (so that a program run with its own settings location
  // is its own instance); the folder is therefore found and created before the check.
  records.data_folder = PrepareDataFolder(services.platform);
  if (!services.platform.AcquireInstanceLock(records.data_folder)) {
    return StartupResult::kOtherInstanceRunning;
  }

  window.SetCaption(caption);

  AppSettings& s = records.settings;
  s = LoadAppSettings(services.store);
  records.address = s.Address;
  window.Move(s.Top, s.Left);
  window.Resize(s.Height != 0 ? std::optional<int>(s.Height) : std::nullopt,
                s.Width != 0 ? std::optional<int>(s.Width) : std::nullopt);

  window.SetBandwidthLimit(s.BandwidthLimitOn, UpperLimitText(s.UpperLimitMhz));

  records.scope.HasDvm = s.HasDvm;
  records.scope.HasWgen = s.HasWgen;

  services.tools.SetComboIndex("ID_AVG", control::AverageExponent(s));

  // Files of any channel can be opened until the toolbar rebuild loads the real count.
  records.scope.ChannelCount = acquisition::kMaxChannels;

  for (int n = 1; n <= kMacroCount; ++n) {
    window.SetMacroCaption(n, s.Macros[static_cast<std::size_t>(n)].Caption);
  }

  window.StartDisplay();
  window.RebuildToolbar();
  window.SetLoading(false);
  return StartupResult::kRunning;
}

void RunShutdown(const StartupServices& services, const StartupRecords& records) {
  settings::SettingsStore& store = services.store;
  // The user's spectrum choices as the toolbar, the entry box and the ribbon button left them.
  const AppSettings& s = records.settings;
  store.Set(keys::kFft, keys::kWindow, NumberText(s.WindowIndex));
  store.Set(keys::kFft, keys::kAvg, NumberText(control::AverageExponent(s)));
  store.Set(keys::kFft, keys::kScale, NumberText(s.SpectrumUnit));
  store.Set(keys::kFft, keys::kBwl, NumberText(s.UpperLimitMhz));
  store.Set(keys::kFft, keys::kBw, FlagText(s.BandwidthLimitOn));
  store.Set(keys::kSetup, keys::kDvm, FlagText(records.scope.HasDvm));
  store.Set(keys::kSetup, keys::kWgen, FlagText(records.scope.HasWgen));

  if (!services.window.IsMinimised()) {
    const TwipsGeometry g = services.window.Geometry();
    store.Set(keys::kSetup, keys::kTop, NumberText(g.Top));
    store.Set(keys::kSetup, keys::kLeft, NumberText(g.Left));
    store.Set(keys::kSetup, keys::kHeight, NumberText(g.Height));
    store.Set(keys::kSetup, keys::kWidth, NumberText(g.Width));
  }

  services.window.CloseInstrument();
}

}  // namespace quarvelo::app
