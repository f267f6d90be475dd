#include "spectrum/averaging.h"

#include <gtest/gtest.h>

#include <cmath>
#include <tuple>

namespace quarvelo::spectrum {
namespace {

TEST(BeginAveragingPassTest, ResetsTheShownRangeOnlyWhenTheRunChanged) {
  Spectrum spectrum;
  spectrum.TransformLength = 1024;
  const auto shown = [&] {
    return std::tuple(spectrum.AverageSlot, spectrum.FirstPoint, spectrum.LastPoint,
                      spectrum.QuarterPoint);
  };
  BeginAveragingPass(spectrum, 1, 1, 1000);
  EXPECT_EQ(shown(), std::tuple(1, 1, 513, 256));

  // The user zooms; the next run of the same channel, rate and length keeps the zoom.
  spectrum.FirstPoint = 40;
  spectrum.LastPoint = 90;
  BeginAveragingPass(spectrum, 2, 1, 1000);
  EXPECT_EQ(shown(), std::tuple(2, 40, 90, 256));

  struct Change {
    int channel;
    double rate;
    std::int32_t length;
  };
  for (const Change& change : {Change{2, 1000, 1024}, Change{2, 500, 1024}, Change{2, 500, 999}}) {
    spectrum.FirstPoint = 40;
    spectrum.TransformLength = change.length;
    BeginAveragingPass(spectrum, 1, change.channel, change.rate);
    EXPECT_EQ(spectrum.FirstPoint, 1) << change.channel << " " << change.rate;
    EXPECT_EQ(spectrum.LastPoint,
              static_cast<std::int32_t>(std::nearbyint(change.length / 2.0 + 1)));
  }
  // 999 / 2 + 1 = 500.5 and 999 / 4 = 249.75 round to 500 and 250.
  EXPECT_EQ(shown(), std::tuple(1, 1, 500, 250));
}

}  // namespace
}  // namespace quarvelo::spectrum
