// The main window's start-up and shutdown sequences.
#ifndef QUARVELO_APP_STARTUP_H_
#define QUARVELO_APP_STARTUP_H_

#include <string>

#include "acquisition/scope_state.h"
#include "app/app_settings.h"
#include "app/main_window_view.h"
#include "platform/settings/settings_store.h"
#include "platform/ui/tool_host.h"

namespace quarvelo::app {

// The records start-up fills. The window owns them.
struct StartupRecords {
  AppSettings& settings;
  acquisition::ScopeState& scope;
  std::string& address;  // the instrument session's VISA resource string
  std::string& data_folder;
};

struct StartupServices {
  settings::SettingsStore& store;
  ui::ToolHost& tools;
  MainWindowView& window;
  StartupPlatform& platform;
};

enum class StartupResult { kRunning, kOtherInstanceRunning };

// "QUARVELO 0.1.0".
std::string WindowCaption(int major, int minor, int revision);

// Form_Load. Every step runs even when an earlier one failed; only a second instance ends the
// sequence early (the caller then ends the program without showing anything).
StartupResult RunStartup(const StartupServices& services, const StartupRecords& records,
                         const std::string& caption);

// Form_Unload: saves the FFT, option and (unless minimised) geometry settings, then closes the
// instrument link.
void RunShutdown(const StartupServices& services, const StartupRecords& records);

}  // namespace quarvelo::app

#endif  // QUARVELO_APP_STARTUP_H_
