#include "platform/text/number_text.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string_view>

namespace quarvelo::text {
namespace {

constexpr int kMaxSignificantDigits = 15;

// Digits and decimal exponent of |value| in the shortest form (at most 15 digits) that
// reads back as value: value = 0.d1d2d3... * 10^(exponent + 1), digits without trailing 0s.
struct Decimal {
  std::string digits;
  int exponent = 0;
};

Decimal ShortestDecimal(double magnitude) {
  char buffer[64];
  int precision = 1;
  for (; precision < kMaxSignificantDigits; ++precision) {
    std::snprintf(buffer, sizeof buffer, "%.*e", precision - 1, magnitude);
    if (std::strtod(buffer, nullptr) == magnitude) break;
  }
  std::snprintf(buffer, sizeof buffer, "%.*e", precision - 1, magnitude);
  // buffer is "d.ddddde[+-]xx" (or "de[+-]xx" for one digit).
  const std::string_view text(buffer);
  const std::size_t e = text.find('e');
  Decimal decimal;
  for (char c : text.substr(0, e)) {
    if (c != '.') decimal.digits.push_back(c);
  }
  while (decimal.digits.size() > 1 && decimal.digits.back() == '0') decimal.digits.pop_back();
  decimal.exponent = std::atoi(buffer + e + 1);
  return decimal;
}

}  // namespace

std::string NumberText(double value) {
  if (!std::isfinite(value) || value == 0.0) return "0";
  const Decimal decimal = ShortestDecimal(std::fabs(value));
  const int digit_count = static_cast<int>(decimal.digits.size());
  std::string text = value < 0 ? "-" : "";
  const double magnitude = std::fabs(value);
  if (magnitude < 1e-4 || magnitude >= 1e15) {
    text += decimal.digits[0];
    if (digit_count > 1) {
      text += '.';
      text.append(decimal.digits, 1);
    }
    char exponent[16];
    std::snprintf(exponent, sizeof exponent, "E%c%02d", decimal.exponent < 0 ? '-' : '+',
                  std::abs(decimal.exponent));
    return text + exponent;
  }
  if (decimal.exponent < 0) {
    // .000ddd
    text += '.';
    text.append(static_cast<std::size_t>(-decimal.exponent - 1), '0');
    return text + decimal.digits;
  }
  const int integer_digits = decimal.exponent + 1;
  if (digit_count <= integer_digits) {
    text += decimal.digits;
    return text.append(static_cast<std::size_t>(integer_digits - digit_count), '0');
  }
  text.append(decimal.digits, 0, static_cast<std::size_t>(integer_digits));
  text += '.';
  return text.append(decimal.digits, static_cast<std::size_t>(integer_digits));
}

std::string WholeNumberText(double value) {
  if (!std::isfinite(value)) return "0";
  const double whole = std::nearbyint(value);  // default rounding: halves to even
  char buffer[400];
  std::snprintf(buffer, sizeof buffer, "%.0f", whole == 0.0 ? 0.0 : whole);
  return buffer;
}

}  // namespace quarvelo::text
