// The lenient number parse used wherever the program reads text it did not write itself:
// instrument replies, stored settings, entry boxes.
#ifndef QUARVELO_PLATFORM_TEXT_NUMBER_PARSE_H_
#define QUARVELO_PLATFORM_TEXT_NUMBER_PARSE_H_

#include <string_view>

namespace quarvelo::text {

// The leading number of `text` (after leading blanks): an optional sign, digits with an
// optional decimal point, and an optional exponent. Returns 0 when the text does not start
// with a number ("abc", "", "x1"). Trailing text is ignored ("500mV" -> 500, "1,2" -> 1).
double LeadingNumber(std::string_view text);

// LeadingNumber rounded to the nearest integer, halves to even, clamped to the int range.
int LeadingInteger(std::string_view text);

}  // namespace quarvelo::text

#endif  // QUARVELO_PLATFORM_TEXT_NUMBER_PARSE_H_
