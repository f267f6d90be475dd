#include "platform/text/number_text.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <limits>
#include <random>
#include <string>
#include <utility>

#include "platform/text/number_parse.h"

namespace quarvelo::text {
namespace {

TEST(NumberTextTest, WritesTheCommandForm) {
  constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
  const std::pair<double, const char*> cases[] = {
      // clang-format off
      {0.5, ".5"}, {-0.25, "-.25"}, {4e-8, "4E-08"}, {1e-5, "1E-05"}, {3, "3"}, {200, "200"},
      {0, "0"}, {-0.0, "0"}, {1.5, "1.5"}, {-40, "-40"}, {0.0001, ".0001"}, {0.00012, ".00012"},
      {9.99e-5, "9.99E-05"}, {-2.5e-9, "-2.5E-09"}, {2e-10, "2E-10"}, {1e15, "1E+15"},
      {999999999999999.0, "999999999999999"}, {1.234e20, "1.234E+20"}, {1e-100, "1E-100"},
      {0.1 + 0.2, ".3"},  // 15 digits: the binary noise is dropped
      {1.0 / 3.0, ".333333333333333"}, {12345.678, "12345.678"}, {kNan, "0"},
      {std::numeric_limits<double>::infinity(), "0"},
      // clang-format on
  };
  for (const auto& [value, text] : cases) EXPECT_EQ(NumberText(value), text) << value;
}

TEST(NumberTextTest, ReadsBackAsTheSameValueWhenFifteenDigitsSuffice) {
  std::mt19937_64 random(7);
  std::uniform_real_distribution<double> mantissa(-10.0, 10.0);
  std::uniform_int_distribution<int> exponent(-12, 14);
  for (int i = 0; i < 2000; ++i) {
    // Values with at most 12 significant digits are exactly what a user or a ladder sends.
    char seed[40];
    std::snprintf(seed, sizeof seed, "%.11e", mantissa(random) * std::pow(10.0, exponent(random)));
    const double value = std::strtod(seed, nullptr);
    const std::string text = NumberText(value);
    EXPECT_EQ(LeadingNumber(text), value) << text;
    EXPECT_EQ(text.find_first_of(" ,"), std::string::npos) << text;
  }
}

TEST(WholeNumberTextTest, RoundsHalvesToEven) {
  const std::pair<double, const char*> cases[] = {
      // clang-format off
      {1250000.0, "1250000"}, {2.5, "2"}, {3.5, "4"}, {-2.5, "-2"}, {-0.4, "0"},
      {99999.7, "100000"}, {2.5e9, "2500000000"}, {std::numeric_limits<double>::quiet_NaN(), "0"},
      // clang-format on
  };
  for (const auto& [value, text] : cases) EXPECT_EQ(WholeNumberText(value), text) << value;
}

}  // namespace
}  // namespace quarvelo::text
