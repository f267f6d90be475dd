// The pure parts of a capture: how many points are requested, how codes become volts and
// sample indexes seconds, and the sample storage that only grows.
#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "acquisition/capture.h"
#include "acquisition/waveform_record.h"

namespace quarvelo::acquisition {
namespace {

struct PointsCase {
  const char* name;
  bool use_bins;
  int bins_index;
  std::int32_t acquisition_points;
  std::int32_t screen_points;
  std::int32_t expected;
};

class RequestedPointsTest : public testing::TestWithParam<PointsCase> {};

TEST_P(RequestedPointsTest, FollowsTheRule) {
  const PointsCase& c = GetParam();
  EXPECT_EQ(RequestedPoints(c.use_bins, c.bins_index, c.acquisition_points, c.screen_points),
            c.expected);
}

INSTANTIATE_TEST_SUITE_P(
    Rules, RequestedPointsTest,
    testing::Values(PointsCase{"Bins0", true, 0, 100000, 0, 256},
                    // 10 us/div at 1 GSa/s: the screen holds 100000 samples.
                    PointsCase{"Bins0RaisedToScreen", true, 0, 1000000, 100000, 100000},
                    PointsCase{"BinsAboveRecord", true, 9, 50000, 0, 50000},
                    PointsCase{"BinsAboveRecordThenScreen", true, 9, 50000, 80000, 80000},
                    PointsCase{"Entry4906Requests4096", true, 4, 100000, 0, 4096},
                    PointsCase{"LastEntry", true, 11, 4000000, 0, 524288},
                    PointsCase{"WholeRecord", false, 0, 62500, 0, 62500},
                    PointsCase{"WholeRecordIgnoresBins", false, 11, 7680, 1000, 7680},
                    PointsCase{"ScreenAboveCap", false, 0, 8000000, 1000000, 524288},
                    PointsCase{"RecordAboveCap", false, 0, 8000000, 0, 524288},
                    PointsCase{"UnselectedComboIsFirstEntry", true, -1, 100000, 0, 256}),
    [](const testing::TestParamInfo<PointsCase>& info) { return info.param.name; });

TEST(ConvertSamplesTest, CodesToVoltsAndIndexesToSeconds) {
  const std::vector<std::uint8_t> codes = {128, 0, 255, 1};
  std::vector<double> raw(4), time(4), volts(4);
  // x reference is not an argument: it takes no part in the time axis.
  ConvertSamples(codes, 1e-6, -2e-3, 128, 0.01, 0.5, raw, time, volts);
  EXPECT_DOUBLE_EQ(volts[0], 0.5);
  EXPECT_DOUBLE_EQ(volts[1], -0.78);
  EXPECT_DOUBLE_EQ(volts[2], 0.5 + 127 * 0.01);
  EXPECT_DOUBLE_EQ(volts[3], 0.5 - 127 * 0.01);
  EXPECT_DOUBLE_EQ(time[0], -2e-3);
  EXPECT_DOUBLE_EQ(time[3], 3e-6 - 2e-3);
  EXPECT_EQ(raw, (std::vector<double>{128, 0, 255, 1}));
}

TEST(ConvertSamplesTest, StopsAtTheShortestArea) {
  const std::vector<std::uint8_t> codes(10, 200);
  std::vector<double> raw(3, -1), time(3, -1), volts(3, -1);
  ConvertSamples(codes, 1, 0, 0, 1, 0, raw, time, volts);
  EXPECT_EQ(volts, (std::vector<double>{200, 200, 200}));
}

TEST(SampleStorageTest, GrowsKeepingContentsAndNeverShrinks) {
  SampleStorage storage;
  EXPECT_TRUE(storage.Grow(4));
  storage.Volts(2)[3] = 1.25;
  storage.Time(2)[0] = -1;
  const int generation = storage.generation();

  EXPECT_FALSE(storage.Grow(2));
  EXPECT_FALSE(storage.Grow(4));
  EXPECT_EQ(storage.capacity(), 4);
  EXPECT_EQ(storage.generation(), generation);

  EXPECT_TRUE(storage.Grow(1000));
  EXPECT_EQ(storage.capacity(), 1000);
  EXPECT_EQ(storage.Volts(2).size(), 1000u);
  EXPECT_EQ(storage.Volts(2)[3], 1.25);
  EXPECT_EQ(storage.Time(2)[0], -1);
  EXPECT_EQ(storage.SpectrumWork(1, 4).size(), 1000u);
  // Slot 0 holds no channel; out-of-range channels give empty areas, not a crash.
  EXPECT_TRUE(storage.Raw(0).empty());
  EXPECT_TRUE(storage.Raw(5).empty());
  EXPECT_TRUE(storage.Raw(-1).empty());
}

}  // namespace
}  // namespace quarvelo::acquisition
