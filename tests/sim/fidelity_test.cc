// Replies where the simulator follows what public client code for these instruments expects:
// options, probe identification, the FFT subsystem, the transfer's points, the memory option,
// a settable identity and the voltmeter's settling.
#include <gtest/gtest.h>

#include <string>

#include "sim/model/instrument.h"

namespace quarvelo::sim {
namespace {

struct FidelityCase {
  const char* name;
  const char* message;
  const char* reply;
  bool memory_upgrade = false;
  bool no_options = false;
  double dvm_settle_ms = 0;
  const char* identity = "";
};

class FidelityTest : public testing::TestWithParam<FidelityCase> {};

TEST_P(FidelityTest, Replies) {
  const FidelityCase& c = GetParam();
  InstrumentConfig config;
  config.has_memory_upgrade = c.memory_upgrade;
  config.has_wgen = config.has_dvm = !c.no_options;
  config.dvm_settle_ms = c.dvm_settle_ms;
  config.identity = c.identity;
  Instrument instrument{config};
  EXPECT_EQ(instrument.Execute(c.message), c.reply);
}

INSTANTIATE_TEST_SUITE_P(
    Table, FidelityTest,
    testing::Values(FidelityCase{"Options", "*OPT?", "DSOX3WAVEGEN,DSOX3DVM"},
                    FidelityCase{"NoOptions", "*OPT?", "0", false, true},
                    FidelityCase{"MemoryOption", "*OPT?;:TIMebase:SCALe 1ms;:ACQuire:POINts?",
                                 "DSOX3WAVEGEN,DSOX3DVM,DSOX3MEMUP;+4000000", true},
                    FidelityCase{"ProbeId", ":CHANnel2:PROBe:ID?", "NONE"},
                    FidelityCase{"FftSubsystem",
                                 ":FFT:WINDow?;:FFT:VTYPe?;:FFT:WINDow BHARris;:FFT:SOURce1 CHAN2;"
                                 ":FFT:WINDow?;:FFT:SOURce1?;:FFT:SPAN 2E6;:FFT:SPAN?",
                                 "HANN;DEC;BHAR;CHAN2;+2.0E+06"},
                    FidelityCase{"PointsOutOfRange", ":WAVeform:POINts 8000001;:SYSTem:ERRor?",
                                 "-222,\"Data out of range\""},
                    FidelityCase{"PointsMaxSetsTheMode",
                                 ":WAVeform:POINts MAX;:WAVeform:POINts:MODE?", "MAX"},
                    FidelityCase{"IdentitySet", "*IDN?",
                                 "AGILENT TECHNOLOGIES,DSO-X 2024A,MY1,02.42.2017032900", false,
                                 false, 0, "AGILENT TECHNOLOGIES,DSO-X 2024A,MY1,02.42.2017032900"},
                    FidelityCase{"VoltmeterSettling", ":DVM:ENABle 1;:DVM:CURRent?", "+9.9E+37",
                                 false, false, 60000}),
    [](const testing::TestParamInfo<FidelityCase>& info) { return info.param.name; });

}  // namespace
}  // namespace quarvelo::sim
