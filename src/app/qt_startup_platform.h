// The data folder and the single-instance lock on the desktop: $XDG_DATA_HOME/QUARVELO
// (~/.local/share/QUARVELO) and a lock file in it, held for the life of this object.
#ifndef QUARVELO_APP_QT_STARTUP_PLATFORM_H_
#define QUARVELO_APP_QT_STARTUP_PLATFORM_H_

#include <QLockFile>
#include <memory>

#include "app/main_window_view.h"

namespace quarvelo::app {

inline constexpr char kInstanceLockName[] = "quarvelo.lock";

class QtStartupPlatform : public StartupPlatform {
 public:
  std::optional<std::string> UserDataFolder() override;
  std::string ProgramFolder() override;
  bool CreateFolder(const std::string& path) override;
  bool AcquireInstanceLock(const std::string& data_folder) override;

 private:
  std::unique_ptr<QLockFile> lock_;
};

}  // namespace quarvelo::app

#endif  // QUARVELO_APP_QT_STARTUP_PLATFORM_H_
