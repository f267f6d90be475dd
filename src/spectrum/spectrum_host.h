// What the spectrum computation needs from the main window, and the sample storage of the
// captured channels. The main window implements both over its own records.
#ifndef QUARVELO_SPECTRUM_SPECTRUM_HOST_H_
#define QUARVELO_SPECTRUM_SPECTRUM_HOST_H_

#include <cstdint>
#include <span>

#include "spectrum/progress_bar.h"

namespace quarvelo::spectrum {

// The captured samples in volts, per channel 1..4.
class SampleStore {
 public:
  virtual ~SampleStore() = default;
  // Samples captured in the channel's record (valid at indexes 0..count-1).
  virtual std::int32_t SampleCount(int channel) const = 0;
  // The channel's storage; it may be longer than the record.
  virtual std::span<const double> Volts(int channel) const = 0;
  // Grows the storage to at least `size` samples, keeping its contents, and returns it.
  virtual std::span<double> GrowVolts(int channel, std::int32_t size) = 0;
};

class SpectrumHost : public ProgressBar {
 public:
  // The main window is minimised: nothing is computed then.
  virtual bool WindowMinimised() const = 0;
  // `SampleRate` of the oscilloscope state, kSa/s.
  virtual double SampleRate() const = 0;
  // `Scale` (V/div) and `Displayed` of a channel of the oscilloscope state.
  virtual double ChannelScale(int channel) const = 0;
  virtual bool ChannelDisplayed(int channel) const = 0;
  // Draws the spectrum pane of `channel` with its scales and markers.
  virtual void DrawSpectrum(int channel) = 0;

  // For the mixed-domain spectrum.
  virtual bool MdiChecked() const = 0;       // tool `ID_MDI`
  virtual int ReferenceChannel() const = 0;  // the channel the sweep captures
  virtual void RedrawStatusPanel() = 0;
  virtual void ShowAverageCount(int count) = 0;  // label `lblAVGCount`
  virtual void SetLastZoomMode(int mode) = 0;    // 0 in, 1 out, 2 reset
  virtual void RestoreOscilloscopePane() = 0;    // GridTop/GridBottom of the scope pane
};

}  // namespace quarvelo::spectrum

#endif  // QUARVELO_SPECTRUM_SPECTRUM_HOST_H_
