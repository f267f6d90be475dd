#include "platform/visa/format_scan.h"

#include <algorithm>
#include <bit>
#include <cctype>
#include <charconv>
#include <cstdint>
#include <cstring>
#include <limits>
#include <optional>
#include <span>
#include <string>

#include "platform/visa/format_directive.h"

namespace quarvelo::visa {
namespace {

constexpr std::size_t kMaxNumberLength = 128;

bool IsSpace(int c) {
  return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\v' || c == '\f';
}

// Outcome of one conversion: the status to return, and whether the scan may go on.
struct Step {
  ViStatus status = VI_SUCCESS;
  bool go_on = true;
};

constexpr Step kStop{VI_SUCCESS, false};

class Scanner {
 public:
  Scanner(MessageReader* reader, VaArgs* args) : reader_(reader), args_(args) {}

  ViStatus Run(std::string_view format);

 private:
  ViStatus SkipSpace();
  Step MatchLiteral(char c);
  Step Convert(const FormatDirective& directive);
  Step ScanString(const FormatDirective& directive);
  Step ScanCharacters(const FormatDirective& directive);
  Step ScanNumbers(const FormatDirective& directive);
  Step ScanBlock(const FormatDirective& directive);
  // Collects the characters of one number (sign, digits, point, exponent) after white space.
  ViStatus ReadNumberToken(bool integer, int base, std::string* token);
  ViStatus ReadBlockLength(std::uint64_t* length, bool* indefinite, bool* well_formed);

