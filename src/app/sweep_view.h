// What the sweep cycle needs from the window above it: the panels, the drawing surface and
// the view values the screen drawing keeps, and the front-panel commands and the user's
// spectrum choices. The main window implements both by forwarding to their owners.
#ifndef QUARVELO_APP_SWEEP_VIEW_H_
#define QUARVELO_APP_SWEEP_VIEW_H_

#include <cstdint>

#include "spectrum/spectrum.h"

namespace quarvelo::app {

class SweepView {
 public:
  virtual ~SweepView() = default;

  // The frames `fraFFT`, `fraVISA` and `fraActivity`.
  virtual void ShowPanels(bool fft, bool visa, bool activity) = 0;
  // The spectrum entry boxes and `cmdSet` prepared for the spectrum view.
  virtual void PrepareSpectrumEntries() = 0;
  // `picScreen` takes the empty picture.
  virtual void ClearScreen() = 0;
  // The oscilloscope pane's frame and side panel in the layout of the view now in use, so that
  // the first traces of an FFT run are drawn where the spectrum view puts them.
  virtual void DrawFrame() = 0;
  virtual void ClearMarkers() = 0;
  virtual void DrawStatusPanel() = 0;
  virtual void RedrawScreen() = 0;
  virtual void DrawChannelTrace(int channel) = 0;
  virtual void DrawSpectrum(int channel) = 0;
  // The spectrum pane's rows give way to the oscilloscope pane again (after MDISpectrum).
  virtual void RestoreOscilloscopePane() = 0;

  // View values owned by the screen drawing.
  virtual void ClearDrawnFlags() = 0;  // channels 1..4
  virtual void MarkDrawn(int channel) = 0;
  virtual int CursorChannel() const = 0;
  virtual void SetCursorChannel(int channel) = 0;  // both cursors
  virtual int DisplayedChannel() const = 0;
  virtual void SetDisplayedChannel(int channel) = 0;
  virtual void SetZoomCentre(double centre) = 0;
  virtual void SetLastZoomMode(int mode) = 0;

  // Window widgets: `lblAVGCount`, `pgbFFT`, the minimised state.
  virtual void ShowAverageCount(int count) = 0;
  virtual void SetProgressRange(int minimum, int maximum) = 0;
  virtual void SetProgressValue(double value) = 0;
  virtual bool WindowMinimised() const = 0;
};

class SweepCommands {
 public:
  virtual ~SweepCommands() = default;
  // The front-panel commands the FFT run and the sweep send; each keeps ScopeState current.
  virtual void SetChannelDisplay(int channel, bool on) = 0;
  virtual void SetTriggerSource(int channel) = 0;
  virtual void SetDvmEnable(bool on) = 0;
  // The user's spectrum choices as the computation reads them.
  virtual spectrum::FftSettings FftSettings() const = 0;
  // Tool `ID_MDI`: the spectrum pane beside the traces.
  virtual bool MixedDomain() const = 0;
  // For the FFT run: `ID_MDI` off and the Max Bins list at the user's choice.
  virtual void PrepareFftTools() = 0;
};

}  // namespace quarvelo::app

#endif  // QUARVELO_APP_SWEEP_VIEW_H_
