// The spectrum's and the time-base combo's commands through the real instrument link to the
// in-process simulated oscilloscope over loopback TCP.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <string>

#include "display/time_base_control.h"
#include "display/time_base_ladder.h"
#include "platform/text/number_parse.h"
#include "platform/text/number_text.h"
#include "spectrum/instrument_fft.h"
#include "tests/link/online_scope.h"

namespace quarvelo::spectrum {
namespace {

class InstrumentOnlineTest : public testing::Test {
 protected:
  InstrumentCommands Commands() {
    InstrumentCommands commands;
    commands.send_command = [this](std::string_view command) { link_.SendCommand(command); };
    commands.query_string = [this](std::string_view query) { return link_.QueryString(query); };
    return commands;
  }
  // How many received messages are `message` (or begin with it, with `prefix`).
  long Received(std::string_view message, bool prefix = false) const {
    const auto received = simulator_->ReceivedMessages();
    return std::count_if(received.begin(), received.end(), [&](const std::string& m) {
      return prefix ? m.starts_with(message) : m == message;
    });
  }

  testing_support::OnlineScope s_;
  std::unique_ptr<sim::Simulator>& simulator_ = s_.simulator;
  link::InstrumentLink& link_ = s_.h.link;
  ui::RecordingToolHost& tools_ = s_.h.tools;
};

TEST_F(InstrumentOnlineTest, AutoConfigFftSetsTheInstrumentsOwnFft) {
  const double rate = text::LeadingNumber(simulator_->Execute(":ACQuire:SRATe?"));
  ASSERT_GT(rate, 0);
  const InstrumentFftReadings readings = ConfigureInstrumentFft(Commands(), ":FUNC1", 2, true);
  EXPECT_DOUBLE_EQ(readings.SampleRate, rate / 1000);
  EXPECT_DOUBLE_EQ(readings.TimebaseScale,
                   text::LeadingNumber(simulator_->Execute(":TIMebase:SCALe?")));
  EXPECT_EQ(simulator_->Execute(":FUNC1:OPERation?;:FUNC1:SOURce1?"), "FFT;CHAN2");
  EXPECT_TRUE(Received(":FUNC1:FFT:CENTer " + text::WholeNumberText(rate / 4)));
  EXPECT_DOUBLE_EQ(text::LeadingNumber(simulator_->Execute(":FUNC1:FFT:CENTer?")),
                   std::nearbyint(rate / 4));
  EXPECT_DOUBLE_EQ(text::LeadingNumber(simulator_->Execute(":FUNC1:FFT:SPAN?")),
                   std::nearbyint(rate / 2));
  EXPECT_TRUE(s_.h.ui.messages().empty());
  EXPECT_TRUE(s_.h.session.RemoteOn);
}

TEST_F(InstrumentOnlineTest, NoSpanWithoutASampleRateAndNoCentreWhenOffline) {
  // Garbled replies to the time base, its error query and the sample rate: no rate to read.
  simulator_->Execute(":SIMulate:GARBage 3");
  ConfigureInstrumentFft(Commands(), ":FUNC1", 1, true);
  EXPECT_TRUE(Received(":FUNC1:FFT:CENTer 0"));
  EXPECT_EQ(Received(":FUNC1:FFT:SPAN", true), 0);
  simulator_->ClearTraffic();
  ConfigureInstrumentFft(Commands(), ":FUNC1", 1, false);
  EXPECT_TRUE(Received(":FUNC1:OPERation FFT"));
  EXPECT_EQ(Received(":FUNC1:FFT:", true), 0);
}

TEST_F(InstrumentOnlineTest, EveryLadderTimeBaseReadsBackAsItsOwnEntry) {
  // The instrument's reply to ":TIMebase:SCALe?" must select the entry that was sent, which
  // needs the ladder's seconds and the reply's number to be the same double.
  display::TimeBaseActions actions;
  actions.send_command = [this](std::string_view command) { link_.SendCommand(command); };
  tools_.SetComboItems(display::kTimeBaseComboId, display::TimeBaseLadder());
  // The simulated 3000X, like the instrument, offers 5 ns/div to 50 s/div.
  for (int i = 4; i < display::kTimeBaseLadderSize; ++i) {
    tools_.SetComboIndex(display::kTimeBaseComboId, -1);
    display::SetTimeBaseFromText(display::kTimeBaseLadder[i], false, actions, s_.h.ui);
    const double seconds = text::LeadingNumber(link_.QueryString(":TIMebase:SCALe?"));
    display::SetComboTimeBase(seconds, s_.h.session.RemoteOn, tools_);
    EXPECT_EQ(tools_.ComboIndex(display::kTimeBaseComboId), i) << display::kTimeBaseLadder[i];
  }
}

}  // namespace
}  // namespace quarvelo::spectrum
