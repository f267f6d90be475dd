// The per-user settings store: (application, section, key) -> text. Every value is text;
// a missing key reads as the caller's default.
#ifndef QUARVELO_PLATFORM_SETTINGS_SETTINGS_STORE_H_
#define QUARVELO_PLATFORM_SETTINGS_SETTINGS_STORE_H_

#include <string>
#include <string_view>

namespace quarvelo::settings {

class SettingsStore {
 public:
  virtual ~SettingsStore() = default;
  virtual std::string Get(std::string_view section, std::string_view key,
                          std::string_view default_value) const = 0;
  virtual void Set(std::string_view section, std::string_view key, std::string_view value) = 0;
};

}  // namespace quarvelo::settings

#endif  // QUARVELO_PLATFORM_SETTINGS_SETTINGS_STORE_H_
