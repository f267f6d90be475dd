#include "platform/visa/format_spec.h"

namespace quarvelo::visa {

std::optional<FormatSpec> ParseFormatSpec(std::string_view format, std::size_t* position,
                                          bool read_side) {
  FormatSpec spec;
  std::size_t i = *position;
  const auto at = [&](std::size_t k) { return k < format.size() ? format[k] : '\0'; };
  for (;; ++i) {
    const char c = at(i);
    if (c == ',') {
      spec.array = true;
    } else if (c == '#') {
      spec.hash = true;
    } else if (c == '*' && read_side) {
      spec.suppress = true;
    } else if (!read_side && (c == '-' || c == '+' || c == ' ' || c == '0')) {
      spec.flags += c;
    } else {
      break;
    }
  }
  if (at(i) == '*' && !read_side) {
    spec.width_argument = true;
    ++i;
  } else if (at(i) >= '0' && at(i) <= '9') {
    spec.width = 0;
    while (at(i) >= '0' && at(i) <= '9') {
      if (spec.width > 100000000) return std::nullopt;
      spec.width = spec.width * 10 + (at(i) - '0');
      ++i;
    }
  }
  if (at(i) == '.') {
    ++i;
    if (at(i) == '*' && !read_side) {
      spec.precision_argument = true;
      ++i;
    } else {
      spec.precision = 0;
      while (at(i) >= '0' && at(i) <= '9') {
        if (spec.precision > 1000) return std::nullopt;
        spec.precision = spec.precision * 10 + (at(i) - '0');
        ++i;
      }
    }
  }
  switch (at(i)) {
    case 'h':
      spec.length = LengthModifier::kShort;
      ++i;
      break;
    case 'l':
      spec.length = LengthModifier::kLong;
      ++i;
      if (at(i) == 'l') {
        spec.length = LengthModifier::kLongLong;
        ++i;
      }
      break;
    case 'L':
      spec.length = LengthModifier::kLongDouble;
      ++i;
      break;
    case 'z':
      spec.length = LengthModifier::kFloat;
      ++i;
      break;
    case 'Z':
      spec.length = LengthModifier::kDouble;
      ++i;
      break;
    default:
      break;
  }
  const char conversion = at(i);
  if (conversion == '\0') return std::nullopt;
  spec.conversion = conversion;
  *position = i + 1;
  return spec;
}

std::optional<char> EscapedCharacter(char c) {
  switch (c) {
    case 'n':
      return '\n';
    case 'r':
      return '\r';
    case 't':
      return '\t';
    case '\\':
      return '\\';
    case '"':
      return '"';
    case '\'':
      return '\'';
    default:
      return std::nullopt;
  }
}

}  // namespace quarvelo::visa
