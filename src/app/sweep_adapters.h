// Small adapters that let the lower layers reach the main window's records and widgets: the
// readback's time-base combo and sample-rate text, the captured samples as the spectrum
// computation reads them, the spectrum computation's host, and the front-panel commands of the
// FFT run until the control command set provides them.
#ifndef QUARVELO_APP_SWEEP_ADAPTERS_H_
#define QUARVELO_APP_SWEEP_ADAPTERS_H_

#include <string>

#include "acquisition/readback.h"
#include "acquisition/scope_state.h"
#include "acquisition/waveform_record.h"
#include "app/sweep_view.h"
#include "control/control_commands.h"
#include "control/spectrum_choices.h"
#include "platform/ui/tool_host.h"
#include "spectrum/spectrum_host.h"

namespace quarvelo::app {

class WindowReadbackHooks final : public acquisition::ReadbackHooks {
 public:
  WindowReadbackHooks(ui::ToolHost& tools, const bool& remote_on)
      : tools_(tools), remote_on_(remote_on) {}
  void ShowTimeBase(double seconds_per_division) override;
  void ShowSampleRate(double kilosamples_per_second) override;

 private:
  ui::ToolHost& tools_;
  const bool& remote_on_;
};

// The tool `ID_SR` shows a sample rate in engineering units.
void ShowSampleRateText(ui::ToolHost& tools, double kilosamples_per_second);

class RecordSampleStore final : public spectrum::SampleStore {
 public:
  explicit RecordSampleStore(acquisition::WaveformRecords& records) : records_(records) {}
  std::int32_t SampleCount(int channel) const override;
  std::span<const double> Volts(int channel) const override;
  std::span<double> GrowVolts(int channel, std::int32_t size) override;

 private:
  acquisition::WaveformRecords& records_;
};

class WindowSpectrumHost final : public spectrum::SpectrumHost {
 public:
  WindowSpectrumHost(const acquisition::ScopeState& scope, const SweepCommands& commands,
                     SweepView& view)
      : scope_(scope), commands_(commands), view_(view) {}
  void SetProgressRange(int minimum, int maximum) override;
  void SetProgressValue(double value) override;
  bool WindowMinimised() const override;
  double SampleRate() const override;
  double ChannelScale(int channel) const override;
  bool ChannelDisplayed(int channel) const override;
  void DrawSpectrum(int channel) override;
  bool MdiChecked() const override;
  int ReferenceChannel() const override;
  void RedrawStatusPanel() override;
  void ShowAverageCount(int count) override;
  void SetLastZoomMode(int mode) override;
  void RestoreOscilloscopePane() override;

 private:
  const acquisition::ScopeState& scope_;
  const SweepCommands& commands_;
  SweepView& view_;
};

// The front-panel commands of the control command set and the user's spectrum choices.
class ControlSweepCommands final : public SweepCommands {
 public:
  ControlSweepCommands(control::ControlCommands& commands, control::SpectrumChoices& choices,
                       ui::ToolHost& tools, bool& tool_update_in_progress)
      : commands_(commands),
        choices_(choices),
        tools_(tools),
        tool_update_in_progress_(tool_update_in_progress) {}
  void SetChannelDisplay(int channel, bool on) override;
  void SetTriggerSource(int channel) override;
  void SetDvmEnable(bool on) override;
  spectrum::FftSettings FftSettings() const override;
  bool MixedDomain() const override { return choices_.MixedDomain; }
  void PrepareFftTools() override;

 private:
  control::ControlCommands& commands_;
  control::SpectrumChoices& choices_;
  ui::ToolHost& tools_;
  bool& tool_update_in_progress_;
};

}  // namespace quarvelo::app

#endif  // QUARVELO_APP_SWEEP_ADAPTERS_H_
