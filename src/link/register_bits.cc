#include "link/register_bits.h"

#include <cmath>
#include <cstdint>

namespace quarvelo::link {

std::vector<int> SplitRegisterBits(double value, int width) {
  std::vector<int> bits(width > 0 ? width + 1 : 1, 0);
  if (width <= 0 || width > 52) return bits;
  // nearbyint uses the default rounding mode: to nearest, halves to even.
  double rounded = std::nearbyint(value);
  if (!std::isfinite(rounded) || rounded < 0) return bits;
  rounded = std::fmod(rounded, std::ldexp(1.0, width));  // exact for doubles
  const auto v = static_cast<std::uint64_t>(rounded);
  for (int k = 1; k <= width; ++k) bits[k] = static_cast<int>((v >> (k - 1)) & 1u);
  return bits;
}

}  // namespace quarvelo::link
