#include "control/tool_dispatcher.h"

#include <algorithm>
#include <string>

#include "acquisition/state_tool_ids.h"
#include "display/time_base_control.h"
#include "link/reply_text.h"
#include "link/tool_update_guard.h"
#include "platform/text/number_parse.h"

namespace quarvelo::control {
namespace {

constexpr std::string_view kToolPrefix = "ID_";
constexpr int kMaxBinsIndex = kBinsCount - 1;
constexpr int kZoomIn = 0;
constexpr int kZoomOut = 1;
constexpr int kZoomReset = 2;

template <typename Rows>
auto FindRow(const Rows& rows, std::string_view id) -> decltype(&rows[0]) {
  for (const auto& row : rows) {
    if (row.id == id) return &row;
  }
  return nullptr;
}

}  // namespace

using D = ToolDispatcher;

// Tools that act whether or not remote control is on; everything else needs it.
const D::OfflineRow D::kOfflineRows[] = {
    {"ID_CH1", &D::OfflineChannel},        {"ID_CH2", &D::OfflineChannel},
    {"ID_CH3", &D::OfflineChannel},        {"ID_CH4", &D::OfflineChannel},
    {"ID_FFT1", &D::OfflineGoOn},          {"ID_FFT2", &D::OfflineGoOn},
    {"ID_FFT3", &D::OfflineGoOn},          {"ID_FFT4", &D::OfflineGoOn},
    {"ID_ZoomM", &D::OfflineGoOn},         {"ID_ZoomP", &D::OfflineGoOn},
    {"ID_ZoomZ", &D::OfflineGoOn},         {"ID_Cursor1", &D::OfflineGoOn},
    {"ID_Cursor2", &D::OfflineGoOn},       {"ID_Cursor3", &D::OfflineGoOn},
    {"ID_Cursor4", &D::OfflineGoOn},       {"ID_AutoPeak", &D::OfflineGoOn},
    {"ID_ClearPeaks", &D::OfflineGoOn},    {"ID_Settings", &D::OfflineGoOn},
    {"ID_About", &D::OfflineGoOn},         {"ID_Remote", &D::OfflineGoOn},
    {"ID_TOP", &D::OfflineGoOn},           {"ID_DIG", &D::OfflineDigitize},
    {"ID_Open", &D::OfflineOpen},          {"ID_Exit", &D::OfflineExit},
    {"ID_SAVIMG", &D::OfflineSaveImage},   {"ID_MDI", &D::OfflineMixedDomain},
    {"ID_TG1", &D::OfflineTriggerChannel}, {"ID_TG2", &D::OfflineTriggerChannel},
    {"ID_TG3", &D::OfflineTriggerChannel}, {"ID_TG4", &D::OfflineTriggerChannel},
    {"ID_HLP", &D::OfflineHelp},           {"ID_CSR1", &D::OfflineCursorSource},
    {"ID_CSR2", &D::OfflineCursorSource},  {"ID_CSR3", &D::OfflineCursorSource},
    {"ID_CSR4", &D::OfflineCursorSource},
};

const D::Row D::kMainRows[] = {
    {"mnu_Math", &D::MathMenu},
    {"mnu_WGEN", &D::WgenMenu},
    {"mnu_Oscilloscope", &D::OscilloscopeMenu},
    {"ID_Run", &D::RunTool},
    {"ID_Default", &D::DefaultSetup},
    {"ID_AutoScale", &D::AutoScaleTool},
    {"ID_ScreenShoot", &D::ImportImage},
    {"ID_FFT1", &D::FftTool},
    {"ID_FFT2", &D::FftTool},
    {"ID_FFT3", &D::FftTool},
    {"ID_FFT4", &D::FftTool},
    {"ID_ZoomP", &D::ZoomTool},
    {"ID_ZoomM", &D::ZoomTool},
    {"ID_ZoomZ", &D::ZoomTool},
    {"ID_Cursor1", &D::MarkerTool},
    {"ID_Cursor2", &D::MarkerTool},
    {"ID_Cursor3", &D::MarkerTool},
    {"ID_Cursor4", &D::MarkerTool},
    {"ID_TGDIG", &D::TriggerSourceCode},
    {"ID_TGEXT", &D::TriggerSourceCode},
    {"ID_TGLINE", &D::TriggerSourceCode},
    {"ID_TGWAV", &D::TriggerSourceCode},
    {"ID_Remote", &D::RemoteTool},
    {"ID_Settings", &D::SettingsTool},
    {"ID_About", &D::AboutTool},
    {"ID_AutoFFT", &D::AutoFft},
    {"ID_AutoPeak", &D::AutoPeakTool},
    {"ID_ClearPeaks", &D::ClearPeaksTool},
    {"ID_Save", &D::SaveData},
    {"ID_Open", &D::OpenData},
    {"ID_AC", &D::Coupling},
    {"ID_DC", &D::Coupling},
    {"ID_BW", &D::BandwidthLimit},
    {"ID_CHANINV", &D::Invert},
    {"ID_CHANLBL", &D::ChannelLabel},
    {"ID_DISPLBL", &D::DisplayLabels},
    {"ID_DISPANN", &D::Annotation},
    {"ID_DISPCLR", &D::DisplayClear},
    {"ID_Refresh", &D::RefreshTool},
    {"ID_5000", &D::VoltsPerDiv},
    {"ID_2000", &D::VoltsPerDiv},
    {"ID_1000", &D::VoltsPerDiv},
    {"ID_500", &D::VoltsPerDiv},
    {"ID_200", &D::VoltsPerDiv},
    {"ID_100", &D::VoltsPerDiv},
    {"ID_50", &D::VoltsPerDiv},
    {"ID_20", &D::VoltsPerDiv},
    {"ID_10", &D::VoltsPerDiv},
    {"ID_5", &D::VoltsPerDiv},
    {"ID_2", &D::VoltsPerDiv},
    {"ID_1", &D::VoltsPerDiv},
    {"ID_TBUP", &D::TimeBaseStep},
    {"ID_TBDN", &D::TimeBaseStep},
    {"ID_TMM", &D::TimebaseMode},
    {"ID_TMW", &D::TimebaseMode},
    {"ID_TMX", &D::TimebaseMode},
    {"ID_TMR", &D::TimebaseMode},
    {"ID_TRL", &D::TimebaseReference},
    {"ID_TRC", &D::TimebaseReference},
    {"ID_TRR", &D::TimebaseReference},
    {"ID_VUP", &D::ScaleStep},
    {"ID_VDN", &D::ScaleStep},
    {"ID_TSP", &D::Slope},
    {"ID_TSN", &D::Slope},
    {"ID_TSE", &D::Slope},
    {"ID_TSA", &D::Slope},
    {"ID_TCD", &D::TriggerCoupling},
    {"ID_TCA", &D::TriggerCoupling},
    {"ID_TCL", &D::TriggerCoupling},
    {"ID_TJO", &D::Reject},
    {"ID_TJL", &D::Reject},
    {"ID_TJH", &D::Reject},
    {"ID_OFS", &D::OffsetFromCursor},
    {"ID_OFZ", &D::OffsetZero},
    {"ID_TGL", &D::LevelFromCursor},
    {"ID_TGZ", &D::LevelSetup},
    {"ID_PR01", &D::ProbeOne},
    {"ID_WG", &D::WgenOutput},
    {"ID_TOP", &D::TopMost},
    {"ID_Single", &D::SingleTool},
    {"ID_PRTSCR", &D::CaptureScreen},
    {"ID_TGSA", &D::TriggerSweep},
    {"ID_TGSN", &D::TriggerSweep},
    {"ID_TGF", &D::Force},
    {"ID_TGNR", &D::NoiseReject},
    {"ID_TGHOZ", &D::HoldoffZero},
    {"ID_TGHOL", &D::HoldoffFromCursors},
    {"ID_DVM", &D::Dvm},
    {"ID_DVMCH1", &D::DvmSource},
    {"ID_DVMCH2", &D::DvmSource},
    {"ID_DVMCH3", &D::DvmSource},
    {"ID_DVMCH4", &D::DvmSource},
    {"ID_DVMM1", &D::DvmMode},
    {"ID_DVMM2", &D::DvmMode},
    {"ID_DVMM3", &D::DvmMode},
    {"ID_DVMM4", &D::DvmMode},
    {"ID_ADVM", &D::DvmAutoRange},
};

// By the characters after "ID_"; "MEAS" and "MS" cannot both match one ID.
const D::FamilyRow D::kFamilyRows[] = {
    {"MS", &D::MeasureFamily}, {"MEAS", &D::MeasureSourceFamily}, {"MATH", &D::MathFamily},
    {"WGEN", &D::WgenFamily},  {"ACQU", &D::AcquireFamily},       {"PERS", &D::PersistenceFamily},
};

ToolDispatcher::ToolDispatcher(ControlCommands& commands, link::InstrumentLink& link,
                               acquisition::ScopeState& scope, SpectrumChoices& choices,
                               ui::UiServices& ui, ui::ToolHost& tools, DispatchTargets& targets)
    : commands_(commands),
      link_(link),
      scope_(scope),
      choices_(choices),
      ui_(ui),
      tools_(tools),
      targets_(targets) {}

int ToolDispatcher::Digit(std::string_view id) {
  if (id.empty() || id.back() < '0' || id.back() > '9') return -1;
  return id.back() - '0';
}

void ToolDispatcher::ToolClick(std::string_view id) {
  if (scope_.ToolUpdateInProgress) return;
  ui_.ShowStatus("");
  if (!Offline(id)) return;
  MainStage(id);
  FamilyStage(id);
}

bool ToolDispatcher::Offline(std::string_view id) {
  if (const OfflineRow* row = FindRow(kOfflineRows, id)) return (this->*row->handler)(id);
  return RemoteOn();
}

void ToolDispatcher::MainStage(std::string_view id) {
  if (const Row* row = FindRow(kMainRows, id)) (this->*row->handler)(id);
}

void ToolDispatcher::FamilyStage(std::string_view id) {
  if (!id.starts_with(kToolPrefix)) return;
  const std::string_view tail = id.substr(kToolPrefix.size());
  for (const FamilyRow& row : kFamilyRows) {
    if (tail.starts_with(row.prefix)) {
      (this->*row.handler)(id);
      return;
    }
  }
}

// --- Offline stage.

bool D::OfflineChannel(std::string_view id) {
  commands_.SetChannelDisplay(Digit(id), State(id), true);
  return false;
}

bool D::OfflineGoOn(std::string_view) { return true; }

bool D::OfflineDigitize(std::string_view) {
  targets_.Sweep(link_.flags().RunBit == 1);
  return true;
}

// A file can be opened only while offline.
bool D::OfflineOpen(std::string_view) { return !RemoteOn(); }

bool D::OfflineExit(std::string_view) {
  link_.CloseInstrument();
  targets_.ExitProgram();
  return false;
}

bool D::OfflineSaveImage(std::string_view) {
  targets_.SaveScreenImage();
  return true;
}

bool D::OfflineMixedDomain(std::string_view id) {
  choices_.MixedDomain = State(id);
  SweepWithRunState();
  return true;
}

bool D::OfflineTriggerChannel(std::string_view id) {
  commands_.SetTriggerSource(Digit(id), true);
  return true;
}

bool D::OfflineHelp(std::string_view) {
  targets_.ShowHelp();
  return true;
}

bool D::OfflineCursorSource(std::string_view id) {
  targets_.SelectCursorSource(id);
  return true;
}

// --- Main stage.

void D::MathMenu(std::string_view) { targets_.ReadBackMath(); }
void D::WgenMenu(std::string_view) { targets_.ReadBackWgen(); }
void D::OscilloscopeMenu(std::string_view) {
  targets_.ReadBackDvm();
  targets_.ReadBackWgen();
}

void D::RunTool(std::string_view id) {
  if (State(id)) {
    link_.SendCommand(":RUN");
    commands_.Sweep();
  } else {
    commands_.Stop();
  }
}

void D::DefaultSetup(std::string_view) { commands_.Preset(); }
void D::AutoScaleTool(std::string_view) { commands_.AutoScale(); }
void D::ImportImage(std::string_view) { targets_.ImportScreenImage(); }
void D::FftTool(std::string_view id) { targets_.FftRun(Digit(id)); }

void D::ZoomTool(std::string_view id) {
  constexpr std::pair<std::string_view, int> kModes[] = {
      {"ID_ZoomP", kZoomIn}, {"ID_ZoomM", kZoomOut}, {"ID_ZoomZ", kZoomReset}};
  for (const auto& [tool, mode] : kModes) {
    if (tool == id) targets_.ZoomView(mode);
  }
}

void D::MarkerTool(std::string_view id) { targets_.PlaceMarker(Digit(id) - 1); }

void D::TriggerSourceCode(std::string_view id) {
  constexpr std::pair<std::string_view, int> kCodes[] = {
      {"ID_TGDIG", 5}, {"ID_TGEXT", 6}, {"ID_TGLINE", 7}, {"ID_TGWAV", 8}};
  for (const auto& [tool, code] : kCodes) {
    if (tool == id) commands_.SetTriggerSource(code, true);
  }
}

void D::RemoteTool(std::string_view id) {
  for (acquisition::ChannelSettings& channel : scope_.Channels) channel.HasData = false;
  if (State(id)) {
    link_.OpenInstrument();
    targets_.RebuildToolbar();
    if (RemoteOn()) {
      targets_.ReadBackState();
      commands_.Sweep();
    }
  } else {
    link_.CloseInstrument();
    targets_.RebuildToolbar();
    targets_.RedrawFrame();
  }
}

void D::SettingsTool(std::string_view) { targets_.ShowSettingsDialog(); }
void D::AboutTool(std::string_view) { targets_.ShowAbout(); }
void D::AutoFft(std::string_view) { targets_.ConfigureInstrumentFft(); }
void D::AutoPeakTool(std::string_view) { targets_.AutoPeak(); }
void D::ClearPeaksTool(std::string_view) { targets_.ClearPeaks(); }
void D::SaveData(std::string_view) { targets_.SaveCsvFile(); }
void D::OpenData(std::string_view) { targets_.OpenCsvFile(); }

void D::Coupling(std::string_view id) {
  commands_.SetChannelCoupling(menu_channel_, id == "ID_DC");
}

void D::BandwidthLimit(std::string_view id) {
  commands_.SetChannelBandwidthLimit(menu_channel_, State(id) ? 1 : 0);
}

void D::Invert(std::string_view id) { commands_.SetChannelInvert(menu_channel_, State(id)); }
void D::ChannelLabel(std::string_view) { targets_.ShowChannelLabelDialog(menu_channel_); }

void D::DisplayLabels(std::string_view id) {
  link_.SendCommand(State(id) ? ":DISPlay:LABel 1" : ":DISPlay:LABel 0");
  SweepWithRunState();
}

void D::Annotation(std::string_view) { targets_.ShowAnnotationDialog(); }
void D::DisplayClear(std::string_view) { link_.SendCommand(":DISPlay:CLEar"); }

void D::RefreshTool(std::string_view id) {
  if (State(id)) {
    targets_.ReadBackState();
    link_.flags().AutoRefresh = true;
  } else {
    link_.flags().AutoRefresh = false;
  }
}

void D::VoltsPerDiv(std::string_view id) { commands_.SetChannelScale(menu_channel_, id); }

// The selection moves one ladder step; the new time base is then applied as if the user had
// picked it, so that the tools "Time Base Up/Down" change the instrument's time base.
void D::TimeBaseStep(std::string_view id) {
  const int count = static_cast<int>(tools_.ComboItems(display::kTimeBaseComboId).size());
  const int current = tools_.ComboIndex(display::kTimeBaseComboId);
  if (current < 0) return;
  const int next = current + (id == "ID_TBUP" ? 1 : -1);
  if (next < 0 || next >= count) return;
  {
    link::ToolUpdateGuard updating(scope_.ToolUpdateInProgress);
    tools_.SetComboIndex(display::kTimeBaseComboId, next);
  }
  ComboChange(display::kTimeBaseComboId);
}

void D::TimebaseMode(std::string_view id) { commands_.SetTimebaseMode(id); }
void D::TimebaseReference(std::string_view id) { commands_.SetTimebaseReference(id); }
void D::ScaleStep(std::string_view id) { commands_.StepChannelScale(id == "ID_VUP" ? 1 : -1); }
void D::Slope(std::string_view id) { commands_.SetTriggerSlope(id.back()); }
void D::TriggerCoupling(std::string_view id) { commands_.SetTriggerCoupling(id.back()); }
void D::Reject(std::string_view id) { commands_.SetTriggerReject(id.back()); }

void D::OffsetFromCursor(std::string_view) {
  if (const std::optional<double> d = targets_.FirstCursorDivisions()) {
    commands_.SetChannelOffset(menu_channel_, *d);
  }
}

void D::OffsetZero(std::string_view) { commands_.SetChannelOffset(menu_channel_, 0); }

void D::LevelFromCursor(std::string_view) {
  if (const std::optional<double> d = targets_.FirstCursorDivisions()) {
    commands_.SetTriggerLevel(*d);
  }
}

void D::LevelSetup(std::string_view) {
  link_.SendCommand(":TRIGger:LEVel:ASETup");
  SweepWithRunState();
}

void D::ProbeOne(std::string_view) { commands_.SetChannelProbe(menu_channel_, 1); }
void D::WgenOutput(std::string_view id) { commands_.SetWgenOutput(State(id), false); }
void D::TopMost(std::string_view id) { targets_.SetTopMost(State(id)); }

void D::SingleTool(std::string_view id) {
  if (State(id)) {
    commands_.Single();
  } else {
    SweepWithRunState();
  }
}

void D::CaptureScreen(std::string_view) { targets_.CaptureOwnScreen(); }
void D::TriggerSweep(std::string_view id) { commands_.SetTriggerSweep(id == "ID_TGSA" ? 1 : 0); }

void D::Force(std::string_view) {
  link_.SendCommand(":TRIGger:FORCe");
  SweepWithRunState();
}

void D::NoiseReject(std::string_view id) { commands_.SetNoiseReject(State(id)); }
// The oscilloscope's minimum: the holdoff clamp makes 0 its 40 ns.
void D::HoldoffZero(std::string_view) { commands_.SetTriggerHoldoff(0); }

void D::HoldoffFromCursors(std::string_view) {
  if (!targets_.SweepMode()) return;
  const std::optional<CursorTimes> times = targets_.BothCursorTimes();
  if (!times.has_value()) {
    ui_.ShowStatus("HoldOff error: Cursors not set");
    return;
  }
  commands_.SetTriggerHoldoff(times->second - times->first);
}

void D::Dvm(std::string_view id) { commands_.SetDvmEnable(State(id), true); }
void D::DvmSource(std::string_view id) { commands_.SetDvmSource(id); }
void D::DvmMode(std::string_view id) { commands_.SetDvmMode(id); }
void D::DvmAutoRange(std::string_view id) { commands_.SetDvmAutoRange(State(id)); }

// --- Family stage.

void D::MeasureFamily(std::string_view id) { commands_.Measure(id); }
void D::MeasureSourceFamily(std::string_view id) { commands_.SetMeasureSource(id); }
void D::MathFamily(std::string_view id) { commands_.MathCommand(ToolIdTail(id, 8), State(id)); }
void D::WgenFamily(std::string_view id) { commands_.WgenCommand(ToolIdTail(id, 8)); }
void D::AcquireFamily(std::string_view id) { commands_.SetAcquireType(id); }
void D::PersistenceFamily(std::string_view id) { commands_.SetPersistence(id); }

// --- Combo dispatcher.

void ToolDispatcher::ComboChange(std::string_view id) {
  if (scope_.ToolUpdateInProgress) return;
  ui_.ShowStatus("");
  const int index = tools_.ComboIndex(id);
  if (id == display::kTimeBaseComboId) {
    display::TimeBaseActions actions;
    actions.send_command = [this](std::string_view command) { link_.SendCommand(command); };
    actions.sweep = [this](bool running) { targets_.Sweep(running); };
    display::SetTimeBaseFromText(tools_.ComboText(id), link_.flags().RunBit == 1, actions, ui_);
    return;
  }
  if (index < 0) return;
  if (id == "ID_Scale") {
    choices_.SpectrumUnit = std::min(index, 2);
    targets_.ClearMarkers();
  } else if (id == "ID_AVG") {
    choices_.AverageCount = 1 << std::min(index, kMaxAverageExponent);
  } else if (id == "ID_Window") {
    choices_.WindowIndex = std::min(index, 6);
  } else if (id == "ID_Bins") {
    choices_.BinsIndex = std::min(index, kMaxBinsIndex);
  }
}

// --- Drop-down handler.

void ToolDispatcher::DropDown(std::string_view id) {
  if (scope_.ToolUpdateInProgress) return;
  const int n = id.starts_with("ID_CH") ? Digit(id) : -1;
  if (n < 1 || n > acquisition::kMaxChannels) return;
  menu_channel_ = n;
  const acquisition::ChannelSettings& channel = scope_.Channels[static_cast<std::size_t>(n)];
  link::ToolUpdateGuard updating(scope_.ToolUpdateInProgress);
  tools_.SetToolState("ID_AC", channel.Coupling == "AC");
  tools_.SetToolState("ID_DC", channel.Coupling == "DC");
  tools_.SetToolState("ID_BW", channel.BandwidthLimit == 1);
  tools_.SetToolState("ID_CHANINV", channel.Inverted);
  const std::string scale_tool = acquisition::VoltsPerDivToolId(channel.Scale);
  if (!scale_tool.empty()) tools_.SetToolState(scale_tool, true);
}

void ToolDispatcher::DropDownClosed(std::string_view) {
  if (RemoteOn()) targets_.ReadBackState();
}

// --- The window's own buttons.

void ToolDispatcher::SetClicked(std::string_view command_line) {
  if (choices_.MixedDomain) {
    commands_.Sweep();
  } else if (targets_.SweepMode()) {
    link_.SendCommand(link::TrimBlanks(command_line));
  } else {
    ui_.ShowStatus("");
    targets_.SetCenterSpanFromEntries();
  }
}

void ToolDispatcher::BandwidthLimitClicked(bool down, std::string_view upper_limit_text) {
  ApplyBandwidthLimit(down, upper_limit_text);
  if (bandwidth_click_) return;
  bandwidth_click_ = true;
  if (targets_.SweepMode()) {
    SweepWithRunState();
  } else {
    targets_.ZoomView(kZoomReset);
  }
  bandwidth_click_ = false;
}

void ToolDispatcher::ApplyBandwidthLimit(bool down, std::string_view upper_limit_text) {
  choices_.BandwidthLimitOn = down;
  choices_.UpperLimitMhz = text::LeadingNumber(upper_limit_text);
}

void ToolDispatcher::RunMacro(std::string_view command1, std::string_view command2,
                              bool sweep_after) {
  if (!command1.empty()) link_.SendCommand(command1);
  if (!command2.empty()) link_.SendCommand(command2);
  if (sweep_after) commands_.Sweep();
}

}  // namespace quarvelo::control
