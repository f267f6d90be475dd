#include "spectrum/window_function.h"

#include <cmath>

namespace quarvelo::spectrum {

std::optional<double> WindowWeight(int window_index, std::int64_t i, std::int64_t m,
                                   double two_pi) {
  if (window_index == 0) return 1.0;
  if (m - 1 == 0) return std::nullopt;
  const double position = static_cast<double>(i);
  const double span = static_cast<double>(m - 1);
  const auto c = [&](int k) { return std::cos(two_pi * k * position / span); };
  switch (window_index) {
    case 1:
      return 0.54 - 0.46 * c(1);
    case 2:
      return 0.42 - 0.5 * c(1) + 0.08 * c(2);
    case 3:
      return 0.35875 - 0.48829 * c(1) + 0.14128 * c(2) - 0.01168 * c(3);
    case 4:
      return 0.3635819 - 0.4891775 * c(1) + 0.1365995 * c(2) - 0.0106144 * c(3);
    case 5:
      // Not normalised: the flat-top window peaks near 4.64.
      return 1 - 1.93 * c(1) + 1.29 * c(2) - 0.388 * c(3) + 0.032 * c(4);
    default:
      return 0.5 * (1 - c(1));
  }
}

}  // namespace quarvelo::spectrum
