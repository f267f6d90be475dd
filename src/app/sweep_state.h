// The main window's flags of the sweep and the FFT averaging run.
#ifndef QUARVELO_APP_SWEEP_STATE_H_
#define QUARVELO_APP_SWEEP_STATE_H_

#include <cstdint>

namespace quarvelo::app {

struct SweepState {
  bool SweepBusy = false;
  // The time-domain display is in use; the status poll runs only then. The program starts on
  // the oscilloscope view: its empty frame fills the surface until a spectrum is run.
  bool SweepMode = true;
  bool FftBusy = false;
  std::int16_t AvgIndex = 0;   // pass of the running FFT run, from 1
  bool StopRequested = false;  // "Stop averaging"
};

}  // namespace quarvelo::app

#endif  // QUARVELO_APP_SWEEP_STATE_H_
