// One line per operation. The owners fill in their own lines: sweep (sweep cycle, readback,
// FFT), display (screen view, markers, cursors), files (CSV and images), dialogs (math,
// generator, label, annotation, about, help). Until then an operation does nothing.
#include "app/window_targets.h"

#include <QLineEdit>

#include "app/frmKeysight.h"
#include "app/set_top_most.h"
#include "dialogs/dialog_launcher.h"
#include "platform/text/number_parse.h"
#include "spectrum/instrument_fft.h"

namespace quarvelo::app {

// --- Sweep cycle and readback (sweep).
void WindowTargets::Sweep(bool restart) { window_.sweep_->ID_Sweep(restart); }
void WindowTargets::FftRun(int channel) {
  window_.sweep_->FftRun(static_cast<std::int16_t>(channel));
}
bool WindowTargets::SweepMode() const { return window_.sweep_state_.SweepMode; }
void WindowTargets::ConfigureInstrumentFft() {
  link::InstrumentLink& link = *window_.link_;
  const spectrum::InstrumentCommands commands{
      [&link](std::string_view command) { link.SendCommand(command); },
      [&link](std::string_view query) { return link.QueryString(query); }};
  const spectrum::InstrumentFftReadings readings = spectrum::ConfigureInstrumentFft(
      commands, window_.scope_.MathPrefix, window_.spectrum_.SpectrumChannel,
      window_.session_.RemoteOn);
  window_.scope_.TimebaseScale = readings.TimebaseScale;
  window_.scope_.SampleRate = readings.SampleRate;
}
void WindowTargets::ReadBackState() { window_.readback_->ReadBackState(); }
void WindowTargets::ReadBackDvm() { window_.readback_->ReadBackDvm(); }
void WindowTargets::ReadBackMath() { window_.readback_->ReadBackMath(true); }
void WindowTargets::ReadBackWgen() { window_.readback_->ReadBackWgen(); }

// --- Screen view (display).
void WindowTargets::RedrawScreen() { window_.screen_->View().RedrawScreen(); }
void WindowTargets::RedrawFrame() {
  display::ScreenView& view = window_.screen_->View();
  view.ClearSurface();
  view.DrawScreenFrame(false, true);
  view.DrawStatusPanel();
}
void WindowTargets::DrawStatusPanel() { window_.screen_->View().DrawStatusPanel(); }
void WindowTargets::ZoomView(int mode) { window_.screen_->View().ZoomView(mode); }
void WindowTargets::PlaceMarker(int slot) { window_.screen_->View().PlaceMarker(slot); }
void WindowTargets::AutoPeak() { window_.screen_->View().AutoPeak(); }
void WindowTargets::ClearPeaks() { window_.screen_->View().ClearPeaks(); }
void WindowTargets::ClearMarkers() { window_.screen_->View().ClearMarkers(); }
void WindowTargets::SelectCursorSource(std::string_view tool_id) {
  window_.screen_->View().SelectCursorSource(std::string(tool_id));
}
void WindowTargets::SetDrawingTriggerChannel(int channel, bool) {
  window_.screen_->State().DisplayedChannel = static_cast<std::int16_t>(channel);
}
std::optional<double> WindowTargets::FirstCursorDivisions() const {
  return window_.screen_->FirstCursorDivisions();
}
std::optional<control::CursorTimes> WindowTargets::BothCursorTimes() const {
  const display::ViewState& state = window_.screen_->State();
  if (!window_.sweep_state_.SweepMode || !state.Cursors[1].shown || !state.Cursors[2].shown)
    return std::nullopt;
  return control::CursorTimes{state.Cursors[1].position, state.Cursors[2].position};
}
void WindowTargets::SetCenterSpanFromEntries() {
  window_.screen_->View().SetCenterSpanFromEntries(
      text::LeadingNumber(window_.txt_mhz_[0]->text().toStdString()),
      text::LeadingNumber(window_.txt_mhz_[1]->text().toStdString()));
}

// --- Files and images (files).
void WindowTargets::SaveCsvFile() { window_.csv_files_->SaveCsvFile(); }
void WindowTargets::OpenCsvFile() { window_.csv_files_->OpenCsvFile(); }
void WindowTargets::ImportScreenImage() { window_.screen_images_->ImportScreenImage(); }
void WindowTargets::CaptureOwnScreen() { window_.screen_images_->CaptureOwnScreen(); }
void WindowTargets::SaveScreenImage() { window_.screen_images_->SaveScreenImage(); }

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
