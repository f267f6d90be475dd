// Numeric program data as the instrument reads it ("500mV", "4E-08", "10 ns", "MAXimum") and
// the number formats of its replies ("+7680", "+1.00000000E-03", "+4.0E-08").
#ifndef QUARVELO_SIM_SCPI_NUMBER_TEXT_H_
#define QUARVELO_SIM_SCPI_NUMBER_TEXT_H_

#include <string>
#include <string_view>

namespace quarvelo::sim {

struct NumberParse {
  enum class Kind { kValue, kMaximum, kMinimum };
  Kind kind = Kind::kValue;
  double value = 0;
  int error = 0;  // 0, or the SCPI error number (-104, -121, -131 ...)
};

// Decimal numeric data with an optional multiplier and unit (V, S, HZ, OHM, PCT, DIV, A, W,
// DEG, DB, PTS), the keywords MAXimum and MINimum, and the non-decimal forms #H, #Q, #B.
NumberParse ParseNumber(std::string_view text);

// "+7680", "-3"
std::string FormatNr1(long long value);
// "%+.<decimals>E" with a two-digit signed exponent: "+1.00000000E-03".
std::string FormatNr3(double value, int decimals);
// The shortest mantissa (at least one decimal) that reads back as the value: "+4.0E-08".
std::string FormatNr3Short(double value);

}  // namespace quarvelo::sim

#endif  // QUARVELO_SIM_SCPI_NUMBER_TEXT_H_
