// Program data, headers and replies as the instrument reads and writes them.
#include <gtest/gtest.h>

#include <cmath>

#include "sim/scpi/header_pattern.h"
#include "sim/scpi/number_text.h"
#include "sim/scpi/program_message.h"

namespace quarvelo::sim {
namespace {

// Forms the settings tests do not send; the errors for bad data (-104, -109, -121 in "1.2.3",
// -131 in "5Q") are in the settings' error table.
TEST(ParseNumberTest, ReadsValueOrError) {
  const std::pair<const char*, double> values[] = {
      {"10ns", 10e-9},  {" 1.5 ", 1.5}, {"-.25", -0.25}, {"3ma", 3e6}, {"1 kHz", 1000},
      {"20 us", 20e-6}, {"50PCT", 50},  {"#H1F", 31},    {"#B101", 5}};
  for (const auto& [text, value] : values) {
    EXPECT_EQ(ParseNumber(text).error, 0) << text;
    EXPECT_NEAR(ParseNumber(text).value, value, std::abs(value) * 1e-12) << text;
  }
  for (const auto& [text, error] : {std::pair{"5E", -121}, {"5 furlongs", -131}, {"+", -121}}) {
    EXPECT_EQ(ParseNumber(text).error, error) << text;
  }
  EXPECT_EQ(ParseNumber("maximum").kind, NumberParse::Kind::kMaximum);
  EXPECT_EQ(ParseNumber("Min").kind, NumberParse::Kind::kMinimum);
}

// The forms the settings' read-backs do not show already.
TEST(NumberFormatTest, RepliesInTheInstrumentsForms) {
  EXPECT_EQ(FormatNr1(-3), "-3");
  EXPECT_EQ(FormatNr3Short(0), "+0.0E+00");
  EXPECT_EQ(FormatNr3Short(1.25e3), "+1.25E+03");
}

TEST(ProgramMessageTest, KeepsQuotedTextAndQueryArguments) {
  std::vector<ScpiCommand> commands =
      ParseProgramMessage(":DISPlay:ANNotation:TEXT \"a;b, \"\"c\"\"\";:WAVeform:POINts? MAX");
  ASSERT_EQ(commands.size(), 2u);
  ASSERT_EQ(commands[0].parameters.size(), 1u);
  EXPECT_EQ(commands[0].parameters[0].kind, ScpiParameter::Kind::kString);
  EXPECT_EQ(commands[0].parameters[0].text, "a;b, \"c\"");
  EXPECT_TRUE(commands[1].query);
  EXPECT_EQ(commands[1].parameters[0].text, "MAX");
}

TEST(ProgramMessageTest, FlagsMalformedHeaders) {
  EXPECT_EQ(ParseProgramMessage("::SCAL 1")[0].error, -102);
  EXPECT_EQ(ParseProgramMessage(":ABCDEFGHIJKLMN 1")[0].error, -112);
  EXPECT_EQ(ParseProgramMessage(":LAB \"open")[0].error, -151);
  EXPECT_TRUE(ParseProgramMessage("").empty());
  EXPECT_EQ(ParseProgramMessage("*IDN?;").size(), 1u);
}

TEST(HeaderPatternTest, MatchesLongShortOptionalAndSuffixedForms) {
  struct Case {
    const char* pattern;
    const char* header;
    MatchResult expected;
    int instance;
  };
  SuffixLimits limits;
  limits.channels = 2;
  limits.functions = 2;
  using enum MatchResult;
  for (const Case& c :
       std::initializer_list<Case>{{":CHANnel#C:SCALe", ":CHAN:SCAL", kMatch, 1},
                                   {":CHANnel#C:SCALe", ":CHAN3:SCAL", kSuffixOutOfRange, 0},
                                   {":CHANnel#C:SCALe", ":CHANN1:SCAL", kNoMatch, 0},
                                   {":CHANnel#C:SCALe", ":CHAN1:SCALE:X", kNoMatch, 0},
                                   {":TRIGger[:EDGE]:LEVel", ":TRIG:LEV", kMatch, 0},
                                   {":TIMebase:MODE", ":TIMebase1:MODE", kNoMatch, 0},
                                   {":WGEN#W:VOLTage:OFFSet", ":WGEN:VOLT:OFFS", kMatch, 1},
                                   {":SYSTem:ERRor[:NEXT]", ":SYST:ERR", kMatch, 0}}) {
    std::vector<int> instances;
    ScpiCommand command = ParseProgramMessage(c.header).front();
    EXPECT_EQ(HeaderPattern(c.pattern).Match(command.nodes, limits, &instances), c.expected)
        << c.pattern << " vs " << c.header;
    EXPECT_TRUE(c.instance == 0 || (!instances.empty() && instances.front() == c.instance))
        << c.header;
  }
}

}  // namespace
}  // namespace quarvelo::sim
