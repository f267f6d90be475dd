#include "control/tool_catalogue.h"

#include <algorithm>
#include <array>

namespace quarvelo::control {
namespace {

constexpr ToolKind B = ToolKind::kButton;
constexpr ToolKind S = ToolKind::kStateButton;
constexpr ToolKind D = ToolKind::kDropDown;
constexpr ToolKind C = ToolKind::kCombo;
constexpr ToolKind L = ToolKind::kLabel;
constexpr ToolKind M = ToolKind::kMenu;

constexpr std::string_view kFile = "File";
constexpr std::string_view kOscilloscope = "Oscilloscope";
constexpr std::string_view kChannels = "Channels";
constexpr std::string_view kVScale = "VScale";
constexpr std::string_view kTrigger = "Trigger";
constexpr std::string_view kHorizontal = "Horizontal";
constexpr std::string_view kMeasure = "Measure";
constexpr std::string_view kMath = "Math";
constexpr std::string_view kWgen = "WGEN";
constexpr std::string_view kFft = "FFT";
constexpr std::string_view kMarkers = "Markers";
constexpr std::string_view kAbout = "General and About";

// Option groups.
constexpr std::string_view kDvmSource = "DvmSource";
constexpr std::string_view kDvmMode = "DvmMode";
constexpr std::string_view kAcquire = "AcquireType";
constexpr std::string_view kPersistence = "Persistence";
constexpr std::string_view kChannelCoupling = "ChannelCoupling";
constexpr std::string_view kVoltsPerDiv = "VoltsPerDiv";
constexpr std::string_view kTriggerSource = "TriggerSource";
constexpr std::string_view kTriggerSweep = "TriggerSweep";
constexpr std::string_view kTriggerSlope = "TriggerSlope";
constexpr std::string_view kTriggerCoupling = "TriggerCoupling";
constexpr std::string_view kTriggerReject = "TriggerReject";
constexpr std::string_view kTimebaseMode = "TimebaseMode";
constexpr std::string_view kTimebaseReference = "TimebaseReference";
constexpr std::string_view kMeasureSource = "MeasureSource";
constexpr std::string_view kMathFunction = "MathFunction";
constexpr std::string_view kMathOperation = "MathOperation";
constexpr std::string_view kWgenNumber = "WgenNumber";
constexpr std::string_view kCursorSource = "CursorSource";

// Captions and tool tips are the program's own texts, spelling included.
constexpr std::array<ToolDefinition, kToolCount> kTools = {{
    // File
    {"ID_Open", "Open Data", "Open CSV File", B, kFile, ""},
    {"ID_Save", "Save Data", "Save CVS File", B, kFile, ""},
    {"ID_SAVIMG", "Save Image", "", B, kFile, ""},
    {"ID_Settings", "Settings", "", B, kFile, ""},
    {"ID_TOP", "Always on Top", "Always on top of other windows", S, kFile, ""},
    {"ID_Exit", "Exit", "Exit QUARVELO", B, kFile, ""},
    {"mnu_File", "File", "", M, kFile, ""},

    // Oscilloscope
    {"ID_Remote", "Control", "Remote Control On/Off", S, kOscilloscope, ""},
    {"ID_Refresh", "Auto", "Auto Refresh", S, kOscilloscope, ""},
    {"ID_Run", "Run", "Run/Stop control", S, kOscilloscope, ""},
    {"ID_Single", "Single", "Display last shoot", S, kOscilloscope, ""},
    {"ID_DIG", "Sweep", "Digitize (new sweep)", B, kOscilloscope, ""},
    {"ID_Default", "Default", "Default Setup", B, kOscilloscope, ""},
    {"ID_AutoScale", "AutoScale", "Auto Scale", B, kOscilloscope, ""},
    {"ID_ScreenShoot", "Import Image", "Import Image from Oscilloscope", B, kOscilloscope, ""},
    {"ID_PRTSCR", "Screen Shoot", "Screen Shoot (this application)", B, kOscilloscope, ""},
    {"ID_Bins", "Bins", "Max Bins (digitizing)", C, kOscilloscope, ""},
    {"ID_DISPLBL", "Label", "Display Label (On/Off)", S, kOscilloscope, ""},
    {"ID_DISPANN", "Annotation...", "", B, kOscilloscope, ""},
    {"ID_DISPCLR", "Disp. Clear", "Clear all Display", B, kOscilloscope, ""},
    {"ID_DVM", "DVM", "Digital Voltmeter", S, kOscilloscope, ""},
    {"ID_ADVM", "DVM A-Range", "DVM Auto Range", S, kOscilloscope, ""},
    {"ID_DVMCH1", "CH1", "", S, kOscilloscope, kDvmSource},
    {"ID_DVMCH2", "CH2", "", S, kOscilloscope, kDvmSource},
    {"ID_DVMCH3", "CH3", "", S, kOscilloscope, kDvmSource},
    {"ID_DVMCH4", "CH4", "", S, kOscilloscope, kDvmSource},
    {"ID_DVMM1", "AC RMS", "", S, kOscilloscope, kDvmMode},
    {"ID_DVMM2", "DC", "", S, kOscilloscope, kDvmMode},
    {"ID_DVMM3", "DC RMS", "", S, kOscilloscope, kDvmMode},
    {"ID_DVMM4", "FREQ", "", S, kOscilloscope, kDvmMode},
    {"ID_ACQUNORM", "Normal", "", S, kOscilloscope, kAcquire},
    {"ID_ACQUAVER", "Average", "", S, kOscilloscope, kAcquire},
    {"ID_ACQUHRES", "High Resolution", "", S, kOscilloscope, kAcquire},
    {"ID_ACQUPEAK", "Peak", "", S, kOscilloscope, kAcquire},
    {"ID_PERSMIN", "Minimum", "", S, kOscilloscope, kPersistence},
    {"ID_PERSINF", "Infinite", "", S, kOscilloscope, kPersistence},
    {"ID_PERS01", "100ms", "", S, kOscilloscope, kPersistence},
    {"ID_PERS05", "500ms", "", S, kOscilloscope, kPersistence},
    {"ID_PERS10", "1000ms", "", S, kOscilloscope, kPersistence},
    {"ID_PERSVAR", "Variable", "", S, kOscilloscope, kPersistence},
    {"ID_PERSCLR", "Clear", "Clear persistence", B, kOscilloscope, ""},
    {"mnu_Oscilloscope", "Oscilloscope", "", M, kOscilloscope, ""},
    {"mnu_ACQU", "Acquire", "", M, kOscilloscope, ""},
    {"mnu_PERS", "Persistence", "", M, kOscilloscope, ""},
    {"mnu_DVM", "DVM Source", "", M, kOscilloscope, ""},
    {"mnu_DVMM", "DVM Mode", "", M, kOscilloscope, ""},

    // Channels
    {"ID_CH1", "CH1", "Channel 1", D, kChannels, ""},
    {"ID_CH2", "CH2", "Channel 2", D, kChannels, ""},
    {"ID_CH3", "CH3", "Channel 3", D, kChannels, ""},
    {"ID_CH4", "CH4", "Channel 4", D, kChannels, ""},
    {"ID_VUP", "V UP", "V Scale UP (Trigger Source)", B, kChannels, ""},
    {"ID_VDN", "V DN", "V Scale Down (Trigger Source)", B, kChannels, ""},
    {"ID_AC", "AC", "", S, kChannels, kChannelCoupling},
    {"ID_DC", "DC", "", S, kChannels, kChannelCoupling},
    {"ID_BW", "BW", "BW Limit", S, kChannels, ""},
    {"ID_CHANINV", "Invert", "Invert waveform", S, kChannels, ""},
    {"ID_CHANLBL", "Label...", "Channel Label", B, kChannels, ""},
    {"ID_OFS", "Set Offset", "Set Offset (Cursor)", B, kChannels, ""},
    {"ID_OFZ", "Zero", "Offset = 0", B, kChannels, ""},
    {"ID_PR01", "Probe 1.00:1", "Probe attenuation = 1", B, kChannels, ""},
    {"mnu_Channels", "Channels", "", M, kChannels, ""},
    {"mnu_Channel", "Channel", "", M, kChannels, ""},

    // VScale
    {"ID_5000", "5.00V/", "", S, kVScale, kVoltsPerDiv},
    {"ID_2000", "2.00V/", "", S, kVScale, kVoltsPerDiv},
    {"ID_1000", "1.00V/", "", S, kVScale, kVoltsPerDiv},
    {"ID_500", "500mV/", "", S, kVScale, kVoltsPerDiv},
    {"ID_200", "200mV/", "", S, kVScale, kVoltsPerDiv},
    {"ID_100", "100mV/", "", S, kVScale, kVoltsPerDiv},
    {"ID_50", "50mV/", "", S, kVScale, kVoltsPerDiv},
    {"ID_20", "20mV/", "", S, kVScale, kVoltsPerDiv},
    {"ID_10", "10mV/", "", S, kVScale, kVoltsPerDiv},
    {"ID_5", "5mV/", "", S, kVScale, kVoltsPerDiv},
    {"ID_2", "2mV/", "", S, kVScale, kVoltsPerDiv},
    {"ID_1", "1mV/", "", S, kVScale, kVoltsPerDiv},
    {"mnu_Scale", "Scale", "", M, kVScale, ""},

    // Trigger
    {"ID_TGZ", "50%", "Trigger = Zero", B, kTrigger, ""},
    {"ID_TGF", "Force", "Force Trigger", B, kTrigger, ""},
    {"ID_TGNR", "Noise Rej.", "Noise Reject", S, kTrigger, ""},
    {"ID_TGHOZ", "HoldOff 40ns", "Set Holdoff = 40ns (min)", B, kTrigger, ""},
    {"ID_TGHOL", "Set HoldOff", "Set Holdoff delay (use cursor L and R)", B, kTrigger, ""},
    {"ID_EDGE", "Edge:", "", L, kTrigger, ""},
    {"ID_TGL", "Set Level", "Set Trigger Level", B, kTrigger, ""},
    {"ID_TG1", "CH1", "", S, kTrigger, kTriggerSource},
    {"ID_TG2", "CH2", "", S, kTrigger, kTriggerSource},
    {"ID_TG3", "CH3", "", S, kTrigger, kTriggerSource},
    {"ID_TG4", "CH4", "", S, kTrigger, kTriggerSource},
    {"ID_TGEXT", "External", "", S, kTrigger, kTriggerSource},
    {"ID_TGLINE", "Line", "", S, kTrigger, kTriggerSource},
    {"ID_TGWAV", "WaveGen", "", S, kTrigger, kTriggerSource},
    {"ID_TGMOD", "MWaveGen Mod", "", S, kTrigger, kTriggerSource},
    // A plain button, but the source it names is one of the exclusive trigger sources: showing
    // it as the instrument's source clears the others.
    {"ID_TGDIG", "DIG", "Trigger Edge Source = Digital", B, kTrigger, kTriggerSource},
    {"ID_TGSA", "Auto", "", S, kTrigger, kTriggerSweep},
    {"ID_TGSN", "Normal", "", S, kTrigger, kTriggerSweep},
    {"ID_TSP", "Rising", "", S, kTrigger, kTriggerSlope},
    {"ID_TSN", "Falling", "", S, kTrigger, kTriggerSlope},
    {"ID_TSA", "Alternating", "", S, kTrigger, kTriggerSlope},
    {"ID_TSE", "Either", "", S, kTrigger, kTriggerSlope},
    {"ID_TCD", "DC", "", S, kTrigger, kTriggerCoupling},
    {"ID_TCA", "AC", "", S, kTrigger, kTriggerCoupling},
    {"ID_TCL", "LF Reject", "", S, kTrigger, kTriggerCoupling},
    {"ID_TJO", "Off", "", S, kTrigger, kTriggerReject},
    {"ID_TJL", "LF", "", S, kTrigger, kTriggerReject},
    {"ID_TJH", "HF", "", S, kTrigger, kTriggerReject},
    {"mnu_Trigger", "Trigger", "", M, kTrigger, ""},
    {"mnu_Source", "Source", "", M, kTrigger, ""},
    {"mnu_TGSM", "Sweep", "", M, kTrigger, ""},
    {"mnu_Slope", "Slope", "", M, kTrigger, ""},
    {"mnu_TC", "Coupling", "", M, kTrigger, ""},
    {"mnu_TJ", "Reject", "", M, kTrigger, ""},

    // Horizontal
    {"ID_TB", "Time Base", "", C, kHorizontal, ""},
    {"ID_TBUP", "TB UP", "Time Base Up", B, kHorizontal, ""},
    {"ID_TBDN", "TB DN", "Time Base Down", B, kHorizontal, ""},
    {"ID_SR", "SR", "Sample Rate", L, kHorizontal, ""},
    {"ID_TMM", "Normal", "", S, kHorizontal, kTimebaseMode},
    {"ID_TMW", "Zoom", "", S, kHorizontal, kTimebaseMode},
    {"ID_TMX", "XY", "", S, kHorizontal, kTimebaseMode},
    {"ID_TMR", "Roll", "", S, kHorizontal, kTimebaseMode},
    {"ID_TRL", "Left", "", S, kHorizontal, kTimebaseReference},
    {"ID_TRC", "Center", "", S, kHorizontal, kTimebaseReference},
    {"ID_TRR", "Right", "", S, kHorizontal, kTimebaseReference},
    {"mnu_HZ", "Horizontal", "", M, kHorizontal, ""},
    {"mnu_TM", "Mode", "", M, kHorizontal, ""},
    {"mnu_TR", "Time Reference", "", M, kHorizontal, ""},

    // Measure
    {"ID_MSALL", "All", "", B, kMeasure, ""},
    {"ID_MSCLE", "Clear", "", B, kMeasure, ""},
    {"ID_MSVPP", "Peak-Peak", "", B, kMeasure, ""},
    {"ID_MSVMAX", "Maximum", "", B, kMeasure, ""},
    {"ID_MSVMIN", "Minimum", "", B, kMeasure, ""},
    {"ID_MSVAMP", "Amplitude", "", B, kMeasure, ""},
    {"ID_MSVTOP", "Top", "", S, kMeasure, ""},
    {"ID_MSVBAS", "Base", "", B, kMeasure, ""},
    {"ID_MSOVER", "Overshoot", "", B, kMeasure, ""},
    {"ID_MSPRES", "Preshoot", "", B, kMeasure, ""},
    {"ID_MSVAV", "Average", "", B, kMeasure, ""},
    {"ID_MSVRMSDCN", "DC RMS Cycle", "", B, kMeasure, ""},
    {"ID_MSVRMSDCF", "DC RMS FS", "", B, kMeasure, ""},
    {"ID_MSVRMSACN", "AC RMS Cycle", "", B, kMeasure, ""},
    {"ID_MSVRMSACF", "AC RMS FS", "", B, kMeasure, ""},
    {"ID_MSPER", "Period", "", B, kMeasure, ""},
    {"ID_MSFREQ", "Frequency", "", B, kMeasure, ""},
    {"ID_MSPWID", "P+ Pulse Width", "", B, kMeasure, ""},
    {"ID_MSNWID", "N- Pulse Width", "", B, kMeasure, ""},
    {"ID_MSDUTY", "Duty Cycle", "", B, kMeasure, ""},
    {"ID_MSRIS", "Rise Time", "", B, kMeasure, ""},
    {"ID_MSFALL", "Fall Time", "", B, kMeasure, ""},
    {"ID_MSDEL", "Delay", "", B, kMeasure, ""},
    {"ID_MSPHAS", "Phase", "", B, kMeasure, ""},
    {"ID_MEASCHAN1", "CH1", "", S, kMeasure, kMeasureSource},
    {"ID_MEASCHAN2", "CH2", "", S, kMeasure, kMeasureSource},
    {"ID_MEASCHAN3", "CH3", "", S, kMeasure, kMeasureSource},
    {"ID_MEASCHAN4", "CH4", "", S, kMeasure, kMeasureSource},
    {"ID_MEASFUNC", "Function", "", S, kMeasure, kMeasureSource},
    {"ID_MEASWMEM1", "Ref 1", "", S, kMeasure, kMeasureSource},
    {"ID_MEASWMEM2", "Ref 2", "", S, kMeasure, kMeasureSource},
    {"ID_MEASEXT", "External", "", S, kMeasure, kMeasureSource},
    {"mnu_MEAS", "Measure", "", M, kMeasure, ""},
    {"mnu_MSSRC", "Source", "", M, kMeasure, ""},

    // Math
    {"ID_MATHFUNC1", "FUNC 1", "", S, kMath, kMathFunction},
    {"ID_MATHFUNC2", "FUNC 2", "", S, kMath, kMathFunction},
    {"ID_MATHDISP", "Display", "", S, kMath, ""},
    {"ID_MATHADD", "Add", "", S, kMath, kMathOperation},
    {"ID_MATHSUBT", "Subtract", "", S, kMath, kMathOperation},
    {"ID_MATHMULT", "Multiply", "", S, kMath, kMathOperation},
    {"ID_MATHDIV", "Divide", "", S, kMath, kMathOperation},
    {"ID_MATHFFT", "FFT", "", S, kMath, kMathOperation},
    {"ID_MATHSET", "Settings...", "", B, kMath, ""},
    {"mnu_Math", "Math (Osc)", "", M, kMath, ""},
    {"mnu_MATHFUNC", "Function #", "", M, kMath, ""},

    // WGEN
    {"ID_WG", "WGEN", "WGEN On/Off", S, kWgen, ""},
    {"ID_WGEN1", "WGEN 1", "", S, kWgen, kWgenNumber},
    {"ID_WGEN2", "WGEN 2", "", S, kWgen, kWgenNumber},
    {"ID_WGENSET", "Settings...", "", B, kWgen, ""},
    {"ID_WGENRST", "Reset", "", B, kWgen, ""},
    {"mnu_WGEN", "W. Gen", "", M, kWgen, ""},
    {"mnu_WGENN", "WGEN #", "", M, kWgen, ""},

    // FFT
    {"ID_FFT1", "FFT1", "FFT Channel 1", B, kFft, ""},
    {"ID_FFT2", "FFT2", "FFT Channel 2", B, kFft, ""},
    {"ID_FFT3", "FFT3", "FFT Channel 3", B, kFft, ""},
    {"ID_FFT4", "FFT4", "FFT Channel 4", B, kFft, ""},
    {"ID_AutoFFT", "AutoFFT", "Auto Config FFT", B, kFft, ""},
    {"ID_ZoomP", "ZoomP", "Zoom In", B, kFft, ""},
    {"ID_ZoomM", "ZoomM", "Zoom Out", B, kFft, ""},
    {"ID_ZoomZ", "ZoomZ", "Zoom reset", B, kFft, ""},
    {"ID_AVG", "AVG", "FFT Averaging", C, kFft, ""},
    {"ID_Window", "FFT Window", "", C, kFft, ""},
    {"ID_Scale", "FFT Scale", "FFT Vertical Scale", C, kFft, ""},
    {"ID_MDI", "MDI", "Mixed Domain Interface", S, kFft, ""},
    {"mnu_FFT", "FFT", "", M, kFft, ""},

    // Markers
    {"ID_Cursor1", "Marker 1", "", B, kMarkers, ""},
    {"ID_Cursor2", "Marker 2", "", B, kMarkers, ""},
    {"ID_Cursor3", "Marker 3", "", B, kMarkers, ""},
    {"ID_Cursor4", "Marker 4", "", B, kMarkers, ""},
    {"ID_AutoPeak", "AutoPeak", "Serach for Peaks (to the right of the cursor)", B, kMarkers, ""},
    {"ID_ClearPeaks", "ClearPeaks", "Clear Markers", B, kMarkers, ""},
    {"ID_CSR1", "CH1", "", S, kMarkers, kCursorSource},
    {"ID_CSR2", "CH2", "", S, kMarkers, kCursorSource},
    {"ID_CSR3", "CH3", "", S, kMarkers, kCursorSource},
    {"ID_CSR4", "CH4", "", S, kMarkers, kCursorSource},
    {"mnu_Markers", "Markers", "", M, kMarkers, ""},
    {"mnu_CSR", "Cursor source", "", M, kMarkers, ""},

    // General and About
    {"ID_About", "About", "About QUARVELO", B, kAbout, ""},
    {"ID_HLP", "Help", "Documentation", B, kAbout, ""},
    {"mnu_About", "About", "", M, kAbout, ""},
}};

// A missing row would leave a default-constructed one at the end.
static_assert(!kTools.back().id.empty(), "the catalogue has fewer rows than kToolCount");

}  // namespace

std::span<const ToolDefinition> ToolCatalogue() { return kTools; }

const ToolDefinition* FindTool(std::string_view id) {
  auto it = std::find_if(kTools.begin(), kTools.end(),
                         [id](const ToolDefinition& tool) { return tool.id == id; });
  return it == kTools.end() ? nullptr : &*it;
}

std::vector<std::string_view> OptionGroupMembers(std::string_view option_group) {
  std::vector<std::string_view> members;
  if (option_group.empty()) return members;
  for (const ToolDefinition& tool : kTools) {
    if (tool.option_group == option_group) members.push_back(tool.id);
  }
  return members;
}

std::vector<std::string_view> OptionGroups() {
  std::vector<std::string_view> groups;
  for (const ToolDefinition& tool : kTools) {
    if (!tool.option_group.empty() &&
        std::find(groups.begin(), groups.end(), tool.option_group) == groups.end()) {
      groups.push_back(tool.option_group);
    }
  }
  return groups;
}

std::string_view AccessibleName(const ToolDefinition& tool) {
  return tool.caption.empty() ? tool.tooltip : tool.caption;
}

}  // namespace quarvelo::control
