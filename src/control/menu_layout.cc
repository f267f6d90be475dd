#include "control/menu_layout.h"

#include <algorithm>
#include <array>

namespace quarvelo::control {
namespace {

constexpr std::string_view kSep = kSeparator;

constexpr std::string_view kMenuBar[] = {
    "mnu_File", "mnu_Oscilloscope", "mnu_Channels", "mnu_Trigger", "mnu_Channel", "mnu_HZ",
    "mnu_MEAS", "mnu_WGEN",         "mnu_Math",     "mnu_FFT",     "mnu_Markers", "mnu_About",
};

constexpr std::string_view kFile[] = {
    "ID_Open", "ID_Save", kSep, "ID_SAVIMG", kSep, "ID_Settings", "ID_TOP", kSep, "ID_Exit",
};
constexpr std::string_view kOscilloscope[] = {
    "ID_Remote",  "ID_Refresh",     kSep,         "ID_Run",     "ID_Single", "ID_DIG",   "ID_Bins",
    kSep,         "ID_DISPLBL",     "ID_DISPANN", "ID_DISPCLR", "mnu_PERS",  "mnu_ACQU", kSep,
    "ID_Default", "ID_AutoScale",   kSep,         "ID_DVM",     "mnu_DVM",   "ID_ADVM",  "mnu_DVMM",
    kSep,         "ID_ScreenShoot", "ID_PRTSCR",
};
constexpr std::string_view kPersistence[] = {
    "ID_PERSMIN", "ID_PERSINF", "ID_PERS01", "ID_PERS05", "ID_PERS10", "ID_PERSVAR",
};
constexpr std::string_view kAcquire[] = {
    "ID_ACQUNORM",
    "ID_ACQUAVER",
    "ID_ACQUHRES",
    "ID_ACQUPEAK",
};
constexpr std::string_view kDvmSource[] = {"ID_DVMCH1", "ID_DVMCH2", "ID_DVMCH3", "ID_DVMCH4"};
constexpr std::string_view kDvmMode[] = {"ID_DVMM1", "ID_DVMM2", "ID_DVMM3", "ID_DVMM4"};
constexpr std::string_view kChannels[] = {"ID_VUP", "ID_VDN", "ID_CH1",
                                          "ID_CH2", "ID_CH3", "ID_CH4"};
constexpr std::string_view kTrigger[] = {
    "ID_TGZ",  "ID_TGF", "mnu_TGSM",   "ID_TGNR",   "ID_TGHOZ", "ID_TGHOL", kSep,
    "ID_EDGE", "ID_TGL", "mnu_Source", "mnu_Slope", "mnu_TC",   "mnu_TJ",
};
constexpr std::string_view kTriggerSweep[] = {"ID_TGSA", "ID_TGSN"};
constexpr std::string_view kTriggerSource[] = {
    "ID_TG1", "ID_TG2", "ID_TG3", "ID_TG4", "ID_TGEXT", "ID_TGLINE", "ID_TGWAV", "ID_TGMOD",
};
constexpr std::string_view kSlope[] = {"ID_TSP", "ID_TSN", "ID_TSA", "ID_TSE"};
constexpr std::string_view kTriggerCoupling[] = {"ID_TCD", "ID_TCA", "ID_TCL"};
constexpr std::string_view kTriggerReject[] = {"ID_TJO", "ID_TJL", "ID_TJH"};
constexpr std::string_view kChannel[] = {
    "ID_OFS",     "ID_OFZ",     kSep,    "ID_AC",     "ID_DC", kSep,
    "ID_CHANLBL", "ID_CHANINV", "ID_BW", "mnu_Scale", kSep,    "ID_PR01",
};
constexpr std::string_view kScale[] = {
    "ID_5000", "ID_2000", "ID_1000", "ID_500", "ID_200", "ID_100",
    "ID_50",   "ID_20",   "ID_10",   "ID_5",   "ID_2",   "ID_1",
};
constexpr std::string_view kHorizontal[] = {"ID_TBUP", "ID_TB", "ID_TBDN", "mnu_TM", "mnu_TR"};
constexpr std::string_view kTimebaseMode[] = {"ID_TMM", "ID_TMW", "ID_TMX", "ID_TMR"};
constexpr std::string_view kTimeReference[] = {"ID_TRL", "ID_TRC", "ID_TRR"};
constexpr std::string_view kMeasure[] = {
    "ID_MSALL",     "ID_MSCLE",     kSep,           "mnu_MSSRC", "ID_MSVPP",  "ID_MSVMAX",
    "ID_MSVMIN",    kSep,           "ID_MSVAMP",    "ID_MSVTOP", "ID_MSVBAS", kSep,
    "ID_MSOVER",    "ID_MSPRES",    kSep,           "ID_MSVAV",  kSep,        "ID_MSVRMSDCN",
    "ID_MSVRMSDCF", "ID_MSVRMSACN", "ID_MSVRMSACF", kSep,        "ID_MSPER",  "ID_MSFREQ",
    "ID_MSPWID",    "ID_MSNWID",    "ID_MSDUTY",    kSep,        "ID_MSRIS",  "ID_MSFALL",
    kSep,           "ID_MSDEL",     "ID_MSPHAS",
};
constexpr std::string_view kMeasureSource[] = {
    "ID_MEASCHAN1", "ID_MEASCHAN2", "ID_MEASCHAN3", "ID_MEASCHAN4",
    "ID_MEASFUNC",  "ID_MEASWMEM1", "ID_MEASWMEM2", "ID_MEASEXT",
};
constexpr std::string_view kWgen[] = {
    "ID_WGEN1", "ID_WGEN2", kSep, "ID_WG", kSep, "ID_WGENSET", "ID_WGENRST",
};
constexpr std::string_view kMath[] = {
    "ID_MATHFUNC1", "ID_MATHFUNC2", kSep,         "ID_MATHDISP", kSep, "ID_MATHADD",
    "ID_MATHSUBT",  "ID_MATHMULT",  "ID_MATHDIV", "ID_MATHFFT",  kSep, "ID_MATHSET",
};
// The two selection menus are not placed in the menu bar (their tools appear directly in the
// Math and W. Gen menus); they exist so that their visibility follows the model.
constexpr std::string_view kMathFunction[] = {"ID_MATHFUNC1", "ID_MATHFUNC2"};
constexpr std::string_view kWgenNumber[] = {"ID_WGEN1", "ID_WGEN2"};
constexpr std::string_view kFft[] = {
    "ID_FFT1",  "ID_FFT2",  "ID_FFT3",  "ID_FFT4", "ID_Scale",  "ID_MDI", kSep,
    "ID_ZoomM", "ID_ZoomP", "ID_ZoomZ", kSep,      "ID_Window", "ID_AVG",
};
constexpr std::string_view kMarkers[] = {
    "mnu_CSR",    kSep, "ID_Cursor1",  "ID_Cursor2",    "ID_Cursor3",
    "ID_Cursor4", kSep, "ID_AutoPeak", "ID_ClearPeaks",
};
constexpr std::string_view kCursorSource[] = {"ID_CSR1", "ID_CSR2", "ID_CSR3", "ID_CSR4"};
constexpr std::string_view kAbout[] = {"ID_HLP", "ID_About"};

constexpr MenuDefinition kMenus[] = {
    {"mnu_File", kFile},         {"mnu_Oscilloscope", kOscilloscope},
    {"mnu_PERS", kPersistence},  {"mnu_ACQU", kAcquire},
    {"mnu_DVM", kDvmSource},     {"mnu_DVMM", kDvmMode},
    {"mnu_Channels", kChannels}, {"mnu_Trigger", kTrigger},
    {"mnu_TGSM", kTriggerSweep}, {"mnu_Source", kTriggerSource},
    {"mnu_Slope", kSlope},       {"mnu_TC", kTriggerCoupling},
    {"mnu_TJ", kTriggerReject},  {"mnu_Channel", kChannel},
    {"mnu_Scale", kScale},       {"mnu_HZ", kHorizontal},
    {"mnu_TM", kTimebaseMode},   {"mnu_TR", kTimeReference},
    {"mnu_MEAS", kMeasure},      {"mnu_MSSRC", kMeasureSource},
    {"mnu_WGEN", kWgen},         {"mnu_WGENN", kWgenNumber},
    {"mnu_Math", kMath},         {"mnu_MATHFUNC", kMathFunction},
    {"mnu_FFT", kFft},           {"mnu_Markers", kMarkers},
    {"mnu_CSR", kCursorSource},  {"mnu_About", kAbout},
};

constexpr std::string_view kChannelsBar[] = {"ID_CH1", "ID_CH2", "ID_CH3",
                                             "ID_CH4", "ID_VDN", "ID_VUP"};
constexpr std::string_view kFftBar[] = {
    "ID_FFT1",  "ID_FFT2",  "ID_FFT3", "ID_FFT4",  "ID_AutoFFT", "ID_ZoomM",
    "ID_ZoomZ", "ID_ZoomP", "ID_AVG",  "ID_Scale", "ID_MDI",
};
constexpr std::string_view kOscilloscopeBar[] = {
    "ID_Remote", "ID_Refresh", kSep,           "ID_Run",         "ID_Single", "ID_DIG",
    kSep,        "ID_Default", "ID_AutoScale", "ID_ScreenShoot", "ID_PRTSCR",
};
constexpr std::string_view kTimeBaseBar[] = {"ID_TB", "ID_TBDN", "ID_TBUP", "ID_SR"};
constexpr std::string_view kMarkersBar[] = {"ID_Cursor1", "ID_Cursor2",  "ID_Cursor3",
                                            "ID_Cursor4", "ID_AutoPeak", "ID_ClearPeaks"};

constexpr ToolbarDefinition kToolbars[] = {
    {"Channels", kChannelsBar}, {"FFT", kFftBar},         {"Oscilloscope", kOscilloscopeBar},
    {"TimeBase", kTimeBaseBar}, {"Markers", kMarkersBar},
};

}  // namespace

std::span<const std::string_view> MenuBar() { return kMenuBar; }
std::span<const MenuDefinition> Menus() { return kMenus; }

const MenuDefinition* FindMenu(std::string_view id) {
  auto it = std::find_if(std::begin(kMenus), std::end(kMenus),
                         [id](const MenuDefinition& menu) { return menu.id == id; });
  return it == std::end(kMenus) ? nullptr : &*it;
}

std::span<const ToolbarDefinition> Toolbars() { return kToolbars; }

}  // namespace quarvelo::control
