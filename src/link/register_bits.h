// Decomposition of a status register value into its bits.
#ifndef QUARVELO_LINK_REGISTER_BITS_H_
#define QUARVELO_LINK_REGISTER_BITS_H_

#include <vector>

namespace quarvelo::link {

// Element k (1..width) is bit k - 1 of the value rounded to an integer (halves to even);
// element 0 is unused. Bits at and above `width` are dropped; a negative or non-finite value
// has no bits set.
std::vector<int> SplitRegisterBits(double value, int width);

// Bit positions the poll reads, as element indexes of SplitRegisterBits.
inline constexpr int kUserRequestElement = 7;  // *ESR? bit 6
inline constexpr int kRunElement = 4;          // :OPERegister:CONDition? bit 3
inline constexpr int kEsrWidth = 8;
inline constexpr int kOperWidth = 15;

}  // namespace quarvelo::link

#endif  // QUARVELO_LINK_REGISTER_BITS_H_
