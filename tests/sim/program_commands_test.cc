// Every command the program's control set, toolbar dispatch and dialogs can send is accepted
// by the simulated instrument as written there (short forms and odd capitals included), and
// the measurement family answers values computed from the channel's signal.
#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "sim/model/instrument.h"

namespace quarvelo::sim {
namespace {

// Commands as the program writes them, separated by '|' or line ends. Those whose read-back the
// settings table checks (with the same text) are not repeated here.
constexpr const char* kCommands = R"(
:CHANnel1:DISPlay 1|:CHANnel2:PROBe 10|:CHANnel1:COUPling AC|:CHANnel1:BWLimit 1
:CHANnel1:OFFSet -750mV|:TRIGger:EDGE:LEVel -.5|:Trigger:EDGE:SLOPe NEG|:Trigger:EDGE:SLOPe ALT
:Trigger:EDGE:REJect LF|:TRIGger:HOLDoff 4E-08|:TRIGger:HOLDoff 10|:TRIGger:FORCe
:TRIGger:LEVel:ASETup|:TIMebase:MODE WIND|:TIMebase:MODE XY|:TIMebase:MODE ROLL
:TIMebase:REFerence RIGHT|:TIMebase:SCALe 2E-05|:ACQuire:TYPE AVER|:ACQuire:TYPE HRES
:ACQuire:TYPE PEAK|:ACQuire:TYPE NORM|:Display:PERSistence MIN|:Display:PERSistence 0.1
:Display:PERSistence 1|:DISPlay:CLEar|:DISPlay:LABel 1|:RUN|:SINGLE|:AUToscale|:SYSTem:PRESet
:DIGitize|:MEASure:SOURce CHAN4|:MEASure:SOURce FUNC|:MEASure:SOURce WMEM2|:MEASure:SOURce EXT
:MEASure:SOURce CHAN1|:MEASure:ALL|:MEASure:CLE|:MEASure:VPP|:MEASure:VMAX|:MEASure:VMIN
:MEASure:VAMP|:MEASure:VTOP|:MEASure:VBAS|:MEASure:OVER|:MEASure:PRES|:MEASure:VAV
:MEASure:VRMS DISP,AC|:MEASure:VRMS CYCL,DC|:MEASure:PER|:MEASure:FREQ|:MEASure:PWID
:MEASure:NWID|:MEASure:DUTY|:MEASure:RIS|:MEASure:FALL|:MEASure:DEL|:MEASure:PHAS
:DVM:ENABle 1|:DVM:ARANge 1|:DVM:Mode DCRMs|:DVM:Mode FREQuency|:FUNC1:DISPlay 1
:FUNC1:OPERation SUBT|:FUNC2:OPERation MULTiply|:FUNC1:OPERation FFT|:FUNC1:SOURce1 CHAN2
:FUNC1:SOURce1 MATH2|:FUNC1:SOURce2 NONE|:FUNC1:FFT:WINDow FLATtop|:FUNC1:FFT:SPAN 10000000
:FUNC1:OFFSet .5|:FUNC1:RANGe 8|:FUNC1:REFerence 0|:WGEN1:OUTPut 1|:WGEN1:FUNCTION PULSe
:WGEN1:FUNCTION NOISe|:WGEN1:FUNCTION DC|:WGEN1:FUNCTION RAMP|:WGEN1:FREQuency 1000
:WGEN1:PERiod .001|:WGEN1:VOLTage .5|:WGEN1:VOLTage:OFFSet 0|:WGEN1:VOLTage:HIGH .5
:WGEN1:VOLTage:LOW  -.5|:WGEN1:FUNCtion:SQUare:DCYCle 80|:WGEN1:FUNCtion:RAMP:SYMMetry 50
:WGEN1:FUNCtion:PULSe:WIDTh  5E-07|:WGEN1:MODulation:STATe 1|:WGEN1:MODulation:TYPE FM
:WGEN1:MODulation:FUNCtion RAMP|:WGEN1:MODulation:AM:DEPTh  50|:WGEN1:MODulation:NOISe 10
:WGEN1:MODulation:FUNCtion:RAMP:SYMMetry 50|:WGEN1:MODulation:AM:FREQuency 100
:WGEN1:MODulation:FM:FREQuency 100|:WGEN1:MODulation:FM:DEViation 100
:WGEN1:MODulation:FSKey:FREQuency 100|:WGEN1:MODulation:FSKey:RATE 10|:WGEN1:RST|:WGEN2:OUTPut 0
:DISPlay:ANNotation 1|:WAVEFORM:POINTS 1000|:HARDcopy:INKSaver OFF)";

// The 2000X's unnumbered function and generator.
constexpr const char* kCommands2000X = R"(
:FUNC:OPERation FFT|:FUNC:SOURce1 GOFT|:FUNC:GOFT:OPERation SUBTract|:FUNC:GOFT:SOURce1 CHAN2
:FUNC:GOFT:SOURce2 CHAN1|:WGEN:OUTPut 1|:WGEN:FUNCTION SINusoid)";

