#include "platform/text/number_parse.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <string>

namespace quarvelo::text {
namespace {

struct Case {
  std::string text;
  double expected;
};

class LeadingNumberTest : public ::testing::TestWithParam<Case> {};

TEST_P(LeadingNumberTest, ReadsTheLeadingNumber) {
  EXPECT_DOUBLE_EQ(LeadingNumber(GetParam().text), GetParam().expected) << GetParam().text;
}

INSTANTIATE_TEST_SUITE_P(
    InstrumentAndStoredForms, LeadingNumberTest,
    ::testing::Values(Case{"+1.00000000E-03", 1e-3}, Case{"-5", -5}, Case{"9.9E+37", 9.9e37},
                      Case{"  200", 200}, Case{"200.", 200}, Case{".5", 0.5}, Case{"-.25", -0.25},
                      Case{"4E-08", 4e-8}, Case{"500mV", 500}, Case{"5E", 5}, Case{"5e-", 5},
                      Case{"1,2,3", 1}, Case{"abc", 0}, Case{"x", 0}, Case{"", 0}, Case{".", 0},
                      Case{"-", 0}, Case{"+", 0}, Case{"+0,\"No error\"", 0},
                      Case{"-113,\"Undefined header\"", -113}, Case{"3\r\n", 3}));

TEST(LeadingNumberTest, HugeExponentIsInfiniteNotACrash) {
  EXPECT_TRUE(std::isinf(LeadingNumber("1E999")));
  EXPECT_LT(LeadingNumber("-1E999"), 0);
}

TEST(LeadingIntegerTest, RoundsHalvesToEvenAndClamps) {
  const std::pair<const char*, int> cases[] = {{"2.5", 2},       {"3.5", 4},         {"-2.5", -2},
                                               {"11760", 11760}, {"1E300", INT_MAX}, {"abc", 0}};
  for (const auto& [text, value] : cases) EXPECT_EQ(LeadingInteger(text), value) << text;
}

}  // namespace
}  // namespace quarvelo::text
