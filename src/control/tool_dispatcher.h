// The three toolbar handlers: the tool-click dispatcher (offline stage, main stage, family
// stage), the combo dispatcher and the channel buttons' drop-down handler; with them the
// window's own buttons that act like tools (`cmdSet`, `ssrBW`, the macro buttons' left click).
// Each stage is a table from tool ID (or family prefix) to a handler; an ID without a row does
// nothing in that stage. All handlers ignore the toolbar while ToolUpdateInProgress is set,
// so that tool changes made by the program never send commands back.
#ifndef QUARVELO_CONTROL_TOOL_DISPATCHER_H_
#define QUARVELO_CONTROL_TOOL_DISPATCHER_H_

#include <string>
#include <string_view>

#include "acquisition/scope_state.h"
#include "control/control_commands.h"
#include "control/dispatch_targets.h"
#include "control/spectrum_choices.h"
#include "link/instrument_link.h"
#include "platform/ui/tool_host.h"
#include "platform/ui/ui_services.h"

namespace quarvelo::control {

class ToolDispatcher {
 public:
  // `choices` is the one record of the user's spectrum choices; the combo dispatcher writes it.
  ToolDispatcher(ControlCommands& commands, link::InstrumentLink& link,
                 acquisition::ScopeState& scope, SpectrumChoices& choices, ui::UiServices& ui,
                 ui::ToolHost& tools, DispatchTargets& targets);
  ToolDispatcher(const ToolDispatcher&) = delete;
  ToolDispatcher& operator=(const ToolDispatcher&) = delete;

  // A click on a tool or the opening of a menu (its "mnu_" ID).
  void ToolClick(std::string_view id);
  void ComboChange(std::string_view id);
  // The channel button's arrow was pressed: the channel menu shows that channel's settings.
  void DropDown(std::string_view id);
  // The channel menu has closed: the instrument's state is read back (remote control on).
  void DropDownClosed(std::string_view id);

  // `cmdSet`: with the spectrum beside the traces a sweep; on the sweep view the command line
  // (outer blanks removed); on the spectrum view centre and span from the entry boxes.
  void SetClicked(std::string_view command_line);
  // `ssrBW`: the spectrum is limited to the upper-limit box's frequency; then a sweep on the
  // sweep view, or a zoom reset (the full range within the new limit) on the spectrum view.
  void BandwidthLimitClicked(bool down, std::string_view upper_limit_text);
  // The choice alone, without redrawing: for the zoom reset, which re-applies `ssrBW`.
  void ApplyBandwidthLimit(bool down, std::string_view upper_limit_text);
  // A macro button's left click: its commands unchanged (empty ones skipped), then a sweep if
  // asked.
  void RunMacro(std::string_view command1, std::string_view command2, bool sweep_after);

  // The channel whose menu was opened last (1 until one is).
  int MenuChannel() const { return menu_channel_; }

 private:
  using Handler = void (ToolDispatcher::*)(std::string_view id);
  struct Row {
    std::string_view id;
    Handler handler;
  };
  // Offline stage: true when the main and family stages follow.
  using OfflineHandler = bool (ToolDispatcher::*)(std::string_view id);
  struct OfflineRow {
    std::string_view id;
    OfflineHandler handler;
  };
  struct FamilyRow {
    std::string_view prefix;  // after "ID_"
    Handler handler;
  };

  bool Offline(std::string_view id);
  void MainStage(std::string_view id);
  void FamilyStage(std::string_view id);
  bool State(std::string_view id) const { return tools_.ToolState(id); }
  bool RemoteOn() const { return link_.session().RemoteOn; }
  // One sweep with the oscilloscope's current run state.
  void SweepWithRunState() { commands_.SweepIfRunning(); }
  static int Digit(std::string_view id);  // the last character as 0..9, or -1

  // Offline stage.
  bool OfflineChannel(std::string_view id);
  bool OfflineGoOn(std::string_view id);
  bool OfflineDigitize(std::string_view id);
  bool OfflineOpen(std::string_view id);
  bool OfflineExit(std::string_view id);
  bool OfflineSaveImage(std::string_view id);
  bool OfflineMixedDomain(std::string_view id);
  bool OfflineTriggerChannel(std::string_view id);
  bool OfflineHelp(std::string_view id);
  bool OfflineCursorSource(std::string_view id);

  // Main stage.
  void MathMenu(std::string_view id);
  void WgenMenu(std::string_view id);
  void OscilloscopeMenu(std::string_view id);
  void RunTool(std::string_view id);
  void DefaultSetup(std::string_view id);
  void AutoScaleTool(std::string_view id);
  void ImportImage(std::string_view id);
  void FftTool(std::string_view id);
  void ZoomTool(std::string_view id);
  void MarkerTool(std::string_view id);
  void TriggerSourceCode(std::string_view id);
  void RemoteTool(std::string_view id);
  void SettingsTool(std::string_view id);
  void AboutTool(std::string_view id);
  void AutoFft(std::string_view id);
  void AutoPeakTool(std::string_view id);
  void ClearPeaksTool(std::string_view id);
  void SaveData(std::string_view id);
  void OpenData(std::string_view id);
  void Coupling(std::string_view id);
  void BandwidthLimit(std::string_view id);
  void Invert(std::string_view id);
  void ChannelLabel(std::string_view id);
  void DisplayLabels(std::string_view id);
  void Annotation(std::string_view id);
  void DisplayClear(std::string_view id);
  void RefreshTool(std::string_view id);
  void VoltsPerDiv(std::string_view id);
  void TimeBaseStep(std::string_view id);
  void TimebaseMode(std::string_view id);
  void TimebaseReference(std::string_view id);
  void ScaleStep(std::string_view id);
  void Slope(std::string_view id);
  void TriggerCoupling(std::string_view id);
  void Reject(std::string_view id);
  void OffsetFromCursor(std::string_view id);
  void OffsetZero(std::string_view id);
  void LevelFromCursor(std::string_view id);
  void LevelSetup(std::string_view id);
  void ProbeOne(std::string_view id);
  void WgenOutput(std::string_view id);
  void TopMost(std::string_view id);
  void SingleTool(std::string_view id);
  void CaptureScreen(std::string_view id);
  void TriggerSweep(std::string_view id);
  void Force(std::string_view id);
  void NoiseReject(std::string_view id);
  void HoldoffZero(std::string_view id);
  void HoldoffFromCursors(std::string_view id);
  void Dvm(std::string_view id);
  void DvmSource(std::string_view id);
  void DvmMode(std::string_view id);
  void DvmAutoRange(std::string_view id);

  // Family stage.
  void MeasureFamily(std::string_view id);
  void MeasureSourceFamily(std::string_view id);
  void MathFamily(std::string_view id);
  void WgenFamily(std::string_view id);
  void AcquireFamily(std::string_view id);
  void PersistenceFamily(std::string_view id);

  static const OfflineRow kOfflineRows[];
  static const Row kMainRows[];
  static const FamilyRow kFamilyRows[];

  ControlCommands& commands_;
  link::InstrumentLink& link_;
  acquisition::ScopeState& scope_;
  SpectrumChoices& choices_;
  ui::UiServices& ui_;
  ui::ToolHost& tools_;
  DispatchTargets& targets_;
  int menu_channel_ = 1;
  bool bandwidth_click_ = false;  // a zoom reset inside the click re-applies the button
};

}  // namespace quarvelo::control

#endif  // QUARVELO_CONTROL_TOOL_DISPATCHER_H_
