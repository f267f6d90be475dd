// Integer helpers of the radix-2 transforms.
#ifndef QUARVELO_SPECTRUM_BIT_INDEX_H_
#define QUARVELO_SPECTRUM_BIT_INDEX_H_

#include <cstdint>

namespace quarvelo::spectrum {

// False for x < 2 and for x that is not a power of two.
bool IsPowerOf2(std::int64_t x);
// The lowest i of 0..32 with bit i of x set (log2 x for a power of two); 0 when none is.
int LowestBitIndex(std::int64_t x);
// The low `bits` bits of `index` in reverse order; 0 for bits <= 0.
std::int32_t ReverseIndexBits(std::int64_t index, int bits);

}  // namespace quarvelo::spectrum

#endif  // QUARVELO_SPECTRUM_BIT_INDEX_H_
