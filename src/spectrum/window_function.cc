#include "spectrum/window_function.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace quarvelo::spectrum {
namespace {

// Every window is a0 - a1 c_1 + a2 c_2 - a3 c_3 + a4 c_4.
struct WindowTerms {
  double a0, a1, a2, a3, a4;
};

constexpr std::array<WindowTerms, kWindowCount> kWindowTerms = {{
    {1, 0, 0, 0, 0},
    {0.54, 0.46, 0, 0, 0},
    {0.42, 0.5, 0.08, 0, 0},
    {0.35875, 0.48829, 0.14128, 0.01168, 0},
    {0.3635819, 0.4891775, 0.1365995, 0.0106144, 0},
    {1, 1.93, 1.29, 0.388, 0.032},
    {0.5, 0.5, 0, 0, 0},
}};

// Samples per row of the fast fill; every row starts from an angle of its own.
constexpr std::size_t kRow = 1024;

}  // namespace

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

void FillWindowWeights(int window_index, std::int64_t m, double two_pi, std::span<double> weights) {
  if (window_index == 0) {
    std::fill(weights.begin(), weights.end(), 1.0);
    return;
  }
  if (weights.size() <= kRow || m - 1 == 0) {
    // Short windows (and spans without cosines) are cheap enough to compute as defined.
    for (std::size_t i = 0; i < weights.size(); ++i) {
      weights[i] = WindowWeight(window_index, static_cast<std::int64_t>(i), m, two_pi).value_or(0);
    }
    return;
  }
  const WindowTerms& a =
      kWindowTerms[window_index >= 0 && window_index < kWindowCount ? window_index
                                                                    : kHanningWindow];
  const double span = static_cast<double>(m - 1);
  // One cosine per sample (and one more per window term) dominated a first pass. Instead,
  // the angle of sample r + j (r a row start, j < kRow) is split into the row's angle and
  // the step j: c_1 = cos(A_r + t_j) = cos A_r cos t_j - sin A_r sin t_j, with the step's
  // sines and cosines computed once. Every sample is one rotation from an exactly computed
  // angle, so nothing accumulates along the window, and the higher terms follow from c_1 by
  // the Chebyshev recurrence c_(k+1) = 2 c_1 c_k - c_(k-1) (cos (k+1)x + cos (k-1)x =
  // 2 cos x cos kx). Both stay within a few units in the last place of the cosines.
  std::array<double, kRow> step_cos;
  std::array<double, kRow> step_sin;
  for (std::size_t j = 0; j < kRow; ++j) {
    const double angle = two_pi * static_cast<double>(j) / span;
    step_cos[j] = std::cos(angle);
    step_sin[j] = std::sin(angle);
  }
  for (std::size_t row = 0; row < weights.size(); row += kRow) {
    const double angle = two_pi * static_cast<double>(row) / span;
    const double row_cos = std::cos(angle);
    const double row_sin = std::sin(angle);
    const std::size_t length = std::min(kRow, weights.size() - row);
    double* out = weights.data() + row;
    for (std::size_t j = 0; j < length; ++j) {
      const double c1 = row_cos * step_cos[j] - row_sin * step_sin[j];
      const double c2 = 2 * c1 * c1 - 1;
      const double c3 = 2 * c1 * c2 - c1;
      const double c4 = 2 * c1 * c3 - c2;
      out[j] = a.a0 - a.a1 * c1 + a.a2 * c2 - a.a3 * c3 + a.a4 * c4;
    }
  }
}

}  // namespace quarvelo::spectrum
