// The pure parts of a capture: how many points are requested, how codes become volts and
// sample indexes seconds, and the sample storage that only grows.
#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "acquisition/capture.h"
#include "acquisition/waveform_record.h"

namespace quarvelo::acquisition {
namespace {

TEST(RequestedPointsTest, FollowsTheRule) {
  struct Case {
    bool use_bins;
    int bins_index;
    std::int32_t acquisition_points, screen_points, expected;
  };
  const Case cases[] = {
      {true, 0, 100000, 0, 256},
      {true, 0, 1000000, 100000, 100000},  // 10 us/div at 1 GSa/s: 100000 on screen
      {true, 9, 50000, 0, 50000},          // bins above the record
      {true, 9, 50000, 80000, 80000},      // ... and the screen above both
      {true, 4, 100000, 0, 4096},          // the entry "4906" requests 4096
      {true, 11, 4000000, 0, 524288},      // the last entry
      {false, 0, 62500, 0, 62500},         // the whole record
      {false, 11, 7680, 1000, 7680},       // ... whatever the bins
      {false, 0, 8000000, 1000000, 524288},
      {false, 0, 8000000, 0, 524288},
      {true, -1, 100000, 0, 256}};  // no entry selected: the first
  for (const Case& c : cases) {
    EXPECT_EQ(RequestedPoints(c.use_bins, c.bins_index, c.acquisition_points, c.screen_points),
              c.expected)
        << "row " << &c - cases;
  }
}

TEST(ConvertSamplesTest, CodesToVoltsAndIndexesToSeconds) {
  const std::vector<std::uint8_t> codes = {128, 0, 255, 1};
  std::vector<double> raw(4), time(4), volts(4);
  // x reference is not an argument: it takes no part in the time axis.
  ConvertSamples(codes, 1e-6, -2e-3, 128, 0.01, 0.5, raw, time, volts);
  const double expected_volts[] = {0.5, -0.78, 1.77, -0.77};
  const double expected_time[] = {-2e-3, -1.999e-3, -1.998e-3, -1.997e-3};
  for (size_t i = 0; i < 4; ++i) {
    EXPECT_DOUBLE_EQ(volts[i], expected_volts[i]) << i;
    EXPECT_DOUBLE_EQ(time[i], expected_time[i]) << i;
  }
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
  for (int channel : {0, 5, -1}) EXPECT_TRUE(storage.Raw(channel).empty()) << channel;
}

}  // namespace
}  // namespace quarvelo::acquisition
