// Settings set and read back through the instrument model: forms, clamping, knock-on effects,
// model variants, options, identity and the errors the instrument queues.
#include <gtest/gtest.h>

#include <string>

#include "sim/model/instrument.h"

namespace quarvelo::sim {
namespace {

InstrumentConfig Config2000X(int channels) {
  InstrumentConfig config;
  config.is_3000x = false;
  config.channels = channels;
  return config;
}

TEST(InstrumentSettingsTest, ReadsBackWhatTheInstrumentKept) {
  struct Case {
    const char* command;
    const char* query;
    const char* reply;
  };
  for (const Case& c : std::initializer_list<Case>{
           {":chan2:scal 0.04", ":CHAN2:SCAL?", "+4.00000E-02"},
           {":CHANnel1:SCALe 100", ":CHANnel1:SCALe?", "+5.00000E+00"},
           {":CHANnel1:SCALe 1uV", ":CHANnel1:SCALe?", "+1.00000E-03"},
           {":CHANnel1:OFFSet -100mV", ":CHANnel1:OFFSet?", "-1.0E-01"},
           {":CHANnel1:SCALe 0.1;OFFSet 30", ":CHANnel1:OFFSet?", "+2.0E+00"},
           {":CHANnel1:OFFSet 30", ":CHANnel1:OFFSet?", "+3.0E+01"},
           {":CHANnel3:COUPling AC", ":CHANnel3:COUPling?", "AC"},
           {":CHANnel2:BWLimit ON", ":CHANnel2:BWLimit?", "1"},
           {":CHANnel1:INV 1", ":CHANnel1:INVert?", "1"},
           {":CHANnel1:LABel \"ABCDEFGHIJKLMNOP\"", ":CHANnel1:LABel?", "\"ABCDEFGHIJ\""},
           {":CHANnel2:RANGe 4", ":CHANnel2:SCALe?", "+5.00000E-01"},
           {":CHANnel2:SCALe 0.2", ":CHANnel2:RANGe?", "+1.60000E+00"},
           {":TIMebase:RANGe 1ms", ":TIMebase:SCALe?", "+1.00000000E-04"},
           {":TRIGger:HOLDoff 0", ":TRIGger:HOLDoff?", "+4.0E-08"},
           {":TRIGger:HOLDoff 12", ":TRIGger:HOLDoff?", "+1.0E+01"},
           {":TRIGger:EDGE:SOURce EXT", ":TRIGger:SOURce?", "EXT"},
           {":Trigger:EDGE:SLOPe EITH", ":TRIGger:EDGE:SLOPe?", "EITH"},
           {":Trigger:EDGE:COUPLing LFR", ":TRIGger:EDGE:COUPling?", "LFR"},
           {":Trigger:EDGE:REJect LFReject", ":TRIGger:EDGE:REJect?", "LF"},
           {":TRIGger:EDGE:LEVel 100", ":TRIGger:EDGE:LEVel?", "+6.00000E+00"},
           {":TIMebase:SCALe 2E-10", ":TIMebase:SCALe?", "+5.00000000E-10"},
           {":TIMebase:SCALe 100", ":TIMebase:SCALe?", "+5.00000000E+01"},
           {":TIMebase:REFerence RIGHt", ":TIMebase:REFerence?", "RIGH"},
           {":TIMEBASE:MODE ROLL", ":TIMebase:Mode?", "ROLL"},
           {":ACQuire:COUNt 1", ":ACQuire:COUNt?", "+2"},
           {":Display:PERSistence 0.5", ":DISPlay:PERSistence?", "+5.0E-01"},
           {":DISPlay:ANNotation:COLor MARKer", ":DISPlay:ANNotation:COLor?", "MARK"},
           {":DISPlay:ANNotation:BACKground TRANsparent", ":DISPlay:ANNotation:BACKground?",
            "TRAN"},
           {":MEASure:SOURce CHAN2", ":MEASure:SOURce?", "CHAN2,CHAN2"},
           {":FUNC2:SOURce2 NONE", ":FUNC2:SOUR2?", "NONE"},
           {":FUNC1:SOURce CHAN4", ":FUNC1:SOURce1?", "CHAN4"},
           // The 3000X's own FFT subsystem, its defaults first.
           {"*CLS", ":FFT:WINDow?;:FFT:VTYPe?", "HANN;DEC"},
           {":FFT:WINDow BHARris;:FFT:SOURce1 CHAN2;:FFT:SPAN 2E6",
            ":FFT:WINDow?;:FFT:SOURce1?;:FFT:SPAN?", "BHAR;CHAN2;+2.0E+06"},
           {"*CLS", "*OPT?;:CHANnel2:PROBe:ID?", "DSOX3WAVEGEN,DSOX3DVM;NONE"},
           {":WAVeform:POINts MAX", ":WAVeform:POINts:MODE?", "MAX"},
           {":WGEN1:FUNCTION SQU", ":WGEN1:FUNCtion?", "SQU"},
           {":WGEN1:PERiod 1E-6", ":WGEN1:FREQuency?", "+1.0E+06"},
           {":WGEN1:FREQuency 1E3", ":WGEN1:PERiod?", "+1.0E-03"},
           {":WGEN1:FUNCtion:SQUare:DCYCle 95", ":WGEN1:FUNCtion:SQUare:DCYCle?", "+80"},
           {":WGEN1:FUNCtion:SQUare:DCYCle 5", ":WGEN1:FUNCtion:SQUare:DCYCle?", "+20"},
           {":WGEN1:FUNCtion:PULSe:WIDTh  1E-9", ":WGEN1:FUNCtion:PULSe:WIDTh?", "+2.0E-08"},
           {":WGEN1:VOLTage:HIGH 1;:WGEN1:VOLTage:LOW  -0.5",
            ":WGEN1:VOLTage?;:WGEN1:VOLTage:OFFSet?", "+1.5E+00;+2.5E-01"},
           {":WGEN1:MODulation:FUNCtion RAMP", ":WGEN1:MODulation:FUNCtion?", "RAMP"},
           // The generator's frequency within its function's range; its reset.
           {":WGEN1:FREQuency 15MHz", ":WGEN1:FREQuency?", "+1.5E+07"},
           {":WGEN1:FREQuency 15MHz;:WGEN1:FUNCtion RAMP", ":WGEN1:FREQuency?", "+1.0E+05"},
           {":WGEN1:FUNC SQU;:WGEN1:FREQ 1E5;:WGEN1:RST", ":WGEN1:FUNC?;:WGEN1:FREQ?",
            "SIN;+1.0E+03"},
           // The probe factor keeps the picture and rescales the limits.
           {":CHANnel2:SCALe 0.5;OFFSet 0.2;:CHANnel2:PROBe 10",
            ":CHANnel2:PROBe?;:CHANnel2:SCALe?;:CHANnel2:OFFSet?",
            "+1.0E+01;+5.00000E+00;+2.0E+00"},
           {":CHANnel2:PROBe 10;:CHANnel2:SCALe 40", ":CHANnel2:SCALe?", "+4.00000E+01"},
           // Preset and reset restore the defaults.
           {":CHANnel1:SCALe 0.2;:CHANnel2:DISPlay 1;:TIMebase:SCALe 1E-3;:STOP;:SYSTem:PRESet",
            ":CHANnel1:SCALe?;:CHANnel1:DISPlay?;:CHANnel2:DISPlay?;:TIMebase:SCALe?;"
            ":OPERegister:CONDition?",
            "+1.00000E+00;1;0;+1.00000000E-04;+8"},
           {":CHANnel1:SCALe 0.2;*RST", ":CHANnel1:SCALe?", "+1.00000E+00"},
           {"", "*idn?", "KEYSIGHT TECHNOLOGIES,DSO-X 3034T,QVSIM00001,07.50.2021102830"}}) {
    Instrument instrument{InstrumentConfig{}};
    instrument.Execute(c.command);
    EXPECT_EQ(instrument.Execute(c.query), c.reply) << c.command;
    EXPECT_EQ(instrument.Execute(":SYSTem:ERRor?"), "+0,\"No error\"") << c.command;
  }
}

TEST(InstrumentSettingsTest, ErrorsQueueTheInstrumentsEntryAndChangeNothing) {
  struct Case {
    const char* message;
    const char* error;
  };
  for (const Case& c : std::initializer_list<Case>{
           {":BOGus:THING 1", "-113,\"Undefined header\""},
           {":CHANnel1:SCALe", "-109,\"Missing parameter\""},
           {":CHANnel1:SCALe 1,2", "-108,\"Parameter not allowed\""},
           {":CHANnel1:SCALe abc", "-104,\"Data type error\""},
           {":CHANnel1:SCALe 1.2.3", "-121,\"Invalid character in number\""},
           {":CHANnel1:SCALe 5Q", "-131,\"Invalid suffix\""},
           {":CHANnel1:SCALe \"1\"", "-104,\"Data type error\""},
           {":CHANnel3:SCALe 1", "-114,\"Header suffix out of range\""},
           {":TRIGger:SWEep SOMETIMES", "-224,\"Illegal parameter value\""},
           {":TRIGger:EDGE:SOURce CHAN3", "-224,\"Illegal parameter value\""},
           {":FUNC2:OPERation ADD", "-114,\"Header suffix out of range\""},
           {":WGEN2:OUTPut 1", "-114,\"Header suffix out of range\""},
           {":RUN?", "-113,\"Undefined header\""},
           {":CHAN1:SCALe 1;:CHAN1:SCAL?;:XX", "-113,\"Undefined header\""},
           {":CHAN#1:SCAL 1", "-101,\"Invalid character\""},
           {":WAVeform:POINts 8000001", "-222,\"Data out of range\""},
           {":FUNC:OPERation SQRT", "-224,\"Illegal parameter value\""}}) {  // 3000X only
    Instrument instrument(Config2000X(2));
    std::string before = instrument.Execute(":CHANnel1:SCALe?;:TRIGger:SWEep?");
    instrument.Execute(c.message);
    EXPECT_EQ(instrument.Execute(":SYSTem:ERRor?"), c.error) << c.message;
    EXPECT_EQ(instrument.Execute(":CHANnel1:SCALe?;:TRIGger:SWEep?"), before) << c.message;
  }
}

TEST(InstrumentSettingsTest, TwoThousandXNamesItselfAndUsesUnnumberedFunctionAndGenerator) {
  Instrument instrument(Config2000X(4));
  EXPECT_EQ(instrument.Execute("*IDN?").substr(0, 34), "KEYSIGHT TECHNOLOGIES,DSO-X 2024A,");
  instrument.Execute(":FUNC:OPERation FFT;:WGEN:FUNCtion PULSe");
  EXPECT_EQ(instrument.Execute(":FUNC:OPERation?;:WGEN:FUNCtion?"), "FFT;PULS");
  EXPECT_EQ(instrument.Execute(":FUNC:GOFT:OPERation?"), "ADD");
  EXPECT_EQ(instrument.Execute(":SYSTem:ERRor?"), "+0,\"No error\"");
  Instrument big{InstrumentConfig{}};
  big.Execute(":FUNC1:GOFT:OPERation ADD");
  EXPECT_EQ(big.Execute(":SYSTem:ERRor?"), "-113,\"Undefined header\"");
}

TEST(InstrumentSettingsTest, AbsentOptionsAnswerHardwareMissingMemoryOptionAndDvmSettling) {
  InstrumentConfig config;
  config.has_wgen = config.has_dvm = false;
  Instrument bare(config);
  EXPECT_EQ(bare.Execute("*OPT?"), "0");
  EXPECT_EQ(bare.Execute(":DVM:CURRent?"), "");
  EXPECT_EQ(bare.Execute(":WGEN1:OUTPut?"), "");
  bare.Execute(":WGEN1:PERiod 1");
  EXPECT_EQ(bare.Execute(":SYSTem:ERRor?;:SYSTem:ERRor?;:SYSTem:ERRor?"),
            "-241,\"Hardware missing\";-241,\"Hardware missing\";-241,\"Hardware missing\"");
  config = InstrumentConfig{};
  config.has_memory_upgrade = true;
  config.dvm_settle_ms = 60000;
  Instrument full(config);
  EXPECT_EQ(full.Execute("*OPT?;:TIMebase:SCALe 1ms;:ACQuire:POINts?"),
            "DSOX3WAVEGEN,DSOX3DVM,DSOX3MEMUP;+4000000");
  EXPECT_EQ(full.Execute(":DVM:ENABle 1;:DVM:CURRent?"), "+9.9E+37");  // still settling
}

}  // namespace
}  // namespace quarvelo::sim
