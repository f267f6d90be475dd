// Numbers written into instrument commands and stored settings. The text never depends on
// the user's locale: the instrument and the settings store read "." as the decimal point.
#ifndef QUARVELO_PLATFORM_TEXT_NUMBER_TEXT_H_
#define QUARVELO_PLATFORM_TEXT_NUMBER_TEXT_H_

#include <string>

namespace quarvelo::text {

// The shortest decimal text of at most 15 significant digits that reads back as `value`
// (or as its 15-digit rounding when no shorter text does): no leading blank, no "0" before
// the point below 1 (".5", "-.25"), whole values without a point ("3", "200"), and the
// exponent form with a signed two-digit exponent when |value| < 1e-4 or >= 1e15 ("4E-08",
// "1E+15"). Zero is "0"; NaN and infinities, which no instrument reads, are "0".
std::string NumberText(double value);

// `value` rounded to a whole number, halves to even, with no decimal point ("1250000").
// NaN and infinities are "0".
std::string WholeNumberText(double value);

}  // namespace quarvelo::text

#endif  // QUARVELO_PLATFORM_TEXT_NUMBER_TEXT_H_
