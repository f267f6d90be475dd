// A va_list that can be handed down by reference: va_list is an array type on some ABIs, so
// it is wrapped rather than passed around bare.
#ifndef QUARVELO_PLATFORM_VISA_VA_ARGS_H_
#define QUARVELO_PLATFORM_VISA_VA_ARGS_H_

#include <cstdarg>

namespace quarvelo::visa {

struct VaArgs {
  va_list list;
};

}  // namespace quarvelo::visa

#endif  // QUARVELO_PLATFORM_VISA_VA_ARGS_H_
