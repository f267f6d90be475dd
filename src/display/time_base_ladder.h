// The fixed ladder of time-base settings the toolbar offers (the items of the `ID_TB` combo),
// and the reading of a ladder text back into seconds per division.
#ifndef QUARVELO_DISPLAY_TIME_BASE_LADDER_H_
#define QUARVELO_DISPLAY_TIME_BASE_LADDER_H_

#include <array>
#include <string>
#include <string_view>
#include <vector>

namespace quarvelo::display {

inline constexpr int kTimeBaseLadderSize = 35;

// The ladder texts, index 0 ("200.0pS/") to 34 ("50.0S/"), exactly as the combo shows them:
// the number of decimals varies by entry and the micro sign is UTF-8.
inline constexpr std::array<std::string_view, kTimeBaseLadderSize> kTimeBaseLadder = {
    "200.0pS/", "500.0pS/", "1.00nS/",  "2.00nS/",  "5.00nS/",  "10.00nS/", "20.0nS/",
    "50.0nS/",  "100.0nS/", "200.0nS/", "500.0nS/", "1.00µS/",  "2.00µS/",  "5.00µS/",
    "10.0µS/",  "20.0µS/",  "50.0µS/",  "100.0µS/", "200.0µS/", "500.0µS/", "1.00mS/",
    "2.00mS/",  "5.00mS/",  "10.0mS/",  "20.0mS/",  "50.0mS/",  "100.0mS/", "200.0mS/",
    "500.0mS/", "1.00S/",   "2.00S/",   "5.00S/",   "10.0S/",   "20.0S/",   "50.0S/",
};

// The ladder as combo items, index 0..34.
std::vector<std::string> TimeBaseLadder();

// Seconds per division of a ladder text: the unit from the text's end ("pS/", "nS/", "µS/",
// "mS/", anything else seconds) times the leading number before the unit letter. Text
// without a number reads as 0.
double TimeBaseTextSeconds(std::string_view text);

// The index of the last ladder entry whose seconds equal `seconds` exactly, or -1.
int TimeBaseLadderIndex(double seconds);

}  // namespace quarvelo::display

#endif  // QUARVELO_DISPLAY_TIME_BASE_LADDER_H_
