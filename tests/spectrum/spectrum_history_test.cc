#include <gtest/gtest.h>

#include <tuple>
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

TEST(SpectrumHistoryTest, ResetClearsLevelsAndGrowingStartsFromZero) {
  SpectrumHistory history;
  history.Reset(3, 2);
  history.Set(1, 1, 5);
  history.Reset(3, 2);
  EXPECT_EQ(history.At(1, 1), 0.0);
  history.Set(2, 1, 5);
  history.Reset(50, 6);
  std::vector<double> means(50, -1.0);
  history.Means(5, 0, 49, means.data());
  EXPECT_EQ(means, std::vector<double>(50, 0.0));
  history.Reset(3, 2);
  EXPECT_EQ(std::tuple(history.Contains(2, 1), history.Contains(3, 1), history.Contains(1, 2)),
            std::tuple(true, false, false));
}

}  // namespace
}  // namespace quarvelo::spectrum
