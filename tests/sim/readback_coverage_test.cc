// Every query the program's readback and capture send gets an answer, on both families, and
// none of them leaves an error behind.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "sim/command_line.h"
#include "sim/model/instrument.h"
#include "sim/simulator.h"

namespace quarvelo::sim {
namespace {

std::vector<std::string> ReadbackQueries(const std::string& math, const std::string& wgen,
                                         int channels, bool model_2000x) {
  std::vector<std::string> queries = {"*IDN?",
                                      ":AER?",
                                      "*ESR?",
                                      ":OPERegister:CONDition?",
                                      ":TRIGger:EDGE:SOURce?",
                                      ":TRIGger:HOLDoff?",
                                      ":TRIGger:SWEep?",
                                      ":TRIGger:NREJect?",
                                      ":TRIGger:EDGE:SLOPe?",
                                      ":TRIGger:EDGE:COUPLing?",
                                      ":TRIGger:EDGE:REJect?",
                                      ":TRIGger:EDGE:LEVel?",
                                      ":TIMebase:SCALe?",
                                      ":TIMebase:REFerence?",
                                      ":TIMebase:Mode?",
                                      ":TIMebase:POSition?",
                                      ":ACQuire:TYPE?",
                                      ":ACQuire:COUNt?",
                                      ":DISPlay:PERSistence?",
                                      ":DISPlay:LABel?",
                                      ":DVM:ENABle?",
                                      ":DVM:MODE?",
                                      ":DVM:ARANge?",
                                      ":DVM:SOURce?",
                                      ":DVM:CURRent?",
                                      ":DVM:FREQuency?",
                                      ":MEASure:SOURce?",
                                      ":DISPlay:ANNotation?",
                                      ":DISPlay:ANNotation:TEXT?",
                                      ":DISPlay:ANNotation:COLor?",
                                      ":DISPlay:ANNotation:BACKground?",
                                      ":ACQuire:SRATe?",
                                      ":ACQuire:POINts?",
                                      ":WAVeform:POINts? MAX",
                                      ":WAVeform:PREamble?",
                                      ":SYSTem:ERRor?"};
  for (int n = 1; n <= channels; ++n) {
    for (const char* tail : {":INVert?", ":DISPlay?", ":COUPling?", ":PROBe?", ":BWLimit?",
                             ":SCALe?", ":OFFSet?", ":LABel?"}) {
      queries.push_back(":CHANnel" + std::to_string(n) + tail);
    }
  }
  for (const char* tail :
       {":DISPlay?", ":OPERation?", ":FFT:CENTer?", ":FFT:SPAN?", ":FFT:VTYPe?", ":FFT:WINDow?",
        ":OFFSet?", ":RANGe?", ":REFerence?", ":SCALe?", ":SOURce1?", ":SOURce2?"}) {
    queries.push_back(math + tail);
  }
  if (model_2000x) {
    for (const char* tail : {":GOFT:OPERation?", ":GOFT:SOURce1?", ":GOFT:SOURce2?"}) {
      queries.push_back(math + tail);
    }
  }
  for (const char* tail : {":OUTPut?",
                           ":FUNCtion?",
                           ":FREQuency?",
                           ":PERiod?",
                           ":VOLTage?",
                           ":VOLTage:OFFSet?",
                           ":VOLTage:HIGH?",
                           ":VOLTage:LOW?",
                           ":FUNCtion:SQUare:DCYCle?",
                           ":FUNCtion:RAMP:SYMMetry?",
                           ":FUNCtion:PULSe:WIDTh?",
                           ":MODulation:STATe?",
                           ":MODulation:NOISe?",
                           ":MODulation:TYPE?",
                           ":MODulation:FUNCtion?",
                           ":MODulation:AM:DEPTh?",
                           ":MODulation:AM:FREQuency?",
                           ":MODulation:FUNCtion:RAMP:SYMMetry?",
                           ":MODulation:FM:DEViation?",
                           ":MODulation:FM:FREQuency?",
                           ":MODulation:FSKey:FREQuency?",
                           ":MODulation:FSKey:RATE?",
                           ":OUTPut:LOAD?"}) {
    queries.push_back(wgen + tail);
  }
  return queries;
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
  instrument.Execute("*CLS");
  // The capture's commands first, as the program sends them.
  instrument.Execute(":ACQuire:TYPE NORM");
  instrument.Execute(":WAVeform:SOURce CHANnel1");
  instrument.Execute(":WAVeform:POINts:MODE RAW");
  instrument.Execute(":STOP");
  instrument.Execute(":TIMEBASE:MODE MAIN");
  instrument.Execute(":TRIGger:SWEep AUTO");
  instrument.Execute(":DIGitize CHANnel1");
  instrument.Execute(":WAVEFORM:POINTS 131072");
  instrument.Execute(":WAVeform:FORMat BYTE");
  for (const std::string& query : ReadbackQueries(v.math, v.wgen, v.channels, !v.is_3000x)) {
    EXPECT_NE(instrument.Execute(query), "") << query;
  }
  EXPECT_EQ(instrument.Execute(":SYSTem:ERRor?"), "+0,\"No error\"");
}

INSTANTIATE_TEST_SUITE_P(Families, ReadbackCoverageTest,
                         testing::Values(Variant{true, 4, ":FUNC1", ":WGEN1"},
                                         Variant{true, 4, ":FUNC2", ":WGEN2"},
                                         Variant{false, 2, ":FUNC", ":WGEN"},
                                         Variant{false, 4, ":FUNC", ":WGEN"}));

TEST(ReadbackCoverageTest, ControlCommandsAreAccepted) {
  Instrument instrument{InstrumentConfig{}};
  instrument.Execute("*CLS");
  for (const char* command : {":MEASure:VRMS DISP,AC",
                              ":MEASure:VRMS CYCL,DC",
                              ":MEASure:SOURce FUNC",
                              ":MEASure:SOURce WMEM1",
                              ":MEASure:SOURce EXT",
                              ":TRIGger:LEVel:ASETup",
                              ":TRIGger:FORCe",
                              ":HARDcopy:INKSaver OFF",
                              ":Display:PERSistence 0.1",
                              ":Display:PERSistence 1",
                              ":Display:PERSistence MIN",
                              ":DISPlay:CLEar",
                              ":DVM:ARANge 1",
                              ":DVM:Mode DCRMs",
                              ":DVM:Mode FREQuency",
                              ":FUNC1:FFT:CENTer 5000000",
                              ":FUNC1:FFT:SPAN 10000000",
                              ":FUNC1:SOURce1 CHAN2",
                              ":FUNC1:OPERation FFT",
                              ":WGEN1:MODulation:STATe 1",
                              ":WGEN1:MODulation:TYPE FM",
                              ":WGEN1:MODulation:FM:DEViation 1000",
                              ":WGEN1:MODulation:FSKey:RATE 50",
                              ":WGEN1:RST",
                              ":DISPlay:ANNotation:TEXT \"\"",
                              ":DISPlay:ANNotation 1",
                              ":SINGLE",
                              ":RUN",
                              ":AUToscale",
                              ":SYSTem:PRESet",
                              ":CHANnel1:OFFSet -750mV",
                              ":CHANnel2:PROBe 10",
                              ":CHANnel1:SCALe 5000mV",
                              ":Trigger:EDGE:SLOPe NEG",
                              ":TRIGger:EDGE:LEVel -.5",
                              ":TIMebase:SCALe 2E-10"}) {
    instrument.Execute(command);
    EXPECT_EQ(instrument.Execute(":SYSTem:ERRor?"), "+0,\"No error\"") << command;
  }
}

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

struct CommandLineCase {
  std::vector<std::string> arguments;
  bool ok;
};

class CommandLineTest : public testing::TestWithParam<CommandLineCase> {};

TEST_P(CommandLineTest, AcceptsTheDocumentedOptionsOnly) {
  CommandLine line = ParseCommandLine(GetParam().arguments);
  EXPECT_EQ(line.error.empty(), GetParam().ok) << line.error;
}

INSTANTIATE_TEST_SUITE_P(
    Table, CommandLineTest,
    testing::Values(
        CommandLineCase{{}, true}, CommandLineCase{{"--model", "2000X", "--channels", "2"}, true},
        CommandLineCase{{"--options", "wgen", "--socket-port", "0"}, true},
        CommandLineCase{{"--options", "none", "--hislip-port", "-1"}, true},
        CommandLineCase{{"--model", "1000X"}, false}, CommandLineCase{{"--channels", "3"}, false},
        CommandLineCase{{"--socket-port", "70000"}, false},
        CommandLineCase{{"--socket-port"}, false}, CommandLineCase{{"--options", "fft"}, false},
        CommandLineCase{{"--frobnicate", "1"}, false},
        CommandLineCase{{"--signals", "flat", "--latency", "0.5", "--options", "memup"}, true},
        CommandLineCase{{"--identity", "A,B,C,D", "--dvm-settle", "0"}, true},
        CommandLineCase{{"--signals", "loud"}, false}, CommandLineCase{{"--latency", "-1"}, false},
        CommandLineCase{{"--identity", "no fields"}, false}));

TEST(CommandLineTest, DefaultsAndVariants) {
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
