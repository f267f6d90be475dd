// The formatted write engine behind viPrintf / viVPrintf.
//
// Literal text is sent as it stands, "%%" as one '%'. A LF in the format (a real LF or the
// two characters backslash and n) ends the message: the LF goes out with END and the output is
// flushed. A LF that arrives through an argument is plain data. Conversions: %d %i %u %x %X %o
// %c %s %f %e %E %g %G with printf's flags, width and precision ('*' takes them from the
// arguments); h, l (32-bit, as ViInt32), ll (64-bit) and L (long double) modifiers; ',' with
// a width or '#' count (passed by value) writes a comma-separated list of d or f elements;
// "%#b" / "%Nb" writes a definite-length IEEE 488.2 block of bytes.
#ifndef QUARVELO_PLATFORM_VISA_FORMAT_PRINT_H_
#define QUARVELO_PLATFORM_VISA_FORMAT_PRINT_H_

#include <string_view>

#include "platform/visa/va_args.h"
#include "platform/visa/visa.h"

namespace quarvelo::visa {

// Where formatted output goes: the session's write buffer.
class FormattedOutput {
 public:
  virtual ~FormattedOutput() = default;
  virtual ViStatus Append(std::string_view data) = 0;
  // Sends what is pending with END on its last byte.
  virtual ViStatus EndMessage() = 0;
};

ViStatus PrintFormatted(std::string_view format, VaArgs* args, FormattedOutput* output);

}  // namespace quarvelo::visa

#endif  // QUARVELO_PLATFORM_VISA_FORMAT_PRINT_H_
