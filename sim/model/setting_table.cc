#include "sim/model/setting_table.h"

#include <array>

namespace quarvelo::sim {
namespace {

using enum SettingType;
using enum ReplyStyle;
using enum LimitRule;
using enum Availability;
using enum Option;

constexpr double kHuge = 1e30;

// Defaults are those of a preset instrument (":SYSTem:PRESet" / "*RST").
constexpr std::array kRows = std::to_array<SettingRow>({
    // Channels
    {":CHANnel#C:DISPlay", kBoolean, kBool, 0, "", 0, 1, ""},
    {":CHANnel#C:BWLimit", kBoolean, kBool, 0, "", 0, 1, ""},
    {":CHANnel#C:PROBe", kNumber, kShort, 1, "", 0.001, 10000, ""},
    {":CHANnel#C:SCALe", kNumber, kFixed5, 1.0, "", 1e-3, 5, "", kChannelScale},
    {":CHANnel#C:OFFSet", kNumber, kShort, 0, "", -40, 40, "", kChannelOffset},
    {":CHANnel#C:COUPling", kChoice, kEnum, 0, "DC", 0, 0, "DC|AC"},
    {":CHANnel#C:INVert", kBoolean, kBool, 0, "", 0, 1, ""},
    {":CHANnel#C:LABel", kString, kQuoted, 0, "CH#", 0, 0, "", kFixed, kAll, kNone, 10},
    {":CHANnel#C:IMPedance", kChoice, kEnum, 0, "ONEMeg", 0, 0, "ONEMeg|FIFTy"},
    {":CHANnel#C:UNITs", kChoice, kEnum, 0, "VOLT", 0, 0, "VOLT|AMPere"},
    {":CHANnel#C:VERNier", kBoolean, kBool, 0, "", 0, 1, ""},
    // Time base
    {":TIMebase:SCALe", kNumber, kFixed8, 100e-6, "", 2e-9, 50, "", kTimebaseScale},
    {":TIMebase:POSition", kNumber, kShort, 0, "", -500, 500, ""},
    {":TIMebase:REFerence", kChoice, kEnum, 0, "CENTer", 0, 0, "LEFT|CENTer|RIGHt"},
    {":TIMebase:MODE", kChoice, kEnum, 0, "MAIN", 0, 0, "MAIN|WINDow|XY|ROLL"},
    {":TIMebase:VERNier", kBoolean, kBool, 0, "", 0, 1, ""},
    // Trigger
    {":TRIGger:MODE", kChoice, kEnum, 0, "EDGE", 0, 0, "EDGE|GLITch|PATTern|TV|SHOLd|TRANsition"},
    {":TRIGger:SWEep", kChoice, kEnum, 0, "AUTO", 0, 0, "AUTO|NORMal"},
    {":TRIGger:NREJect", kBoolean, kBool, 0, "", 0, 1, ""},
    {":TRIGger:HFReject", kBoolean, kBool, 0, "", 0, 1, ""},
    {":TRIGger:HOLDoff", kNumber, kShort, 40e-9, "", 40e-9, 10, ""},
    {":TRIGger[:EDGE]:SOURce", kChoice, kEnum, 0, "CHANnel1", 0, 0,
     "CHANnel#C|EXTernal|LINE|WGEN|WMODulation"},
    {":TRIGger[:EDGE]:LEVel", kNumber, kFixed5, 0, "", -kHuge, kHuge, "", kTriggerLevel},
    {":TRIGger[:EDGE]:SLOPe", kChoice, kEnum, 0, "POSitive", 0, 0,
     "POSitive|NEGative|EITHer|ALTernate"},
    {":TRIGger[:EDGE]:COUPling", kChoice, kEnum, 0, "DC", 0, 0, "DC|AC|LFReject"},
    {":TRIGger[:EDGE]:REJect", kChoice, kEnum, 0, "OFF", 0, 0, "OFF|LF/LFReject|HF/HFReject"},
    // Acquisition and waveform transfer
    {":ACQuire:TYPE", kChoice, kEnum, 0, "NORMal", 0, 0, "NORMal|AVERage|HRESolution|PEAK"},
    {":ACQuire:COUNt", kInteger, kNr1, 8, "", 2, 65536, ""},
    {":ACQuire:MODE", kChoice, kEnum, 0, "RTIMe", 0, 0, "RTIMe|SEGMented"},
    {":WAVeform:SOURce", kChoice, kEnum, 0, "CHANnel1", 0, 0,
     "CHANnel#C|FUNCtion|MATH|WMEMory#2|SBUS1"},
    {":WAVeform:FORMat", kChoice, kEnum, 0, "BYTE", 0, 0, "BYTE|WORD|ASCii"},
    {":WAVeform:POINts:MODE", kChoice, kEnum, 0, "NORMal", 0, 0, "NORMal|MAXimum|RAW"},
    {":WAVeform:UNSigned", kBoolean, kBool, 1, "", 0, 1, ""},
    {":WAVeform:BYTeorder", kChoice, kEnum, 0, "MSBFirst", 0, 0, "MSBFirst|LSBFirst"},
    // Display, annotation, hard copy
    {":DISPlay:LABel", kBoolean, kBool, 0, "", 0, 1, ""},
    {":DISPlay:VECTors", kBoolean, kBool, 1, "", 0, 1, ""},
    {":DISPlay:INTensity:WAVeform", kInteger, kNr1, 50, "", 0, 100, ""},
    {":DISPlay:ANNotation", kBoolean, kBool, 0, "", 0, 1, ""},
    {":DISPlay:ANNotation:TEXT", kString, kQuoted, 0, "", 0, 0, "", kFixed, kAll, kNone, 254},
    {":DISPlay:ANNotation:COLor", kChoice, kEnum, 0, "CH1", 0, 0,
     "CH1|CH2|CH3|CH4|DIGital|MATH|REF|MARKer|WHITe|RED"},
    {":DISPlay:ANNotation:BACKground", kChoice, kEnum, 0, "OPAQue", 0, 0,
     "OPAQue|INVerted|TRANsparent"},
    {":HARDcopy:INKSaver", kBoolean, kBool, 1, "", 0, 1, ""},
    // Voltmeter
    {":DVM:ENABle", kBoolean, kBool, 0, "", 0, 1, "", kFixed, kAll, kDvm},
    {":DVM:SOURce", kChoice, kEnum, 0, "CHANnel1", 0, 0, "CHANnel#C", kFixed, kAll, kDvm},
    {":DVM:MODE", kChoice, kEnum, 0, "DC", 0, 0, "ACRMs|DC|DCRMs|FREQuency", kFixed, kAll, kDvm},
    {":DVM:ARANge", kBoolean, kBool, 0, "", 0, 1, "", kFixed, kAll, kDvm},
    // Math functions (":FUNCtion" on the 2000X, ":FUNCtion1" and 2 on the 3000X)
    {":FUNCtion#F:DISPlay", kBoolean, kBool, 0, "", 0, 1, ""},
    {":FUNCtion#F:OPERation", kChoice, kEnum, 0, "ADD", 0, 0, "ADD|SUBTract|MULTiply|DIVide|FFT",
     kFixed, k2000XOnly},
    {":FUNCtion#F:OPERation", kChoice, kEnum, 0, "ADD", 0, 0,
     "ADD|SUBTract|MULTiply|DIVide|FFT|FFTPhase|INTegrate|DIFF|SQRT|ABSolute|LOWPass|HIGHpass",
     kFixed, k3000XOnly},
    {":FUNCtion#F:SOURce1", kChoice, kEnum, 0, "CHANnel1", 0, 0, "CHANnel#C|GOFT", kFixed,
     k2000XOnly},
    {":FUNCtion#F:SOURce1", kChoice, kEnum, 0, "CHANnel1", 0, 0,
     "CHANnel#C|FUNCtion#2|MATH#2|BUS#2", kFixed, k3000XOnly},
    {":FUNCtion#F:SOURce2", kChoice, kEnum, 0, "CHANnel2", 0, 0, "CHANnel#C|NONE"},
    {":FUNCtion#F:GOFT:OPERation", kChoice, kEnum, 0, "ADD", 0, 0, "ADD|SUBTract|MULTiply", kFixed,
     k2000XOnly},
    {":FUNCtion#F:GOFT:SOURce1", kChoice, kEnum, 0, "CHANnel1", 0, 0, "CHANnel#C", kFixed,
     k2000XOnly},
    {":FUNCtion#F:GOFT:SOURce2", kChoice, kEnum, 0, "CHANnel2", 0, 0, "CHANnel#C", kFixed,
     k2000XOnly},
    {":FUNCtion#F:FFT:CENTer", kNumber, kShort, 5e8, "", 0, 1e10, ""},
    {":FUNCtion#F:FFT:SPAN", kNumber, kShort, 1e9, "", 1, 1e10, ""},
    {":FUNCtion#F:FFT:VTYPe", kChoice, kEnum, 0, "DECibel", 0, 0, "DECibel|VRMS"},
    {":FUNCtion#F:FFT:WINDow", kChoice, kEnum, 0, "HANNing", 0, 0,
     "RECTangular|HANNing|FLATtop|BHARris"},
    {":FUNCtion#F:OFFSet", kNumber, kShort, 0, "", -1e6, 1e6, ""},
    {":FUNCtion#F:RANGe", kNumber, kShort, 8, "", 1e-9, 1e7, ""},
    {":FUNCtion#F:REFerence", kNumber, kShort, 0, "", -1e6, 1e6, ""},
    {":FUNCtion#F:SCALe", kNumber, kShort, 1, "", 1e-9, 1e6, ""},
    // The 3000X's own FFT beside the math functions' FFT operation
    {":FFT:DISPlay", kBoolean, kBool, 0, "", 0, 1, "", kFixed, k3000XOnly},
    {":FFT:SOURce1", kChoice, kEnum, 0, "CHANnel1", 0, 0, "CHANnel#C", kFixed, k3000XOnly},
    {":FFT:CENTer", kNumber, kShort, 5e8, "", 0, 1e10, "", kFixed, k3000XOnly},
    {":FFT:SPAN", kNumber, kShort, 1e9, "", 1, 1e10, "", kFixed, k3000XOnly},
    {":FFT:VTYPe", kChoice, kEnum, 0, "DECibel", 0, 0, "DECibel|VRMS", kFixed, k3000XOnly},
    {":FFT:WINDow", kChoice, kEnum, 0, "HANNing", 0, 0, "RECTangular|HANNing|FLATtop|BHARris",
     kFixed, k3000XOnly},
    {":FFT:OFFSet", kNumber, kShort, 0, "", -1e6, 1e6, "", kFixed, k3000XOnly},
    {":FFT:RANGe", kNumber, kShort, 80, "", 1e-9, 1e7, "", kFixed, k3000XOnly},
    {":FFT:REFerence", kNumber, kShort, 0, "", -1e6, 1e6, "", kFixed, k3000XOnly},
    {":FFT:SCALe", kNumber, kShort, 10, "", 1e-9, 1e6, "", kFixed, k3000XOnly},
    // Waveform generators (":WGEN" on the 2000X, ":WGEN1" and 2 on the 3000X)
    {":WGEN#W:OUTPut", kBoolean, kBool, 0, "", 0, 1, "", kFixed, kAll, kWgen},
    {":WGEN#W:OUTPut:LOAD", kChoice, kEnum, 0, "ONEMeg", 0, 0, "ONEMeg|FIFTy", kFixed, kAll, kWgen},
    {":WGEN#W:FUNCtion", kChoice, kEnum, 0, "SINusoid", 0, 0, "SINusoid|SQUare|RAMP|PULSe|NOISe|DC",
     kFixed, k2000XOnly, kWgen},
    {":WGEN#W:FUNCtion", kChoice, kEnum, 0, "SINusoid", 0, 0,
     "SINusoid|SQUare|RAMP|PULSe|NOISe|DC|SINC|EXPRise|EXPFall|CARDiac|GAUSsian|ARBitrary", kFixed,
     k3000XOnly, kWgen},
    {":WGEN#W:FREQuency", kNumber, kShort, 1000, "", 0.1, 20e6, "", kWgenFrequency, kAll, kWgen},
    {":WGEN#W:VOLTage", kNumber, kShort, 0.5, "", 0.02, 5, "", kWgenAmplitude, kAll, kWgen},
    {":WGEN#W:VOLTage:OFFSet", kNumber, kShort, 0, "", -2.5, 2.5, "", kWgenOffset, kAll, kWgen},
    {":WGEN#W:FUNCtion:SQUare:DCYCle", kInteger, kNr1, 50, "", 20, 80, "", kFixed, kAll, kWgen},
    {":WGEN#W:FUNCtion:RAMP:SYMMetry", kInteger, kNr1, 100, "", 0, 100, "", kFixed, kAll, kWgen},
    {":WGEN#W:FUNCtion:PULSe:WIDTh", kNumber, kShort, 500e-6, "", 20e-9, 10, "", kWgenPulseWidth,
     kAll, kWgen},
    {":WGEN#W:MODulation:STATe", kBoolean, kBool, 0, "", 0, 1, "", kFixed, kAll, kWgen},
    {":WGEN#W:MODulation:TYPE", kChoice, kEnum, 0, "AM", 0, 0, "AM|FM|FSK", kFixed, kAll, kWgen},
    {":WGEN#W:MODulation:FUNCtion", kChoice, kEnum, 0, "SINusoid", 0, 0, "SINusoid|SQUare|RAMP",
     kFixed, kAll, kWgen},
    {":WGEN#W:MODulation:FUNCtion:RAMP:SYMMetry", kInteger, kNr1, 100, "", 0, 100, "", kFixed, kAll,
     kWgen},
    {":WGEN#W:MODulation:AM:DEPTh", kInteger, kNr1, 100, "", 0, 100, "", kFixed, kAll, kWgen},
    {":WGEN#W:MODulation:AM:FREQuency", kNumber, kShort, 100, "", 1, 20e3, "", kFixed, kAll, kWgen},
    {":WGEN#W:MODulation:FM:DEViation", kNumber, kShort, 100, "", 1, 10e6, "", kFixed, kAll, kWgen},
    {":WGEN#W:MODulation:FM:FREQuency", kNumber, kShort, 100, "", 1, 20e3, "", kFixed, kAll, kWgen},
    {":WGEN#W:MODulation:FSKey:FREQuency", kNumber, kShort, 100, "", 0.1, 20e6, "", kFixed, kAll,
     kWgen},
    {":WGEN#W:MODulation:FSKey:RATE", kNumber, kShort, 100, "", 1, 20e3, "", kFixed, kAll, kWgen},
    {":WGEN#W:MODulation:NOISe", kInteger, kNr1, 0, "", 0, 100, "", kFixed, kAll, kWgen},
});

}  // namespace

std::span<const SettingRow> SettingTable() { return kRows; }

}  // namespace quarvelo::sim
