// How numbers are written to and read from the settings store, where every value is text.
#ifndef QUARVELO_PLATFORM_SETTINGS_SETTINGS_TEXT_H_
#define QUARVELO_PLATFORM_SETTINGS_SETTINGS_TEXT_H_

#include <string>
#include <string_view>

#include "platform/settings/settings_store.h"

namespace quarvelo::settings {

// The same text as numbers in instrument commands (text::NumberText): shortest, "." as the
// decimal point whatever the locale, no leading blank (3 -> "3", 200 -> "200", 0.5 -> ".5").
std::string NumberText(double value);
std::string NumberText(int value);
// "1" or "0".
std::string FlagText(bool value);

// Lenient reads: the leading number of the stored text, 0 for text that is not a number; a
// missing key reads as `default_value`'s text.
double ReadNumber(const SettingsStore& store, std::string_view section, std::string_view key,
                  std::string_view default_value);
int ReadInteger(const SettingsStore& store, std::string_view section, std::string_view key,
                std::string_view default_value);
// True when the stored value reads as the number 1.
bool ReadFlag(const SettingsStore& store, std::string_view section, std::string_view key,
              std::string_view default_value);

}  // namespace quarvelo::settings

#endif  // QUARVELO_PLATFORM_SETTINGS_SETTINGS_TEXT_H_
