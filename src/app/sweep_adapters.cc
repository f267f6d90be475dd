#include "app/sweep_adapters.h"

#include <string_view>
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
bool WindowSpectrumHost::MdiChecked() const { return tools_.ToolState("ID_MDI"); }
int WindowSpectrumHost::ReferenceChannel() const { return view_.DisplayedChannel(); }
void WindowSpectrumHost::RedrawStatusPanel() { view_.DrawStatusPanel(); }
void WindowSpectrumHost::ShowAverageCount(int count) { view_.ShowAverageCount(count); }
void WindowSpectrumHost::SetLastZoomMode(int mode) { view_.SetLastZoomMode(mode); }
void WindowSpectrumHost::RestoreOscilloscopePane() { view_.RestoreOscilloscopePane(); }

spectrum::FftSettings FftSettingsFrom(const AppSettings& settings, bool upper_limit_on,
                                      std::string upper_limit_text) {
  spectrum::FftSettings fft;
  fft.WindowIndex = static_cast<std::int16_t>(settings.WindowIndex);
  fft.AverageCount = settings.AverageCount;
  fft.SpectrumUnit = static_cast<std::int16_t>(settings.SpectrumUnit);
  fft.AutoAlgorithm = settings.AutoAlgorithm ? 1 : 0;
  fft.Algorithm = static_cast<std::int16_t>(settings.Algorithm);
  fft.UpperLimitOn = upper_limit_on;
  fft.UpperLimitText = std::move(upper_limit_text);
  return fft;
}

void LinkSweepCommands::SetChannelDisplay(int channel, bool on) {
  if (channel < 1 || channel > scope_.ChannelCount || link_.session().TimedOut) return;
  scope_.Channels[static_cast<std::size_t>(channel)].Displayed = on;
  {
    link::ToolUpdateGuard guard(scope_.ToolUpdateInProgress);
    tools_.SetToolState("ID_CH" + std::to_string(channel), on);
  }
  link_.SendCommand(":CHANnel" + std::to_string(channel) + ":DISPlay " + (on ? "1" : "0"));
}

void LinkSweepCommands::SetTriggerSource(int channel) {
  if (channel < 1 || channel > scope_.ChannelCount) return;
  scope_.TriggerSource = "CHAN" + std::to_string(channel);
  scope_.TriggerChannel = static_cast<std::int16_t>(channel);
  link_.SendCommand(":TRIGger:EDGE:SOURce " + scope_.TriggerSource);
}

void LinkSweepCommands::SetDvmEnable(bool on) {
  if (!scope_.HasDvm) return;
  link_.SendCommand(on ? ":DVM:ENABle 1" : ":DVM:ENABle 0");
}

spectrum::FftSettings LinkSweepCommands::FftSettings() const {
  auto [on, text] = ribbon_();
  return FftSettingsFrom(settings_, on, std::move(text));
}

}  // namespace quarvelo::app
