#include "display/time_base_ladder.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

namespace quarvelo::display {
namespace {

TEST(TimeBaseLadderTest, EveryEntryReadsAsTheDecimalValueItShows) {
  // Each entry must read back as exactly the double the instrument's reply parses to, so the
  // readback can select it; the expected values come from the text with the unit written as
  // an exponent and parsed by the C library.
  for (const std::string_view entry : kTimeBaseLadder) {
    std::string text(entry);
    std::string exponent = "e0";
    for (const auto& [unit, replacement] :
         {std::pair{"pS/", "e-12"}, {"nS/", "e-9"}, {"\u00b5S/", "e-6"}, {"mS/", "e-3"}}) {
      if (text.ends_with(unit)) exponent = replacement;
    }
    const std::string number = text.substr(0, text.find_first_not_of("0123456789."));
    const double expected = std::strtod((number + exponent).c_str(), nullptr);
    EXPECT_EQ(TimeBaseTextSeconds(entry), expected) << entry;
  }
}

TEST(TimeBaseTextTest, TextsOutsideTheLadderReadLeniently) {
  for (const auto& [text, seconds] :
       {std::pair{"", 0.0}, {"S/", 0.0}, {"abc", 0.0}, {"7x", 7.0}, {"1.00S/", 1.0}}) {
    EXPECT_EQ(TimeBaseTextSeconds(text), seconds) << text;
  }
}

}  // namespace
}  // namespace quarvelo::display
