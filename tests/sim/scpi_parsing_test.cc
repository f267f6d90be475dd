// Program data, headers and replies as the instrument reads and writes them.
#include <gtest/gtest.h>

#include <cmath>

#include "sim/scpi/header_pattern.h"
#include "sim/scpi/number_text.h"
#include "sim/scpi/program_message.h"

namespace quarvelo::sim {
namespace {

// Errors the instrument reports for bad data (-104, -109, -121 in "1.2.3", -131 in "5Q") are in
// the settings' error table.
TEST(ParseNumberTest, ReadsValueOrError) {
  struct Case {
    const char* text;
    double value;
    int error;
  };
  for (const Case& c : std::initializer_list<Case>{{"500mV", 0.5, 0},
                                                   {"10ns", 10e-9, 0},
                                                   {"4E-08", 4e-8, 0},
                                                   {" 1.5 ", 1.5, 0},
                                                   {".5", 0.5, 0},
                                                   {"-.25", -0.25, 0},
                                                   {"2.5MHZ", 2.5e6, 0},
                                                   {"3ma", 3e6, 0},
                                                   {"1 kHz", 1000, 0},
                                                   {"20 us", 20e-6, 0},
                                                   {"5 V", 5, 0},
                                                   {"50PCT", 50, 0},
                                                   {"1E3", 1000, 0},
                                                   {"#H1F", 31, 0},
                                                   {"#B101", 5, 0},
                                                   {"5E", 0, -121},
                                                   {"5 furlongs", 0, -131},
                                                   {"+", 0, -121}}) {
    NumberParse parsed = ParseNumber(c.text);
    EXPECT_EQ(parsed.error, c.error) << c.text;
    if (c.error == 0) {
      EXPECT_NEAR(parsed.value, c.value, std::abs(c.value) * 1e-12) << c.text;
    }
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
  for (const Case& c : std::initializer_list<Case>{
           {":CHANnel#C:SCALe", ":CHANnel1:SCALe", kMatch, 1},
           {":CHANnel#C:SCALe", ":chan2:scal", kMatch, 2},
           {":CHANnel#C:SCALe", ":CHAN:SCAL", kMatch, 1},
           {":CHANnel#C:SCALe", ":CHAN3:SCAL", kSuffixOutOfRange, 0},
           {":CHANnel#C:SCALe", ":CHANN1:SCAL", kNoMatch, 0},
           {":CHANnel#C:SCALe", ":CHAN1:SCALE:X", kNoMatch, 0},
           {":TRIGger[:EDGE]:LEVel", ":TRIG:LEV", kMatch, 0},
           {":TRIGger[:EDGE]:LEVel", ":TRIGGER:EDGE:LEVEL", kMatch, 0},
           {":TRIGger[:EDGE]:COUPling", ":Trigger:EDGE:COUPLing", kMatch, 0},
           {":TIMebase:MODE", ":TIMEBASE:MODE", kMatch, 0},
           {":TIMebase:MODE", ":TIMebase1:MODE", kNoMatch, 0},
           {":FUNCtion#F:OPERation", ":FUNC2:OPER", kMatch, 2},
           {":WGEN#W:VOLTage:OFFSet", ":WGEN:VOLT:OFFS", kMatch, 1},
           {":SYSTem:ERRor[:NEXT]", ":SYST:ERR", kMatch, 0}}) {
    std::vector<int> instances;
    ScpiCommand command = ParseProgramMessage(c.header).front();
    EXPECT_EQ(HeaderPattern(c.pattern).Match(command.nodes, limits, &instances), c.expected)
        << c.pattern << " vs " << c.header;
    if (c.expected == kMatch && c.instance > 0) {
      ASSERT_FALSE(instances.empty()) << c.header;
      EXPECT_EQ(instances.front(), c.instance) << c.header;
    }
  }
}

}  // namespace
}  // namespace quarvelo::sim
