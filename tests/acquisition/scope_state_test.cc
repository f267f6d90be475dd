#include "acquisition/scope_state.h"

#include <gtest/gtest.h>

#include <ostream>
#include <string>

#include "acquisition/state_tool_ids.h"

namespace quarvelo::acquisition {
namespace {

struct ScaleIndexCase {
  double scale_volts;
  std::int16_t current;
  std::int16_t expected;
};

void PrintTo(const ScaleIndexCase& c, std::ostream* os) {
  *os << c.scale_volts << " V from index " << c.current;
}

class TriggerScaleIndexTest : public ::testing::TestWithParam<ScaleIndexCase> {};

TEST_P(TriggerScaleIndexTest, MatchesTableOrKeepsCurrent) {
  const ScaleIndexCase& c = GetParam();
  EXPECT_EQ(MatchTriggerScaleIndex(kVoltsPerDivMillivolts, c.scale_volts, c.current), c.expected);
}

INSTANTIATE_TEST_SUITE_P(
    Scales, TriggerScaleIndexTest,
    ::testing::Values(ScaleIndexCase{5.0, 7, 0}, ScaleIndexCase{0.5, 0, 3},
                      ScaleIndexCase{0.001, 0, 11}, ScaleIndexCase{0.02, 2, 7},
                      // Between steps, or zero from an unanswered query: unchanged.
                      ScaleIndexCase{0.3, 4, 4}, ScaleIndexCase{0.0, 9, 9},
                      ScaleIndexCase{10.0, 5, 5}));

TEST(DvmReplyTest, NoValueAnswersStoreZero) {
  EXPECT_EQ(DvmReadingFromReply(9.9e37), 0);
  EXPECT_EQ(DvmReadingFromReply(1000.5), 0);
  EXPECT_EQ(DvmReadingFromReply(1000), 1000);
  EXPECT_EQ(DvmReadingFromReply(-2.5), -2.5);
  EXPECT_EQ(DvmFrequencyFromReply(9.9e37), 0);
  EXPECT_EQ(DvmFrequencyFromReply(2e10), 0);
  EXPECT_EQ(DvmFrequencyFromReply(1e10), 1e10);
  EXPECT_EQ(DvmFrequencyFromReply(1234.5), 1234.5);
}

struct ToolIdCase {
  std::string built;
  std::string expected;
};

void PrintTo(const ToolIdCase& c, std::ostream* os) { *os << '"' << c.expected << '"'; }

class StateToolIdTest : public ::testing::TestWithParam<ToolIdCase> {};

TEST_P(StateToolIdTest, BuildsTheToolOfTheState) {
  EXPECT_EQ(GetParam().built, GetParam().expected);
}

// What the readback tests against the simulator do not reach: the rarer replies, and the
// unknown, empty or out-of-range ones that name no tool.
INSTANTIATE_TEST_SUITE_P(
    States, StateToolIdTest,
    ::testing::Values(
        ToolIdCase{TriggerSourceToolId("DIG", 1), "ID_TGDIG"},
        ToolIdCase{TriggerSourceToolId("CHA", 2), "ID_TG2"},
        ToolIdCase{TriggerSourceToolId("CHA", 0), ""},
        ToolIdCase{TriggerSourceToolId("CHA", 5), ""},
        ToolIdCase{TriggerSlopeToolId("EIT"), "ID_TSE"}, ToolIdCase{TriggerSlopeToolId(""), ""},
        ToolIdCase{AcquireTypeToolId("HRESolution"), "ID_ACQUHRES"},
        ToolIdCase{AcquireTypeToolId(""), ""},
        ToolIdCase{PersistenceToolId("2.5E+00"), "ID_PERSVAR"},
        ToolIdCase{PersistenceToolId(""), "ID_PERSVAR"}, ToolIdCase{ChannelToolId(0), ""},
        ToolIdCase{DvmModeToolId(5), ""}, ToolIdCase{DvmSourceToolId(0), ""},
        ToolIdCase{MeasureSourceToolId("WMEM1"), "ID_MEASWMEM1"},
        ToolIdCase{MeasureSourceToolId("FUNC,CHAN1"), "ID_MEASFUNC"},
        ToolIdCase{MeasureSourceToolId("EXT,CHAN1"), "ID_MEASEXT"},
        ToolIdCase{MeasureSourceToolId("MATH,CHAN1"), ""}, ToolIdCase{MeasureSourceToolId(""), ""},
        ToolIdCase{MathOperationToolId("INT"), ""},
        ToolIdCase{WgenPrefixToolId(":WGEN2"), "ID_WGEN2"},
        ToolIdCase{WgenPrefixToolId(":WGEN"), "ID_WGEN"}, ToolIdCase{WgenPrefixToolId(""), ""},
        ToolIdCase{VoltsPerDivToolId(0.5), "ID_500"}, ToolIdCase{VoltsPerDivToolId(5.0), "ID_5000"},
        ToolIdCase{VoltsPerDivToolId(0.001), "ID_1"}, ToolIdCase{VoltsPerDivToolId(0.02), "ID_20"},
        ToolIdCase{VoltsPerDivToolId(0.3), ""}, ToolIdCase{VoltsPerDivToolId(0.0), ""}));

}  // namespace
}  // namespace quarvelo::acquisition
