// Every query the program's readback and capture send gets an answer, on both families, and
// none of them leaves an error behind; the simulator's start and command line.
#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "sim/command_line.h"
#include "sim/model/instrument.h"
#include "sim/simulator.h"

namespace quarvelo::sim {
namespace {

constexpr const char* kQueries = R"(
*IDN?|:AER?|*ESR?|:OPERegister:CONDition?|:TRIGger:EDGE:SOURce?|:TRIGger:HOLDoff?|:TRIGger:SWEep?
:TRIGger:NREJect?|:TRIGger:EDGE:SLOPe?|:TRIGger:EDGE:COUPLing?|:TRIGger:EDGE:REJect?
:TRIGger:EDGE:LEVel?|:TIMebase:SCALe?|:TIMebase:REFerence?|:TIMebase:Mode?|:TIMebase:POSition?
:ACQuire:TYPE?|:ACQuire:COUNt?|:DISPlay:PERSistence?|:DISPlay:LABel?|:DVM:ENABle?|:DVM:MODE?
:DVM:ARANge?|:DVM:SOURce?|:DVM:CURRent?|:DVM:FREQuency?|:MEASure:SOURce?|:DISPlay:ANNotation?
:DISPlay:ANNotation:TEXT?|:DISPlay:ANNotation:COLor?|:DISPlay:ANNotation:BACKground?
:ACQuire:SRATe?|:ACQuire:POINts?|:WAVeform:POINts? MAX|:WAVeform:PREamble?|:SYSTem:ERRor?)";
// Appended to each channel, the math function and the generator.
constexpr const char* kChannelTails =
    ":INVert?|:DISPlay?|:COUPling?|:PROBe?|:BWLimit?|:SCALe?"
    "|:OFFSet?|:LABel?";
constexpr const char* kMathTails = R"(
:DISPlay?|:OPERation?|:FFT:CENTer?|:FFT:SPAN?|:FFT:VTYPe?|:FFT:WINDow?|:OFFSet?|:RANGe?
:REFerence?|:SCALe?|:SOURce1?|:SOURce2?)";
constexpr const char* kGoftTails = ":GOFT:OPERation?|:GOFT:SOURce1?|:GOFT:SOURce2?";
constexpr const char* kGeneratorTails = R"(
:OUTPut?|:FUNCtion?|:FREQuency?|:PERiod?|:VOLTage?|:VOLTage:OFFSet?|:VOLTage:HIGH?
:VOLTage:LOW?|:FUNCtion:SQUare:DCYCle?|:FUNCtion:RAMP:SYMMetry?|:FUNCtion:PULSe:WIDTh?
:MODulation:STATe?|:MODulation:NOISe?|:MODulation:TYPE?|:MODulation:FUNCtion?
:MODulation:AM:DEPTh?|:MODulation:AM:FREQuency?|:MODulation:FUNCtion:RAMP:SYMMetry?
:MODulation:FM:DEViation?|:MODulation:FM:FREQuency?|:MODulation:FSKey:FREQuency?
:MODulation:FSKey:RATE?|:OUTPut:LOAD?)";

// The table's entries ('|' or line ends between them), each after the prefix.
void Append(std::vector<std::string>& out, const std::string& prefix, const char* table) {
  std::istringstream lines(table);
  for (std::string line; std::getline(lines, line);) {
    std::istringstream fields(line);
    for (std::string field; std::getline(fields, field, '|');) {
      if (!field.empty()) out.push_back(prefix + field);
    }
  }
}

struct Variant {
  bool is_3000x;
  int channels;
  const char* math;
  const char* wgen;
};

class ReadbackCoverageTest : public testing::TestWithParam<Variant> {};

