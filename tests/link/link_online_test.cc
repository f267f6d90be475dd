// The link against the simulated oscilloscope over loopback TCP: the exact traffic of commands
// and queries, the error queue, the status polls, a tolerated time-out and a dead link.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/text/number_parse.h"
#include "tests/link/online_scope.h"

namespace quarvelo::link {
namespace {

using testing_support::Fields;
using testing_support::OnlineScope;
using testing_support::WithErrorQuery;

// The indicator and refresh timer it switches: tests/app/frm_keysight_link_test.cc.
TEST(LinkOnlineTest, OpenSendsNothingAndCloseClosesTheGeneratorDialog) {
  auto simulator = testing_support::StartSimulator({});
  testing_support::LinkHarness h;
  h.session.Address = simulator->SocketResource();
  h.link.OpenInstrument();
  ASSERT_TRUE(h.session.RemoteOn);
  EXPECT_TRUE(simulator->ReceivedMessages().empty());
  h.link.CloseInstrument();
  EXPECT_EQ(h.hooks.wgen_closes, 1);
}

TEST(LinkOnlineTest, OverLongAndGarbledRepliesDoNotShiftLaterExchanges) {
  OnlineScope s;
  // Five identifications in one reply: far more than the 256 characters a reply may bring.
  const std::string compound = "*IDN?;*IDN?;*IDN?;*IDN?;*IDN?";
  const std::string whole = s.simulator->Execute(compound);
  ASSERT_GT(whole.size(), 300u);
  EXPECT_EQ(s.h.link.QueryString(compound), whole.substr(0, 256));
  s.simulator->Execute(":SIMulate:GARBage 1");
  const std::string garbage = s.h.link.QueryString(":TIMebase:SCALe?");
  EXPECT_NE(garbage, s.simulator->Execute(":TIMebase:SCALe?"));
  EXPECT_EQ(s.h.link.QueryString("*IDN?"), s.simulator->Execute("*IDN?"));
  EXPECT_TRUE(s.h.session.RemoteOn);
}

TEST(LinkOnlineTest, TwoErrorEntriesAreDrainedOntoTheStatusLine) {
  OnlineScope s;
  s.simulator->Execute(":NOSuch:HEADer 1");
  s.simulator->Execute(":TIMebase:SCALe abc");
  s.simulator->ClearTraffic();
  s.h.link.SendCommand(":RUN");
  EXPECT_EQ(s.h.ui.status(),
            "INST Error: -113,\"Undefined header\"INST Error: -104,\"Data type error\"");
  EXPECT_EQ(s.Sent(), (std::vector<std::string>{":RUN", ":SYSTem:ERRor?", ":SYSTem:ERRor?",
                                                ":SYSTem:ERRor?"}));
  EXPECT_TRUE(s.h.session.RemoteOn);
  // The link stays in step: the next query gets its own reply.
  EXPECT_EQ(s.h.link.QueryString("*IDN?"), s.simulator->Execute("*IDN?"));
}

TEST(LinkOnlineTest, CommandsMayCarryPercentAndBackslash) {
  OnlineScope s;
  s.h.link.SendCommand(":DISPlay:ANNotation:TEXT \"50% \\ 3\"");
  EXPECT_EQ(s.Sent().at(0), ":DISPlay:ANNotation:TEXT \"50% \\ 3\"");
  EXPECT_EQ(s.simulator->Execute(":DISPlay:ANNotation:TEXT?"), "\"50% \\ 3\"");
}

TEST(LinkOnlineTest, PollsThatMayNotRunSendNothing) {
  OnlineScope s;
  s.h.link.PollInstrumentStatus(false);
  s.h.flags.CaptureBusy = true;
  s.h.link.PollInstrumentStatus(true);
  s.h.flags.CaptureBusy = false;
  s.h.flags.PollBusy = true;
  s.h.link.PollInstrumentStatus(true);
  s.h.link.CheckSingleDone(true);
  s.h.flags.PollBusy = false;
  s.h.link.CheckSingleDone(false);
  s.h.session.TimedOut = true;
  s.h.link.PollInstrumentStatus(true);
  EXPECT_TRUE(s.Sent().empty());
  EXPECT_TRUE(s.h.tools.state_history().empty());
}

TEST(LinkOnlineTest, PollReadsTheThreeRegistersAndMirrorsTheRunBit) {
  OnlineScope s;
  s.simulator->Execute(":RUN");
  s.h.link.PollInstrumentStatus(true);
  EXPECT_EQ(s.Sent(), WithErrorQuery({":AER?", "*ESR?", ":OPERegister:CONDition?"}));
  // The run tool, the run bit, stopped, poll busy, tools changed unguarded, the guard.
  auto state = [&] {
    return Fields(s.h.tools.ToolState("ID_Run"), s.h.flags.RunBit, s.h.flags.Stopped,
                  s.h.flags.PollBusy, s.h.tools.unguarded.size(), s.h.scope.ToolUpdateInProgress);
  };
  EXPECT_EQ(state(), "1|1|0|0|0|0|");
  s.simulator->Execute(":STOP");
  s.h.link.PollInstrumentStatus(true);
  EXPECT_EQ(state(), "0|0|1|0|0|0|");
  EXPECT_TRUE(s.h.hooks.sweeps.empty()) << "no key was pressed";
  EXPECT_NE(s.h.ui.activity_colour(), ui::MakeRgb(255, 0, 0));
}

struct KeyCase {
  bool running;
  bool auto_refresh;
  std::vector<bool> sweeps;
};

class UserRequestTest : public testing::TestWithParam<KeyCase> {};

TEST_P(UserRequestTest, KeyPressTurnsTheIndicatorRedAndMaySweep) {
  const KeyCase& c = GetParam();
  OnlineScope s;
  s.simulator->Execute(c.running ? ":RUN" : ":STOP");
  s.simulator->Execute(testing_support::kPressFrontPanelKey);
  s.h.flags.AutoRefresh = c.auto_refresh;
  s.h.link.PollInstrumentStatus(true);
  EXPECT_EQ(s.h.ui.activity_colour(), ui::MakeRgb(255, 0, 0));
  EXPECT_EQ(s.h.hooks.sweeps, c.sweeps);
  // *ESR? is read and cleared: the next poll sees no key.
  s.h.hooks.sweeps.clear();
  s.h.link.PollInstrumentStatus(true);
  EXPECT_TRUE(s.h.hooks.sweeps.empty());
}

INSTANTIATE_TEST_SUITE_P(Keys, UserRequestTest,
                         testing::Values(KeyCase{true, false, {}}, KeyCase{true, true, {true}},
                                         KeyCase{false, true, {false}}));

TEST(LinkOnlineTest, SingleDoneEndsTheSingleAcquisitionWithASweep) {
  OnlineScope s;
  s.simulator->Execute(":RUN");
  s.h.link.CheckSingleDone(true);
  EXPECT_EQ(s.Sent(), WithErrorQuery({":OPERegister:CONDition?"}));
  EXPECT_TRUE(s.h.tools.ToolState("ID_Run"));
  EXPECT_TRUE(s.h.hooks.sweeps.empty()) << "still running";

  s.simulator->Execute(":STOP");
  s.h.tools.SetToolState("ID_Single", true);
  s.h.tools.unguarded.clear();
  s.h.ui.SetSingleTimerEnabled(true);
  s.h.link.CheckSingleDone(true);
  EXPECT_EQ(s.h.hooks.sweeps, std::vector<bool>{false});
  // Single and run tools, single and refresh timers, tools changed unguarded, poll busy.
  EXPECT_EQ(Fields(s.h.tools.ToolState("ID_Single"), s.h.tools.ToolState("ID_Run"),
                   s.h.ui.single_timer_enabled(), s.h.ui.refresh_timer_enabled(),
                   s.h.tools.unguarded.size(), s.h.flags.PollBusy),
            "0|0|0|1|0|0|");
}

TEST(LinkOnlineTest, ToleratedTimeOutMarksTimedOutAndSkipsListQueries) {
  OnlineScope s;
  s.simulator->Execute(testing_support::kNeverAnswerNextQuery);
  s.h.link.SetIoTimeout(true, 200);
  EXPECT_EQ(s.h.link.QueryString("*IDN?"), "");
  ASSERT_TRUE(s.h.session.TimedOut);

  s.simulator->ClearTraffic();
  EXPECT_EQ(s.h.link.QueryNumberList(":WAVeform:PREamble?"), 0);
  EXPECT_EQ(s.h.link.QueryBinaryBlock(":WAVeform:DATA?"), 0);
  EXPECT_TRUE(s.Sent().empty()) << "list and block queries wait until TimedOut is cleared";

  // The first write waits up to one time-out for the late reply before it goes out.
  s.h.link.SetIoTimeout(false, 1000);
  EXPECT_FALSE(s.h.session.TimedOut);
  EXPECT_EQ(s.h.link.QueryString("*IDN?"), s.simulator->Execute("*IDN?"))
      << "the session is usable and not polluted by a late reply";
}

}  // namespace
}  // namespace quarvelo::link
