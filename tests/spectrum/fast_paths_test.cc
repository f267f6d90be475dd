// The level sweep's fast logarithm against the library's (the engines' real-input paths are
// checked against FFTW in engine_accuracy_test.cc).
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

#include "spectrum/level_conversion.h"

namespace quarvelo::spectrum {
namespace {

TEST(NaturalLogTest, MatchesTheLibraryFromSubnormalsToTheLargestDouble) {
  constexpr double kMax = std::numeric_limits<double>::max();
  std::vector<double> xs = {1.0,   2.0,    0.5,      std::nextafter(std::sqrt(2.0), 2.0),
                            0.75,  1e-300, 5e-324,   std::numeric_limits<double>::min() / 3,
                            1e300, kMax,   1 + 1e-12};
  std::mt19937_64 random(7);
  std::uniform_real_distribution<double> exponent(-300.0, 300.0);
  for (int i = 0; i < 20000; ++i) xs.push_back(std::pow(10.0, exponent(random)));
  for (const double x : xs) {
    const double want = std::log(x);
    EXPECT_NEAR(internal::NaturalLog(x), want, 4e-16 * std::abs(want)) << x;
  }
  EXPECT_EQ(internal::NaturalLog(0.0), -std::numeric_limits<double>::infinity());
  EXPECT_EQ(internal::NaturalLog(std::numeric_limits<double>::infinity()),
            std::numeric_limits<double>::infinity());
}

}  // namespace
}  // namespace quarvelo::spectrum
