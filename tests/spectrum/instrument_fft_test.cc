#include "spectrum/instrument_fft.h"

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

namespace quarvelo::spectrum {
namespace {

class InstrumentFftTest : public testing::Test {
 protected:
  InstrumentCommands Link() {
    InstrumentCommands link;
    link.send_command = [this](std::string_view command) { sent_.emplace_back(command); };
    link.query_string = [this](std::string_view query) {
      sent_.emplace_back(query);
      return replies_[std::string(query)];
    };
    return link;
  }
  std::vector<std::string> sent_;
  std::map<std::string, std::string> replies_;
};

TEST_F(InstrumentFftTest, NoSpanWithoutASampleRateAndNoCentreWhenOffline) {
  replies_[":ACQuire:SRATe?"] = "garbage";
  ConfigureInstrumentFft(Link(), ":FUNC", 1, true);
  EXPECT_EQ(sent_.back(), ":FUNC:FFT:CENTer 0");
  sent_.clear();
  replies_[":ACQuire:SRATe?"] = "1E+6";
  ConfigureInstrumentFft(Link(), ":FUNC", 1, false);
  EXPECT_EQ(sent_.back(), ":FUNC:OPERation FFT");
}

}  // namespace
}  // namespace quarvelo::spectrum
