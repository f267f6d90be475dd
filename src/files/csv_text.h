// The text of a CSV waveform file: the seven-field header line and the "0.000000000" numbers of
// the data lines. Numbers are written with a period whatever the user's locale, so that a file
// reads back on every machine.
#ifndef QUARVELO_FILES_CSV_TEXT_H_
#define QUARVELO_FILES_CSV_TEXT_H_

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace quarvelo::files {

struct CsvHeader {
  std::int32_t channel = 0;
  double sample_rate = 0;     // samples per second
  double scale = 0;           // volts per division
  double timebase_scale = 0;  // seconds per division
  double offset = 0;          // volts
  double x_origin = 0;        // seconds
  double x_increment = 0;     // seconds
};

// The header line without its line end: the channel as an integer, the rest as plain numbers.
std::string CsvHeaderLine(const CsvHeader& header);

// Splits at the semicolons from the left, the seventh field being the rest of the line. Empty
// when the line has fewer than seven fields.
std::optional<CsvHeader> ParseCsvHeader(std::string_view line);

// The leading number of a field. A decimal comma counts as a period, so a file written where
// the comma is the decimal separator still reads its fractions.
double CsvNumber(std::string_view text);

// Longest text AppendFixed9 writes, with room to spare.
inline constexpr int kFixed9MaxChars = 48;

// Writes `value` as "0.000000000" (nine decimals, at least one integer digit, a minus sign when
// negative) at `out`; returns the end. Values too large for fixed notation (|v| >= 1e30) and
// non-finite values are written as "0.000000000".
char* AppendFixed9(double value, char* out);

}  // namespace quarvelo::files

#endif  // QUARVELO_FILES_CSV_TEXT_H_
