// Replies where the simulator follows what public client code for these instruments expects:
// options, probe identification, signed event registers, the transfer's source and points,
// the memory option, a settable identity and the voltmeter's settling.
#include <gtest/gtest.h>

#include <algorithm>
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
    testing::Values(
        FidelityCase{"Options", "*OPT?", "DSOX3WAVEGEN,DSOX3DVM"},
        FidelityCase{"NoOptions", "*OPT?", "0", false, true},
        FidelityCase{"MemoryOption", "*OPT?;:TIMebase:SCALe 1ms;:ACQuire:POINts?",
                     "DSOX3WAVEGEN,DSOX3DVM,DSOX3MEMUP;+4000000", true},
        FidelityCase{"ProbeId", ":CHANnel2:PROBe:ID?", "NONE"},
        FidelityCase{"FftSubsystem",
                     ":FFT:WINDow?;:FFT:VTYPe?;:FFT:WINDow BHARris;:FFT:SOURce1 CHAN2;"
                     ":FFT:WINDow?;:FFT:SOURce1?;:FFT:SPAN 2E6;:FFT:SPAN?",
                     "HANN;DEC;BHAR;CHAN2;+2.0E+06"},
        FidelityCase{"EventRegistersSigned", ":STOP;:AER?;:TER?", "+1;+0"},
        FidelityCase{"SourceTurnsChannelOn", ":WAVeform:SOURce CHAN3;:CHANnel3:DISPlay?", "1"},
        FidelityCase{"PointsOutOfRange", ":WAVeform:POINts 8000001;:SYSTem:ERRor?",
                     "-222,\"Data out of range\""},
        FidelityCase{"PointsMaxSetsTheMode", ":WAVeform:POINts MAX;:WAVeform:POINts:MODE?", "MAX"},
        FidelityCase{"IdentitySet", "*IDN?",
                     "AGILENT TECHNOLOGIES,DSO-X 2024A,MY1,02.42.2017032900", false, false, 0,
                     "AGILENT TECHNOLOGIES,DSO-X 2024A,MY1,02.42.2017032900"},
        FidelityCase{"VoltmeterSettling", ":DVM:ENABle 1;:DVM:CURRent?", "+9.9E+37", false, false,
                     60000}),
    [](const testing::TestParamInfo<FidelityCase>& info) { return info.param.name; });

}  // namespace
}  // namespace quarvelo::sim

namespace quarvelo::sim {
namespace {

std::string BlockData(const std::string& block) { return block.substr(2 + (block[1] - '0')); }

// Signed codes are the unsigned ones less 128, with a y reference of 0; peak acquisitions
// pair each point's low with its high, so a narrow pulse between points still shows.
TEST(WaveformFidelityTest, SignedCodesAndPeakPairs) {
  InstrumentConfig config;
  config.signal_preset = SignalPreset::kFlat;
  Instrument instrument{config};
  instrument.Execute(
      ":SIMulate:CHANnel1:SIGNal PULSe,1kHz,2,0,1e-7;:CHANnel1:SCALe 0.5;:STOP;"
      ":WAVeform:POINts 1000");
  std::string unsigned_codes = BlockData(instrument.Execute(":WAVeform:DATA?"));
  instrument.Execute(":WAVeform:UNSigned 0");
  EXPECT_EQ(instrument.Execute(":WAVeform:YREFerence?"), "+0");
  std::string signed_codes = BlockData(instrument.Execute(":WAVeform:DATA?"));
  ASSERT_EQ(signed_codes.size(), unsigned_codes.size());
  for (size_t i = 0; i < signed_codes.size(); ++i) {
    ASSERT_EQ(static_cast<int>(static_cast<signed char>(signed_codes[i])),
              static_cast<unsigned char>(unsigned_codes[i]) - 128);
  }
  // 100 ns pulses from -1 to +1 V every millisecond, points 1 us apart: the normal record
  // holds only the base (code 77).
  auto highest = [](const std::string& codes) {
    return *std::max_element(codes.begin(), codes.end(), [](char a, char b) {
      return static_cast<unsigned char>(a) < static_cast<unsigned char>(b);
    });
  };
  instrument.Execute(":WAVeform:UNSigned 1;:TIMebase:SCALe 100us;:TIMebase:POSition 5E-7");
  EXPECT_LT(static_cast<unsigned char>(highest(BlockData(instrument.Execute(":WAVeform:DATA?")))),
            128);
  instrument.Execute(":ACQuire:TYPE PEAK");
  std::string peak = BlockData(instrument.Execute(":WAVeform:DATA?"));
  EXPECT_GT(static_cast<unsigned char>(highest(peak)), 170);  // +1 V at 0.5 V/div: code 179
  for (size_t i = 0; i + 1 < peak.size(); i += 2) {
    ASSERT_LE(static_cast<unsigned char>(peak[i]), static_cast<unsigned char>(peak[i + 1]));
  }
}

}  // namespace
}  // namespace quarvelo::sim
