// Every engine against FFTW, bin by bin, on random input, at the smallest and largest
// lengths and one between.
#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <random>

#include "fftw_reference.h"
#include "platform/ui/recording_ui.h"
#include "spectrum/cls_fourier.h"
#include "spectrum/fft_orlen.h"

namespace quarvelo::spectrum {
namespace {

constexpr double kFftTolerance = 1e-9;

std::vector<std::complex<double>> RandomSignal(std::size_t n, bool complex, unsigned seed) {
  std::mt19937_64 random(seed);
  std::uniform_real_distribution<double> value(-1.0, 1.0);
  std::vector<std::complex<double>> signal(n);
  for (auto& x : signal) x = {value(random), complex ? value(random) : 0.0};
  return signal;
}

class FftAccuracyTest : public testing::TestWithParam<int> {
 protected:
  std::int32_t n() const { return std::int32_t{1} << GetParam(); }
};

TEST_P(FftAccuracyTest, ModuleFftMatchesFftwBothWays) {
  const auto signal = RandomSignal(n(), false, 100 + GetParam());
  ui::RecordingUi ui;
  FourierWorkspace workspace;
  workspace.AllocateAll(n());
  for (std::int32_t i = 0; i < n(); ++i) workspace.RealInput[i] = signal[i].real();

  PrepareTwiddles(workspace, n(), false);
  ASSERT_EQ(Fourier(workspace, n(), false, ui), FourierStatus::kOk);
  const auto forward = ReferenceDft(signal, +1);
  const double limit = kFftTolerance * LargestMagnitude(forward);
  for (std::int32_t k = 0; k < n(); ++k) {
    ASSERT_NEAR(workspace.RealOutput[k], forward[k].real(), limit) << "bin " << k;
    ASSERT_NEAR(workspace.ImagOutput[k], forward[k].imag(), limit) << "bin " << k;
  }

  // Inverse tables reverse the exponent; the inverse flag adds the 1/N.
  PrepareTwiddles(workspace, n(), true);
  ASSERT_EQ(Fourier(workspace, n(), true, ui), FourierStatus::kOk);
  const auto inverse = ReferenceDft(signal, -1);
  const double inverse_limit = kFftTolerance * LargestMagnitude(inverse) / n();
  for (std::int32_t k = 0; k < n(); ++k) {
    ASSERT_NEAR(workspace.RealOutput[k], inverse[k].real() / n(), inverse_limit) << k;
    ASSERT_NEAR(workspace.ImagOutput[k], inverse[k].imag() / n(), inverse_limit) << k;
  }
  EXPECT_TRUE(ui.messages().empty());
}

TEST_P(FftAccuracyTest, ObjectFftMatchesFftwBothWays) {
  const auto signal = RandomSignal(n(), true, 200 + GetParam());
  for (const bool reverse : {false, true}) {
    clsFourier fourier;
    fourier.SetTransformReverse(reverse);
    ASSERT_EQ(fourier.SetNumberOfSamples(n()), FourierStatus::kOk);
    for (std::int32_t i = 1; i <= n(); ++i) {
      ASSERT_EQ(fourier.SetRealIn(i, signal[i - 1].real()), FourierStatus::kOk);
      ASSERT_EQ(fourier.SetImagIn(i, signal[i - 1].imag()), FourierStatus::kOk);
    }
    const auto expected = ReferenceDft(signal, reverse ? -1 : +1);
    const double scale = reverse ? 1.0 / n() : 1.0;
    const double limit = kFftTolerance * LargestMagnitude(expected) * scale;
    for (std::int32_t k = 0; k < n(); ++k) {
      std::complex<double> bin;
      ASSERT_EQ(fourier.ComplexOut(k + 1, &bin), FourierStatus::kOk);
      ASSERT_NEAR(bin.real(), expected[k].real() * scale, limit) << reverse << " bin " << k;
      ASSERT_NEAR(bin.imag(), expected[k].imag() * scale, limit) << reverse << " bin " << k;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(PowersOfTwo, FftAccuracyTest, testing::Values(1, 2, 10, 19),
                         [](const testing::TestParamInfo<int>& info) {
                           return "N2pow" + std::to_string(info.param);
                         });

// The DFT quantises every phase to 1/10000 of a turn (and uses a rounded 2 pi): each term
// may be off by up to half a table step of angle, so a bin is within that much of the exact
// transform times the sum of the magnitudes.
class DftAccuracyTest : public testing::TestWithParam<int> {};

TEST_P(DftAccuracyTest, MatchesFftwWithinThePhaseQuantisation) {
  const std::int32_t n = GetParam();
  const auto signal = RandomSignal(n, false, 300 + n);
  FourierWorkspace workspace;
  workspace.AllocateTransformArrays(n);
  double absolute_sum = 0;
  for (std::int32_t i = 0; i < n; ++i) {
    workspace.RealInput[i] = signal[i].real();
    absolute_sum += std::abs(signal[i].real());
  }
  // RealInput[n] stays zero, so the n+1-term sum equals the n-point transform.
  ASSERT_EQ(DiscreteFourier(workspace, n, DftContext{}), std::nearbyint(n / 2.0) + 1);

  const auto expected = ReferenceDft(signal, -1);
  const double bound = absolute_sum * (std::numbers::pi / kDftTableSteps + 1e-12);
  const std::int32_t last_bin = static_cast<std::int32_t>(std::nearbyint(n / 2.0));
  for (std::int32_t k = 0; k <= last_bin; ++k) {
    const std::complex<double> bin(workspace.RealOutput[k], workspace.ImagOutput[k]);
    EXPECT_LE(std::abs(bin - expected[k % n]), bound) << "n " << n << " bin " << k;
  }
  for (std::int32_t k = last_bin + 1; k <= n; ++k) {
    EXPECT_EQ(workspace.RealOutput[k], 0.0) << "bins above n/2 are not computed";
  }
}

INSTANTIATE_TEST_SUITE_P(SmallLengths, DftAccuracyTest, testing::Values(1, 2, 3, 1023));

}  // namespace
}  // namespace quarvelo::spectrum
