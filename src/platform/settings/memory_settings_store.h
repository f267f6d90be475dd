// A settings store in memory, for tests and for code that must not touch the user's settings.
#ifndef QUARVELO_PLATFORM_SETTINGS_MEMORY_SETTINGS_STORE_H_
#define QUARVELO_PLATFORM_SETTINGS_MEMORY_SETTINGS_STORE_H_

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "platform/settings/settings_store.h"

namespace quarvelo::settings {

class MemorySettingsStore : public SettingsStore {
 public:
  std::string Get(std::string_view section, std::string_view key,
                  std::string_view default_value) const override {
    auto it = values_.find(Key(section, key));
    return it == values_.end() ? std::string(default_value) : it->second;
  }
  void Set(std::string_view section, std::string_view key, std::string_view value) override {
    values_[Key(section, key)] = std::string(value);
    ++writes_;
  }

  // The stored text, or nothing when the key was never written: tells "stored as the
  // default" apart from "not stored".
  std::optional<std::string> Find(std::string_view section, std::string_view key) const {
    auto it = values_.find(Key(section, key));
    if (it == values_.end()) return std::nullopt;
    return it->second;
  }
  void Remove(std::string_view section, std::string_view key) { values_.erase(Key(section, key)); }
  std::size_t size() const { return values_.size(); }
  // Number of Set calls so far.
  int writes() const { return writes_; }

 private:
  using SectionKey = std::pair<std::string, std::string>;
  static SectionKey Key(std::string_view section, std::string_view key) {
    return {std::string(section), std::string(key)};
  }

  std::map<SectionKey, std::string> values_;
  int writes_ = 0;
};

}  // namespace quarvelo::settings

#endif  // QUARVELO_PLATFORM_SETTINGS_MEMORY_SETTINGS_STORE_H_
