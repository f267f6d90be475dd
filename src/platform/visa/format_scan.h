// The formatted read engine behind viScanf / viVScanf.
//
// Supported: literal characters (must match), white space (matches any run of white space,
// including none), and the conversions
//   %t  the rest of the message up to and including the byte that carried END (LF on a raw
//       socket); a width N stores at most N characters plus NUL, "%#t" takes a ViInt32* holding
//       the array size including the NUL and returns the characters stored. Characters past
//       the bound are read and dropped, so the next reply starts clean.
//   %T  up to and including the first LF; %s a word; %c one (or width) character(s);
//   %d %i %u %x %o (h: 16-bit, none or l: 32-bit, ll: 64-bit), %f %e %g (none: float,
//       l: double, L: long double), with ',' a comma-separated list whose ViInt32* count ("#")
//       or width gives the maximum and returns the number read;
//   %b  an IEEE 488.2 block "#<d><length><bytes>" or "#0<bytes>" up to END, into the caller's
//       area ("#": ViInt32* count of elements in and out; h, l, z, Z for 16-bit, 32-bit, float
//       and double elements, big-endian on the wire). Bytes past the area are left for the
//       next read-buffer flush, and the scan stops there.
// The scan stops at END or when the format is used up; whatever is left stays buffered.
#ifndef QUARVELO_PLATFORM_VISA_FORMAT_SCAN_H_
#define QUARVELO_PLATFORM_VISA_FORMAT_SCAN_H_

#include <string_view>

#include "platform/visa/message_reader.h"
#include "platform/visa/va_args.h"
#include "platform/visa/visa.h"

namespace quarvelo::visa {

ViStatus ScanFormatted(MessageReader* reader, std::string_view format, VaArgs* args);

}  // namespace quarvelo::visa

#endif  // QUARVELO_PLATFORM_VISA_FORMAT_SCAN_H_
