// The link's time-outs, its error-queue drain and its fatal path, and a dead link with a timer
// tick inside the error box.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include "sim/server/socket_server.h"
#include "sim/server/tcp_listener.h"
#include "tests/link/online_scope.h"

namespace quarvelo::link {
namespace {

using testing_support::Fields;
using testing_support::OnlineScope;

ViUInt32 IoTimeout(const InstrumentSession& session) {
  ViUInt32 ms = 0;
  EXPECT_EQ(viGetAttribute(session.Instrument, VI_ATTR_TMO_VALUE, &ms), VI_SUCCESS);
  return ms;
}

TEST(LinkTimeoutTest, EachCallerSetsItsOwnIoTimeOut) {
  OnlineScope s;
  EXPECT_EQ(IoTimeout(s.h.session), 5000u) << "set right after opening";
  s.capture.CaptureChannel(1, true, false, acquisition::kDigitizeChannel);
  EXPECT_EQ(IoTimeout(s.h.session), 10000u) << "the capture's, until the next poll";
  EXPECT_FALSE(s.h.session.TolerateTimeout);
  s.h.link.PollInstrumentStatus(true);
  EXPECT_EQ(IoTimeout(s.h.session), 5000u);

  // The readback probes with a short, tolerated time-out: a silent instrument costs one
  // identification and changes nothing ...
  s.h.scope.TimebaseScale = 0.123;
  s.simulator->Execute(testing_support::kNeverAnswerNextQuery);
  s.simulator->ClearTraffic();
  s.readback.ReadBackState();
  EXPECT_EQ(IoTimeout(s.h.session), 500u);
  EXPECT_EQ(s.Sent(), std::vector<std::string>{"*IDN?"});
  EXPECT_EQ(Fields(s.h.session.TolerateTimeout, s.h.session.TimedOut, s.h.session.RemoteOn,
                   s.h.ui.status(), s.h.ui.messages().size(), s.h.scope.TimebaseScale,
                   s.h.scope.ToolUpdateInProgress),
            "1|1|1|TIME OUT!|0|0.123|0|");
  // ... and, once the instrument answers, reads on with the default, not tolerated.
  s.h.link.SetIoTimeout(false, acquisition::kCaptureIoTimeoutMs);
  s.readback.ReadBackState();
  EXPECT_EQ(IoTimeout(s.h.session), 5000u);
  EXPECT_FALSE(s.h.session.TolerateTimeout);
  EXPECT_FALSE(s.h.session.TimedOut);
}

// An instrument that takes the connection and never answers the HiSLIP handshake: the open
// waits its full 15 s, then the user is told and the link stays closed.
TEST(LinkTimeoutTest, OpenWaitsFifteenSecondsForASilentInstrument) {
  std::string error;
  const sim::Socket silent = sim::OpenTcpListener("127.0.0.1", 0, &error);
  ASSERT_TRUE(silent.valid()) << error;
  testing_support::LinkHarness h;
  h.session.Address =
      "TCPIP0::127.0.0.1::hislip0," + std::to_string(sim::LocalPort(silent.fd())) + "::INSTR";
  const auto start = std::chrono::steady_clock::now();
  h.link.OpenInstrument();
  const auto waited = std::chrono::steady_clock::now() - start;
  EXPECT_GE(waited, std::chrono::milliseconds(14900));
  EXPECT_LT(waited, std::chrono::milliseconds(16500));
  EXPECT_EQ(Fields(h.session.RemoteOn, h.ui.messages().size()), "0|1|");
}

// A misbehaving instrument (an endless error queue, a stray line) the bounded simulator cannot
// be: a handler on its socket server answers the n-th query (from 0) with `reply(n)`.
class ScriptedInstrument : public sim::MessageHandler {
 public:
  explicit ScriptedInstrument(std::function<std::string(int)> reply) : reply_(std::move(reply)) {
    std::string error;
    EXPECT_TRUE(server_.Start(&error)) << error;
    h.session.Address = "TCPIP0::127.0.0.1::" + std::to_string(server_.port()) + "::SOCKET";
    h.link.OpenInstrument();
    EXPECT_TRUE(h.session.RemoteOn);
  }
  ~ScriptedInstrument() override {
    h.link.CloseInstrument();
    server_.Stop();
  }
  sim::HandlerResponse HandleMessage(std::string_view message) override {
    if (!message.ends_with('?')) return {};
    return {.reply = reply_(queries_++)};
  }
  void ReplyInterrupted() override {}
  void DeviceClear() override {}
  int queries() const { return queries_; }

  testing_support::LinkHarness h;