std::vector<std::string> Split(std::string_view table) {
  std::vector<std::string> commands(1);
  for (const char c : table) {
    c == '|' || c == '\n' ? commands.emplace_back() : commands.back() += c;
  }
  return commands;
}

TEST(ProgramCommandTest, EachIsAcceptedWithoutError) {
  for (bool is_3000x : {true, false}) {
    InstrumentConfig config;
    config.is_3000x = is_3000x;
    for (const std::string& command : Split(is_3000x ? kCommands : kCommands2000X)) {
      if (command.empty()) continue;
      Instrument instrument{config};
      instrument.Execute(command);
      EXPECT_EQ(instrument.Execute(":SYSTem:ERRor?"), "+0,\"No error\"") << command;
    }
  }
}

// Channel 1 a 1 kHz square of 0 to 2 V with 2 us edges; channel 2 a 1 kHz triangle of 2 Vpp,
// whose rising 0 V crossing comes a quarter period after the square's rising edge.
class MeasurementValueTest : public testing::Test {
 protected:
  void SetUp() override {
    instrument_.Execute(
        ":SIMulate:CHANnel1:SIGNal SQU,1kHz,2,1;:SIMulate:CHANnel2:SIGNal RAMP,1kHz,2,0,50;"
        ":CHANnel2:DISPlay 1;:TIMebase:SCALe 200us;:TRIGger:EDGE:LEVel 1");
    instrument_.WithState([](InstrumentState& state) {
      state.sources[1].signal.components[0].edge = 2e-6;
      return 0;
    });
  }
  double Value(const std::string& query) { return std::stod(instrument_.Execute(query)); }
  Instrument instrument_{[] {
    InstrumentConfig config;
    config.signal_preset = SignalPreset::kFlat;
    return config;
  }()};
};

TEST_F(MeasurementValueTest, PulseParametersFollowTheSignalOrAnswerNoValue) {
  struct Expected {
    const char* query;
    double value, tolerance;
  };
  for (const Expected& e : std::initializer_list<Expected>{
           {":MEASure:VTOP?", 2.0, 0.01},
           {":MEASure:VBASe? CHANnel1", 0.0, 0.01},
           {":MEASure:VAMPlitude?", 2.0, 0.01},
           {":MEASure:VAMP? CHAN2", 2.0, 0.01},  // no plateau: top and base are the extremes
           {":MEASure:OVERshoot?", 0.0, 0.1},
           {":MEASure:PREShoot?", 0.0, 0.1},
           {":MEASure:RISetime?", 2e-6, 0.1e-6},
           {":MEASure:FALL?", 2e-6, 0.1e-6},
           {":MEASure:PWIDth?", 500e-6, 1e-6},
           {":MEASure:NWID?", 500e-6, 1e-6},
           {":MEASure:DUTYcycle?", 50.0, 0.5},
           {":MEASure:DELay? CHAN1,CHAN2", 250e-6, 2e-6},
           {":MEASure:PHASe? CHAN1,CHAN2", 90.0, 1.0},
           // No value where the screen does not hold the measurement: a channel that is off,
           // then a tenth of a period on screen, which shows no whole pulse.
           {":MEASure:VTOP? CHAN3", 9.9e37, 0},
           {":MEASure:DELay? CHAN1,CHAN4", 9.9e37, 0},
           {":TIMebase:SCALe 10us;:MEASure:PWIDth?", 9.9e37, 0},
           {":MEASure:DUTY?", 9.9e37, 0},
           {":MEASure:PHASe?", 9.9e37, 0},
       }) {
    EXPECT_NEAR(Value(e.query), e.value, e.tolerance) << e.query;
  }
}

}  // namespace
}  // namespace quarvelo::sim