  MessageReader* reader_;
  VaArgs* args_;
};

ViStatus Scanner::SkipSpace() {
  for (;;) {
    int c = -1;
    const ViStatus status = reader_->Peek(&c);
    if (status < VI_SUCCESS || c < 0 || !IsSpace(c)) return status;
    reader_->Consume();
  }
}

Step Scanner::MatchLiteral(char expected) {
  int c = -1;
  const ViStatus status = reader_->Peek(&c);
  if (status < VI_SUCCESS) return {status, false};
  if (c != static_cast<unsigned char>(expected)) return kStop;
  reader_->Consume();
  return {};
}

ViStatus Scanner::Run(std::string_view format) {
  reader_->BeginScan();
  std::size_t i = 0;
  while (i < format.size()) {
    if (reader_->scan_hit_end()) return VI_SUCCESS;
    char c = format[i];
    if (c == '\\' && i + 1 < format.size()) {
      if (const auto escaped = EscapedCharacter(format[i + 1])) {
        c = *escaped;
        ++i;
      }
    }
    if (IsSpace(static_cast<unsigned char>(c))) {
      const ViStatus status = SkipSpace();
      if (status < VI_SUCCESS) return status;
      ++i;
      continue;
    }
    if (c != '%' || (i + 1 < format.size() && format[i + 1] == '%')) {
      if (c == '%') ++i;
      const Step step = MatchLiteral(c);
      if (!step.go_on) return step.status;
      ++i;
      continue;
    }
    ++i;
    const auto directive = ParseFormatDirective(format, &i, /*read_side=*/true);
    if (!directive) return VI_ERROR_INV_FMT;
    const Step step = Convert(*directive);
    if (!step.go_on) return step.status;
  }
  return VI_SUCCESS;
}

Step Scanner::Convert(const FormatDirective& directive) {
  switch (directive.conversion) {
    case 't':
    case 'T':
    case 's':
      if (directive.array) return {VI_ERROR_INV_FMT, false};
      return ScanString(directive);
    case 'c':
      if (directive.array) return {VI_ERROR_INV_FMT, false};
      return ScanCharacters(directive);
    case 'd':
    case 'i':
    case 'u':
    case 'x':
    case 'X':
    case 'o':
    case 'f':
    case 'e':
    case 'E':
    case 'g':
    case 'G':
      return ScanNumbers(directive);
    case 'b':
      if (directive.array) return {VI_ERROR_INV_FMT, false};
      return ScanBlock(directive);
    case '[':
    case 'B':
    case 'y':
      return {VI_ERROR_NSUP_FMT, false};
    default:
      return {VI_ERROR_INV_FMT, false};
  }
}

Step Scanner::ScanString(const FormatDirective& directive) {
  // Room for characters; the NUL comes on top.
  std::size_t room = std::numeric_limits<std::size_t>::max();
  ViInt32* count_in_out = nullptr;
  if (directive.hash) {
    count_in_out = va_arg(args_->list, ViInt32*);
    if (count_in_out == nullptr) return {VI_ERROR_USER_BUF, false};
    room = *count_in_out > 0 ? static_cast<std::size_t>(*count_in_out) - 1 : 0;
  } else if (directive.width >= 0) {
    room = static_cast<std::size_t>(directive.width);
  }
  char* out = directive.suppress ? nullptr : va_arg(args_->list, char*);
  if (!directive.suppress && out == nullptr) return {VI_ERROR_USER_BUF, false};
  const bool can_terminate = !(directive.hash && *count_in_out <= 0);

  if (directive.conversion == 's') {
    const ViStatus status = SkipSpace();
    if (status < VI_SUCCESS) return {status, false};
  }
  std::size_t stored = 0;
  ViStatus status = VI_SUCCESS;
  bool any = false;
  for (;;) {
    int c = -1;
    status = reader_->Peek(&c);
    if (status < VI_SUCCESS || c < 0) break;
    if (directive.conversion == 's' && (IsSpace(c) || stored == room)) break;
    reader_->Consume();
    any = true;
    if (out != nullptr && stored < room) out[stored] = static_cast<char>(c);
    if (stored < room) ++stored;
    if (directive.conversion == 'T' && c == '\n') break;
  }
  if (out != nullptr && can_terminate) out[stored] = '\0';
  if (count_in_out != nullptr) *count_in_out = static_cast<ViInt32>(stored);
  if (status < VI_SUCCESS) return {status, false};
  return {VI_SUCCESS, any};
}

Step Scanner::ScanCharacters(const FormatDirective& directive) {
  const std::size_t wanted = directive.width > 0 ? static_cast<std::size_t>(directive.width) : 1;
  char* out = directive.suppress ? nullptr : va_arg(args_->list, char*);
  if (!directive.suppress && out == nullptr) return {VI_ERROR_USER_BUF, false};
  for (std::size_t k = 0; k < wanted; ++k) {
    int c = -1;
    const ViStatus status = reader_->Peek(&c);
    if (status < VI_SUCCESS) return {status, false};
    if (c < 0) return kStop;
    reader_->Consume();
    if (out != nullptr) out[k] = static_cast<char>(c);
  }
  return {};
}

ViStatus Scanner::ReadNumberToken(bool integer, int base, std::string* token) {
  token->clear();
  ViStatus status = SkipSpace();
  if (status < VI_SUCCESS) return status;
  bool seen_exponent = false;
  while (token->size() < kMaxNumberLength) {
    int c = -1;
    status = reader_->Peek(&c);
    if (status < VI_SUCCESS || c < 0) return status;
    const char ch = static_cast<char>(c);
    const char previous = token->empty() ? '\0' : token->back();
    bool accept = false;
    if ((ch == '+' || ch == '-') &&
        (token->empty() || (!integer && (previous == 'e' || previous == 'E')))) {
      accept = true;
    } else if (integer) {
      accept = (ch >= '0' && ch <= '9' && (base != 8 || ch <= '7')) ||
               (base == 16 && std::isxdigit(static_cast<unsigned char>(ch))) ||
               (base == 16 && (ch == 'x' || ch == 'X') && previous == '0');
    } else {
      accept = (ch >= '0' && ch <= '9') || (ch == '.' && !seen_exponent) ||
               ((ch == 'e' || ch == 'E') && !seen_exponent && !token->empty());
      if (ch == 'e' || ch == 'E') seen_exponent = true;
    }
    if (!accept) return VI_SUCCESS;
    token->push_back(ch);
    reader_->Consume();
  }
  return VI_SUCCESS;
}

template <typename T>
std::optional<T> ParseInteger(std::string_view token, int base) {
  bool negative = false;
  if (!token.empty() && (token[0] == '+' || token[0] == '-')) {
    negative = token[0] == '-';
    token.remove_prefix(1);
  }
  if (base == 16 && token.size() > 2 && token[0] == '0' && (token[1] == 'x' || token[1] == 'X')) {
    token.remove_prefix(2);
  }
  std::uint64_t magnitude = 0;
  const auto [end, error] =
      std::from_chars(token.data(), token.data() + token.size(), magnitude, base);
  if (error != std::errc() || end == token.data()) return std::nullopt;
  const std::uint64_t value = negative ? ~magnitude + 1 : magnitude;
  return static_cast<T>(value);
}

template <typename T>
std::optional<T> ParseReal(std::string_view token) {
  if (!token.empty() && token[0] == '+') token.remove_prefix(1);
  // from_chars would accept "inf" and hex; the token holds only decimal number characters.
  double value = 0;
  const auto [end, error] = std::from_chars(token.data(), token.data() + token.size(), value);
  if (end == token.data()) return std::nullopt;
  if (error == std::errc::result_out_of_range) {
    value = (!token.empty() && token[0] == '-') ? -std::numeric_limits<double>::infinity()
                                                : std::numeric_limits<double>::infinity();
  } else if (error != std::errc()) {
    return std::nullopt;
  }
  return static_cast<T>(value);
}

// Parses `token` as the element type the directive names and stores it at element `index`.
bool StoreNumber(const FormatDirective& directive, std::string_view token, void* target,
                 std::size_t index) {
  const bool real = std::strchr("feEgG", directive.conversion) != nullptr;
  if (real) {
    switch (directive.length) {
      case LengthModifier::kLong:
      case LengthModifier::kLongLong: {
        const auto v = ParseReal<double>(token);
        if (v && target) static_cast<double*>(target)[index] = *v;
        return v.has_value();
      }
      case LengthModifier::kLongDouble: {
        const auto v = ParseReal<long double>(token);
        if (v && target) static_cast<long double*>(target)[index] = *v;
        return v.has_value();
      }
      default: {
        const auto v = ParseReal<float>(token);
        if (v && target) static_cast<float*>(target)[index] = *v;
        return v.has_value();
      }
    }
  }
  const int base = (directive.conversion == 'x' || directive.conversion == 'X') ? 16
                   : directive.conversion == 'o'                                ? 8
                                                                                : 10;
  switch (directive.length) {
    case LengthModifier::kShort: {
      const auto v = ParseInteger<std::int16_t>(token, base);
      if (v && target) static_cast<std::int16_t*>(target)[index] = *v;
      return v.has_value();
    }
    case LengthModifier::kLongLong: {
      const auto v = ParseInteger<std::int64_t>(token, base);
      if (v && target) static_cast<std::int64_t*>(target)[index] = *v;
      return v.has_value();
    }
    default: {
      const auto v = ParseInteger<std::int32_t>(token, base);
      if (v && target) static_cast<std::int32_t*>(target)[index] = *v;
      return v.has_value();
    }
  }
}

Step Scanner::ScanNumbers(const FormatDirective& directive) {
  const bool real = std::strchr("feEgG", directive.conversion) != nullptr;
  const int base = (directive.conversion == 'x' || directive.conversion == 'X') ? 16
                   : directive.conversion == 'o'                                ? 8
                                                                                : 10;
  std::size_t capacity = 1;
  ViInt32* count_in_out = nullptr;
  if (directive.array) {
    if (directive.hash) {
      count_in_out = va_arg(args_->list, ViInt32*);
      if (count_in_out == nullptr) return {VI_ERROR_USER_BUF, false};
      capacity = *count_in_out > 0 ? static_cast<std::size_t>(*count_in_out) : 0;
    } else if (directive.width > 0) {
      capacity = static_cast<std::size_t>(directive.width);
    } else {
      return {VI_ERROR_INV_FMT, false};
    }
  }
  void* target = directive.suppress ? nullptr : va_arg(args_->list, void*);
  if (!directive.suppress && target == nullptr) return {VI_ERROR_USER_BUF, false};

  std::size_t stored = 0;
  std::string token;
  ViStatus status = VI_SUCCESS;
  while (stored < capacity) {
    if (stored > 0) {
      int c = -1;
      status = reader_->Peek(&c);
      if (status < VI_SUCCESS || c != ',') break;
      reader_->Consume();
    }
    status = ReadNumberToken(!real, base, &token);
    if (status < VI_SUCCESS) break;
    if (!StoreNumber(directive, token, target, stored)) break;
    ++stored;
  }
  if (count_in_out != nullptr) *count_in_out = static_cast<ViInt32>(stored);
  if (status < VI_SUCCESS) return {status, false};
  return {VI_SUCCESS, stored > 0};
}

ViStatus Scanner::ReadBlockLength(std::uint64_t* length, bool* indefinite, bool* well_formed) {
  *well_formed = false;
  *indefinite = false;
  *length = 0;
  int c = -1;
  ViStatus status = reader_->Peek(&c);
  if (status < VI_SUCCESS || c < '0' || c > '9') return status;
  reader_->Consume();
  const int digits = c - '0';
  if (digits == 0) {
    *indefinite = true;
    *well_formed = true;
    return VI_SUCCESS;
  }
  for (int k = 0; k < digits; ++k) {
    status = reader_->Peek(&c);
    if (status < VI_SUCCESS || c < '0' || c > '9') return status;
    reader_->Consume();
    *length = *length * 10 + static_cast<std::uint64_t>(c - '0');
  }
  *well_formed = true;
  return VI_SUCCESS;
}

std::size_t ElementSize(LengthModifier length) {
  switch (length) {
    case LengthModifier::kShort:
      return 2;
    case LengthModifier::kLong:
    case LengthModifier::kFloat:
      return 4;
    case LengthModifier::kDouble:
    case LengthModifier::kLongLong:
      return 8;
    default:
      return 1;
  }
}

// Block elements arrive most significant byte first.
void FromBigEndian(std::byte* data, std::size_t elements, std::size_t size) {
  if (size == 1 || std::endian::native == std::endian::big) return;
  for (std::size_t k = 0; k < elements; ++k) std::reverse(data + k * size, data + (k + 1) * size);
}

Step Scanner::ScanBlock(const FormatDirective& directive) {
  std::size_t capacity = 0;
  ViInt32* count_in_out = nullptr;
  if (directive.hash) {
    count_in_out = va_arg(args_->list, ViInt32*);
    if (count_in_out == nullptr) return {VI_ERROR_USER_BUF, false};
    capacity = *count_in_out > 0 ? static_cast<std::size_t>(*count_in_out) : 0;
  } else if (directive.width > 0) {
    capacity = static_cast<std::size_t>(directive.width);
  } else {
    return {VI_ERROR_INV_FMT, false};
  }
  const std::size_t size = ElementSize(directive.length);
  std::byte* area = directive.suppress ? nullptr : va_arg(args_->list, std::byte*);
  if (!directive.suppress && area == nullptr) return {VI_ERROR_USER_BUF, false};
  const auto report = [&](std::size_t elements) {
    if (area != nullptr) FromBigEndian(area, elements, size);
    if (count_in_out != nullptr) *count_in_out = static_cast<ViInt32>(elements);
  };
  report(0);

  ViStatus status = SkipSpace();
  if (status < VI_SUCCESS) return {status, false};
  int c = -1;
  status = reader_->Peek(&c);
  if (status < VI_SUCCESS) return {status, false};
  if (c != '#') return kStop;
  reader_->Consume();
  std::uint64_t length = 0;
  bool indefinite = false;
  bool well_formed = false;
  status = ReadBlockLength(&length, &indefinite, &well_formed);
  if (status < VI_SUCCESS) return {status, false};
  if (!well_formed) return {VI_ERROR_IO, false};

  const std::size_t capacity_bytes = capacity * size;
  if (indefinite) {
    // Up to END; the LF that carries END terminates the block and is not data.
    std::size_t stored = 0;
    std::byte scratch{};
    for (;;) {
      status = reader_->Peek(&c);
      if (status < VI_SUCCESS || c < 0) break;
      if (stored == capacity_bytes) break;  // the rest waits for a flush
      reader_->Consume();
      if (reader_->scan_hit_end() && c == '\n') break;
      std::byte* slot = area != nullptr ? area + stored : &scratch;
      *slot = static_cast<std::byte>(c);
      ++stored;
    }
    report(stored / size);
    if (status < VI_SUCCESS) return {status, false};
    return kStop;
  }

  const std::uint64_t keep = std::min<std::uint64_t>(length - length % size, capacity_bytes);
  std::size_t got = 0;
  if (area != nullptr) {
    status = reader_->ReadBinary(std::span(area, static_cast<std::size_t>(keep)), &got);
  } else {
    std::byte scratch[4096];
    while (got < keep && status >= VI_SUCCESS) {
      std::size_t part = 0;
      const std::size_t want = std::min<std::size_t>(sizeof scratch, keep - got);
      status = reader_->ReadBinary(std::span(scratch, want), &part);
      got += part;
      if (part < want) break;
    }
  }
  report(got / size);
  if (status == VI_ERROR_TMO) {
    // The rest may still come; it is block data (LF in it is no end), so skip it by length.
    reader_->DeferBlockBytes(length - got);
  }
  if (status < VI_SUCCESS) return {status, false};
  if (got < keep) return {VI_ERROR_IO, false};  // END before the announced length
  if (length > keep) {
    reader_->DeferBlockBytes(length - keep);
    return kStop;
  }
  return {};
}

}  // namespace

ViStatus ScanFormatted(MessageReader* reader, std::string_view format, VaArgs* args) {
  return Scanner(reader, args).Run(format);
}

}  // namespace quarvelo::visa
