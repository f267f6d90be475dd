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
  EXPECT_FALSE(h.flags.PollBusy);
  EXPECT_TRUE(h.ui.messages().empty());
  EXPECT_TRUE(h.ui.status_lines().empty());
  EXPECT_TRUE(h.tools.state_history().empty());
  EXPECT_TRUE(h.hooks.sweeps.empty());
}

TEST(LinkOfflineTest, SetIoTimeoutStillSetsTheFlags) {
  LinkHarness h;
  h.session.TimedOut = true;
  h.link.SetIoTimeout(true, 500);
  EXPECT_TRUE(h.session.TolerateTimeout);
  EXPECT_FALSE(h.session.TimedOut);
  // The attribute call on the closed session fails, but off line nothing is reported.
  EXPECT_NE(h.session.LastStatus, VI_SUCCESS);
  EXPECT_TRUE(h.ui.messages().empty());
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

class BlankAddressTest : public testing::TestWithParam<std::string> {};

TEST_P(BlankAddressTest, RefusesToOpen) {
  LinkHarness h;
  h.session.Address = GetParam();
  h.tools.SetToolState("ID_Remote", true);
  h.tools.unguarded.clear();
  h.link.OpenInstrument();
  EXPECT_FALSE(h.session.RemoteOn);
  ASSERT_EQ(h.ui.messages().size(), 1u);
  EXPECT_EQ(h.ui.messages()[0].text, "VISA Address empty");
  EXPECT_EQ(h.ui.messages()[0].icon, ui::MessageIcon::kCritical);
  EXPECT_FALSE(h.tools.ToolState("ID_Remote"));
  EXPECT_TRUE(h.tools.unguarded.empty());
  EXPECT_FALSE(h.ui.refresh_timer_enabled());
}

INSTANTIATE_TEST_SUITE_P(Addresses, BlankAddressTest, testing::Values("", " ", "    "));

class UnreachableAddressTest : public testing::TestWithParam<std::string> {};

TEST_P(UnreachableAddressTest, ReportsTheVisaErrorAndStaysClosed) {
  LinkHarness h;
  h.session.Address = GetParam();
  h.link.OpenInstrument();
  EXPECT_FALSE(h.session.RemoteOn);
  ASSERT_EQ(h.ui.messages().size(), 1u);
  EXPECT_EQ(h.ui.messages()[0].text.rfind("*** VISA Error : ", 0), 0u) << h.ui.messages()[0].text;
  EXPECT_GT(h.ui.messages()[0].text.size(), std::string("*** VISA Error : ").size());
  EXPECT_EQ(h.ui.messages()[0].icon, ui::MessageIcon::kCritical);
  EXPECT_LT(h.session.LastStatus, 0);
  EXPECT_EQ(h.scope.ChannelCount, 2);
  EXPECT_EQ(h.settings.Find("Setup", "Channels"), "2");
  EXPECT_EQ(h.hooks.rebuilds, 1);
  EXPECT_FALSE(h.ui.refresh_timer_enabled()) << "a failed open must not start the poll";
  // Once closed, further operations stay silent.
  h.link.SendCommand("*CLS");
  EXPECT_EQ(h.ui.messages().size(), 1u);
}

// Port 1 on loopback refuses connections; the other two cannot be parsed.
INSTANTIATE_TEST_SUITE_P(Addresses, UnreachableAddressTest,
                         testing::Values("TCPIP0::127.0.0.1::1::SOCKET", "NOTABUS::1::2",
                                         "TCPIP0::127.0.0.1::notaport::SOCKET"));

}  // namespace
}  // namespace quarvelo::link
