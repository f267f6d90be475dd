// One conversion of a VISA format string ("%,#lf", "%256t", "%#b" ...), shared by the
// formatted write and read engines, and the escapes a format may carry as two characters
// ("\n" typed as backslash and n, as languages without C escapes send it).
#ifndef QUARVELO_PLATFORM_VISA_FORMAT_DIRECTIVE_H_
#define QUARVELO_PLATFORM_VISA_FORMAT_DIRECTIVE_H_

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace quarvelo::visa {

enum class LengthModifier { kNone, kShort, kLong, kLongLong, kLongDouble, kFloat, kDouble };

struct FormatDirective {
  bool suppress = false;  // '*' in a read format: convert but do not store
  bool array = false;     // ',' : a comma-separated list
  // '#': in a read format and for arrays and blocks, the width or count comes from the
  // argument list; for other written conversions it is printf's alternate form.
  bool hash = false;
  std::string flags;            // printf flags "-+ 0#" (write side only; '#' kept out)
  int width = -1;               // -1: none given
  bool width_argument = false;  // '*' width on the write side
  int precision = -1;
  bool precision_argument = false;
  LengthModifier length = LengthModifier::kNone;
  char conversion = 0;
};

// Parses the conversion that starts after a '%' at format[*position]; on success advances
// *position past the conversion character. nullopt for a malformed conversion.
std::optional<FormatDirective> ParseFormatDirective(std::string_view format, std::size_t* position,
                                                    bool read_side);

// The character a backslash escape stands for ('n' -> LF ...); nullopt when `c` is not an
// escape, in which case the backslash is an ordinary character.
std::optional<char> EscapedCharacter(char c);

}  // namespace quarvelo::visa

#endif  // QUARVELO_PLATFORM_VISA_FORMAT_DIRECTIVE_H_
