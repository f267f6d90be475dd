#include "spectrum/bit_index.h"

namespace quarvelo::spectrum {

bool IsPowerOf2(std::int64_t x) { return x >= 2 && (x & (x - 1)) == 0; }

int LowestBitIndex(std::int64_t x) {
  for (int i = 0; i <= 32; ++i) {
    if ((x & (std::int64_t{1} << i)) != 0) return i;
  }
  return 0;
}

std::int32_t ReverseIndexBits(std::int64_t index, int bits) {
  std::int64_t result = 0;
  for (int i = 0; i < bits; ++i) {
    result = (result << 1) | (index & 1);
    index /= 2;  // towards zero, as the definition says, also for negative indexes
  }
  return static_cast<std::int32_t>(result);
}

}  // namespace quarvelo::spectrum
