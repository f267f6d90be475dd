#include "platform/visa/format_directive.h"

namespace quarvelo::visa {

std::optional<FormatDirective> ParseFormatDirective(std::string_view format, std::size_t* position,
                                                    bool read_side) {
  FormatDirective directive;
  std::size_t i = *position;
  const auto at = [&](std::size_t k) { return k < format.size() ? format[k] : '\0'; };
  for (;; ++i) {
    const char c = at(i);
    if (c == ',') {
      directive.array = true;
    } else if (c == '#') {
      directive.hash = true;
    } else if (c == '*' && read_side) {
      directive.suppress = true;
    } else if (!read_side && (c == '-' || c == '+' || c == ' ' || c == '0')) {
      directive.flags += c;
    } else {
      break;
    }
  }
  if (at(i) == '*' && !read_side) {
    directive.width_argument = true;
    ++i;
  } else if (at(i) >= '0' && at(i) <= '9') {
    directive.width = 0;
    while (at(i) >= '0' && at(i) <= '9') {
      if (directive.width > 100000000) return std::nullopt;
      directive.width = directive.width * 10 + (at(i) - '0');
      ++i;
    }
  }
  if (at(i) == '.') {
    ++i;
    if (at(i) == '*' && !read_side) {
      directive.precision_argument = true;
      ++i;
    } else {
      directive.precision = 0;
      while (at(i) >= '0' && at(i) <= '9') {
        if (directive.precision > 1000) return std::nullopt;
        directive.precision = directive.precision * 10 + (at(i) - '0');
        ++i;
      }
    }
  }
  switch (at(i)) {
    case 'h':
      directive.length = LengthModifier::kShort;
      ++i;
      break;
    case 'l':
      directive.length = LengthModifier::kLong;
      ++i;
      if (at(i) == 'l') {
        directive.length = LengthModifier::kLongLong;
        ++i;
      }
      break;
    case 'L':
      directive.length = LengthModifier::kLongDouble;
      ++i;
      break;
    case 'z':
      directive.length = LengthModifier::kFloat;
      ++i;
      break;
    case 'Z':
      directive.length = LengthModifier::kDouble;
      ++i;
      break;
    default:
      break;
  }
  const char conversion = at(i);
  if (conversion == '\0') return std::nullopt;
  directive.conversion = conversion;
  *position = i + 1;
  return directive;
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
