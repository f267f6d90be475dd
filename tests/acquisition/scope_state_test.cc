#include "acquisition/scope_state.h"

#include <gtest/gtest.h>

#include <string>

#include "acquisition/state_tool_ids.h"
#include "tests/link/fields.h"

namespace quarvelo::acquisition {
namespace {

using testing_support::Fields;

TEST(TriggerScaleIndexTest, MatchesTableOrKeepsCurrent) {
  // {volts per division, current index, expected}; between steps, or zero from an unanswered
  // query, the index is unchanged.
  const double cases[][3] = {{5.0, 7, 0}, {0.5, 0, 3}, {0.001, 0, 11}, {0.02, 2, 7},
                             {0.3, 4, 4}, {0.0, 9, 9}, {10.0, 5, 5}};
  for (const auto& [volts, current, expected] : cases) {
    EXPECT_EQ(MatchTriggerScaleIndex(kVoltsPerDivMillivolts, volts, current), expected) << volts;
  }
}

TEST(DvmReplyTest, NoValueAnswersStoreZero) {
  EXPECT_EQ(Fields(DvmReadingFromReply(9.9e37), DvmReadingFromReply(1000.5),
                   DvmReadingFromReply(1000), DvmReadingFromReply(-2.5)),
            "0|0|1000|-2.5|");
  EXPECT_EQ(Fields(DvmFrequencyFromReply(9.9e37), DvmFrequencyFromReply(2e10),
                   DvmFrequencyFromReply(1e10), DvmFrequencyFromReply(1234.5)),
            "0|0|1e+10|1234.5|");
}

// What the readback tests against the simulator do not reach: the rarer replies, and the
// unknown, empty or out-of-range ones that name no tool.
TEST(StateToolIdTest, BuildsTheToolOfTheState) {
  EXPECT_EQ(
      Fields(TriggerSourceToolId("DIG", 1), TriggerSourceToolId("CHA", 2),
             TriggerSourceToolId("CHA", 0), TriggerSourceToolId("CHA", 5),
             TriggerSlopeToolId("EIT"), TriggerSlopeToolId(""), AcquireTypeToolId("HRESolution"),
             AcquireTypeToolId(""), PersistenceToolId("2.5E+00"), PersistenceToolId(""),
             ChannelToolId(0), DvmModeToolId(5), DvmSourceToolId(0)),
      "ID_TGDIG|ID_TG2|||ID_TSE||ID_ACQUHRES||ID_PERSVAR|ID_PERSVAR||||");
  EXPECT_EQ(Fields(MeasureSourceToolId("WMEM1"), MeasureSourceToolId("FUNC,CHAN1"),
                   MeasureSourceToolId("EXT,CHAN1"), MeasureSourceToolId("MATH,CHAN1"),
                   MeasureSourceToolId(""), MathOperationToolId("INT"), WgenPrefixToolId(":WGEN2"),
                   WgenPrefixToolId(":WGEN"), WgenPrefixToolId("")),
            "ID_MEASWMEM1|ID_MEASFUNC|ID_MEASEXT||||ID_WGEN2|ID_WGEN||");
  EXPECT_EQ(Fields(VoltsPerDivToolId(0.5), VoltsPerDivToolId(5.0), VoltsPerDivToolId(0.001),
                   VoltsPerDivToolId(0.02), VoltsPerDivToolId(0.3), VoltsPerDivToolId(0.0)),
            "ID_500|ID_5000|ID_1|ID_20|||");
}

}  // namespace
}  // namespace quarvelo::acquisition
