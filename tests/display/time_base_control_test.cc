#include "display/time_base_control.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "display/time_base_ladder.h"
#include "platform/ui/recording_ui.h"

namespace quarvelo::display {
namespace {

// Every ladder text reads as the value it shows (see the ladder test); here what is sent and in
// which order, and that the sweep keeps the run state.
TEST(SetTimeBaseFromTextTest, SendsTheScaleThenPausesThenSweeps) {
  const struct {
    const char* text;
    bool running;
    const char* command;
    const char* sweep;
  } cases[] = {{"500.0\u00b5S/", true, ":TIMebase:SCALe .0005", "sweep 1"},
               {"50.0S/", false, ":TIMebase:SCALe 50", "sweep 0"},
               {"garbage", true, ":TIMebase:SCALe 0", "sweep 1"}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text);
    ui::RecordingUi ui;
    std::vector<std::string> effects;
    TimeBaseActions actions;
    actions.send_command = [&](std::string_view command) { effects.emplace_back(command); };
    actions.sweep = [&](bool running) { effects.push_back(running ? "sweep 1" : "sweep 0"); };
    ui.SetEventHook([&] { effects.push_back("events"); });
    SetTimeBaseFromText(c.text, c.running, actions, ui);
    ASSERT_GE(effects.size(), 3u);
    EXPECT_EQ(effects.front(), c.command);
    EXPECT_EQ(effects[1], "events");
    EXPECT_EQ(effects.back(), c.sweep);
    EXPECT_EQ(ui.pauses(), std::vector<int>{100});
  }
}

// The ladder index of a time is found through this selection.
TEST(SetComboTimeBaseTest, SelectsAnExactEntryOnlyAndOnlyWhileRemoteIsOn) {
  ui::RecordingToolHost tools;
  tools.SetComboItems(kTimeBaseComboId, TimeBaseLadder());
  tools.SetComboIndex(kTimeBaseComboId, 20);
  const struct {
    double seconds;
    bool remote_on;
    int index;  // afterwards
  } cases[] = {{3e-6, true, 20}, {0, true, 20},    {2e-7, false, 20}, {2e-7, true, 9},
               {5e-6, true, 13}, {2e-10, true, 0}, {50.0, true, 34},  {1.0, true, 29}};
  for (const auto& c : cases) {
    SetComboTimeBase(c.seconds, c.remote_on, tools);
    EXPECT_EQ(tools.ComboIndex(kTimeBaseComboId), c.index) << c.seconds << " " << c.remote_on;
  }
}

}  // namespace
}  // namespace quarvelo::display
