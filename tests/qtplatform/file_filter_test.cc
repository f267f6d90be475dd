#include "platform/qt/file_filter.h"

#include <gtest/gtest.h>

namespace quarvelo::qt {
namespace {

TEST(FileFilterTest, ClassicFiltersBecomeQtFilters) {
  const struct {
    const char* classic;
    const char* qt;
  } cases[] = {
      {"BMP Files(*.bmp)|*.bmp", "BMP Files (*.bmp)"},
      {"CSV Files|*.csv|All files|*.*", "CSV Files (*.csv);;All files (*.*)"},
      {"Pictures|*.bmp;*.png", "Pictures (*.bmp *.png)"},
      // The pattern field counts, not the text in the description's parentheses.
      {"Data (*.txt)|*.csv", "Data (*.csv)"},
      {"CSV files (*.csv)", "CSV files (*.csv)"},  // already Qt's form
      {"Odd|", "Odd"},
      {"", ""},
  };
  for (const auto& c : cases) EXPECT_EQ(QtFileFilter(c.classic).toStdString(), c.qt) << c.classic;
}

}  // namespace
}  // namespace quarvelo::qt