 private:
  std::function<std::string(int)> reply_;
  std::atomic<int> queries_ = 0;
  sim::SocketServer server_{*this, "127.0.0.1", 0};
};

TEST(ErrorDrainTest, EndlessQueueStopsAtTheBound) {
  ScriptedInstrument peer([](int) { return std::string("+1,\"Loop\"\n"); });
  peer.h.link.SendCommand(":RUN");
  EXPECT_EQ(peer.queries(), kMaxErrorEntries + 1);
  std::string expected;
  for (int n = 0; n < kMaxErrorEntries; ++n) expected += "INST Error: +1,\"Loop\"";
  EXPECT_EQ(peer.h.ui.status(), expected);
  EXPECT_TRUE(peer.h.session.RemoteOn);
}

TEST(ErrorDrainTest, DrainFlushesWhatTheInstrumentSentBeyondItsReplies) {
  ScriptedInstrument peer([](int n) {
    if (n == 0) return std::string("+1,\"One\"\n");
    if (n == 1) return std::string("+0,\"No error\"\nSTALE\n");
    return std::string("FRESH\n");
  });
  peer.h.link.SendCommand(":RUN");
  EXPECT_EQ(peer.h.ui.status(), "INST Error: +1,\"One\"");
  EXPECT_EQ(peer.h.link.QueryString("*IDN?"), "FRESH");
}

// A status line that fails once on an instrument error (`fault_on_error`); an error box that
// lets events run, as a modal box does.
class HookedUi : public ui::RecordingUi {
 public:
  void ShowStatus(std::string_view text) override {
    if (fault_on_error && !faulted && text.starts_with("INST Error")) {
      faulted = true;
      throw std::runtime_error("status line lost");
    }
    RecordingUi::ShowStatus(text);
  }
  ui::MessageResult ShowTitledMessage(std::string_view title, std::string_view text,
                                      ui::MessageIcon icon, ui::MessageButtons buttons) override {
    if (during_box) during_box();
    return RecordingUi::ShowTitledMessage(title, text, icon, buttons);
  }
  bool fault_on_error = false;
  bool faulted = false;
  std::function<void()> during_box;
};

InstrumentLink LinkWithUi(OnlineScope& s, ui::UiServices& ui) {
  return InstrumentLink(
      s.h.session, s.h.flags,
      {s.h.scope.ChannelCount, s.h.scope.HasDvm, s.h.scope.HasWgen, s.h.scope.ToolUpdateInProgress},
      ui, s.h.tools, s.h.settings, s.h.hooks);
}

TEST(ErrorDrainTest, FaultWhileDrainingEndsTheProgramWithTwoChannelsAndNoOptions) {
  OnlineScope s;
  s.h.scope.HasDvm = s.h.scope.HasWgen = true;
  HookedUi ui;
  ui.fault_on_error = true;
  InstrumentLink link = LinkWithUi(s, ui);
  s.simulator->Execute(":NOSuch:HEADer 1");
  link.SendCommand(":RUN");
  ASSERT_TRUE(ui.faulted);
  EXPECT_EQ(ui.status(), "*** Error : status line lost");
  EXPECT_EQ(Fields(s.h.scope.ChannelCount, s.h.scope.HasDvm, s.h.scope.HasWgen,
                   s.h.settings.Find("Setup", "Channels").value_or(""),
                   s.h.settings.Find("Setup", "DVM").value_or(""), s.h.hooks.program_ends),
            "2|0|0|2|0|1|");
}

// A dead link closes with one message, the remote tool up and two channels; a status-poll
// tick inside the error box (the timers still run) finds the link already down.
TEST(LinkErrorBoxTest, DeadLinkClosesWithOneMessageEvenWhenATimerTicksInsideTheBox) {
  OnlineScope s;
  HookedUi ui;
  InstrumentLink link = LinkWithUi(s, ui);
  int ticks = 0;
  ui.during_box = [&] {
    ++ticks;
    link.PollInstrumentStatus(true);
  };
  s.h.tools.SetToolState("ID_Remote", true);
  s.h.tools.unguarded.clear();
  s.simulator->Stop();
  link.SendCommand(":RUN");
  EXPECT_EQ(ticks, 1);
  ASSERT_EQ(ui.messages().size(), 1u);
  EXPECT_TRUE(ui.messages()[0].text.starts_with("*** VISA Error : ")) << ui.messages()[0].text;
  EXPECT_EQ(ui.messages()[0].icon, ui::MessageIcon::kCritical);
  EXPECT_EQ(Fields(s.h.session.RemoteOn, s.h.tools.ToolState("ID_Remote"), s.h.scope.ChannelCount,
                   s.h.settings.Find("Setup", "Channels").value_or(""), s.h.hooks.rebuilds),
            "0|0|2|2|1|");
  EXPECT_TRUE(s.h.tools.unguarded.empty());
  // Off line from here: nothing more is reported.
  EXPECT_EQ(link.QueryString("*IDN?"), "");
  EXPECT_EQ(ui.messages().size(), 1u);
}

}  // namespace
}  // namespace quarvelo::link
