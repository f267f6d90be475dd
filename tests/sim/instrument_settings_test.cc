// Settings set and read back through the instrument model: forms, clamping, knock-on effects,
// model variants and options.
#include <gtest/gtest.h>

#include <ostream>
#include <string>

#include "sim/model/instrument.h"

namespace quarvelo::sim {
namespace {

InstrumentConfig Config3000X() { return InstrumentConfig{}; }

InstrumentConfig Config2000X(int channels = 2) {
  InstrumentConfig config;
  config.is_3000x = false;
  config.channels = channels;
  return config;
}

struct RoundTrip {
  const char* command;
  const char* query;
  const char* reply;
};

void PrintTo(const RoundTrip& c, std::ostream* os) { *os << c.command; }

class RoundTripTest : public testing::TestWithParam<RoundTrip> {};

TEST_P(RoundTripTest, ReadsBackWhatTheInstrumentKept) {
  const RoundTrip& c = GetParam();
  Instrument instrument(Config3000X());
  instrument.Execute(c.command);
  EXPECT_EQ(instrument.Execute(c.query), c.reply) << c.command;
  EXPECT_EQ(instrument.Execute(":SYSTem:ERRor?"), "+0,\"No error\"") << c.command;
}

INSTANTIATE_TEST_SUITE_P(
    Table, RoundTripTest,
    testing::Values(
        RoundTrip{":CHANnel1:SCALe 500mV", ":CHANnel1:SCALe?", "+5.00000E-01"},
        RoundTrip{":chan2:scal 0.04", ":CHAN2:SCAL?", "+4.00000E-02"},
        RoundTrip{":CHANnel1:SCALe 100", ":CHANnel1:SCALe?", "+5.00000E+00"},
        RoundTrip{":CHANnel1:SCALe 1uV", ":CHANnel1:SCALe?", "+1.00000E-03"},
        RoundTrip{":CHANnel1:OFFSet -100mV", ":CHANnel1:OFFSet?", "-1.0E-01"},
        RoundTrip{":CHANnel1:SCALe 0.1;OFFSet 30", ":CHANnel1:OFFSet?", "+2.0E+00"},
        RoundTrip{":CHANnel1:OFFSet 30", ":CHANnel1:OFFSet?", "+3.0E+01"},
        RoundTrip{":CHANnel3:COUPling AC", ":CHANnel3:COUPling?", "AC"},
        RoundTrip{":CHANnel2:BWLimit ON", ":CHANnel2:BWLimit?", "1"},
        RoundTrip{":CHANnel1:INV 1", ":CHANnel1:INVert?", "1"},
        RoundTrip{":CHANnel1:LABel \"PUMP\"", ":CHANnel1:LABel?", "\"PUMP\""},
        RoundTrip{":CHANnel1:LABel \"ABCDEFGHIJKLMNOP\"", ":CHANnel1:LABel?", "\"ABCDEFGHIJ\""},
        RoundTrip{":CHANnel2:RANGe 4", ":CHANnel2:SCALe?", "+5.00000E-01"},
        RoundTrip{":CHANnel2:SCALe 0.2", ":CHANnel2:RANGe?", "+1.60000E+00"},
        RoundTrip{":TIMebase:RANGe 1ms", ":TIMebase:SCALe?", "+1.00000000E-04"},
        RoundTrip{":TRIGger:HOLDoff 0", ":TRIGger:HOLDoff?", "+4.0E-08"},
        RoundTrip{":TRIGger:HOLDoff 12", ":TRIGger:HOLDoff?", "+1.0E+01"},
        RoundTrip{":TRIGger:HOLDoff .005", ":TRIGger:HOLDoff?", "+5.0E-03"},
        RoundTrip{":TRIGger:EDGE:SOURce CHAN3", ":TRIGger:EDGE:SOURce?", "CHAN3"},
        RoundTrip{":TRIGger:EDGE:SOURce EXT", ":TRIGger:SOURce?", "EXT"},
        RoundTrip{":TRIGger:EDGE:SOURce LINE", ":TRIGger:EDGE:SOURce?", "LINE"},
        RoundTrip{":TRIGger:EDGE:SOURce WGEN", ":TRIGger:EDGE:SOURce?", "WGEN"},
        RoundTrip{":Trigger:EDGE:SLOPe EITH", ":TRIGger:EDGE:SLOPe?", "EITH"},
        RoundTrip{":Trigger:EDGE:COUPLing LFR", ":TRIGger:EDGE:COUPling?", "LFR"},
        RoundTrip{":Trigger:EDGE:REJect HF", ":TRIGger:EDGE:REJect?", "HF"},
        RoundTrip{":Trigger:EDGE:REJect LFReject", ":TRIGger:EDGE:REJect?", "LF"},
        RoundTrip{":TRIGger:EDGE:LEVel 1.2", ":TRIGger:EDGE:LEVel?", "+1.20000E+00"},
        RoundTrip{":TRIGger:EDGE:LEVel 100", ":TRIGger:EDGE:LEVel?", "+6.00000E+00"},
        RoundTrip{":TRIGger:SWEep NORMal", ":TRIGger:SWEep?", "NORM"},
        RoundTrip{":TRIGger:NREJect 1", ":TRIGger:NREJect?", "1"},
        RoundTrip{":TIMebase:SCALe 5E-09", ":TIMebase:SCALe?", "+5.00000000E-09"},
        RoundTrip{":TIMebase:SCALe 2E-10", ":TIMebase:SCALe?", "+5.00000000E-10"},
        RoundTrip{":TIMebase:SCALe 100", ":TIMebase:SCALe?", "+5.00000000E+01"},
        RoundTrip{":TIMebase:REFerence CENTER", ":TIMebase:REFerence?", "CENT"},
        RoundTrip{":TIMebase:REFerence RIGHt", ":TIMebase:REFerence?", "RIGH"},
        RoundTrip{":TIMEBASE:MODE ROLL", ":TIMebase:Mode?", "ROLL"},
        RoundTrip{":ACQuire:TYPE AVERage", ":ACQuire:TYPE?", "AVER"},
        RoundTrip{":ACQuire:COUNt 1", ":ACQuire:COUNt?", "+2"},
        RoundTrip{":ACQuire:COUNt 256", ":ACQuire:COUNt?", "+256"},
        RoundTrip{":Display:PERSistence INF", ":DISPlay:PERSistence?", "INF"},
        RoundTrip{":Display:PERSistence 0.5", ":DISPlay:PERSistence?", "+5.0E-01"},
        RoundTrip{":DISPlay:ANNotation:TEXT \"\"", ":DISPlay:ANNotation:TEXT?", "\"\""},
        RoundTrip{":DISPlay:ANNotation:COLor MARKer", ":DISPlay:ANNotation:COLor?", "MARK"},
        RoundTrip{":DISPlay:ANNotation:BACKground TRANsparent", ":DISPlay:ANNotation:BACKground?",
                  "TRAN"},
        RoundTrip{":MEASure:SOURce CHAN2", ":MEASure:SOURce?", "CHAN2,CHAN2"},
        RoundTrip{":MEASure:SOURce CHAN1,CHAN3", ":MEASure:SOURce?", "CHAN1,CHAN3"},
        RoundTrip{":DVM:Mode ACRMs", ":DVM:MODE?", "ACRM"},
        RoundTrip{":DVM:SOURce CHANnel2", ":DVM:SOURce?", "CHAN2"},
        RoundTrip{":FUNC2:OPERation SUBTract", ":FUNC2:OPERation?", "SUBT"},
        RoundTrip{":FUNC1:FFT:CENTer 5000000", ":FUNC1:FFT:CENTer?", "+5.0E+06"},
        RoundTrip{":FUNC1:FFT:WINDow BHARris", ":FUNC1:FFT:WINDow?", "BHAR"},
        RoundTrip{":FUNC1:FFT:VTYPe VRMS", ":FUNC1:FFT:VTYPe?", "VRMS"},
        RoundTrip{":FUNC1:SOURce1 FUNC2", ":FUNC1:SOURce1?", "FUNC2"},
        RoundTrip{":FUNC2:SOURce2 NONE", ":FUNC2:SOUR2?", "NONE"},
        RoundTrip{":FUNC1:SOURce CHAN4", ":FUNC1:SOURce1?", "CHAN4"},
        RoundTrip{":DISPlay:ANNotation:COLor CH3", ":DISPlay:ANNotation:COLor?", "CH3"},
        RoundTrip{":WGEN1:FUNCTION SQU", ":WGEN1:FUNCtion?", "SQU"},
        RoundTrip{":WGEN2:FREQuency 2.5MHz", ":WGEN2:FREQuency?", "+2.5E+06"},
        RoundTrip{":WGEN1:PERiod 1E-6", ":WGEN1:FREQuency?", "+1.0E+06"},
        RoundTrip{":WGEN1:FREQuency 1E3", ":WGEN1:PERiod?", "+1.0E-03"},
        RoundTrip{":WGEN1:FUNCtion:SQUare:DCYCle 95", ":WGEN1:FUNCtion:SQUare:DCYCle?", "+80"},
        RoundTrip{":WGEN1:FUNCtion:SQUare:DCYCle 5", ":WGEN1:FUNCtion:SQUare:DCYCle?", "+20"},
        RoundTrip{":WGEN1:FUNCtion:PULSe:WIDTh  1E-9", ":WGEN1:FUNCtion:PULSe:WIDTh?", "+2.0E-08"},
        RoundTrip{":WGEN1:VOLTage:HIGH 1;:WGEN1:VOLTage:LOW  -0.5", ":WGEN1:VOLTage?", "+1.5E+00"},
        RoundTrip{":WGEN1:VOLTage:HIGH 1;:WGEN1:VOLTage:LOW  -0.5", ":WGEN1:VOLTage:OFFSet?",
                  "+2.5E-01"},
        RoundTrip{":WGEN1:OUTPut:LOAD FIFTy", ":WGEN1:OUTPut:LOAD?", "FIFT"},
        RoundTrip{":WGEN1:MODulation:AM:DEPTh  55", ":WGEN1:MODulation:AM:DEPTh?", "+55"},
        RoundTrip{":WGEN1:MODulation:TYPE FSK", ":WGEN1:MODulation:TYPE?", "FSK"},
        RoundTrip{":WGEN1:MODulation:FUNCtion RAMP", ":WGEN1:MODulation:FUNCtion?", "RAMP"}));

TEST(InstrumentSettingsTest, ProbeFactorKeepsThePictureAndRescalesLimits) {
  Instrument instrument(Config3000X());
  instrument.Execute(":CHANnel2:SCALe 0.5;OFFSet 0.2");
  instrument.Execute(":CHANnel2:PROBe 10");
  EXPECT_EQ(instrument.Execute(":CHANnel2:PROBe?"), "+1.0E+01");
  EXPECT_EQ(instrument.Execute(":CHANnel2:SCALe?"), "+5.00000E+00");
  EXPECT_EQ(instrument.Execute(":CHANnel2:OFFSet?"), "+2.0E+00");
  instrument.Execute(":CHANnel2:SCALe 40");
  EXPECT_EQ(instrument.Execute(":CHANnel2:SCALe?"), "+4.00000E+01");
}

TEST(InstrumentSettingsTest, GeneratorFrequencyFollowsTheFunctionsRange) {
  Instrument instrument(Config3000X());
  instrument.Execute(":WGEN1:FREQuency 15MHz");
  EXPECT_EQ(instrument.Execute(":WGEN1:FREQuency?"), "+1.5E+07");
  instrument.Execute(":WGEN1:FUNCtion RAMP");
  EXPECT_EQ(instrument.Execute(":WGEN1:FREQuency?"), "+1.0E+05");
  instrument.Execute(":WGEN1:RST");
  EXPECT_EQ(instrument.Execute(":WGEN1:FUNCtion?;:WGEN1:FREQuency?"), "SIN;+1.0E+03");
}

TEST(InstrumentSettingsTest, PresetRestoresDefaults) {
  Instrument instrument(Config3000X());
  instrument.Execute(":CHANnel1:SCALe 0.2;:CHANnel2:DISPlay 1;:TIMebase:SCALe 1E-3;:STOP");
  instrument.Execute(":SYSTem:PRESet");
  EXPECT_EQ(instrument.Execute(":CHANnel1:SCALe?;:CHANnel1:DISPlay?;:CHANnel2:DISPlay?"),
            "+1.00000E+00;1;0");
  EXPECT_EQ(instrument.Execute(":TIMebase:SCALe?;:OPERegister:CONDition?"), "+1.00000000E-04;+8");
  instrument.Execute(":CHANnel1:SCALe 0.2");
  instrument.Execute("*RST");
  EXPECT_EQ(instrument.Execute(":CHANnel1:SCALe?"), "+1.00000E+00");
}

struct ErrorCase {
  const char* message;
  const char* error;
};

void PrintTo(const ErrorCase& c, std::ostream* os) { *os << c.message; }

class ErrorTest : public testing::TestWithParam<ErrorCase> {};

TEST_P(ErrorTest, QueuesTheInstrumentsEntryAndChangesNothing) {
  const ErrorCase& c = GetParam();
  Instrument instrument(Config2000X(2));
  std::string before = instrument.Execute(":CHANnel1:SCALe?;:TRIGger:SWEep?");
  instrument.Execute(c.message);
  EXPECT_EQ(instrument.Execute(":SYSTem:ERRor?"), c.error) << c.message;
  EXPECT_EQ(instrument.Execute(":CHANnel1:SCALe?;:TRIGger:SWEep?"), before) << c.message;
}

INSTANTIATE_TEST_SUITE_P(
    Table, ErrorTest,
    testing::Values(ErrorCase{":BOGus:THING 1", "-113,\"Undefined header\""},
                    ErrorCase{":CHANnel1:SCALe", "-109,\"Missing parameter\""},
                    ErrorCase{":CHANnel1:SCALe 1,2", "-108,\"Parameter not allowed\""},
                    ErrorCase{":CHANnel1:SCALe abc", "-104,\"Data type error\""},
                    ErrorCase{":CHANnel1:SCALe 1.2.3", "-121,\"Invalid character in number\""},
                    ErrorCase{":CHANnel1:SCALe 5Q", "-131,\"Invalid suffix\""},
                    ErrorCase{":CHANnel1:SCALe \"1\"", "-104,\"Data type error\""},
                    ErrorCase{":CHANnel3:SCALe 1", "-114,\"Header suffix out of range\""},
                    ErrorCase{":TRIGger:SWEep SOMETIMES", "-224,\"Illegal parameter value\""},
                    ErrorCase{":TRIGger:EDGE:SOURce CHAN3", "-224,\"Illegal parameter value\""},
                    ErrorCase{":FUNC2:OPERation ADD", "-114,\"Header suffix out of range\""},
                    ErrorCase{":WGEN2:OUTPut 1", "-114,\"Header suffix out of range\""},
                    ErrorCase{":RUN?", "-113,\"Undefined header\""},
                    ErrorCase{":CHAN1:SCALe 1;:CHAN1:SCAL?;:XX", "-113,\"Undefined header\""},
                    ErrorCase{":CHAN#1:SCAL 1", "-101,\"Invalid character\""}));

TEST(InstrumentSettingsTest, TwoThousandXUsesUnnumberedFunctionAndGenerator) {
  Instrument instrument(Config2000X(4));
  instrument.Execute(":FUNC:OPERation FFT;:WGEN:FUNCtion PULSe");
  EXPECT_EQ(instrument.Execute(":FUNC:OPERation?;:WGEN:FUNCtion?"), "FFT;PULS");
  EXPECT_EQ(instrument.Execute(":FUNC:GOFT:OPERation?"), "ADD");
  EXPECT_EQ(instrument.Execute(":SYSTem:ERRor?"), "+0,\"No error\"");
  // Operations only the 3000X has.
  instrument.Execute(":FUNC:OPERation SQRT");
  EXPECT_EQ(instrument.Execute(":SYSTem:ERRor?"), "-224,\"Illegal parameter value\"");
  Instrument big(Config3000X());
  big.Execute(":FUNC1:GOFT:OPERation ADD");
  EXPECT_EQ(big.Execute(":SYSTem:ERRor?"), "-113,\"Undefined header\"");
}

TEST(InstrumentSettingsTest, AbsentOptionsAnswerHardwareMissing) {
  InstrumentConfig config;
  config.has_wgen = false;
  config.has_dvm = false;
  Instrument instrument(config);
  EXPECT_EQ(instrument.Execute(":DVM:CURRent?"), "");
  EXPECT_EQ(instrument.Execute(":WGEN1:OUTPut?"), "");
  instrument.Execute(":WGEN1:PERiod 1");
  EXPECT_EQ(instrument.Execute(":SYSTem:ERRor?;:SYSTem:ERRor?;:SYSTem:ERRor?"),
            "-241,\"Hardware missing\";-241,\"Hardware missing\";-241,\"Hardware missing\"");
}

TEST(InstrumentSettingsTest, IdentityNamesFamilyAndChannels) {
  EXPECT_EQ(Instrument(Config2000X(2)).Execute("*IDN?").substr(0, 34),
            "KEYSIGHT TECHNOLOGIES,DSO-X 2022A,");
  EXPECT_EQ(Instrument(Config3000X()).Execute("*idn?").substr(0, 34),
            "KEYSIGHT TECHNOLOGIES,DSO-X 3034T,");
}

}  // namespace
}  // namespace quarvelo::sim
