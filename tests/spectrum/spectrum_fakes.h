// A main window and sample storage in memory for the spectrum computation's tests.
#ifndef QUARVELO_TESTS_SPECTRUM_SPECTRUM_FAKES_H_
#define QUARVELO_TESTS_SPECTRUM_SPECTRUM_FAKES_H_

#include <array>
#include <cmath>
#include <functional>
#include <numbers>
#include <utility>
#include <vector>

#include "spectrum/spectrum_host.h"

namespace quarvelo::spectrum {

class MemorySampleStore : public SampleStore {
 public:
  void SetRecord(int channel, std::vector<double> samples) {
    counts_[channel] = static_cast<std::int32_t>(samples.size());
    volts_[channel] = std::move(samples);
  }
  std::int32_t SampleCount(int channel) const override { return counts_[channel]; }
  std::span<const double> Volts(int channel) const override { return volts_[channel]; }
  std::span<double> GrowVolts(int channel, std::int32_t size) override {
    if (std::ssize(volts_[channel]) < size) volts_[channel].resize(size, -99.0);  // stale
    return volts_[channel];
  }
  std::vector<double>& storage(int channel) { return volts_[channel]; }

 private:
  std::array<std::int32_t, 5> counts_{};
  std::array<std::vector<double>, 5> volts_;
};

class FakeSpectrumHost : public SpectrumHost {
 public:
  void SetProgressRange(int minimum, int maximum) override { progress_range = {minimum, maximum}; }
  void SetProgressValue(double value) override { progress_values.push_back(value); }
  bool WindowMinimised() const override { return minimised; }
  double SampleRate() const override { return sample_rate; }
  double ChannelScale(int) const override { return 0.5; }
  bool ChannelDisplayed(int channel) const override { return displayed[channel]; }
  void DrawSpectrum(int channel) override {
    drawn_channels.push_back(channel);
    if (on_draw) on_draw();
  }
  bool MdiChecked() const override { return mdi_checked; }
  int ReferenceChannel() const override { return 1; }
  void RedrawStatusPanel() override { ++status_panel_redraws; }
  void ShowAverageCount(int count) override { average_counts.push_back(count); }
  void SetLastZoomMode(int mode) override { zoom_modes.push_back(mode); }
  void RestoreOscilloscopePane() override { ++pane_restores; }

  bool minimised = false;
  double sample_rate = 1000;  // kSa/s
  std::array<bool, 5> displayed{false, true, true, true, true};
  bool mdi_checked = true;
  std::function<void()> on_draw;

  std::pair<int, int> progress_range{-1, -1};
  std::vector<double> progress_values;
  std::vector<int> drawn_channels;
  int status_panel_redraws = 0;
  std::vector<int> average_counts;
  std::vector<int> zoom_modes;
  int pane_restores = 0;
};

// A sine of `amplitude` volts with `cycles` whole periods over `period` samples.
inline std::vector<double> Sine(std::size_t count, double amplitude, double cycles, double period) {
  std::vector<double> samples(count);
  for (std::size_t i = 0; i < count; ++i) {
    samples[i] = amplitude * std::sin(2 * std::numbers::pi * cycles * i / period + 0.3);
  }
  return samples;
}

}  // namespace quarvelo::spectrum

#endif  // QUARVELO_TESTS_SPECTRUM_SPECTRUM_FAKES_H_
