#include "spectrum/window_function.h"

#include <gtest/gtest.h>

#include <vector>

#include "spectrum/fft_orlen.h"

namespace quarvelo::spectrum {
namespace {

// Each window is a0 - a1 c1 + a2 c2 - a3 c3 + a4 c4. Its value at the end (all c = 1), the
// centre (c_k = (-1)^k), the quarter (c1 = c3 = 0, c2 = -1, c4 = 1) and its mean over a whole
// period (a0) pin down every coefficient.
struct WindowCase {
  int index;
  double a0, a1, a2, a3, a4;
};

class WindowFunctionTest : public testing::TestWithParam<WindowCase> {};

TEST_P(WindowFunctionTest, HasItsCoefficients) {
  const WindowCase& w = GetParam();
  constexpr std::int64_t kM = 401;  // c_k = cos(2 pi k i / 400)
  const auto weight = [&](std::int64_t i) {
    return WindowWeight(w.index, i, kM, kProgramTwoPi).value_or(-1);
  };
  EXPECT_NEAR(weight(0), w.a0 - w.a1 + w.a2 - w.a3 + w.a4, 1e-9);
  EXPECT_NEAR(weight(400), w.a0 - w.a1 + w.a2 - w.a3 + w.a4, 1e-9);
  EXPECT_NEAR(weight(200), w.a0 + w.a1 + w.a2 + w.a3 + w.a4, 1e-9);
  EXPECT_NEAR(weight(100), w.a0 - w.a2 + w.a4, 1e-9);
  double sum = 0;
  for (std::int64_t i = 0; i < 400; ++i) sum += weight(i);
  EXPECT_NEAR(sum / 400, w.a0, 1e-9);
}

INSTANTIATE_TEST_SUITE_P(
    SevenWindows, WindowFunctionTest,
    testing::Values(WindowCase{0, 1, 0, 0, 0, 0}, WindowCase{1, 0.54, 0.46, 0, 0, 0},
                    WindowCase{2, 0.42, 0.5, 0.08, 0, 0},
                    WindowCase{3, 0.35875, 0.48829, 0.14128, 0.01168, 0},
                    WindowCase{4, 0.3635819, 0.4891775, 0.1365995, 0.0106144, 0},
                    WindowCase{5, 1, 1.93, 1.29, 0.388, 0.032}, WindowCase{6, 0.5, 0.5, 0, 0, 0},
                    // A corrupt index is the default window, Hanning.
                    WindowCase{-1, 0.5, 0.5, 0, 0, 0}, WindowCase{7, 0.5, 0.5, 0, 0, 0}));

TEST(WindowFunctionTest, ASpanOfOneSampleDefinesOnlyTheRectangularWindow) {
  EXPECT_EQ(WindowWeight(0, 0, 1, kProgramTwoPi), 1.0);
  EXPECT_FALSE(WindowWeight(6, 0, 1, kProgramTwoPi).has_value());
  EXPECT_FALSE(WindowWeight(5, 1, 1, kProgramTwoPi).has_value());
}

// The fast fill against the definition, sample by sample: a span on the direct path, one row
// and a bit, a window cut short by the transform (fewer weights than the span), a window
// longer than its span, and spans too short for the cosines.
struct FillCase {
  std::int64_t m;
  std::size_t weights;
};

class FillWindowWeightsTest : public testing::TestWithParam<FillCase> {};

TEST_P(FillWindowWeightsTest, MatchesTheDefinitionForEveryWindow) {
  const FillCase& c = GetParam();
  for (int window = -1; window <= kWindowCount; ++window) {
    std::vector<double> weights(c.weights, -7.0);
    FillWindowWeights(window, c.m, kProgramTwoPi, weights);
    for (std::size_t i = 0; i < c.weights; ++i) {
      const double expected =
          WindowWeight(window, static_cast<std::int64_t>(i), c.m, kProgramTwoPi).value_or(0.0);
      // A few units in the last place of a weight that reaches 4.64 (flat-top).
      ASSERT_NEAR(weights[i], expected, 2e-14)
          << "span " << c.m << " window " << window << " sample " << i;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Spans, FillWindowWeightsTest,
                         testing::Values(FillCase{2, 3}, FillCase{1025, 1026}, FillCase{5000, 3000},
                                         FillCase{3000, 5000}, FillCase{1, 3000}, FillCase{0, 1}));

}  // namespace
}  // namespace quarvelo::spectrum
