#include <gtest/gtest.h>

#include <vector>

#include "spectrum/spectrum.h"

namespace quarvelo::spectrum {
namespace {

// Fills pass `pass` with level `base + point` and returns the means of points 1..3.
std::vector<double> FillAndAverage(SpectrumHistory& history, int pass, double base) {
  double* levels = history.Pass(pass);
  for (int i = 0; i < history.points(); ++i) levels[i] = base + i;
  std::vector<double> means(history.points(), -1.0);
  history.Means(pass, 1, 3, means.data());
  return means;
}

TEST(SpectrumHistoryTest, MeansCoverPassesOneToTheCurrentInAnyOrder) {
  SpectrumHistory history;
  history.Reset(4, 5);
  EXPECT_EQ(FillAndAverage(history, 1, 10), (std::vector<double>{-1, 11, 12, 13}));
  EXPECT_EQ(FillAndAverage(history, 2, 20), (std::vector<double>{-1, 16, 17, 18}));
  // Pass 2 again with other levels: the mean must not count the old pass 2.
  EXPECT_EQ(FillAndAverage(history, 2, 30), (std::vector<double>{-1, 21, 22, 23}));
  EXPECT_EQ(FillAndAverage(history, 3, 40),
            (std::vector<double>{-1, 83.0 / 3, 86.0 / 3, 89.0 / 3}));
  // Back to pass 1: a new run's first pass, though the history was not reset.
  EXPECT_EQ(FillAndAverage(history, 1, 0), (std::vector<double>{-1, 1, 2, 3}));
  // A changed earlier pass is seen by a later mean.
  history.Set(2, 1, 100);
  std::vector<double> means(4, -1.0);
  history.Means(2, 2, 2, means.data());
  EXPECT_EQ(means[2], (100 + 32) / 2.0);
}

TEST(SpectrumHistoryTest, ResetClearsLevels) {
  SpectrumHistory history;
  history.Reset(3, 2);
  history.Set(1, 1, 5);
  history.Reset(3, 2);
  EXPECT_EQ(history.At(1, 1), 0.0);
  EXPECT_TRUE(history.Contains(2, 1));
  EXPECT_FALSE(history.Contains(3, 1));
  EXPECT_FALSE(history.Contains(1, 2));
}

// A copy holds the passes in use and means of its own; a grown history starts from zero.
TEST(SpectrumHistoryTest, CopiesKeepThePassesInUseAndGrowingStartsFromZero) {
  SpectrumHistory history;
  history.Reset(4, 3);
  FillAndAverage(history, 1, 10);
  SpectrumHistory copy = history;
  EXPECT_EQ(copy.At(2, 1), 12.0);
  EXPECT_EQ(copy.At(2, 2), 0.0);
  EXPECT_EQ(FillAndAverage(copy, 2, 20), (std::vector<double>{-1, 16, 17, 18}));
  EXPECT_EQ(history.At(2, 2), 0.0) << "the original is not touched";
  history = copy;
  EXPECT_EQ(history.At(3, 2), 23.0);

  history.Reset(50, 6);
  for (int pass = 1; pass < 6; ++pass) {
    std::vector<double> means(50, -1.0);
    history.Means(pass, 0, 49, means.data());
    EXPECT_EQ(means, std::vector<double>(50, 0.0)) << pass;
  }
}

}  // namespace
}  // namespace quarvelo::spectrum
