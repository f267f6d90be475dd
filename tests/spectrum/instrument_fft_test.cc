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

TEST_F(InstrumentFftTest, CentresOnAQuarterOfTheSampleRate) {
  replies_[":TIMebase:SCALe?"] = "+2.000E-06";
  replies_[":ACQuire:SRATe?"] = "+2.5E+09";
  const InstrumentFftReadings readings = ConfigureInstrumentFft(Link(), ":FUNC1", 3, true);
  EXPECT_DOUBLE_EQ(readings.TimebaseScale, 2e-6);
  EXPECT_DOUBLE_EQ(readings.SampleRate, 2.5e6);
  EXPECT_EQ(sent_, (std::vector<std::string>{":TIMebase:SCALe?", ":ACQuire:SRATe?",
                                             ":FUNC1:DISPlay 1", ":FUNC1:SOURce1 CHAN3",
                                             ":FUNC1:OPERation FFT", ":FUNC1:FFT:CENTer 625000000",
                                             ":FUNC1:FFT:SPAN 1250000000"}));
}

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
