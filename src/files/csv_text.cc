#include "files/csv_text.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstring>

#include "platform/text/number_parse.h"
#include "platform/text/number_text.h"

namespace quarvelo::files {
namespace {

constexpr int kHeaderFields = 7;
constexpr double kFixedLimit = 1e30;

}  // namespace

std::string CsvHeaderLine(const CsvHeader& header) {
  std::string line = std::to_string(header.channel);
  for (const double value : {header.sample_rate, header.scale, header.timebase_scale, header.offset,
                             header.x_origin, header.x_increment}) {
    line += ';';
    line += text::NumberText(value);
  }
  return line;
}

std::optional<CsvHeader> ParseCsvHeader(std::string_view line) {
  std::array<std::string_view, kHeaderFields> fields;
  for (int k = 0; k < kHeaderFields - 1; ++k) {
    const std::size_t semicolon = line.find(';');
    if (semicolon == std::string_view::npos) return std::nullopt;
    fields[static_cast<std::size_t>(k)] = line.substr(0, semicolon);
    line.remove_prefix(semicolon + 1);
  }
  fields[kHeaderFields - 1] = line;
  CsvHeader header;
  header.channel = text::LeadingInteger(fields[0]);
  header.sample_rate = CsvNumber(fields[1]);
  header.scale = CsvNumber(fields[2]);
  header.timebase_scale = CsvNumber(fields[3]);
  header.offset = CsvNumber(fields[4]);
  header.x_origin = CsvNumber(fields[5]);
  header.x_increment = CsvNumber(fields[6]);
  return header;
}

double CsvNumber(std::string_view text) {
  const std::size_t comma = text.find(',');
  // With a period already present the comma cannot be the decimal separator.
  if (comma == std::string_view::npos || comma + 1 >= text.size() ||
      text.substr(0, comma).find('.') != std::string_view::npos) {
    return text::LeadingNumber(text);
  }
  std::array<char, 64> copy;
  if (text.size() > copy.size()) return text::LeadingNumber(text);
  std::memcpy(copy.data(), text.data(), text.size());
  copy[comma] = '.';
  return text::LeadingNumber(std::string_view(copy.data(), text.size()));
}

char* AppendFixed9(double value, char* out) {
  if (!std::isfinite(value) || std::fabs(value) >= kFixedLimit) value = 0;
  value += 0.0;  // -0.0 becomes 0.0, so that zero has no sign
  const auto result = std::to_chars(out, out + kFixed9MaxChars, value, std::chars_format::fixed, 9);
  return result.ptr;
}

}  // namespace quarvelo::files
