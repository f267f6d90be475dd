#include "display/format.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <utility>

namespace quarvelo::display {
namespace {

TEST(FormatTest, PrintsPatternAndUnit) {
  const std::pair<std::string, const char*> cases[] = {
      // clang-format off
      {FormatFrequency(-2.5e6, true), "2.500MHz"}, {FormatFrequency(999.6, false), "1000Hz"},
      {FormatFrequency(1e9, true), "1.000GHz"}, {FormatFrequency(12.5e6, true), "12.500MHz"},
      {FormatFrequency(999999.0, false), "1000kHz"}, {FormatFrequency(1000, false), "1kHz"},
      {FormatFrequency(0, true), "0.000Hz"}, {FormatFrequency(3.2e10, false), "32GHz"},
      {FormatTime(1), "1000.00ms"}, {FormatTime(1.5), "1.50s"}, {FormatTime(0), "0.00ns"},
      {FormatTime(-2e-4), "-200.00\u00b5s"}, {FormatTime(1e-6), "1.00\u00b5s"},
      {FormatTime(0.001), "1.00ms"}, {FormatTime(-1.5), "-1.50s"}, {FormatTime(5e-9), "5.00ns"},
      {FormatTime(-1e-13), "0.00ns"},
      {FormatVoltage(1), "1000.00mV"}, {FormatVoltage(-3.2), "-3.20V"},
      {FormatVoltage(0), "0.00mV"}, {FormatVoltage(-1), "-1000.00mV"},
      {FormatVoltage(0.0125), "12.50mV"}, {FormatVoltage(1.005), "1.00V"},
      {FormatSampleRate(2e6), "2.00GSa/s"}, {FormatSampleRate(500), "500000.00Sa/s"},
      {FormatSampleRate(1000), "1.00MSa/s"}, {FormatSampleRate(999999), "1000.00MSa/s"},
      {FormatSampleRate(-5), "-5000.00Sa/s"},
      {FormatLevel(-20, kUnitDbv), "-20.00dBV"}, {FormatLevel(10.004, kUnitDbm), "10.00dBm"},
      {FormatLevel(0.7071, kUnitVoltsRms), "707.10mV"}, {FormatLevel(2.5, kUnitVoltsRms), "2.50V"},
      {FormatLevel(-3, 9), "-3.00"},
      // With another decimal separator; a tie rounds to even, and -0 reads as 0.
      {FormatFixed(3.14159, 3, ","), "3,142"}, {FormatFixed(-0.5, 0, ","), "0"},
      {FormatFrequency(12.5e6, true, ","), "12,500MHz"}, {FormatTime(3.2e-3, ","), "3,20ms"},
      {FormatLevel(-20, kUnitDbv, "\u066b"), "-20\u066b00dBV"},
      // clang-format on
  };
  for (const auto& [text, expected] : cases) EXPECT_EQ(text, expected);
}

TEST(FormatFixedTest, NeverFailsOnOddInput) {
  EXPECT_EQ(FormatFixed(1e300, 2).size(), 304u);
  EXPECT_EQ(FormatFixed(-0.004, 2), "0.00");
  EXPECT_FALSE(FormatFrequency(std::numeric_limits<double>::quiet_NaN(), true).empty());
}

}  // namespace
}  // namespace quarvelo::display
