// The program's central refresh and the FFT averaging run: reading the oscilloscope's state
// back, capturing the displayed channels with the trigger channel last, redrawing, and
// capturing one channel repeatedly for the averaged spectrum. Also the two timers' ticks.
#ifndef QUARVELO_APP_SWEEP_CYCLE_H_
#define QUARVELO_APP_SWEEP_CYCLE_H_

#include <cstdint>

#include "acquisition/capture.h"
#include "acquisition/readback.h"
#include "acquisition/scope_state.h"
#include "acquisition/waveform_record.h"
#include "app/sweep_state.h"
#include "app/sweep_view.h"
#include "link/instrument_link.h"
#include "platform/ui/tool_host.h"
#include "platform/ui/ui_services.h"
#include "spectrum/spectrum.h"
#include "spectrum/spectrum_analyzer.h"

namespace quarvelo::app {

// The records and services the cycle borrows; all outlive it.
struct SweepParts {
  link::InstrumentLink& link;
  acquisition::ScopeState& scope;
  acquisition::WaveformRecords& records;
  acquisition::StateReadback& readback;
  acquisition::WaveformCapture& capture;
  spectrum::Spectrum& spectrum;
  spectrum::SpectrumAnalyzer& analyzer;
  ui::UiServices& ui;
  ui::ToolHost& tools;
};

class SweepCycle {
 public:
  SweepCycle(const SweepParts& parts, SweepView& view, SweepCommands& commands, SweepState& state);
  SweepCycle(const SweepCycle&) = delete;
  SweepCycle& operator=(const SweepCycle&) = delete;

  // restart = true stops and digitizes the oscilloscope before reading; false reads the
  // record it holds.
  void ID_Sweep(bool restart);
  // Averages 2^AVG captures of `channel`, then sets the oscilloscope's FFT math on it.
  void FftRun(std::int16_t channel);
  void cmdStop_Click() { state_.StopRequested = true; }

  // `tmrRefresh` and `tmrSingle`.
  void RefreshTick();
  void SingleTick();

 private:
  // False when a time-out or a lost link ended the captures.
  bool SweepOnline(bool restart);
  bool Interrupted() const;
  void SweepOffline();
  // Captures `channel` for the sweep; false when a time-out ends the sweep.
  bool CaptureForSweep(int channel, bool restart, bool& first);
  void AverageOnline(int channel);
  void ConfigureMathFft(int channel);
  void ComputeOffline(const spectrum::FftSettings& settings);
  void ResetShownRange(int channel);
  bool Displayed(int channel) const;

  SweepParts parts_;
  SweepView& view_;
  SweepCommands& commands_;
  SweepState& state_;
};

}  // namespace quarvelo::app

#endif  // QUARVELO_APP_SWEEP_CYCLE_H_
