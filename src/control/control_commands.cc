#include "control/control_commands.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

#include "acquisition/state_tool_ids.h"
#include "link/tool_update_guard.h"
#include "platform/text/number_text.h"

namespace quarvelo::control {
namespace {

using text::NumberText;

// A letter or short key and the mnemonic it stands for.
using Mnemonics = std::span<const std::pair<std::string_view, std::string_view>>;

std::string_view Lookup(Mnemonics table, std::string_view key) {
  for (const auto& [from, to] : table) {
    if (from == key) return to;
  }
  return {};
}

constexpr std::pair<std::string_view, std::string_view> kSlopes[] = {
    {"N", "NEG"}, {"P", "POS"}, {"E", "EITH"}, {"A", "ALT"}};
constexpr std::pair<std::string_view, std::string_view> kCouplings[] = {
    {"A", "AC"}, {"D", "DC"}, {"L", "LFR"}};
constexpr std::pair<std::string_view, std::string_view> kRejects[] = {
    {"L", "LF"}, {"H", "HF"}, {"O", "OFF"}};
constexpr std::pair<std::string_view, std::string_view> kTimebaseModes[] = {
    {"M", "MAIN"}, {"W", "WIND"}, {"X", "XY"}, {"R", "ROLL"}};
constexpr std::pair<std::string_view, std::string_view> kReferences[] = {
    {"L", "LEFT"}, {"C", "CENTER"}, {"R", "RIGHT"}};
constexpr std::pair<std::string_view, std::string_view> kPersistences[] = {
    {"INF", "INF"}, {"MIN", "MIN"}, {"01", "0.1"}, {"05", "0.5"}, {"10", "1"}};
constexpr std::pair<std::string_view, std::string_view> kRmsMeasurements[] = {
    {"VRMSACF", "VRMS DISP,AC"},
    {"VRMSDCF", "VRMS DISP,DC"},
    {"VRMSACN", "VRMS CYCL,AC"},
    {"VRMSDCN", "VRMS CYCL,DC"}};
constexpr std::pair<std::string_view, std::string_view> kDvmModes[] = {
    {"1", "ACRMs"}, {"2", "DC"}, {"3", "DCRMs"}, {"4", "FREQuency"}};
constexpr std::pair<std::string_view, std::string_view> kTriggerSourceCodes[] = {
    {"5", "DIG"}, {"6", "EXT"}, {"7", "LINE"}, {"8", "WGEN"}};
constexpr std::string_view kMathOperations[] = {"ADD", "SUBT", "MULT", "DIV", "FFT"};
constexpr std::string_view kMeasureSources[] = {"CHAN1", "CHAN2", "CHAN3", "CHAN4",
                                                "EXT",   "WMEM1", "WMEM2", "FUNC"};

std::string_view Flag(bool on) { return on ? "1" : "0"; }

std::string Concat(std::initializer_list<std::string_view> parts) {
  std::string text;
  for (std::string_view part : parts) text += part;
  return text;
}

}  // namespace

std::string_view ToolIdTail(std::string_view tool_id, std::size_t n) {
  return n >= 1 && n <= tool_id.size() ? tool_id.substr(n - 1) : std::string_view();
}

ControlCommands::ControlCommands(link::InstrumentLink& link, acquisition::ScopeState& scope,
                                 ui::UiServices& ui, ui::ToolHost& tools, DispatchTargets& targets)
    : link_(link), scope_(scope), ui_(ui), tools_(tools), targets_(targets) {}

std::string ControlCommands::Channel(int ch) { return ":CHANnel" + std::to_string(ch); }

// --- Channels.

void ControlCommands::SetChannelDisplay(int ch, bool on, bool refresh) {
  if (link_.session().TimedOut || !ValidChannel(ch)) return;
  scope_.Channels[static_cast<std::size_t>(ch)].Displayed = on;
  {
    link::ToolUpdateGuard updating(scope_.ToolUpdateInProgress);
    tools_.SetToolState(acquisition::ChannelToolId(ch), on);
  }
  if (!RemoteOn()) return;
  link_.SendCommand(Concat({Channel(ch), ":DISPlay ", Flag(on)}));
  if (refresh) Sweep();
}

void ControlCommands::SetChannelProbe(int ch, double factor) {
  if (!ValidChannel(ch)) return;
  link_.SendCommand(Concat({Channel(ch), ":PROBe ", NumberText(factor)}));
  Sweep();
}

void ControlCommands::SetChannelCoupling(int ch, bool dc) {
  if (!ValidChannel(ch)) return;
  link_.SendCommand(Concat({Channel(ch), ":COUPling ", dc ? "DC" : "AC"}));
  Sweep();
}

void ControlCommands::SetChannelBandwidthLimit(int ch, double value) {
  if (!ValidChannel(ch)) return;
  link_.SendCommand(Concat({Channel(ch), ":BWLimit ", NumberText(value)}));
  Sweep();
}

void ControlCommands::SetChannelScale(int ch, std::string_view tool_id) {
  if (!ValidChannel(ch)) return;
  link_.SendCommand(Concat({Channel(ch), ":SCALe ", ToolIdTail(tool_id, 4), "mV"}));
  SweepIfRunning();
}

void ControlCommands::SetChannelOffset(int ch, double divisions) {
  if (!ValidChannel(ch) || std::abs(divisions) > kMaximumDivisions) return;
  const double scale = scope_.Channels[static_cast<std::size_t>(ch)].Scale;
  link_.SendCommand(Concat({Channel(ch), ":OFFSet ", NumberText(scale * divisions * 1000), "mV"}));
  SweepIfRunning();
}

void ControlCommands::SetChannelInvert(int ch, bool on) {
  if (!ValidChannel(ch)) return;
  link_.SendCommand(Concat({Channel(ch), ":INV ", Flag(on)}));
  SweepIfRunning();
}

void ControlCommands::StepChannelScale(int step) {
  const int index =
      std::clamp(scope_.TriggerScaleIndex + step, 0, acquisition::kVoltsPerDivSteps - 1);
  scope_.TriggerScaleIndex = static_cast<std::int16_t>(index);
  const double millivolts = scope_.VoltsPerDivTable[static_cast<std::size_t>(index)];
  link_.SendCommand(
      Concat({Channel(scope_.TriggerChannel), ":SCALe ", NumberText(millivolts), "mV"}));
  SweepIfRunning();
}

// --- Trigger.

void ControlCommands::SetTriggerSource(int n, bool refresh) {
  if (n >= 1 && n <= acquisition::kMaxChannels) {
    if (n > scope_.ChannelCount) return;
    scope_.TriggerSource = "CHAN" + std::to_string(n);
    scope_.TriggerChannel = static_cast<std::int16_t>(n);
    targets_.SetDrawingTriggerChannel(n, !RemoteOn());
  } else {
    const std::string_view code = Lookup(kTriggerSourceCodes, std::to_string(n));
    if (code.empty()) return;
    scope_.TriggerSource = std::string(code);
  }
  if (!RemoteOn()) return;
  link_.SendCommand(":TRIGger:EDGE:SOURce " + scope_.TriggerSource);
  if (refresh) Sweep();
}

void ControlCommands::SetTriggerLevel(double divisions) {
  if (std::abs(divisions) > kMaximumDivisions) return;
  const int tc = scope_.TriggerChannel;
  if (tc < 1 || tc > acquisition::kMaxChannels) return;
  const double scale = scope_.Channels[static_cast<std::size_t>(tc)].Scale;
  link_.SendCommand(":TRIGger:EDGE:LEVel " + NumberText(-divisions * scale));
  Sweep();
}

void ControlCommands::SetTriggerSlope(char letter) {
  const std::string_view slope = Lookup(kSlopes, std::string_view(&letter, 1));
  if (slope.empty()) return;
  link_.SendCommand(Concat({":Trigger:EDGE:SLOPe ", slope}));
  Sweep();
}

void ControlCommands::SetTriggerCoupling(char letter) {
  const std::string_view coupling = Lookup(kCouplings, std::string_view(&letter, 1));
  if (coupling.empty()) return;
  link_.SendCommand(Concat({":Trigger:EDGE:COUPLing ", coupling}));
  Sweep();
}

void ControlCommands::SetTriggerReject(char letter) {
  const std::string_view reject = Lookup(kRejects, std::string_view(&letter, 1));
  if (reject.empty()) return;
  link_.SendCommand(Concat({":Trigger:EDGE:REJect ", reject}));
  Sweep();
}

void ControlCommands::SetTriggerSweep(int mode) {
  link_.SendCommand(Concat({":TRIGger:SWEep ", mode == 1 ? "AUTO" : "NORMal"}));
  link::ToolUpdateGuard updating(scope_.ToolUpdateInProgress);
  tools_.SetToolState("ID_TGSA", mode == 1);
  tools_.SetToolState("ID_TGSN", mode != 1);
}

void ControlCommands::SetNoiseReject(bool on) {
  link_.SendCommand(Concat({":TRIGger:NREJect ", Flag(on)}));
}

void ControlCommands::SetTriggerHoldoff(double seconds) {
  const double t = std::clamp(std::abs(seconds), kMinimumHoldoff, kMaximumHoldoff);
  link_.SendCommand(":TRIGger:HOLDoff " + NumberText(t));
  Sweep();
}

// --- Time base, acquisition, display.

void ControlCommands::SetTimebaseMode(std::string_view tool_id) {
  const std::string_view mode = Lookup(kTimebaseModes, ToolIdTail(tool_id, 6).substr(0, 1));
  if (mode.empty()) return;
  link_.SendCommand(Concat({":TIMebase:MODE ", mode}));
  if (mode == "MAIN") Sweep();
}

void ControlCommands::SetTimebaseReference(std::string_view tool_id) {
  const std::string_view reference = Lookup(kReferences, ToolIdTail(tool_id, 6).substr(0, 1));
  if (reference.empty()) return;
  link_.SendCommand(Concat({":TIMebase:REFerence ", reference}));
  Sweep();
}

void ControlCommands::SetAcquireType(std::string_view tool_id) {
  if (!RemoteOn()) return;
  link_.SendCommand(Concat({":ACQuire:TYPE ", ToolIdTail(tool_id, 8)}));
}

void ControlCommands::SetPersistence(std::string_view tool_id) {
  if (!RemoteOn()) return;
  const std::string_view tail = ToolIdTail(tool_id, 8);
  if (tail == "CLR") {
    link_.SendCommand(":DISPlay:CLEar");
  } else if (tail == "VAR") {
    link_.SendCommand(":Display:PERSistence " + scope_.VariablePersistence);
  } else if (const std::string_view value = Lookup(kPersistences, tail); !value.empty()) {
    link_.SendCommand(Concat({":Display:PERSistence ", value}));
  }
}

void ControlCommands::Run() {
  if (!RemoteOn()) return;
  link_.SendCommand(":RUN");
  ReadBack();
}

void ControlCommands::Stop() {
  if (!RemoteOn()) return;
  link_.SendCommand(":STOP");
  ReadBack();
}

void ControlCommands::Single() {
  ui_.SetRefreshTimerEnabled(false);
  link_.SendCommand(":RUN");
  {
    link::ToolUpdateGuard updating(scope_.ToolUpdateInProgress);
    tools_.SetToolState("ID_Run", true);
    tools_.SetToolState("ID_Refresh", false);
  }
  link_.flags().AutoRefresh = false;
  link_.SendCommand(":SINGLE");
  targets_.DrawStatusPanel();
  ui_.SetSingleTimerEnabled(true);
}

void ControlCommands::AutoScale() {
  link_.SendCommand(":AUToscale");
  Run();
  ReadBack();
  Sweep();
}

void ControlCommands::Preset() { link_.SendCommand(":SYSTem:PRESet"); }

// --- Measurements.

void ControlCommands::SetMeasureSource(std::string_view tool_id) {
  link_.SendCommand(Concat({":MEASure:SOURce ", ToolIdTail(tool_id, 8)}));
  scope_.MeasureSource = link_.QueryString(":MEASure:SOURce?");
  const std::size_t comma = scope_.MeasureSource.find(',');
  if (comma == std::string::npos) return;
  const std::string_view first = std::string_view(scope_.MeasureSource).substr(0, comma);
  if (std::find(std::begin(kMeasureSources), std::end(kMeasureSources), first) ==
      std::end(kMeasureSources)) {
    return;
  }
  link::ToolUpdateGuard updating(scope_.ToolUpdateInProgress);
  tools_.SetToolState(Concat({"ID_MEAS", first}), true);
}

void ControlCommands::Measure(std::string_view tool_id) {
  const std::string_view kind = ToolIdTail(tool_id, 6);
  if (kind.empty()) return;
  const std::string_view rms = Lookup(kRmsMeasurements, kind);
  link_.SendCommand(Concat({":MEASure:", rms.empty() ? kind : rms}));
}

// --- Voltmeter.

void ControlCommands::SetDvmEnable(bool on, bool refresh) {
  if (!scope_.HasDvm) return;
  link_.SendCommand(Concat({":DVM:ENABle ", Flag(on)}));
  if (!refresh) return;
  DvmRefresh();
  DvmSettle();
}

void ControlCommands::SetDvmAutoRange(bool on) {
  if (!scope_.HasDvm) return;
  const std::string_view source = ToolIdTail(scope_.TriggerSource, 5).substr(0, 1);
  if (source == std::to_string(scope_.DvmSource)) {
    ui_.ShowMessage("Not available in this mode", ui::MessageIcon::kCritical,
                    ui::MessageButtons::kOk);
  } else {
    link_.SendCommand(Concat({":DVM:ARANge ", Flag(on)}));
  }
  DvmRefresh();
}

void ControlCommands::SetDvmSource(std::string_view tool_id) {
  if (!scope_.HasDvm) return;
  const std::string_view ch = ToolIdTail(tool_id, 9).substr(0, 1);
  if (ch.empty()) return;
  link_.SendCommand(Concat({":DVM:SOURce CHANnel", ch}));
  DvmSettle();
}

void ControlCommands::SetDvmMode(std::string_view tool_id) {
  if (!scope_.HasDvm) return;
  const std::string_view mode = Lookup(kDvmModes, ToolIdTail(tool_id, 8).substr(0, 1));
  if (mode.empty()) return;
  link_.SendCommand(Concat({":DVM:Mode ", mode}));
  DvmSettle();
}

void ControlCommands::DvmSettle() {
  // The voltmeter needs a moment before its reading reflects the change.
  ui_.SetPointer(ui::PointerShape::kHourglass);
  ui_.Pause(kDvmSettleMs);
  ui_.SetPointer(ui::PointerShape::kDefault);
  DvmRefresh();
  targets_.RedrawScreen();
}

// --- Math and the instrument's FFT.

void ControlCommands::MathCommand(std::string_view argument, bool on) {
  if (argument == "SET") {
    link_.SendCommand(scope_.MathPrefix + ":DISPlay 1");
    targets_.ReadBackMath();
    targets_.ShowMathDialog();
  } else if (argument == "FUNC1" || argument == "FUNC2") {
    scope_.MathPrefix = Concat({":", argument});
  } else if (argument == "DISP") {
    scope_.MathDisplay = on;
    link_.SendCommand(Concat({scope_.MathPrefix, ":DISPlay ", Flag(on)}));
  } else if (std::find(std::begin(kMathOperations), std::end(kMathOperations), argument) !=
             std::end(kMathOperations)) {
    scope_.MathOperation = std::string(argument);
    link_.SendCommand(Concat({scope_.MathPrefix, ":OPERation ", argument}));
  }
  MirrorMath();
}

void ControlCommands::MirrorMath() {
  link::ToolUpdateGuard updating(scope_.ToolUpdateInProgress);
  const std::string operation_tool = acquisition::MathOperationToolId(scope_.MathOperation);
  if (!operation_tool.empty()) tools_.SetToolState(operation_tool, true);
  tools_.SetToolState("ID_MATHDISP", scope_.MathDisplay);
}

void ControlCommands::SetFftCenterSpan(double center_hz, double span_hz) {
  if (!RemoteOn()) return;
  link_.SendCommand(scope_.MathPrefix + ":FFT:CENTer " + text::WholeNumberText(center_hz));
  if (span_hz != 0) {
    link_.SendCommand(scope_.MathPrefix + ":FFT:SPAN " + text::WholeNumberText(span_hz));
  }
}

// --- Generator.

void ControlCommands::SetWgenOutput(bool on, bool refresh) {
  if (!scope_.HasWgen) return;
  link_.SendCommand(Concat({scope_.WgenPrefix, ":OUTPut ", Flag(on)}));
  if (refresh) Sweep();
}

void ControlCommands::WgenCommand(std::string_view argument) {
  if (!scope_.HasWgen || !RemoteOn()) return;
  if (argument == "SET") {
    targets_.ReadBackWgen();
    targets_.ShowWgenDialog();
  } else if (argument == "RST") {
    const ui::MessageResult answer = ui_.ShowMessage(
        "RESET WGEN\r\nAre you sure?", ui::MessageIcon::kQuestion, ui::MessageButtons::kOkCancel);
    if (answer == ui::MessageResult::kOk) link_.SendCommand(scope_.WgenPrefix + ":RST");
  } else if (argument == "1" || argument == "2") {
    scope_.WgenPrefix = Concat({":WGEN", argument});
  }
}

}  // namespace quarvelo::control
