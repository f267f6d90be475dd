#include "platform/text/number_parse.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <utility>

namespace quarvelo::text {
namespace {

TEST(LeadingNumberTest, ReadsTheLeadingNumberOfInstrumentAndStoredForms) {
  const std::pair<const char*, double> cases[] = {
      // clang-format off
      {"+1.00000000E-03", 1e-3}, {"-5", -5}, {"9.9E+37", 9.9e37}, {"  200", 200}, {"200.", 200},
      {".5", 0.5}, {"-.25", -0.25}, {"4E-08", 4e-8}, {"500mV", 500}, {"5E", 5}, {"5e-", 5},
      {"1,2,3", 1}, {"abc", 0}, {"x", 0}, {"", 0}, {".", 0}, {"-", 0}, {"+", 0},
      {"+0,\"No error\"", 0}, {"-113,\"Undefined header\"", -113}, {"3\r\n", 3},
      {"1E999", HUGE_VAL}, {"-1E999", -HUGE_VAL},  // infinite, not a crash
      // clang-format on
  };
  for (const auto& [text, value] : cases) EXPECT_EQ(LeadingNumber(text), value) << text;
}

TEST(LeadingIntegerTest, RoundsHalvesToEvenAndClamps) {
  const std::pair<const char*, int> cases[] = {{"2.5", 2},       {"3.5", 4},         {"-2.5", -2},
                                               {"11760", 11760}, {"1E300", INT_MAX}, {"abc", 0}};
  for (const auto& [text, value] : cases) EXPECT_EQ(LeadingInteger(text), value) << text;
}

}  // namespace
}  // namespace quarvelo::text
