#include "sim/scpi/number_text.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace quarvelo::sim {
namespace {

std::string Upper(std::string_view text) {
  std::string out(text);
  for (char& c : out) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  return out;
}

bool IsUnit(std::string_view unit) {
  static constexpr std::array<std::string_view, 14> kUnits = {
      "V", "S", "HZ", "OHM", "PCT", "DIV", "A", "W", "DEG", "DB", "DBM", "PTS", "SA/S", "VPP"};
  for (std::string_view known : kUnits) {
    if (unit == known) return true;
  }
  return false;
}

// The factor a suffix stands for, or NaN when it is not a suffix the instrument knows.
double SuffixFactor(const std::string& suffix) {
  if (suffix.empty() || IsUnit(suffix)) return 1.0;
  // SCPI reads "M" as milli except in the two units where mega is the only sensible reading.
  if (suffix == "MHZ" || suffix == "MOHM") return 1e6;
  struct Prefix {
    std::string_view text;
    double factor;
  };
  static constexpr std::array<Prefix, 11> kPrefixes = {{{"EX", 1e18},
                                                        {"PE", 1e15},
                                                        {"MA", 1e6},
                                                        {"T", 1e12},
                                                        {"G", 1e9},
                                                        {"K", 1e3},
                                                        {"M", 1e-3},
                                                        {"U", 1e-6},
                                                        {"N", 1e-9},
                                                        {"P", 1e-12},
                                                        {"F", 1e-15}}};
  for (const Prefix& prefix : kPrefixes) {
    if (suffix.compare(0, prefix.text.size(), prefix.text) != 0) continue;
    std::string rest = suffix.substr(prefix.text.size());
    if (rest.empty() || IsUnit(rest)) return prefix.factor;
  }
  return std::nan("");
}

}  // namespace

NumberParse ParseNumber(std::string_view text) {
  NumberParse result;
  size_t begin = 0;
  size_t end = text.size();
  while (begin < end && std::isspace(static_cast<unsigned char>(text[begin]))) ++begin;
  while (end > begin && std::isspace(static_cast<unsigned char>(text[end - 1]))) --end;
  std::string_view body = text.substr(begin, end - begin);
  if (body.empty()) {
    result.error = -109;
    return result;
  }
  if (std::isalpha(static_cast<unsigned char>(body[0]))) {
    std::string word = Upper(body);
    if (word == "MAX" || word == "MAXIMUM") {
      result.kind = NumberParse::Kind::kMaximum;
    } else if (word == "MIN" || word == "MINIMUM") {
      result.kind = NumberParse::Kind::kMinimum;
    } else {
      result.error = -104;
    }
    return result;
  }
  if (body[0] == '#' && body.size() > 2) {
    int base = 0;
    switch (std::toupper(static_cast<unsigned char>(body[1]))) {
      case 'H':
        base = 16;
        break;
      case 'Q':
        base = 8;
        break;
      case 'B':
        base = 2;
        break;
      default:
        break;
    }
    std::string digits(body.substr(2));
    char* stop = nullptr;
    long long value = base == 0 ? 0 : std::strtoll(digits.c_str(), &stop, base);
    if (base == 0 || stop == nullptr || *stop != '\0') {
      result.error = -121;
      return result;
    }
    result.value = static_cast<double>(value);
    return result;
  }
  size_t i = 0;
  if (body[i] == '+' || body[i] == '-') ++i;
  size_t digits = 0;
  while (i < body.size() && std::isdigit(static_cast<unsigned char>(body[i]))) ++i, ++digits;
  if (i < body.size() && body[i] == '.') {
    ++i;
    while (i < body.size() && std::isdigit(static_cast<unsigned char>(body[i]))) ++i, ++digits;
  }
  if (digits == 0) {
    result.error = -121;
    return result;
  }
  size_t mantissa_end = i;
  // An exponent needs digits; otherwise the letter belongs to the suffix ("5E" is not valid,
  // but "5 EX" would be: no unit starts with a lone E, so a bare E is an invalid number).
  if (i < body.size() && (body[i] == 'E' || body[i] == 'e')) {
    size_t j = i + 1;
    while (j < body.size() && body[j] == ' ') ++j;
    if (j < body.size() && (body[j] == '+' || body[j] == '-')) ++j;
    size_t exponent_digits = 0;
    while (j < body.size() && std::isdigit(static_cast<unsigned char>(body[j]))) {
      ++j;
      ++exponent_digits;
    }
    if (exponent_digits > 0) {
      mantissa_end = j;
    } else if (!(i + 1 < body.size() &&
                 std::toupper(static_cast<unsigned char>(body[i + 1])) == 'X')) {
      result.error = -121;
      return result;
    }
  }
  std::string number(body.substr(0, mantissa_end));
  number.erase(std::remove(number.begin(), number.end(), ' '), number.end());
  double value = std::strtod(number.c_str(), nullptr);
  size_t suffix_begin = mantissa_end;
  while (suffix_begin < body.size() && body[suffix_begin] == ' ') ++suffix_begin;
  std::string suffix = Upper(body.substr(suffix_begin));
  for (char c : suffix) {
    if (!std::isalpha(static_cast<unsigned char>(c)) && c != '/') {
      result.error = suffix_begin == mantissa_end ? -121 : -131;
      return result;
    }
  }
  double factor = SuffixFactor(suffix);
  if (std::isnan(factor)) {
    result.error = -131;
    return result;
  }
  if (!std::isfinite(value)) {
    result.error = -222;
    return result;
  }
  result.value = value * factor;
  return result;
}

std::string FormatNr1(long long value) {
  char buffer[32];
  std::snprintf(buffer, sizeof buffer, "%+lld", value);
  return buffer;
}

std::string FormatNr3(double value, int decimals) {
  char buffer[64];
  std::snprintf(buffer, sizeof buffer, "%+.*E", decimals, value);
  return buffer;
}

std::string FormatNr3Short(double value) {
  for (int decimals = 1; decimals < 12; ++decimals) {
    std::string text = FormatNr3(value, decimals);
    if (std::strtod(text.c_str(), nullptr) == value) return text;
  }
  return FormatNr3(value, 12);
}

}  // namespace quarvelo::sim
