#include "display/time_base_ladder.h"

#include "platform/text/number_parse.h"

namespace quarvelo::display {
namespace {

// The unit is applied as a division by an exact power of ten, not a multiplication by its
// inexact reciprocal: 200 / 1e9 is the double nearest 2e-7, which is what the instrument's
// reply "2.000E-07" parses to, while 200 * 1e-9 is one unit in the last place above it and
// would never match the readback.
struct LadderUnit {
  std::string_view suffix;
  std::string_view marker;
  double divisor;
};

constexpr LadderUnit kUnits[] = {
    {"pS/", "p", 1e12},
    {"nS/", "n", 1e9},
    {"µS/", "µ", 1e6},
    {"mS/", "m", 1e3},
};

}  // namespace

std::vector<std::string> TimeBaseLadder() {
  return std::vector<std::string>(kTimeBaseLadder.begin(), kTimeBaseLadder.end());
}

double TimeBaseTextSeconds(std::string_view text) {
  std::string_view marker = "S";
  double divisor = 1.0;
  for (const LadderUnit& unit : kUnits) {
    if (text.ends_with(unit.suffix)) {
      marker = unit.marker;
      divisor = unit.divisor;
      break;
    }
  }
  const std::size_t marker_position = text.find(marker);
  const std::string_view number = text.substr(0, marker_position);
  return text::LeadingNumber(number) / divisor;
}

int TimeBaseLadderIndex(double seconds) {
  int found = -1;
  for (int i = 0; i < kTimeBaseLadderSize; ++i) {
    if (TimeBaseTextSeconds(kTimeBaseLadder[i]) == seconds) found = i;
  }
  return found;
}

}  // namespace quarvelo::display
