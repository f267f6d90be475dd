#include "spectrum/cls_fourier.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <random>

namespace quarvelo::spectrum {
namespace {

TEST(ClsFourierTest, AcceptsOnlyPowersOfTwo) {
  clsFourier fourier;
  for (const std::int32_t n : {1, 0, -4, 1000}) {
    EXPECT_EQ(fourier.SetNumberOfSamples(n), FourierStatus::kBadSampleCount) << n;
    EXPECT_EQ(fourier.NumberOfSamples(), 0) << "a refused length leaves it unknown";
  }
  EXPECT_EQ(FourierStatusMessage(FourierStatus::kBadSampleCount),
            "Number of Samples must be a positive value of the form 2 ^ n");
  EXPECT_EQ(fourier.SetNumberOfSamples(2), FourierStatus::kOk);
  EXPECT_EQ(fourier.SetNumberOfSamples(65536), FourierStatus::kOk);
  EXPECT_EQ(fourier.SetNumberOfSamples(1000), FourierStatus::kBadSampleCount);
  EXPECT_EQ(fourier.NumberOfSamples(), 65536) << "a refused length keeps the previous one";
}

TEST(ClsFourierTest, IndexesCountFromOneAndNeedAKnownLength) {
  clsFourier fourier;
  double value = 7;
  std::complex<double> complex_value;
  EXPECT_EQ(fourier.SetRealIn(1, 1.0), FourierStatus::kIndexOutOfRange);
  EXPECT_EQ(fourier.RealOut(1, &value), FourierStatus::kIndexOutOfRange);
  EXPECT_EQ(value, 7) << "a failed read leaves the destination alone";
  ASSERT_EQ(fourier.SetNumberOfSamples(8), FourierStatus::kOk);
  for (const std::int32_t index : {0, 9, -1}) {
    EXPECT_EQ(fourier.SetRealIn(index, 1.0), FourierStatus::kIndexOutOfRange) << index;
    EXPECT_EQ(fourier.SetImagIn(index, 1.0), FourierStatus::kIndexOutOfRange) << index;
    EXPECT_EQ(fourier.ImagOut(index, &value), FourierStatus::kIndexOutOfRange) << index;
    EXPECT_EQ(fourier.Magnitude(index, &value), FourierStatus::kIndexOutOfRange) << index;
    EXPECT_EQ(fourier.ComplexOut(index, &complex_value), FourierStatus::kIndexOutOfRange);
  }
  EXPECT_EQ(FourierStatusMessage(FourierStatus::kIndexOutOfRange),
            "Index out of range or number of samples unknown");
  EXPECT_EQ(fourier.SetRealIn(8, 1.0), FourierStatus::kOk);
  // A unit sample at n = 7 of 8 gives e^(+j 2 pi 7 k / 8): bin k = 2 is e^(j 7 pi / 2) = -j.
  ASSERT_EQ(fourier.ComplexOut(3, &complex_value), FourierStatus::kOk);
  EXPECT_NEAR(complex_value.real(), 0.0, 1e-12);
  EXPECT_NEAR(complex_value.imag(), -1.0, 1e-12);
}

TEST(ClsFourierTest, ReverseTakesEffectAfterTheNextInputWrite) {
  clsFourier fourier;
  ASSERT_EQ(fourier.SetNumberOfSamples(4), FourierStatus::kOk);
  ASSERT_EQ(fourier.SetRealIn(2, 1.0), FourierStatus::kOk);  // x[1] = 1
  double forward_imag = 0;
  ASSERT_EQ(fourier.ImagOut(2, &forward_imag), FourierStatus::kOk);
  EXPECT_NEAR(forward_imag, 1.0, 1e-15);  // e^(+j pi / 2)

  fourier.SetTransformReverse(true);
  double again = 0;
  ASSERT_EQ(fourier.ImagOut(2, &again), FourierStatus::kOk);
  EXPECT_EQ(again, forward_imag) << "the old output until an input changes";

  ASSERT_EQ(fourier.SetRealIn(2, 1.0), FourierStatus::kOk);
  double reverse_imag = 0;
  ASSERT_EQ(fourier.ImagOut(2, &reverse_imag), FourierStatus::kOk);
  EXPECT_NEAR(reverse_imag, -0.25, 1e-15);  // e^(-j pi / 2) / 4
}

TEST(ClsFourierTest, ForwardThenReverseReproducesTheInput) {
  constexpr std::int32_t kN = 4096;
  std::mt19937 random(3);
  std::normal_distribution<double> noise;
  std::vector<std::complex<double>> input(kN);
  for (auto& x : input) x = {noise(random), noise(random)};

  clsFourier forward;
  ASSERT_EQ(forward.SetNumberOfSamples(kN), FourierStatus::kOk);
  for (std::int32_t i = 1; i <= kN; ++i) {
    ASSERT_EQ(forward.SetRealIn(i, input[i - 1].real()), FourierStatus::kOk);
    ASSERT_EQ(forward.SetImagIn(i, input[i - 1].imag()), FourierStatus::kOk);
  }
  clsFourier reverse;
  reverse.SetTransformReverse(true);
  ASSERT_EQ(reverse.SetNumberOfSamples(kN), FourierStatus::kOk);
  for (std::int32_t i = 1; i <= kN; ++i) {
    std::complex<double> bin;
    ASSERT_EQ(forward.ComplexOut(i, &bin), FourierStatus::kOk);
    ASSERT_EQ(reverse.SetRealIn(i, bin.real()), FourierStatus::kOk);
    ASSERT_EQ(reverse.SetImagIn(i, bin.imag()), FourierStatus::kOk);
  }
  for (std::int32_t i = 1; i <= kN; ++i) {
    std::complex<double> back;
    ASSERT_EQ(reverse.ComplexOut(i, &back), FourierStatus::kOk);
    EXPECT_NEAR(back.real(), input[i - 1].real(), 1e-12);
    EXPECT_NEAR(back.imag(), input[i - 1].imag(), 1e-12);
  }
  EXPECT_GE(forward.Timing(), 0.0f);
}

TEST(ClsFourierTest, CosineGivesEqualPeaksAtKAndNMinusK) {
  constexpr std::int32_t kN = 64;
  constexpr int kCycles = 5;
  clsFourier fourier;
  ASSERT_EQ(fourier.SetNumberOfSamples(kN), FourierStatus::kOk);
  for (std::int32_t i = 0; i < kN; ++i) {
    ASSERT_EQ(fourier.SetRealIn(i + 1, std::cos(2 * std::numbers::pi * kCycles * i / kN)),
              FourierStatus::kOk);
  }
  for (std::int32_t k = 0; k < kN; ++k) {
    double magnitude = 0;
    ASSERT_EQ(fourier.Magnitude(k + 1, &magnitude), FourierStatus::kOk);
    const double expected = (k == kCycles || k == kN - kCycles) ? kN / 2.0 : 0.0;
    EXPECT_NEAR(magnitude, expected, 1e-10) << k;
  }
}

}  // namespace
}  // namespace quarvelo::spectrum
