#include "sim/model/setting_store.h"

#include <algorithm>
#include <cctype>
#include <cmath>

#include "sim/scpi/number_text.h"

namespace quarvelo::sim {
namespace {

bool Available(const SettingRow& row, const InstrumentConfig& config) {
  switch (row.availability) {
    case Availability::kAll:
      return true;
    case Availability::k2000XOnly:
      return !config.is_3000x;
    case Availability::k3000XOnly:
      return config.is_3000x;
  }
  return false;
}

bool OptionPresent(const SettingRow& row, const InstrumentConfig& config) {
  switch (row.option) {
    case Option::kNone:
      return true;
    case Option::kWgen:
      return config.has_wgen;
    case Option::kDvm:
      return config.has_dvm;
  }
  return false;
}

std::vector<std::string_view> Split(std::string_view text, char separator) {
  std::vector<std::string_view> parts;
  while (true) {
    size_t at = text.find(separator);
    parts.push_back(text.substr(0, at));
    if (at == std::string_view::npos) break;
    text.remove_prefix(at + 1);
  }
  return parts;
}

// One form of a choice, "CHANnel#C": its mnemonic and its suffix kind (0 when none).
std::pair<std::string_view, char> SplitChoiceForm(std::string_view form) {
  size_t hash = form.find('#');
  if (hash == std::string_view::npos) return {form, 0};
  return {form.substr(0, hash), hash + 1 < form.size() ? form[hash + 1] : 'C'};
}

std::string DefaultText(const SettingRow& row, int instance) {
  std::string text = row.default_text;
  size_t hash = text.find('#');
  if (hash != std::string::npos) text.replace(hash, 1, std::to_string(instance));
  if (row.type == SettingType::kChoice) {
    // The default is written as a choice's long form with its suffix ("CHANnel1").
    size_t digits = text.find_first_of("0123456789");
    std::string name = text.substr(0, digits);
    std::string suffix = digits == std::string::npos ? "" : text.substr(digits);
    for (std::string_view choice : Split(row.choices, '|')) {
      std::string_view primary = Split(choice, '/').front();
      auto [mnemonic, kind] = SplitChoiceForm(primary);
      if (MnemonicMatches(mnemonic, name)) return ShortForm(mnemonic) + suffix;
    }
  }
  return text;
}

}  // namespace

SettingStore::SettingStore(const InstrumentConfig& config) : config_(config) {
  for (const SettingRow& row : SettingTable()) {
    if (!Available(row, config)) continue;
    by_pattern_.emplace(row.pattern, static_cast<int>(rows_.size()));
    rows_.push_back(&row);
    patterns_.emplace_back(row.pattern);
  }
  values_.resize(rows_.size());
  Reset();
}

void SettingStore::Reset() {
  for (size_t i = 0; i < rows_.size(); ++i) {
    for (int instance = 1; instance <= kMaxInstances; ++instance) {
      Value& value = values_[i][instance - 1];
      value.number = rows_[i]->default_number;
      value.text = DefaultText(*rows_[i], instance);
    }
  }
}

void SettingStore::ResetRows(std::string_view prefix, int instance) {
  if (instance < 1 || instance > kMaxInstances) return;
  for (size_t i = 0; i < rows_.size(); ++i) {
    if (std::string_view(rows_[i]->pattern).substr(0, prefix.size()) != prefix) continue;
    Value& value = values_[i][instance - 1];
    value.number = rows_[i]->default_number;
    value.text = DefaultText(*rows_[i], instance);
  }
}

SettingRef SettingStore::Find(const std::vector<HeaderNode>& nodes) const {
  SettingRef ref;
  ref.error = -113;
  SuffixLimits limits = config_.suffix_limits();
  std::vector<int> instances;
  for (size_t i = 0; i < rows_.size(); ++i) {
    MatchResult result = patterns_[i].Match(nodes, limits, &instances);
    if (result == MatchResult::kNoMatch) continue;
    if (result == MatchResult::kSuffixOutOfRange) {
      ref.error = -114;
      continue;
    }
    ref.row = static_cast<int>(i);
    ref.instance = instances.empty() ? 1 : instances.front();
    ref.error = OptionPresent(*rows_[i], config_) ? 0 : -241;
    return ref;
  }
  return ref;
}

std::pair<double, double> SettingStore::LimitsOf(const SettingRow& row, int instance,
                                                 const LimitFunction& limits) const {
  if (row.limit_rule == LimitRule::kFixed || !limits) return {row.min, row.max};
  return limits(row.limit_rule, instance);
}

int SettingStore::ParseEnum(const SettingRow& row, const ScpiParameter& parameter,
                            std::string* text) const {
  if (parameter.kind != ScpiParameter::Kind::kText) return -104;
  std::string_view word = parameter.text;
  size_t digits = 0;
  while (digits < word.size() && std::isalpha(static_cast<unsigned char>(word[digits]))) ++digits;
  if (digits == 0) return -224;
  std::string_view name = word.substr(0, digits);
  std::string_view suffix_text = word.substr(digits);
  for (char c : suffix_text) {
    if (!std::isdigit(static_cast<unsigned char>(c))) return -224;
  }
  int suffix = suffix_text.empty() ? -1 : std::atoi(std::string(suffix_text).c_str());
  SuffixLimits limits = config_.suffix_limits();
  for (std::string_view choice : Split(row.choices, '|')) {
    std::vector<std::string_view> forms = Split(choice, '/');
    auto [primary, primary_kind] = SplitChoiceForm(forms.front());
    for (std::string_view form : forms) {
      auto [mnemonic, kind] = SplitChoiceForm(form);
      if (kind == 0) {
        // A choice without a suffix may still end in digits ("CH1").
        if (!MnemonicMatches(mnemonic, word)) continue;
        *text = ShortForm(primary);
        return 0;
      }
      if (!MnemonicMatches(mnemonic, name)) continue;
      int value = suffix < 0 ? 1 : suffix;
      int maximum = kind == 'C'   ? limits.channels
                    : kind == 'F' ? limits.functions
                    : kind == 'W' ? limits.generators
                                  : 2;
      if (value < 1 || value > maximum) return -224;
      *text = ShortForm(primary) + std::to_string(value);
      return 0;
    }
  }
  return -224;
}

int SettingStore::Set(const SettingRef& ref, const std::vector<ScpiParameter>& parameters,
                      const LimitFunction& limits) {
  const SettingRow& row = *rows_[ref.row];
  if (parameters.empty()) return -109;
  if (parameters.size() > 1) return -108;
  const ScpiParameter& parameter = parameters.front();
  Value& value = values_[ref.row][ref.instance - 1];
  switch (row.type) {
    case SettingType::kString: {
      if (parameter.kind != ScpiParameter::Kind::kString) return -104;
      value.text = parameter.text;
      if (row.max_length > 0 && value.text.size() > static_cast<size_t>(row.max_length)) {
        value.text.resize(row.max_length);
      }
      return 0;
    }
    case SettingType::kChoice: {
      std::string text;
      int error = ParseEnum(row, parameter, &text);
      if (error == 0) value.text = text;
      return error;
    }
    case SettingType::kBoolean: {
      if (parameter.kind != ScpiParameter::Kind::kText) return -104;
      std::string upper = parameter.text;
      for (char& c : upper) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
      if (upper == "ON") {
        value.number = 1;
        return 0;
      }
      if (upper == "OFF") {
        value.number = 0;
        return 0;
      }
      NumberParse number = ParseNumber(parameter.text);
      if (number.error != 0) return number.error == -104 ? -224 : number.error;
      if (number.kind != NumberParse::Kind::kValue) return -224;
      value.number = std::nearbyint(number.value) != 0 ? 1 : 0;
      return 0;
    }
    case SettingType::kNumber:
    case SettingType::kInteger: {
      if (parameter.kind != ScpiParameter::Kind::kText) return -104;
      NumberParse number = ParseNumber(parameter.text);
      if (number.error != 0) return number.error;
      auto [minimum, maximum] = LimitsOf(row, ref.instance, limits);
      double result = number.kind == NumberParse::Kind::kMaximum   ? maximum
                      : number.kind == NumberParse::Kind::kMinimum ? minimum
                                                                   : number.value;
      if (row.type == SettingType::kInteger) result = std::nearbyint(result);
      // The instrument takes out-of-range values as the nearest one it can set.
      value.number = std::clamp(result, minimum, maximum);
      return 0;
    }
  }
  return -200;
}

std::string SettingStore::Reply(const SettingRef& ref) const {
  const SettingRow& row = *rows_[ref.row];
  const Value& value = values_[ref.row][ref.instance - 1];
  switch (row.reply) {
    case ReplyStyle::kShort:
      return FormatNr3Short(value.number);
    case ReplyStyle::kFixed5:
      return FormatNr3(value.number, 5);
    case ReplyStyle::kFixed8:
      return FormatNr3(value.number, 8);
    case ReplyStyle::kNr1:
      return FormatNr1(std::llround(value.number));
    case ReplyStyle::kBool:
      return value.number != 0 ? "1" : "0";
    case ReplyStyle::kEnum:
      return value.text;
    case ReplyStyle::kQuoted:
      return "\"" + value.text + "\"";
  }
  return "";
}

int SettingStore::RowIndex(std::string_view pattern) const {
  auto found = by_pattern_.find(pattern);
  return found == by_pattern_.end() ? -1 : found->second;
}

double SettingStore::Number(std::string_view pattern, int instance) const {
  int index = RowIndex(pattern);
  if (index < 0 || instance < 1 || instance > kMaxInstances) return 0;
  return values_[index][instance - 1].number;
}

const std::string& SettingStore::Text(std::string_view pattern, int instance) const {
  static const std::string kEmpty;
  int index = RowIndex(pattern);
  if (index < 0 || instance < 1 || instance > kMaxInstances) return kEmpty;
  return values_[index][instance - 1].text;
}

void SettingStore::SetNumber(std::string_view pattern, double value, int instance) {
  int index = RowIndex(pattern);
  if (index < 0 || instance < 1 || instance > kMaxInstances) return;
  values_[index][instance - 1].number = value;
}

void SettingStore::SetText(std::string_view pattern, const std::string& text, int instance) {
  int index = RowIndex(pattern);
  if (index < 0 || instance < 1 || instance > kMaxInstances) return;
  values_[index][instance - 1].text = text;
}

void SettingStore::Clamp(std::string_view pattern, int instance, const LimitFunction& limits) {
  int index = RowIndex(pattern);
  if (index < 0 || instance < 1 || instance > kMaxInstances) return;
  auto [minimum, maximum] = LimitsOf(*rows_[index], instance, limits);
  double& number = values_[index][instance - 1].number;
  number = std::clamp(number, minimum, maximum);
}

}  // namespace quarvelo::sim
