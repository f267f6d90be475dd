#include "platform/visa/format_print.h"

#include <cstdint>
#include <cstdio>
#include <string>

#include "platform/visa/format_directive.h"

namespace quarvelo::visa {
namespace {

// printf of one value through a rebuilt conversion such as "%-8.3f".
template <typename T>
std::string FormatOne(const FormatDirective& directive, const char* length, int width,
                      int precision, T value) {
  // Built with appends only: "%" + string trips a false -Wrestrict in GCC 12 at -O3.
  std::string conversion(1, '%');
  conversion.append(directive.flags);
  if (directive.hash) conversion += '#';
  if (width >= 0) conversion.append(std::to_string(width));
  if (precision >= 0) {
    conversion += '.';
    conversion.append(std::to_string(precision));
  }
  conversion += length;
  conversion += directive.conversion;
  char small[128];
  const int needed = std::snprintf(small, sizeof small, conversion.c_str(), value);
  if (needed < 0) return {};
  if (static_cast<std::size_t>(needed) < sizeof small) return std::string(small, needed);
  std::string text(static_cast<std::size_t>(needed) + 1, '\0');
  std::snprintf(text.data(), text.size(), conversion.c_str(), value);
  text.resize(static_cast<std::size_t>(needed));
  return text;
}

class Printer {
 public:
  Printer(VaArgs* args, FormattedOutput* output) : args_(args), output_(output) {}

  ViStatus Run(std::string_view format) {
    std::string literal;
    std::size_t i = 0;
    while (i < format.size()) {
      char c = format[i++];
      if (c == '\\' && i < format.size()) {
        if (const auto escaped = EscapedCharacter(format[i])) {
          c = *escaped;
          ++i;
        }
      }
      if (c == '\n') {
        literal += '\n';
        ViStatus status = output_->Append(literal);
        literal.clear();
        if (status >= VI_SUCCESS) status = output_->EndMessage();
        if (status < VI_SUCCESS) return status;
        continue;
      }
      if (c != '%') {
        literal += c;
        continue;
      }
      if (i < format.size() && format[i] == '%') {
        literal += '%';
        ++i;
        continue;
      }
      const auto directive = ParseFormatDirective(format, &i, /*read_side=*/false);
      if (!directive) return VI_ERROR_INV_FMT;
      std::string text;
      const ViStatus status = Convert(*directive, &text);
      if (status < VI_SUCCESS) return status;
      literal += text;
    }
    return literal.empty() ? VI_SUCCESS : output_->Append(literal);
  }

 private:
  ViStatus Convert(const FormatDirective& directive, std::string* text);
  ViStatus ConvertScalar(const FormatDirective& directive, int width, int precision,
                         std::string* text);
  std::string IntegerText(const FormatDirective& directive, int width, int precision,
                          bool next_from_array, const void* array, std::size_t index);

  VaArgs* args_;
  FormattedOutput* output_;
};

bool IsInteger(char c) {
  return c == 'd' || c == 'i' || c == 'u' || c == 'x' || c == 'X' || c == 'o';
}
bool IsReal(char c) { return c == 'f' || c == 'e' || c == 'E' || c == 'g' || c == 'G'; }

ViStatus Printer::Convert(const FormatDirective& directive, std::string* text) {
  int width = directive.width;
  int precision = directive.precision;
  if (directive.width_argument) width = va_arg(args_->list, int);
  if (directive.precision_argument) precision = va_arg(args_->list, int);
  if (directive.conversion == 'b') {
    if (directive.array) return VI_ERROR_INV_FMT;
    long count = directive.hash ? va_arg(args_->list, ViInt32) : directive.width;
    if (count < 0) return VI_ERROR_INV_FMT;
    const char* data = va_arg(args_->list, const char*);
    if (data == nullptr && count > 0) return VI_ERROR_USER_BUF;
    const std::string length = std::to_string(count);
    text->assign(1, '#');
    text->append(std::to_string(length.size()));
    text->append(length);
    text->append(data, static_cast<std::size_t>(count));
    return VI_SUCCESS;
  }
  if (!directive.array) return ConvertScalar(directive, width, precision, text);
  const long count = directive.hash ? va_arg(args_->list, ViInt32) : directive.width;
  if (count < 0) return VI_ERROR_INV_FMT;
  const void* array = va_arg(args_->list, const void*);
  if (array == nullptr && count > 0) return VI_ERROR_USER_BUF;
  FormatDirective element = directive;
  element.hash = false;
  for (long k = 0; k < count; ++k) {
    if (k > 0) *text += ',';
    if (IsInteger(directive.conversion)) {
      *text += IntegerText(element, -1, precision, true, array, static_cast<std::size_t>(k));
    } else if (IsReal(directive.conversion)) {
      const double value = directive.length == LengthModifier::kLong
                               ? static_cast<const double*>(array)[k]
                               : static_cast<const float*>(array)[k];
      *text += FormatOne(element, "", -1, precision, value);
    } else {
      return VI_ERROR_INV_FMT;
    }
  }
  return VI_SUCCESS;
}

std::string Printer::IntegerText(const FormatDirective& directive, int width, int precision,
                                 bool from_array, const void* array, std::size_t index) {
  switch (directive.length) {
    case LengthModifier::kShort: {
      const int value = from_array ? static_cast<const std::int16_t*>(array)[index]
                                   : static_cast<std::int16_t>(va_arg(args_->list, int));
      return FormatOne(directive, "", width, precision, value);
    }
    case LengthModifier::kLongLong: {
      const long long value = from_array ? static_cast<const std::int64_t*>(array)[index]
                                         : va_arg(args_->list, long long);
      return FormatOne(directive, "ll", width, precision, value);
    }
    default: {
      // ViInt32 whether or not 'l' is given: the VISA API's long is 32 bits.
      const int value =
          from_array ? static_cast<const std::int32_t*>(array)[index] : va_arg(args_->list, int);
      return FormatOne(directive, "", width, precision, value);
    }
  }
}

ViStatus Printer::ConvertScalar(const FormatDirective& directive, int width, int precision,
                                std::string* text) {
  if (IsInteger(directive.conversion)) {
    *text = IntegerText(directive, width, precision, false, nullptr, 0);
    return VI_SUCCESS;
  }
  if (IsReal(directive.conversion)) {
    if (directive.length == LengthModifier::kLongDouble) {
      *text = FormatOne(directive, "L", width, precision, va_arg(args_->list, long double));
    } else {
      *text = FormatOne(directive, "", width, precision, va_arg(args_->list, double));
    }
    return VI_SUCCESS;
  }
  switch (directive.conversion) {
    case 'c':
      *text = FormatOne(directive, "", width, precision, va_arg(args_->list, int));
      return VI_SUCCESS;
    case 's': {
      const char* value = va_arg(args_->list, const char*);
      if (value == nullptr) return VI_ERROR_USER_BUF;
      *text = FormatOne(directive, "", width, precision, value);
      return VI_SUCCESS;
    }
    default:
      return VI_ERROR_NSUP_FMT;
  }
}

}  // namespace

ViStatus PrintFormatted(std::string_view format, VaArgs* args, FormattedOutput* output) {
  return Printer(args, output).Run(format);
}

}  // namespace quarvelo::visa
