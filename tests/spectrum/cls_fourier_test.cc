#include "spectrum/cls_fourier.h"

#include <gtest/gtest.h>

namespace quarvelo::spectrum {
namespace {

TEST(ClsFourierTest, AcceptsOnlyPowersOfTwo) {
  clsFourier fourier;
  for (const std::int32_t n : {1, 0, -4, 1000}) {
    EXPECT_EQ(fourier.SetNumberOfSamples(n), FourierStatus::kBadSampleCount) << n;
    EXPECT_EQ(fourier.NumberOfSamples(), 0) << "a refused length leaves it unknown";
  }
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
  EXPECT_EQ(fourier.SetRealIn(8, 1.0), FourierStatus::kOk);
  EXPECT_EQ(fourier.ComplexOut(8, &complex_value), FourierStatus::kOk);
}

TEST(ClsFourierTest, ReverseTakesEffectAfterTheNextInputWrite) {
  clsFourier fourier;
  ASSERT_EQ(fourier.SetNumberOfSamples(4), FourierStatus::kOk);
  const auto imag_of_bin_1 = [&] {
    double value = 0;
    EXPECT_EQ(fourier.ImagOut(2, &value), FourierStatus::kOk);
    return value;
  };
  ASSERT_EQ(fourier.SetRealIn(2, 1.0), FourierStatus::kOk);  // x[1] = 1
  EXPECT_NEAR(imag_of_bin_1(), 1.0, 1e-15);                  // e^(+j pi / 2)
  fourier.SetTransformReverse(true);
  EXPECT_NEAR(imag_of_bin_1(), 1.0, 1e-15) << "the old output until an input changes";
  ASSERT_EQ(fourier.SetRealIn(2, 1.0), FourierStatus::kOk);
  EXPECT_NEAR(imag_of_bin_1(), -0.25, 1e-15);  // e^(-j pi / 2) / 4
}

}  // namespace
}  // namespace quarvelo::spectrum
