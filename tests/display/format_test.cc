#include "display/format.h"

#include <gtest/gtest.h>

#include <functional>
#include <limits>
#include <string>

namespace quarvelo::display {
namespace {

struct FormatCase {
  std::function<std::string()> format;
  const char* expected;
};

void PrintTo(const FormatCase& c, std::ostream* os) { *os << c.expected; }

class FormatTest : public testing::TestWithParam<FormatCase> {};

TEST_P(FormatTest, PrintsPatternAndUnit) { EXPECT_EQ(GetParam().format(), GetParam().expected); }

FormatCase Frequency(double hertz, bool precise, const char* expected) {
  return {[=] { return FormatFrequency(hertz, precise); }, expected};
}
FormatCase Time(double seconds, const char* expected) {
  return {[=] { return FormatTime(seconds); }, expected};
}
FormatCase Voltage(double volts, const char* expected) {
  return {[=] { return FormatVoltage(volts); }, expected};
}
FormatCase SampleRate(double ksa, const char* expected) {
  return {[=] { return FormatSampleRate(ksa); }, expected};
}
FormatCase Level(double level, int unit, const char* expected) {
  return {[=] { return FormatLevel(level, unit); }, expected};
}

INSTANTIATE_TEST_SUITE_P(
    Frequencies, FormatTest,
    testing::Values(Frequency(-2.5e6, true, "2.500MHz"), Frequency(999.6, false, "1000Hz"),
                    Frequency(1e9, true, "1.000GHz"), Frequency(12.5e6, true, "12.500MHz"),
                    Frequency(999999.0, false, "1000kHz"), Frequency(1000, false, "1kHz"),
                    Frequency(0, true, "0.000Hz"), Frequency(3.2e10, false, "32GHz")));

INSTANTIATE_TEST_SUITE_P(Times, FormatTest,
                         testing::Values(Time(1, "1000.00ms"), Time(1.5, "1.50s"),
                                         Time(-2e-4, "-200.00\u00b5s"), Time(0, "0.00ns"),
                                         Time(0.001, "1.00ms"), Time(-1.5, "-1.50s"),
                                         Time(1e-6, "1.00\u00b5s"), Time(5e-9, "5.00ns"),
                                         Time(-1e-13, "0.00ns")));

INSTANTIATE_TEST_SUITE_P(Voltages, FormatTest,
                         testing::Values(Voltage(1, "1000.00mV"), Voltage(-3.2, "-3.20V"),
                                         Voltage(0, "0.00mV"), Voltage(-1, "-1000.00mV"),
                                         Voltage(0.0125, "12.50mV"), Voltage(1.005, "1.00V")));

INSTANTIATE_TEST_SUITE_P(SampleRates, FormatTest,
                         testing::Values(SampleRate(2e6, "2.00GSa/s"),
                                         SampleRate(500, "500000.00Sa/s"),
                                         SampleRate(1000, "1.00MSa/s"),
                                         SampleRate(999999, "1000.00MSa/s"),
                                         SampleRate(-5, "-5000.00Sa/s")));

INSTANTIATE_TEST_SUITE_P(Levels, FormatTest,
                         testing::Values(Level(-20, kUnitDbv, "-20.00dBV"),
                                         Level(10.004, kUnitDbm, "10.00dBm"),
                                         Level(0.7071, kUnitVoltsRms, "707.10mV"),
                                         Level(2.5, kUnitVoltsRms, "2.50V"),
                                         Level(-3, 9, "-3.00")));

TEST(FormatFixedTest, UsesTheGivenDecimalSeparator) {
  EXPECT_EQ(FormatFixed(3.14159, 3, ","), "3,142");
  EXPECT_EQ(FormatFixed(-0.5, 0, ","), "0");  // a tie rounds to even, and -0 reads as 0
  EXPECT_EQ(FormatFrequency(12.5e6, true, ","), "12,500MHz");
  EXPECT_EQ(FormatTime(3.2e-3, ","), "3,20ms");
  EXPECT_EQ(FormatLevel(-20, kUnitDbv, "\u066b"), "-20\u066b00dBV");
}

TEST(FormatFixedTest, NeverFailsOnOddInput) {
  EXPECT_EQ(FormatFixed(1e300, 2).size(), 304u);
  EXPECT_EQ(FormatFixed(-0.004, 2), "0.00");
  EXPECT_FALSE(FormatFrequency(std::numeric_limits<double>::quiet_NaN(), true).empty());
}

}  // namespace
}  // namespace quarvelo::display
