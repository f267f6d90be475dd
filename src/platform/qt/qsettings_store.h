// The per-user settings store over QSettings: application and organisation "QUARVELO",
// sections as groups. On Linux the native format is an INI file under $XDG_CONFIG_HOME
// (~/.config/QUARVELO/QUARVELO.conf).
#ifndef QUARVELO_PLATFORM_QT_QSETTINGS_STORE_H_
#define QUARVELO_PLATFORM_QT_QSETTINGS_STORE_H_

#include <QSettings>
#include <QString>
#include <memory>
#include <string>
#include <string_view>

#include "platform/settings/settings_store.h"

namespace quarvelo::qt {

class QSettingsStore : public settings::SettingsStore {
 public:
  // The user's own store.
  QSettingsStore();
  // An INI file at `path`, for tests and tools that must not touch the user's store.
  explicit QSettingsStore(const QString& path);

  std::string Get(std::string_view section, std::string_view key,
                  std::string_view default_value) const override;
  // Written through at once, so that nothing is lost if the program ends abruptly.
  void Set(std::string_view section, std::string_view key, std::string_view value) override;

  QString FileName() const;

 private:
  std::unique_ptr<QSettings> settings_;
};

}  // namespace quarvelo::qt

#endif  // QUARVELO_PLATFORM_QT_QSETTINGS_STORE_H_
