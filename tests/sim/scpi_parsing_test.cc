// Program data, headers and replies as the instrument reads and writes them.
#include <gtest/gtest.h>

#include <cmath>

#include "sim/scpi/header_pattern.h"
#include "sim/scpi/number_text.h"
#include "sim/scpi/program_message.h"

namespace quarvelo::sim {
namespace {

struct NumberCase {
  const char* text;
  double value;
  int error;
};

class ParseNumberTest : public testing::TestWithParam<NumberCase> {};

TEST_P(ParseNumberTest, ReadsValueOrError) {
  const NumberCase& c = GetParam();
  NumberParse parsed = ParseNumber(c.text);
  EXPECT_EQ(parsed.error, c.error) << c.text;
  if (c.error == 0) {
    EXPECT_NEAR(parsed.value, c.value, std::abs(c.value) * 1e-12) << c.text;
  }
}

INSTANTIATE_TEST_SUITE_P(Table, ParseNumberTest,
                         testing::Values(NumberCase{"500mV", 0.5, 0}, NumberCase{"10ns", 10e-9, 0},
                                         NumberCase{"4E-08", 4e-8, 0}, NumberCase{" 1.5 ", 1.5, 0},
                                         NumberCase{".5", 0.5, 0}, NumberCase{"-.25", -0.25, 0},
                                         NumberCase{"2.5MHZ", 2.5e6, 0}, NumberCase{"3ma", 3e6, 0},
                                         NumberCase{"1 kHz", 1000, 0},
                                         NumberCase{"20 us", 20e-6, 0}, NumberCase{"5 V", 5, 0},
                                         NumberCase{"50PCT", 50, 0}, NumberCase{"1E3", 1000, 0},
                                         NumberCase{"#H1F", 31, 0}, NumberCase{"#B101", 5, 0},
                                         NumberCase{"abc", 0, -104}, NumberCase{"5E", 0, -121},
                                         NumberCase{"1.2.3", 0, -121}, NumberCase{"5Q", 0, -131},
                                         NumberCase{"5 furlongs", 0, -131}, NumberCase{"", 0, -109},
                                         NumberCase{"+", 0, -121}));

TEST(ParseNumberTest, KeywordsAreRecognisedInAnyForm) {
  EXPECT_EQ(ParseNumber("MAX").kind, NumberParse::Kind::kMaximum);
  EXPECT_EQ(ParseNumber("maximum").kind, NumberParse::Kind::kMaximum);
  EXPECT_EQ(ParseNumber("Min").kind, NumberParse::Kind::kMinimum);
}

TEST(NumberFormatTest, RepliesInTheInstrumentsForms) {
  EXPECT_EQ(FormatNr1(7680), "+7680");
  EXPECT_EQ(FormatNr1(-3), "-3");
  EXPECT_EQ(FormatNr3(1e-3, 8), "+1.00000000E-03");
  EXPECT_EQ(FormatNr3(0.04, 5), "+4.00000E-02");
  EXPECT_EQ(FormatNr3Short(40e-9), "+4.0E-08");
  EXPECT_EQ(FormatNr3Short(-0.1), "-1.0E-01");
  EXPECT_EQ(FormatNr3Short(0), "+0.0E+00");
  EXPECT_EQ(FormatNr3Short(9.9e37), "+9.9E+37");
  EXPECT_EQ(FormatNr3Short(1.25e3), "+1.25E+03");
}

TEST(ProgramMessageTest, SplitsCompoundCommandsAndResolvesRelativeHeaders) {
  std::vector<ScpiCommand> commands =
      ParseProgramMessage(":CHANnel2:SCALe 500mV;OFFSet -1;*CLS;:TIMebase:SCALe?");
  ASSERT_EQ(commands.size(), 4u);
  ASSERT_EQ(commands[1].nodes.size(), 2u);
  EXPECT_EQ(commands[1].nodes[0].name, "CHANNEL");
  EXPECT_EQ(commands[1].nodes[0].suffix, 2);
  EXPECT_EQ(commands[1].nodes[1].name, "OFFSET");
  EXPECT_EQ(commands[1].parameters[0].text, "-1");
  EXPECT_TRUE(commands[2].common);
  EXPECT_TRUE(commands[3].query);
  EXPECT_EQ(commands[3].nodes.size(), 2u);
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
  std::vector<ScpiCommand> image = ParseProgramMessage(":DISPlay:DATA? BMP8bit, COLor");
  ASSERT_EQ(image[0].parameters.size(), 2u);
  EXPECT_EQ(image[0].parameters[1].text, "COLor");
}

TEST(ProgramMessageTest, FlagsMalformedHeaders) {
  EXPECT_EQ(ParseProgramMessage(":CHAN$1:SCAL 1")[0].error, -101);
  EXPECT_EQ(ParseProgramMessage("::SCAL 1")[0].error, -102);
  EXPECT_EQ(ParseProgramMessage(":ABCDEFGHIJKLMN 1")[0].error, -112);
  EXPECT_EQ(ParseProgramMessage(":LAB \"open")[0].error, -151);
  EXPECT_TRUE(ParseProgramMessage("").empty());
  EXPECT_EQ(ParseProgramMessage("*IDN?;").size(), 1u);
}

struct PatternCase {
  const char* pattern;
  const char* header;
  MatchResult expected;
  int instance;
};

class HeaderPatternTest : public testing::TestWithParam<PatternCase> {};

TEST_P(HeaderPatternTest, MatchesLongShortOptionalAndSuffixedForms) {
  const PatternCase& c = GetParam();
  SuffixLimits limits;
  limits.channels = 2;
  limits.functions = 2;
  std::vector<int> instances;
  ScpiCommand command = ParseProgramMessage(c.header).front();
  EXPECT_EQ(HeaderPattern(c.pattern).Match(command.nodes, limits, &instances), c.expected)
      << c.pattern << " vs " << c.header;
  if (c.expected == MatchResult::kMatch && c.instance > 0) {
    ASSERT_FALSE(instances.empty());
    EXPECT_EQ(instances.front(), c.instance);
  }
}

INSTANTIATE_TEST_SUITE_P(
    Table, HeaderPatternTest,
    testing::Values(
        PatternCase{":CHANnel#C:SCALe", ":CHANnel1:SCALe", MatchResult::kMatch, 1},
        PatternCase{":CHANnel#C:SCALe", ":chan2:scal", MatchResult::kMatch, 2},
        PatternCase{":CHANnel#C:SCALe", ":CHAN:SCAL", MatchResult::kMatch, 1},
        PatternCase{":CHANnel#C:SCALe", ":CHAN3:SCAL", MatchResult::kSuffixOutOfRange, 0},
        PatternCase{":CHANnel#C:SCALe", ":CHANN1:SCAL", MatchResult::kNoMatch, 0},
        PatternCase{":CHANnel#C:SCALe", ":CHAN1:SCALE:X", MatchResult::kNoMatch, 0},
        PatternCase{":TRIGger[:EDGE]:LEVel", ":TRIG:LEV", MatchResult::kMatch, 0},
        PatternCase{":TRIGger[:EDGE]:LEVel", ":TRIGGER:EDGE:LEVEL", MatchResult::kMatch, 0},
        PatternCase{":TRIGger[:EDGE]:COUPling", ":Trigger:EDGE:COUPLing", MatchResult::kMatch, 0},
        PatternCase{":TIMebase:MODE", ":TIMEBASE:MODE", MatchResult::kMatch, 0},
        PatternCase{":TIMebase:MODE", ":TIMebase1:MODE", MatchResult::kNoMatch, 0},
        PatternCase{":FUNCtion#F:OPERation", ":FUNC2:OPER", MatchResult::kMatch, 2},
        PatternCase{":WGEN#W:VOLTage:OFFSet", ":WGEN:VOLT:OFFS", MatchResult::kMatch, 1},
        PatternCase{":SYSTem:ERRor[:NEXT]", ":SYST:ERR", MatchResult::kMatch, 0}));

}  // namespace
}  // namespace quarvelo::sim
