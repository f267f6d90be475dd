// What the screen view needs from the main window: the sweep's mode flags, the spectrum
// computation's planning and mixed-domain spectrum, the bandwidth button, the instrument's own
// FFT and the cursor-source tools. The main window implements it; the display never talks to
// the instrument or the toolbar itself.
#ifndef QUARVELO_DISPLAY_DISPLAY_HOST_H_
#define QUARVELO_DISPLAY_DISPLAY_HOST_H_

#include <optional>

#include "spectrum/spectrum_analyzer.h"

namespace quarvelo::display {

class DisplayHost {
 public:
  virtual ~DisplayHost() = default;

  // `SweepMode`: the time-domain sweep display is in use. Measuring tools then act on the
  // oscilloscope view, otherwise on the spectrum of the last FFT run.
  virtual bool SweepMode() const = 0;
  // Tool `ID_MDI` is on: the spectrum of the shown samples is drawn beside the traces.
  virtual bool MixedDomainOn() const = 0;
  // `SpectrumUnit` of the user's spectrum choices (0 dBV, 1 dBm, 2 V RMS).
  virtual int SpectrumUnit() const = 0;
  // `PlanTransform` of the spectrum computation for `channel` with the user's settings; the
  // returned lines are printed in the acquisition box.
  virtual std::optional<spectrum::PlanLines> PlanTransform(int channel) = 0;
  // `MDISpectrum`(first, last) of the spectrum computation.
  virtual void MixedDomainSpectrum(int first, int last) = 0;
  // Re-applies the upper-limit button `ssrBW` in its current state (spectrum zoom reset) and
  // returns the limit in Hz, 0 while the button is up.
  virtual double ReapplyBandwidthLimit() = 0;
  // Centre and span of the instrument's own FFT, in Hz.
  virtual void SendFftCentreSpan(double centre_hz, double span_hz) = 0;
  // Shows the cursor-source tool "ID_CSR" + channel down (and the others up).
  virtual void ShowCursorSourceTool(int channel) = 0;
  // The surface's image was drawn into: repaint the widget.
  virtual void SurfaceChanged() = 0;
};

// Does nothing; the spectrum is never shown and nothing is planned.
class NoDisplayHost : public DisplayHost {
 public:
  bool SweepMode() const override { return true; }
  bool MixedDomainOn() const override { return false; }
  int SpectrumUnit() const override { return 0; }
  std::optional<spectrum::PlanLines> PlanTransform(int) override { return std::nullopt; }
  void MixedDomainSpectrum(int, int) override {}
  double ReapplyBandwidthLimit() override { return 0; }
  void SendFftCentreSpan(double, double) override {}
  void ShowCursorSourceTool(int) override {}
  void SurfaceChanged() override {}
};

}  // namespace quarvelo::display

#endif  // QUARVELO_DISPLAY_DISPLAY_HOST_H_
