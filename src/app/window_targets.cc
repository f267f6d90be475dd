// One line per operation. The owners fill in their own lines: sweep (sweep cycle, readback,
// FFT), display (screen view, markers, cursors), files (CSV and images), dialogs (math,
// generator, label, annotation, about, help). Until then an operation does nothing.
#include "app/window_targets.h"

#include "app/frmKeysight.h"
#include "app/set_top_most.h"
#include "dialogs/dialog_launcher.h"

namespace quarvelo::app {

// --- Sweep cycle and readback (sweep).
void WindowTargets::Sweep(bool) {}
void WindowTargets::FftRun(int) {}
// Until the sweep cycle lands every view is the time-domain one.
bool WindowTargets::SweepMode() const { return true; }
void WindowTargets::ConfigureInstrumentFft() {}
void WindowTargets::ReadBackState() {}
void WindowTargets::ReadBackDvm() {}
void WindowTargets::ReadBackMath() {}
void WindowTargets::ReadBackWgen() {}

// --- Screen view (display).
void WindowTargets::RedrawScreen() {}
void WindowTargets::RedrawFrame() {}
void WindowTargets::DrawStatusPanel() {}
void WindowTargets::ZoomView(int) {}
void WindowTargets::PlaceMarker(int) {}
void WindowTargets::AutoPeak() {}
void WindowTargets::ClearPeaks() {}
void WindowTargets::ClearMarkers() {}
void WindowTargets::SelectCursorSource(std::string_view) {}
void WindowTargets::SetDrawingTriggerChannel(int, bool) {}
std::optional<double> WindowTargets::FirstCursorDivisions() const { return std::nullopt; }
std::optional<control::CursorTimes> WindowTargets::BothCursorTimes() const {
  return std::nullopt;
}
void WindowTargets::SetCenterSpanFromEntries() {}

// --- Files and images (files).
void WindowTargets::SaveCsvFile() {}
void WindowTargets::OpenCsvFile() {}
void WindowTargets::ImportScreenImage() {}
void WindowTargets::CaptureOwnScreen() {}
void WindowTargets::SaveScreenImage() {}

// --- Dialogs (dialogs).
void WindowTargets::ShowMathDialog() { window_.dialogs_->ShowMathDialog(); }
void WindowTargets::ShowWgenDialog() { window_.dialogs_->ShowWgenDialog(); }
void WindowTargets::ShowChannelLabelDialog(int channel) {
  window_.dialogs_->ShowChannelLabelDialog(channel);
}
void WindowTargets::ShowAnnotationDialog() { window_.dialogs_->ShowAnnotationDialog(); }
void WindowTargets::ShowSettingsDialog() { window_.ShowSettingsDialog(); }
void WindowTargets::ShowAbout() { window_.dialogs_->ShowAbout(); }
void WindowTargets::ShowHelp() { window_.dialogs_->ShowHelp(); }

// --- The window.
void WindowTargets::SetTopMost(bool on) { app::SetTopMost(&window_, on); }
void WindowTargets::ExitProgram() { window_.close(); }
void WindowTargets::RebuildToolbar() { window_.RebuildToolbar(); }

}  // namespace quarvelo::app
