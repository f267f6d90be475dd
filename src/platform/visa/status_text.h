// The standard description of each status this VISA layer returns, for viStatusDesc.
#ifndef QUARVELO_PLATFORM_VISA_STATUS_TEXT_H_
#define QUARVELO_PLATFORM_VISA_STATUS_TEXT_H_

#include <string_view>

#include "platform/visa/visa.h"

namespace quarvelo::visa {

// "VI_ERROR_TMO: Timeout expired before operation completed." style text; empty when the
// status is not one this layer knows.
std::string_view StatusText(ViStatus status);

}  // namespace quarvelo::visa

#endif  // QUARVELO_PLATFORM_VISA_STATUS_TEXT_H_
