#include "app/sweep_adapters.h"

#include <utility>

#include "display/format.h"
#include "display/time_base_control.h"
#include "link/tool_update_guard.h"

namespace quarvelo::app {

void WindowReadbackHooks::ShowTimeBase(double seconds_per_division) {
  display::SetComboTimeBase(seconds_per_division, remote_on_, tools_);
}

void WindowReadbackHooks::ShowSampleRate(double kilosamples_per_second) {
  ShowSampleRateText(tools_, kilosamples_per_second);
}

void ShowSampleRateText(ui::ToolHost& tools, double kilosamples_per_second) {
  tools.SetToolCaption("ID_SR", display::FormatSampleRate(kilosamples_per_second));
}

std::int32_t RecordSampleStore::SampleCount(int channel) const {
  if (channel < 0 || channel >= acquisition::kWaveformSlots) return 0;
  return records_.Records[static_cast<std::size_t>(channel)].ByteCount;
}

std::span<const double> RecordSampleStore::Volts(int channel) const {
  return std::as_const(records_.Samples).Volts(channel);
}

std::span<double> RecordSampleStore::GrowVolts(int channel, std::int32_t size) {
  records_.Samples.Grow(size);
  return records_.Samples.Volts(channel);
}

void WindowSpectrumHost::SetProgressRange(int minimum, int maximum) {
  view_.SetProgressRange(minimum, maximum);
}
void WindowSpectrumHost::SetProgressValue(double value) { view_.SetProgressValue(value); }
bool WindowSpectrumHost::WindowMinimised() const { return view_.WindowMinimised(); }
double WindowSpectrumHost::SampleRate() const { return scope_.SampleRate; }

double WindowSpectrumHost::ChannelScale(int channel) const {
  if (channel < 1 || channel > acquisition::kMaxChannels) return 0;
  return scope_.Channels[static_cast<std::size_t>(channel)].Scale;
}

bool WindowSpectrumHost::ChannelDisplayed(int channel) const {
  if (channel < 1 || channel > acquisition::kMaxChannels) return false;
  return scope_.Channels[static_cast<std::size_t>(channel)].Displayed;
}

void WindowSpectrumHost::DrawSpectrum(int channel) { view_.DrawSpectrum(channel); }
bool WindowSpectrumHost::MdiChecked() const { return commands_.MixedDomain(); }
int WindowSpectrumHost::ReferenceChannel() const { return view_.DisplayedChannel(); }
void WindowSpectrumHost::RedrawStatusPanel() { view_.DrawStatusPanel(); }
void WindowSpectrumHost::ShowAverageCount(int count) { view_.ShowAverageCount(count); }
void WindowSpectrumHost::SetLastZoomMode(int mode) { view_.SetLastZoomMode(mode); }
void WindowSpectrumHost::RestoreOscilloscopePane() { view_.RestoreOscilloscopePane(); }

void ControlSweepCommands::SetChannelDisplay(int channel, bool on) {
  commands_.SetChannelDisplay(channel, on, /*refresh=*/false);
}

void ControlSweepCommands::SetTriggerSource(int channel) {
  commands_.SetTriggerSource(channel, /*refresh=*/false);
}

void ControlSweepCommands::SetDvmEnable(bool on) { commands_.SetDvmEnable(on, /*refresh=*/false); }

spectrum::FftSettings ControlSweepCommands::FftSettings() const {
  return control::FftSettingsOf(choices_);
}

void ControlSweepCommands::PrepareFftTools() {
  choices_.MixedDomain = false;
  link::ToolUpdateGuard guard(tool_update_in_progress_);
  tools_.SetComboIndex("ID_Bins", choices_.BinsIndex);
  tools_.SetToolState("ID_MDI", false);
}

}  // namespace quarvelo::app
