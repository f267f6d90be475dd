#include "platform/settings/settings_text.h"

#include "platform/text/number_parse.h"
#include "platform/text/number_text.h"

namespace quarvelo::settings {

std::string NumberText(double value) { return text::NumberText(value); }

std::string NumberText(int value) { return std::to_string(value); }

std::string FlagText(bool value) { return value ? "1" : "0"; }

double ReadNumber(const SettingsStore& store, std::string_view section, std::string_view key,
                  std::string_view default_value) {
  return text::LeadingNumber(store.Get(section, key, default_value));
}

int ReadInteger(const SettingsStore& store, std::string_view section, std::string_view key,
                std::string_view default_value) {
  return text::LeadingInteger(store.Get(section, key, default_value));
}

bool ReadFlag(const SettingsStore& store, std::string_view section, std::string_view key,
              std::string_view default_value) {
  return ReadInteger(store, section, key, default_value) == 1;
}

}  // namespace quarvelo::settings
