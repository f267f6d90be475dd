// Every engine against FFTW, bin by bin, on random input, both ways: the module engine on real
// records, the object engine on complex ones and on real ones (its half-length path), at the
// shortest lengths (where the split has no inner bins), one between and the largest.
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

std::vector<std::complex<double>> RandomSignal(std::size_t n, bool complex, unsigned seed) {
  std::mt19937_64 random(seed);
  std::uniform_real_distribution<double> value(-1.0, 1.0);
  std::vector<std::complex<double>> signal(n);
  for (auto& x : signal) x = {value(random), complex ? value(random) : 0.0};
  return signal;
}

// Every bin(k) against FFTW's transform of `signal`; the reverse transform carries the 1/N.
template <typename Bin>
void ExpectMatchesFftw(const std::vector<std::complex<double>>& signal, bool reverse, Bin bin) {
  const auto n = static_cast<std::int32_t>(signal.size());
  const auto expected = ReferenceDft(signal, reverse ? -1 : +1);
  const double scale = reverse ? 1.0 / n : 1.0;
  const double limit = 1e-9 * LargestMagnitude(expected) * scale;
  for (std::int32_t k = 0; k < n; ++k) {
    ASSERT_LE(std::abs(bin(k) - expected[k] * scale), limit)
        << "reverse " << reverse << " bin " << k;
  }
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
  for (const bool reverse : {false, true}) {
    // Inverse tables reverse the exponent; the inverse flag adds the 1/N.
    PrepareTwiddles(workspace, n(), reverse);
    ASSERT_EQ(Fourier(workspace, n(), reverse, ui), FourierStatus::kOk);
    ExpectMatchesFftw(signal, reverse, [&](std::int32_t k) {
      return std::complex<double>(workspace.RealOutput[k], workspace.ImagOutput[k]);
    });
  }
  EXPECT_TRUE(ui.messages().empty());
}

TEST_P(FftAccuracyTest, ObjectFftMatchesFftwBothWaysOnComplexAndRealInput) {
  for (const bool complex : {true, false}) {
    const auto signal = RandomSignal(n(), complex, 200 + GetParam());
    for (const bool reverse : {false, true}) {
      SCOPED_TRACE(complex ? "complex" : "real");
      clsFourier fourier;
      fourier.SetTransformReverse(reverse);
      ASSERT_EQ(fourier.SetNumberOfSamples(n()), FourierStatus::kOk);
      for (std::int32_t i = 1; i <= n(); ++i) {
        ASSERT_EQ(fourier.SetRealIn(i, signal[i - 1].real()), FourierStatus::kOk);
        ASSERT_EQ(fourier.SetImagIn(i, signal[i - 1].imag()), FourierStatus::kOk);
      }
      ExpectMatchesFftw(signal, reverse, [&](std::int32_t k) {
        std::complex<double> bin;
        EXPECT_EQ(fourier.ComplexOut(k + 1, &bin), FourierStatus::kOk);
        return bin;
      });
    }
  }
}

// log2 of the length.
INSTANTIATE_TEST_SUITE_P(PowersOfTwo, FftAccuracyTest, testing::Values(1, 2, 3, 10, 19));

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
