#include "display/time_base_control.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "display/time_base_ladder.h"
#include "platform/ui/recording_ui.h"

namespace quarvelo::display {
namespace {

struct SentCase {
  const char* text;
  const char* command;
};

class SetTimeBaseFromTextTest : public testing::TestWithParam<SentCase> {};

TEST_P(SetTimeBaseFromTextTest, SendsTheScaleThenPausesThenSweeps) {
  ui::RecordingUi ui;
  std::vector<std::string> effects;
  TimeBaseActions actions;
  actions.send_command = [&](std::string_view command) { effects.emplace_back(command); };
  actions.sweep = [&](bool running) { effects.push_back(running ? "sweep 1" : "sweep 0"); };
  ui.SetEventHook([&] { effects.push_back("events"); });

  SetTimeBaseFromText(GetParam().text, true, actions, ui);

  ASSERT_GE(effects.size(), 2u);
  EXPECT_EQ(effects.front(), GetParam().command);
  EXPECT_EQ(effects.back(), "sweep 1");
  EXPECT_EQ(ui.pauses(), std::vector<int>{100});
  EXPECT_GE(ui.event_runs(), 1);
}

INSTANTIATE_TEST_SUITE_P(Ladder, SetTimeBaseFromTextTest,
                         testing::Values(SentCase{"200.0pS/", ":TIMebase:SCALe 2E-10"},
                                         SentCase{"10.00nS/", ":TIMebase:SCALe 1E-08"},
                                         SentCase{"1.00S/", ":TIMebase:SCALe 1"},
                                         SentCase{"5.00nS/", ":TIMebase:SCALe 5E-09"},
                                         SentCase{"500.0\u00b5S/", ":TIMebase:SCALe .0005"},
                                         SentCase{"200.0mS/", ":TIMebase:SCALe .2"},
                                         SentCase{"50.0S/", ":TIMebase:SCALe 50"},
                                         SentCase{"garbage", ":TIMebase:SCALe 0"}));

TEST(SetTimeBaseFromTextTest, PassesTheStoppedStateToTheSweep) {
  ui::RecordingUi ui;
  std::vector<bool> sweeps;
  TimeBaseActions actions;
  actions.sweep = [&](bool running) { sweeps.push_back(running); };
  SetTimeBaseFromText("1.00mS/", false, actions, ui);
  EXPECT_EQ(sweeps, std::vector<bool>{false});
}

class SetComboTimeBaseTest : public testing::Test {
 protected:
  SetComboTimeBaseTest() {
    tools_.SetComboItems(kTimeBaseComboId, TimeBaseLadder());
    tools_.SetComboIndex(kTimeBaseComboId, 20);
  }
  ui::RecordingToolHost tools_;
};

TEST_F(SetComboTimeBaseTest, SelectsTheMatchingEntry) {
  SetComboTimeBase(2e-7, true, tools_);
  EXPECT_EQ(tools_.ComboIndex(kTimeBaseComboId), 9);
  EXPECT_EQ(tools_.ComboText(kTimeBaseComboId), "200.0nS/");
  SetComboTimeBase(5e-6, true, tools_);
  EXPECT_EQ(tools_.ComboIndex(kTimeBaseComboId), 13);
}

TEST_F(SetComboTimeBaseTest, KeepsTheSelectionWhenNothingMatchesOrRemoteIsOff) {
  SetComboTimeBase(3e-6, true, tools_);  // between ladder steps
  EXPECT_EQ(tools_.ComboIndex(kTimeBaseComboId), 20);
  SetComboTimeBase(0, true, tools_);
  EXPECT_EQ(tools_.ComboIndex(kTimeBaseComboId), 20);
  SetComboTimeBase(2e-7, false, tools_);
  EXPECT_EQ(tools_.ComboIndex(kTimeBaseComboId), 20);
}

}  // namespace
}  // namespace quarvelo::display
