#include "display/format.h"

#include <cmath>
#include <cstdio>

namespace quarvelo::display {

std::string FormatFixed(double value, int decimals, std::string_view decimal_separator) {
  if (std::isnan(value)) return "NaN";
  if (std::isinf(value)) return value < 0 ? "-Inf" : "Inf";
  char buffer[400];
  std::snprintf(buffer, sizeof buffer, "%.*f", decimals, value);
  std::string text(buffer);
  // "-0.00": a negative value too small for the pattern reads as zero.
  if (text[0] == '-' && text.find_first_not_of("-0.") == std::string::npos) text.erase(0, 1);
  const std::size_t point = text.find('.');
  if (point != std::string::npos) text.replace(point, 1, decimal_separator);
  return text;
}

std::string FormatFrequency(double hertz, bool precise, std::string_view decimal_separator) {
  const double f = std::fabs(hertz);
  const int decimals = precise ? 3 : 0;
  // The range is chosen before rounding, so 999.6 Hz prints as "1000Hz".
  if (f >= 1e9) return FormatFixed(f / 1e9, decimals, decimal_separator) + "GHz";
  if (f >= 1e6) return FormatFixed(f / 1e6, decimals, decimal_separator) + "MHz";
  if (f >= 1000) return FormatFixed(f / 1000, decimals, decimal_separator) + "kHz";
  return FormatFixed(f, decimals, decimal_separator) + "Hz";
}

std::string FormatTime(double seconds, std::string_view decimal_separator) {
  const double a = std::fabs(seconds);
  if (a > 1) return FormatFixed(seconds, 2, decimal_separator) + "s";
  if (a >= 0.001) return FormatFixed(seconds * 1000, 2, decimal_separator) + "ms";
  if (a >= 1e-6) return FormatFixed(seconds * 1e6, 2, decimal_separator) + "\u00b5s";
  return FormatFixed(seconds * 1e9, 2, decimal_separator) + "ns";
}

std::string FormatVoltage(double volts, std::string_view decimal_separator) {
  if (std::fabs(volts) <= 1) return FormatFixed(volts * 1000, 2, decimal_separator) + "mV";
  return FormatFixed(volts, 2, decimal_separator) + "V";
}

std::string FormatSampleRate(double kilosamples_per_second, std::string_view decimal_separator) {
  const double r = kilosamples_per_second;
  if (r >= 1e6) return FormatFixed(r / 1e6, 2, decimal_separator) + "GSa/s";
  if (r >= 1000) return FormatFixed(r / 1000, 2, decimal_separator) + "MSa/s";
  return FormatFixed(r * 1000, 2, decimal_separator) + "Sa/s";
}

std::string FormatLevel(double level, int spectrum_unit, std::string_view decimal_separator) {
  switch (spectrum_unit) {
    case kUnitDbv:
      return FormatFixed(level, 2, decimal_separator) + "dBV";
    case kUnitDbm:
      return FormatFixed(level, 2, decimal_separator) + "dBm";
    case kUnitVoltsRms:
      return FormatVoltage(level, decimal_separator);
    default:  // a corrupt setting: the number without a unit rather than a wrong unit
      return FormatFixed(level, 2, decimal_separator);
  }
}

}  // namespace quarvelo::display