TEST_P(ReadbackCoverageTest, EveryQueryAnswersWithoutError) {
  const Variant& v = GetParam();
  InstrumentConfig config;
  config.is_3000x = v.is_3000x;
  config.channels = v.channels;
  Instrument instrument(config);
  // The capture's commands first, as the program sends them.
  for (const char* command :
       {"*CLS", ":ACQuire:TYPE NORM", ":WAVeform:SOURce CHANnel1", ":WAVeform:POINts:MODE RAW",
        ":STOP", ":TIMEBASE:MODE MAIN", ":TRIGger:SWEep AUTO", ":DIGitize CHANnel1",
        ":WAVEFORM:POINTS 131072", ":WAVeform:FORMat BYTE"}) {
    instrument.Execute(command);
  }
  std::vector<std::string> queries;
  Append(queries, "", kQueries);
  for (int n = 1; n <= v.channels; ++n) {
    Append(queries, ":CHANnel" + std::to_string(n), kChannelTails);
  }
  Append(queries, v.math, kMathTails);
  if (!v.is_3000x) Append(queries, v.math, kGoftTails);
  Append(queries, v.wgen, kGeneratorTails);
  for (const std::string& query : queries) {
    EXPECT_NE(instrument.Execute(query), "") << query;
  }
  EXPECT_EQ(instrument.Execute(":SYSTem:ERRor?"), "+0,\"No error\"");
}

INSTANTIATE_TEST_SUITE_P(Families, ReadbackCoverageTest,
                         testing::Values(Variant{true, 4, ":FUNC1", ":WGEN1"},
                                         Variant{true, 4, ":FUNC2", ":WGEN2"},
                                         Variant{false, 2, ":FUNC", ":WGEN"},
                                         Variant{false, 4, ":FUNC", ":WGEN"}));

TEST(SimulatorStartTest, ServesEveryTransportOnEphemeralPorts) {
  std::string error;
  std::unique_ptr<Simulator> simulator = Simulator::Start(SimulatorOptions{}, &error);
  ASSERT_TRUE(simulator) << error;
  EXPECT_NE(simulator->socket_port(), 0);
  EXPECT_NE(simulator->vxi11_port(), 0);
  EXPECT_NE(simulator->portmapper_port(), 0);
  EXPECT_NE(simulator->hislip_port(), 0);
  EXPECT_EQ(simulator->HislipResource(),
            "TCPIP0::127.0.0.1::hislip0," + std::to_string(simulator->hislip_port()) + "::INSTR");
  EXPECT_EQ(simulator->Execute("*IDN?").substr(0, 8), "KEYSIGHT");
}

TEST(SimulatorStartTest, PortInUseIsAnError) {
  std::string error;
  std::unique_ptr<Simulator> first = Simulator::Start(SimulatorOptions{}, &error);
  ASSERT_TRUE(first) << error;
  SimulatorOptions options;
  options.socket_port = first->socket_port();
  EXPECT_FALSE(Simulator::Start(options, &error));
  EXPECT_NE(error.find(std::to_string(first->socket_port())), std::string::npos) << error;
}

TEST(CommandLineTest, AcceptsTheDocumentedOptionsOnly) {
  struct Case {
    std::vector<std::string> arguments;
    bool ok;
  };
  for (const Case& c : std::initializer_list<Case>{
           {{}, true},
           {{"--model", "2000X", "--channels", "2"}, true},
           {{"--options", "wgen", "--socket-port", "0"}, true},
           {{"--options", "none", "--hislip-port", "-1"}, true},
           {{"--signals", "flat", "--latency", "0.5", "--options", "memup"}, true},
           {{"--identity", "A,B,C,D", "--dvm-settle", "0"}, true},
           {{"--model", "1000X"}, false},
           {{"--channels", "3"}, false},
           {{"--socket-port", "70000"}, false},
           {{"--socket-port"}, false},
           {{"--options", "fft"}, false},
           {{"--frobnicate", "1"}, false},
           {{"--signals", "loud"}, false},
           {{"--latency", "-1"}, false},
           {{"--identity", "no fields"}, false},
       }) {
    CommandLine line = ParseCommandLine(c.arguments);
    EXPECT_EQ(line.error.empty(), c.ok) << testing::PrintToString(c.arguments) << line.error;
  }
  CommandLine defaults = ParseCommandLine({});
  EXPECT_EQ(defaults.options.bind_address, "127.0.0.1");
  EXPECT_EQ(defaults.options.socket_port, 5025);
  EXPECT_EQ(defaults.options.portmapper_port, 111);
  EXPECT_EQ(defaults.options.hislip_port, 4880);
  CommandLine variant = ParseCommandLine({"--model", "2000X", "--options", "dvm"});
  EXPECT_EQ(variant.options.model, "2000X");
  EXPECT_FALSE(variant.options.has_wgen);
  EXPECT_TRUE(variant.options.has_dvm);
}

}  // namespace
}  // namespace quarvelo::sim
