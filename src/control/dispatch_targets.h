// The operations the toolbar reaches in layers above the control layer: the sweep cycle and
// the readback it owns, the screen view with its markers and cursors, the files and images,
// the dialogs and the window itself. The main window implements this interface by forwarding
// to the objects that own each operation (src/app/window_targets.h); an operation whose owner
// has not landed does nothing there.
#ifndef QUARVELO_CONTROL_DISPATCH_TARGETS_H_
#define QUARVELO_CONTROL_DISPATCH_TARGETS_H_

#include <optional>
#include <string_view>

namespace quarvelo::control {

// The two mouse cursors' positions on the oscilloscope view, in seconds.
struct CursorTimes {
  double first = 0;   // left button
  double second = 0;  // right button
};

class DispatchTargets {
 public:
  virtual ~DispatchTargets() = default;

  // --- Sweep cycle and readback.
  // ID_Sweep: restart = true stops and digitizes a running oscilloscope before reading.
  virtual void Sweep(bool restart) = 0;
  virtual void FftRun(int channel) = 0;
  // The time-domain display is in use (set by a sweep, cleared by an FFT run).
  virtual bool SweepMode() const = 0;
  // ID_AutoFFT: the instrument's own FFT configured like the host's spectrum.
  virtual void ConfigureInstrumentFft() = 0;
  virtual void ReadBackState() = 0;
  virtual void ReadBackDvm() = 0;
  virtual void ReadBackMath() = 0;
  virtual void ReadBackWgen() = 0;

  // --- Screen view.
  virtual void RedrawScreen() = 0;
  // The empty frame (remote control switched off).
  virtual void RedrawFrame() = 0;
  virtual void DrawStatusPanel() = 0;
  // 0 in, 1 out, 2 reset; the oscilloscope-view zoom while SweepMode, else the spectrum's.
  virtual void ZoomView(int mode) = 0;
  virtual void PlaceMarker(int slot) = 0;  // 0..3
  virtual void AutoPeak() = 0;
  virtual void ClearPeaks() = 0;
  virtual void ClearMarkers() = 0;
  virtual void SelectCursorSource(std::string_view tool_id) = 0;  // "ID_CSR1".."ID_CSR4"
  // The trigger channel the drawing marks; `offline` also makes it the channel of waveforms
  // opened from files.
  virtual void SetDrawingTriggerChannel(int channel, bool offline) = 0;
  // The first (left-button) cursor's height in divisions from the centre line, positive
  // downwards as the screen's rows run; nothing while that cursor is not placed.
  virtual std::optional<double> FirstCursorDivisions() const = 0;
  // Both cursors' times, or nothing unless both are placed.
  virtual std::optional<CursorTimes> BothCursorTimes() const = 0;
  // `cmdSet` on the spectrum view: centre and span from the spectrum entry boxes.
  virtual void SetCenterSpanFromEntries() = 0;

  // --- Files and images.
  virtual void SaveCsvFile() = 0;
  virtual void OpenCsvFile() = 0;
  virtual void ImportScreenImage() = 0;
  virtual void CaptureOwnScreen() = 0;
  virtual void SaveScreenImage() = 0;

  // --- Dialogs.
  virtual void ShowMathDialog() = 0;  // modal
  // Brings the generator dialog to the front, loading it (not modal) when it is not open.
  virtual void ShowWgenDialog() = 0;
  virtual void ShowChannelLabelDialog(int channel) = 0;
  virtual void ShowAnnotationDialog() = 0;
  // Closes the link, shows the settings dialog modally and rebuilds the toolbar.
  virtual void ShowSettingsDialog() = 0;
  virtual void ShowAbout() = 0;
  virtual void ShowHelp() = 0;

  // --- The window.
  virtual void SetTopMost(bool on) = 0;
  // Unloads the main window (the shutdown runs).
  virtual void ExitProgram() = 0;
  // SetToolbar for model, channel count and options.
  virtual void RebuildToolbar() = 0;
};

}  // namespace quarvelo::control

#endif  // QUARVELO_CONTROL_DISPATCH_TARGETS_H_
