// The values of every setting row for one instrument configuration: finding the row a header
// names, parsing and clamping parameters by the row's type and limits, formatting replies.
#ifndef QUARVELO_SIM_MODEL_SETTING_STORE_H_
#define QUARVELO_SIM_MODEL_SETTING_STORE_H_

#include <array>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "sim/model/instrument_config.h"
#include "sim/model/setting_table.h"
#include "sim/scpi/program_message.h"

namespace quarvelo::sim {

struct SettingRef {
  int row = -1;
  int instance = 1;
  int error = 0;  // -113 undefined, -114 suffix out of range, -241 option missing
};

// Computes the limits of a setting whose range depends on other settings.
using LimitFunction = std::function<std::pair<double, double>(LimitRule rule, int instance)>;

class SettingStore {
 public:
  explicit SettingStore(const InstrumentConfig& config);

  void Reset();
  // Back to the defaults for the rows whose pattern begins with `prefix` (":WGEN#W").
  void ResetRows(std::string_view prefix, int instance);

  SettingRef Find(const std::vector<HeaderNode>& nodes) const;
  const SettingRow& row(int index) const { return *rows_[index]; }

  // Sets from program data; returns 0 or the SCPI error number.
  int Set(const SettingRef& ref, const std::vector<ScpiParameter>& parameters,
          const LimitFunction& limits);
  std::string Reply(const SettingRef& ref) const;

  // Access by the row's pattern text (":CHANnel#C:SCALe"), for the behaviour code.
  double Number(std::string_view pattern, int instance = 1) const;
  // Enumerations in their reply form ("CHAN1", "SIN"); strings as stored.
  const std::string& Text(std::string_view pattern, int instance = 1) const;
  bool Flag(std::string_view pattern, int instance = 1) const {
    return Number(pattern, instance) != 0;
  }
  void SetNumber(std::string_view pattern, double value, int instance = 1);
  void SetText(std::string_view pattern, const std::string& text, int instance = 1);
  // Re-applies a row's limits to its current value (after a setting it depends on changed).
  void Clamp(std::string_view pattern, int instance, const LimitFunction& limits);

 private:
  struct Value {
    double number = 0;
    std::string text;
  };
  static constexpr int kMaxInstances = 4;

  int RowIndex(std::string_view pattern) const;
  std::pair<double, double> LimitsOf(const SettingRow& row, int instance,
                                     const LimitFunction& limits) const;
  int ParseEnum(const SettingRow& row, const ScpiParameter& parameter, std::string* text) const;

  InstrumentConfig config_;
  std::vector<const SettingRow*> rows_;
  std::vector<HeaderPattern> patterns_;
  std::map<std::string, int, std::less<>> by_pattern_;
  std::vector<std::array<Value, kMaxInstances>> values_;
};

}  // namespace quarvelo::sim

#endif  // QUARVELO_SIM_MODEL_SETTING_STORE_H_
