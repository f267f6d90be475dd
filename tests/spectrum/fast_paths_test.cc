// The level sweep's fast logarithm against the library's, and the spectrum pass's windowed
// transform against the module FFT (the engines' real-input paths are checked against FFTW in
// engine_accuracy_test.cc).
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

#include "platform/ui/recording_ui.h"
#include "spectrum/fft_orlen.h"
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

class WindowedTransformTest : public testing::TestWithParam<int> {};

// Bins 0..n/2+1 exactly as Fourier makes them from x[i] w[i] (input 0 zero), n = 2 included
// (its bin 2 is zero), whatever x[0] and w[0] hold.
TEST_P(WindowedTransformTest, GivesTheModuleFftsLowerBinsBitForBit) {
  const int n = GetParam();
  std::mt19937_64 random(n);
  std::uniform_real_distribution<double> value(-1.0, 1.0);
  std::vector<double> x(n), w(n);
  for (int i = 0; i < n; ++i) x[i] = value(random), w[i] = value(random);
  FourierWorkspace reference;
  reference.AllocateAll(n);
  for (int i = 1; i < n; ++i) reference.RealInput[i] = x[i] * w[i];
  ui::RecordingUi ui;
  PrepareTwiddles(reference, n, false);
  ASSERT_EQ(Fourier(reference, n, false, ui), FourierStatus::kOk);
  FourierWorkspace pass;
  ASSERT_TRUE(internal::WindowedModuleTransform(pass, x.data(), w.data(), n));
  ASSERT_EQ(pass.pass_bins_re.size(), static_cast<std::size_t>(n / 2 + 2));
  for (int k = 0; k <= n / 2 + 1; ++k) {
    EXPECT_EQ(pass.pass_bins_re[k], reference.RealOutput[k]) << k;
    EXPECT_EQ(pass.pass_bins_im[k], reference.ImagOutput[k]) << k;
  }
  EXPECT_FALSE(internal::WindowedModuleTransform(pass, x.data(), w.data(), n + 1));
}

INSTANTIATE_TEST_SUITE_P(Lengths, WindowedTransformTest, testing::Values(2, 4, 8, 8192));

}  // namespace
}  // namespace quarvelo::spectrum
