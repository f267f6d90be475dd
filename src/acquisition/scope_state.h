// The program's mirror of the oscilloscope's front-panel settings, in the instrument's own
// units and mnemonics so that a value can be concatenated back into a command. One instance
// lives for the whole run, owned by the main window and lent to the subsystems that need it.
//
// Field names are the system's own vocabulary. Integer fields are int16/int32 as the
// instrument replies are whole numbers of that size; yes/no fields are `bool`.
#ifndef QUARVELO_ACQUISITION_SCOPE_STATE_H_
#define QUARVELO_ACQUISITION_SCOPE_STATE_H_

#include <array>
#include <cstdint>
#include <string>

namespace quarvelo::acquisition {

inline constexpr int kVoltsPerDivSteps = 12;
inline constexpr int kMaxChannels = 4;

// Vertical scales in millivolts per division, index 0 (largest) to 11 (smallest). The tools
// "ID_5000" .. "ID_1" name these entries.
inline constexpr std::array<double, kVoltsPerDivSteps> kVoltsPerDivMillivolts = {
    5000, 2000, 1000, 500, 200, 100, 50, 20, 10, 5, 2, 1};

struct ChannelSettings {
  bool Displayed = false;
  std::int16_t BandwidthLimit = 0;  // 0 or 1
  std::int16_t ProbeAttenuation = 1;
  double Scale = 0;  // volts per division
  bool HasData = false;
  std::string Coupling;  // "AC" or "DC"
  double Offset = 0;     // volts
  bool DataError = false;
  bool Inverted = false;
  std::string Label;  // without its quotes
  std::int32_t FirstSample = 0;
  std::int32_t LastSample = 0;
};

struct WgenSettings {
  double Frequency = 0;           // hertz
  std::string Function;           // "SIN", "SQU", "RAMP", "PULS", "NOIS", "DC" or another mnemonic
  double PulseWidth = 0;          // seconds
  std::int16_t RampSymmetry = 0;  // percent
  std::int16_t SquareDutyCycle = 0;  // percent
  std::int16_t AmDepth = 0;          // percent
  double AmFrequency = 0;
  double FmDeviation = 0;
  double FmFrequency = 0;
  double FskFrequency = 0;  // hop frequency
  double FskRate = 0;
  std::string ModulationFunction;
  std::int16_t ModulationRampSymmetry = 0;  // percent
  std::int16_t ModulationNoise = 0;         // percent
  std::int16_t ModulationState = 0;         // 1 = modulation on
  std::string ModulationType;               // "AM", "FM" or "FSK"
  bool OutputOn = false;
  std::string OutputLoad;
  double Period = 0;     // seconds
  double Amplitude = 0;  // volts
  double High = 0;
  double Low = 0;
  double Offset = 0;
};

struct ScopeState {
  // Configuration, from the settings store.
  std::int16_t Model = 0;  // 0 = "Keysight X2000", 1 = "Keysight X3000"
  // 4 while remote control is off, so that files of any channel can be opened.
  std::int16_t ChannelCount = kMaxChannels;
  bool HasDvm = false;
  bool HasWgen = false;
  std::string Identity;
  std::string MathPrefix = ":FUNC";  // ":FUNC1"/":FUNC2" on model 1
  std::string WgenPrefix = ":WGEN";  // ":WGEN1"/":WGEN2" on model 1

  // Index 0 is never used; 1..ChannelCount are.
  std::array<ChannelSettings, kMaxChannels + 1> Channels;

  std::array<double, kVoltsPerDivSteps> VoltsPerDivTable = kVoltsPerDivMillivolts;

  // Trigger.
  std::string TriggerSource = "CHAN1";  // "CHAN1".."CHAN4", "DIG", "EXT", "WMO", "LINE", "WGEN"
  std::int16_t TriggerChannel = 1;      // 1..4, also the channel of the V/div steps
  double TriggerLevel = 0;
  std::string TriggerSlope;     // "NEG", "POS", "EIT", "ALT"
  std::string TriggerCoupling;  // "A", "D", "L"
  std::string TriggerReject;    // "L", "H", "O"
  std::int16_t TriggerSweepAuto = 1;
  bool NoiseReject = false;
  double Holdoff = 0;  // seconds
  std::int16_t TriggerScaleIndex = 0;

  // Time base and acquisition.
  double TimebaseScale = 0;       // seconds per division
  double TimebasePosition = 0;    // seconds
  std::string TimebaseMode;       // "M", "W", "X", "R"
  std::string TimebaseReference;  // "L", "C", "R"
  std::string AcquireType;        // "NORM", "AVER", "HRES", "PEAK"
  std::int32_t AcquireCount = 0;
  double SampleRate = 0;  // kilosamples per second, of the last capture

  // Display, annotation and measurement.
  std::string PersistenceReply;  // "INF", "MIN" or seconds
  std::string VariablePersistence = "2.0";
  bool DisplayLabels = false;
  bool AnnotationOn = false;
  std::string AnnotationText;
  std::string AnnotationColor;
  std::string AnnotationBackground;  // "OPAQ", "INV" or "TRAN"
  std::string MeasureSource;         // two sources separated by ","

  // The math function named by MathPrefix.
  bool MathDisplay = false;
  std::string MathOperation;
  double FftCenter = 0;
  double FftSpan = 0;
  std::int16_t FftVerticalType = 0;  // 0 = "DEC", 1 = "VRMS"
  std::int16_t FftWindow = 0;        // 0 = "RECT", 1 = "HANN", 2 = "FLAT", 3 = "BHAR"
  double MathOffset = 0;
  double MathRange = 0;
  double MathReference = 0;
  std::int16_t MathScale = 0;
  std::string MathSource1;
  std::string MathSource2;
  std::string GoftOperation;  // read only on model 0
  std::string GoftSource1;
  std::string GoftSource2;

  // Voltmeter.
  std::int16_t DvmSource = 1;     // channel 1..4
  std::int16_t DvmMode = 1;       // 1 "ACRM", 2 "DC", 3 "DCRM", 4 "FREQ"
  std::int16_t DvmAutoRange = 0;  // 1 = on
  bool DvmEnabled = false;
  double DvmFrequency = 0;  // 0 when the instrument has no value
  double DvmReading = 0;    // 0 when the instrument has no value

  // The generator named by WgenPrefix.
  WgenSettings Wgen;

  // User-interface flags.
  bool WgenDialogOpen = false;
  // True while program code, not the user, changes toolbar tools; the tool handlers ignore
  // events meanwhile. Whoever sets it restores the previous value when done.
  bool ToolUpdateInProgress = false;
};

// Refills the table with the twelve steps 5000 .. 1 mV per division.
void FillVoltsPerDivTable(ScopeState& state);

// The index whose table value / 1000 equals `scale_volts` exactly (the last such index), or
// `current` when none does: a scale between steps keeps the previous index.
std::int16_t MatchTriggerScaleIndex(const std::array<double, kVoltsPerDivSteps>& table,
                                    double scale_volts, std::int16_t current);

// The reading of a voltmeter reply: the instrument answers a huge number when it has no value.
double DvmReadingFromReply(double reply);
double DvmFrequencyFromReply(double reply);

}  // namespace quarvelo::acquisition

#endif  // QUARVELO_ACQUISITION_SCOPE_STATE_H_
