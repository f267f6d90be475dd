// The main window's side of the toolbar's dispatch: every operation the dispatchers reach in a
// higher layer, forwarded to the object that owns it (the sweep cycle, the readback, the screen
// view, the files, the dialogs). An operation whose owner has not landed does nothing here;
// wiring it is one line in window_targets.cc.
#ifndef QUARVELO_APP_WINDOW_TARGETS_H_
#define QUARVELO_APP_WINDOW_TARGETS_H_

#include "control/dispatch_targets.h"

namespace quarvelo::app {

class frmKeysight;

class WindowTargets final : public control::DispatchTargets {
 public:
  explicit WindowTargets(frmKeysight& window) : window_(window) {}

  void Sweep(bool restart) override;
  void FftRun(int channel) override;
  bool SweepMode() const override;
  void ConfigureInstrumentFft() override;
  void ReadBackState() override;
  void ReadBackDvm() override;
  void ReadBackMath() override;
  void ReadBackWgen() override;

  void RedrawScreen() override;
  void RedrawFrame() override;
  void DrawStatusPanel() override;
  void ZoomView(int mode) override;
  void PlaceMarker(int slot) override;
  void AutoPeak() override;
  void ClearPeaks() override;
  void ClearMarkers() override;
  void SelectCursorSource(std::string_view tool_id) override;
  void SetDrawingTriggerChannel(int channel, bool offline) override;
  std::optional<double> FirstCursorDivisions() const override;
  std::optional<control::CursorTimes> BothCursorTimes() const override;
  void SetCenterSpanFromEntries() override;

  void SaveCsvFile() override;
  void OpenCsvFile() override;
  void ImportScreenImage() override;
  void CaptureOwnScreen() override;
  void SaveScreenImage() override;

  void ShowMathDialog() override;
  void ShowWgenDialog() override;
  void ShowChannelLabelDialog(int channel) override;
  void ShowAnnotationDialog() override;
  void ShowSettingsDialog() override;
  void ShowAbout() override;
  void ShowHelp() override;

  void SetTopMost(bool on) override;
  void ExitProgram() override;
  void RebuildToolbar() override;

 private:
  frmKeysight& window_;
};

}  // namespace quarvelo::app

#endif  // QUARVELO_APP_WINDOW_TARGETS_H_
