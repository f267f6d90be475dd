// The link with remote control off, and opening it where no instrument answers: nothing may
// touch an instrument, and every failure must leave the link closed and the user told.
#include <gtest/gtest.h>

#include <string>

#include "tests/link/link_harness.h"

namespace quarvelo::link {
namespace {

using testing_support::LinkHarness;

TEST(LinkOfflineTest, OperationsReturnAtOnceWithEmptyResults) {
  LinkHarness h;
  h.session.TimedOut = true;
  // The time-out's flags are set though the attribute call on the closed session fails.
  h.link.SetIoTimeout(true, 500);
  EXPECT_TRUE(h.session.TolerateTimeout);
  EXPECT_FALSE(h.session.TimedOut);
  EXPECT_NE(h.session.LastStatus, VI_SUCCESS);
  h.session.TimedOut = true;
  EXPECT_EQ(h.link.QueryString("*IDN?"), "");
  EXPECT_FALSE(h.session.TimedOut) << "QueryString clears TimedOut even off line";
  h.session.number_list[0] = 42;
  EXPECT_EQ(h.link.QueryNumberList(":WAVeform:PREamble?"), 0);
  EXPECT_EQ(h.session.number_list[0], 42) << "the number-list area stays untouched";
  EXPECT_EQ(h.link.QueryBinaryBlock(":WAVeform:DATA?"), 0);
  h.link.SendCommand(":RUN");
  h.link.CheckInstrumentErrors();
  h.link.PollInstrumentStatus(true);
  h.link.CheckSingleDone(true);
  EXPECT_EQ(
      testing_support::Fields(h.flags.PollBusy, h.ui.messages().size(), h.ui.status_lines().size(),
                              h.tools.state_history().size(), h.hooks.sweeps.size()),
      "0|0|0|0|0|");
}

TEST(LinkOfflineTest, CloseResetsTheIndicatorsOfTheInstrumentsChannelsUnderTheGuard) {
  LinkHarness h;
  h.scope.ChannelCount = 3;
  for (const char* id : {"ID_Remote", "ID_CH1", "ID_CH2", "ID_CH3", "ID_CH4"}) {
    h.tools.SetToolState(id, true);
  }
  h.tools.unguarded.clear();
  h.link.CloseInstrument();
  for (const char* id : {"ID_Remote", "ID_CH1", "ID_CH2", "ID_CH3"}) {
    EXPECT_FALSE(h.tools.ToolState(id)) << id;
  }
  EXPECT_TRUE(h.tools.ToolState("ID_CH4")) << "a channel the instrument lacks is left alone";
  EXPECT_TRUE(h.tools.unguarded.empty());
  EXPECT_FALSE(h.scope.ToolUpdateInProgress);
  EXPECT_FALSE(h.ui.refresh_timer_enabled());
  EXPECT_EQ(h.ui.activity_colour(), ui::MakeRgb(192, 192, 192));
  EXPECT_EQ(h.hooks.wgen_closes, 0) << "the generator dialog is closed only with a live link";
}

// A blank address is refused before VISA is asked; a refused connection or an address that
// cannot be parsed is VISA's error, which also falls back to two channels.
struct OpenCase {
  std::string address;
  std::string message;  // up to its end, or the message's start followed by '*'
};

class OpenFailureTest : public testing::TestWithParam<OpenCase> {};

TEST_P(OpenFailureTest, ReportsAndStaysClosed) {
  LinkHarness h;
  h.session.Address = GetParam().address;
  h.tools.SetToolState("ID_Remote", true);
  h.tools.unguarded.clear();
  h.link.OpenInstrument();
  ASSERT_EQ(h.ui.messages().size(), 1u);
  const std::string& text = h.ui.messages()[0].text;
  const bool visa = GetParam().message.ends_with('*');
  if (visa) {
    EXPECT_TRUE(text.starts_with(GetParam().message.substr(0, 17))) << text;
    EXPECT_GT(text.size(), 17u) << "VISA's own description follows";
    EXPECT_LT(h.session.LastStatus, 0);
  } else {
    EXPECT_EQ(text, GetParam().message);
  }
  EXPECT_EQ(h.ui.messages()[0].icon, ui::MessageIcon::kCritical);
  EXPECT_EQ(testing_support::Fields(h.session.RemoteOn, h.tools.ToolState("ID_Remote"),
                                    h.ui.refresh_timer_enabled(), h.scope.ChannelCount,
                                    h.settings.Find("Setup", "Channels").value_or("none"),
                                    h.hooks.rebuilds),
            visa ? "0|0|0|2|2|1|" : "0|0|0|4|none|0|");
  EXPECT_TRUE(h.tools.unguarded.empty());
  // Once closed, further operations stay silent.
  h.link.SendCommand("*CLS");
  EXPECT_EQ(h.ui.messages().size(), 1u);
}

// Port 1 on loopback refuses connections; the last two cannot be parsed.
INSTANTIATE_TEST_SUITE_P(
    Addresses, OpenFailureTest,
    testing::Values(OpenCase{"", "VISA Address empty"}, OpenCase{"    ", "VISA Address empty"},
                    OpenCase{"TCPIP0::127.0.0.1::1::SOCKET", "*** VISA Error : *"},
                    OpenCase{"NOTABUS::1::2", "*** VISA Error : *"},
                    OpenCase{"TCPIP0::127.0.0.1::notaport::SOCKET", "*** VISA Error : *"}));

}  // namespace
}  // namespace quarvelo::link
