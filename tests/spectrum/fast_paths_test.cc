// The fast paths: real records through the engines' half-length transform, against FFTW on
// real input, including the shortest lengths, where the split has no inner bins; the level
// sweep's logarithm against the library's.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

#include "fftw_reference.h"
#include "platform/ui/recording_ui.h"
#include "spectrum/cls_fourier.h"
#include "spectrum/fft_orlen.h"
#include "spectrum/level_conversion.h"

namespace quarvelo::spectrum {
namespace {

class RealInputFftTest : public testing::TestWithParam<int> {};

TEST_P(RealInputFftTest, BothEnginesMatchFftwBothWays) {
  const std::int32_t n = GetParam();
  std::mt19937_64 random(n);
  std::uniform_real_distribution<double> value(-1.0, 1.0);
  std::vector<std::complex<double>> signal(n);
  for (auto& x : signal) x = value(random);
  ui::RecordingUi ui;
  FourierWorkspace workspace;
  workspace.AllocateAll(n);
  for (std::int32_t i = 0; i < n; ++i) workspace.RealInput[i] = signal[i].real();
  for (const bool reverse : {false, true}) {
    const auto expected = ReferenceDft(signal, reverse ? -1 : +1);
    const double scale = reverse ? 1.0 / n : 1.0;
    const double limit = 1e-9 * LargestMagnitude(expected) * scale;
    PrepareTwiddles(workspace, n, reverse);
    ASSERT_EQ(Fourier(workspace, n, reverse, ui), FourierStatus::kOk);
    clsFourier fourier;
    fourier.SetTransformReverse(reverse);
    ASSERT_EQ(fourier.SetNumberOfSamples(n), FourierStatus::kOk);
    for (std::int32_t i = 1; i <= n; ++i) {
      fourier.SetRealIn(i, signal[i - 1].real());
      fourier.SetImagIn(i, 0.0);
    }
    for (std::int32_t k = 0; k < n; ++k) {
      const std::complex<double> want = expected[k] * scale;
      EXPECT_NEAR(workspace.RealOutput[k], want.real(), limit) << reverse << " bin " << k;
      EXPECT_NEAR(workspace.ImagOutput[k], want.imag(), limit) << reverse << " bin " << k;
      std::complex<double> bin;
      ASSERT_EQ(fourier.ComplexOut(k + 1, &bin), FourierStatus::kOk);
      EXPECT_NEAR(std::abs(bin - want), 0.0, limit) << reverse << " object bin " << k;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Lengths, RealInputFftTest, testing::Values(2, 4, 8, 64, 4096));

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
