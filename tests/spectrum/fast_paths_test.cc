// Real records take the engines' half-length path: both engines against FFTW on real input,
// including the shortest lengths, where the split has no inner bins.
#include <gtest/gtest.h>

#include <random>

#include "fftw_reference.h"
#include "platform/ui/recording_ui.h"
#include "spectrum/cls_fourier.h"
#include "spectrum/fft_orlen.h"

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

}  // namespace
}  // namespace quarvelo::spectrum
