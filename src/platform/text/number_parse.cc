#include "platform/text/number_parse.h"

#include <charconv>
#include <cmath>
#include <limits>

namespace quarvelo::text {
namespace {

bool IsDigit(char c) { return c >= '0' && c <= '9'; }
bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

}  // namespace

double LeadingNumber(std::string_view text) {
  std::size_t i = 0;
  while (i < text.size() && IsBlank(text[i])) ++i;
  const std::size_t start = i;
  if (i < text.size() && (text[i] == '+' || text[i] == '-')) ++i;
  const std::size_t mantissa_start = i;
  while (i < text.size() && IsDigit(text[i])) ++i;
  if (i < text.size() && text[i] == '.') {
    ++i;
    while (i < text.size() && IsDigit(text[i])) ++i;
  }
  const std::size_t mantissa_length = i - mantissa_start;
  if (mantissa_length == 0 || (mantissa_length == 1 && text[mantissa_start] == '.')) return 0.0;
  // An exponent counts only when digits follow it: "5E" is 5, "5E-3" is 0.005.
  if (i < text.size() && (text[i] == 'E' || text[i] == 'e')) {
    std::size_t j = i + 1;
    if (j < text.size() && (text[j] == '+' || text[j] == '-')) ++j;
    if (j < text.size() && IsDigit(text[j])) {
      while (j < text.size() && IsDigit(text[j])) ++j;
      i = j;
    }
  }
  // from_chars rejects a leading '+'.
  std::size_t parse_start = start;
  if (text[parse_start] == '+') ++parse_start;
  double value = 0.0;
  const char* first = text.data() + parse_start;
  const char* last = text.data() + i;
  const auto [ptr, error] = std::from_chars(first, last, value);
  if (error == std::errc::result_out_of_range) {
    return (text[start] == '-') ? -std::numeric_limits<double>::infinity()
                                : std::numeric_limits<double>::infinity();
  }
  if (error != std::errc() || ptr == first) return 0.0;
  return value;
}

int LeadingInteger(std::string_view text) {
  const double value = std::nearbyint(LeadingNumber(text));  // default rounding: halves to even
  if (!(value > std::numeric_limits<int>::min())) return std::numeric_limits<int>::min();
  if (!(value < std::numeric_limits<int>::max())) return std::numeric_limits<int>::max();
  return static_cast<int>(value);
}

}  // namespace quarvelo::text
