// Numbers shown on the drawing surface, in the toolbar and in readouts, with a unit suffix
// chosen by the size of the value ("12.50MHz", "3.20ms"). All formatters are pure; the
// decimal separator is the user's (the caller passes its locale's), "." by default.
#ifndef QUARVELO_DISPLAY_FORMAT_H_
#define QUARVELO_DISPLAY_FORMAT_H_

#include <string>
#include <string_view>

namespace quarvelo::display {

// `SpectrumUnit` codes.
inline constexpr int kUnitDbv = 0;
inline constexpr int kUnitDbm = 1;
inline constexpr int kUnitVoltsRms = 2;

// `value` with exactly `decimals` decimals, rounded to nearest, at least one integer digit
// and a leading "-" for values that do not round to zero (the "0", "0.00", "0.000" patterns).
std::string FormatFixed(double value, int decimals, std::string_view decimal_separator = ".");

// Hz, kHz, MHz or GHz of |hertz|, with three decimals when `precise`, else none.
std::string FormatFrequency(double hertz, bool precise, std::string_view decimal_separator = ".");
// s above 1 s, ms from 1 ms to 1 s inclusive, µs, ns below 1 µs; two decimals, sign kept.
std::string FormatTime(double seconds, std::string_view decimal_separator = ".");
// mV up to 1 V inclusive, else V; two decimals, sign kept.
std::string FormatVoltage(double volts, std::string_view decimal_separator = ".");
// `kilosamples_per_second` as Sa/s, MSa/s or GSa/s; two decimals.
std::string FormatSampleRate(double kilosamples_per_second,
                             std::string_view decimal_separator = ".");
// A spectrum level in `spectrum_unit`: "dBV", "dBm" with two decimals, or as a voltage.
std::string FormatLevel(double level, int spectrum_unit, std::string_view decimal_separator = ".");

}  // namespace quarvelo::display

#endif  // QUARVELO_DISPLAY_FORMAT_H_
