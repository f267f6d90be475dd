// The instrument's settings as data: one row per setting with its header, type, preset
// default, limits, choices and reply format. The generic set/query code and the limits in
// code (those that depend on other settings) are driven by these rows.
#ifndef QUARVELO_SIM_MODEL_SETTING_TABLE_H_
#define QUARVELO_SIM_MODEL_SETTING_TABLE_H_

#include <span>

namespace quarvelo::sim {

enum class SettingType { kNumber, kInteger, kBoolean, kChoice, kString };

enum class ReplyStyle {
  kShort,   // +4.0E-08
  kFixed5,  // +4.00000E-02
  kFixed8,  // +1.00000000E-03
  kNr1,     // +50
  kBool,    // 0 / 1
  kEnum,    // the choice's short form
  kQuoted,  // "text"
};

// Limits that depend on other settings, computed by the instrument model.
enum class LimitRule {
  kFixed,
  kChannelScale,
  kChannelOffset,
  kTimebaseScale,
  kTriggerLevel,
  kWgenFrequency,
  kWgenAmplitude,
  kWgenOffset,
  kWgenPulseWidth,
};

enum class Availability { kAll, k2000XOnly, k3000XOnly };
enum class Option { kNone, kWgen, kDvm };

struct SettingRow {
  const char* pattern;  // ":CHANnel#C:SCALe"; see HeaderPattern
  SettingType type;
  ReplyStyle reply;
  double default_number;
  // Enumerations: the default choice; strings: the default text ("CH#" takes the instance).
  const char* default_text;
  double min;
  double max;
  // Enumerations: "CHANnel#C|EXTernal|LINE"; a choice "LF/LFReject" replies "LF" and also
  // accepts the forms after the slash.
  const char* choices;
  LimitRule limit_rule = LimitRule::kFixed;
  Availability availability = Availability::kAll;
  Option option = Option::kNone;
  int max_length = 0;  // strings: longer texts are cut (0: no limit)
};

std::span<const SettingRow> SettingTable();

}  // namespace quarvelo::sim

#endif  // QUARVELO_SIM_MODEL_SETTING_TABLE_H_
