#include "sim/model/run_control.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <vector>

#include "sim/model/channel_data.h"
#include "sim/model/setting_rules.h"

namespace quarvelo::sim {
namespace {

constexpr int kRunBit = 1 << 3;
constexpr int kWaitTriggerBit = 1 << 5;

std::chrono::duration<double> AcquisitionTime(const InstrumentState& state) {
  double screen = 10.0 * state.settings.Number(":TIMebase:SCALe");
  return std::chrono::duration<double>(std::min(screen + 1e-3, 0.5));
}

// Minimum and maximum of a channel's input over a few repetitions (or one screen).
std::pair<double, double> Extremes(const InstrumentState& state, int channel, double* period) {
  Signal input = ChannelInput(state, channel);
  *period = input.RepetitionPeriod();
  double span = *period > 0 ? 2 * *period : 10 * state.settings.Number(":TIMebase:SCALe");
  std::vector<double> values(4096);
  input.Sample(0, span / values.size(), values.size(), state.acquisition_number, values.data());
  auto [low, high] = std::minmax_element(values.begin(), values.end());
  return {*low, *high};
}

// The acquisition that stops the instrument holds the channels that are on.
void KeepAcquiredChannels(InstrumentState& state) {
  for (int channel = 1; channel <= 4; ++channel) {
    state.stopped_with_data[channel] =
        channel <= state.config.channels && state.settings.Flag(":CHANnel#C:DISPlay", channel);
  }
}

}  // namespace

bool ChannelHasData(const InstrumentState& state, int channel) {
  if (channel < 1 || channel > state.config.channels) return false;
  if (!state.settings.Flag(":CHANnel#C:DISPlay", channel)) return false;
  return state.run_state != RunState::kStopped || state.stopped_with_data[channel];
}

void StartRunning(InstrumentState& state) {
  state.run_state = RunState::kRunning;
  state.status.armed_event = true;
}

void StopRunning(InstrumentState& state) {
  if (state.run_state != RunState::kStopped) KeepAcquiredChannels(state);
  state.run_state = RunState::kStopped;
}

void StartSingle(InstrumentState& state) {
  state.run_state = RunState::kSingle;
  state.single_started = std::chrono::steady_clock::now();
  state.single_forced = false;
  state.status.armed_event = true;
}

void Digitize(InstrumentState& state) {
  ++state.acquisition_number;
  KeepAcquiredChannels(state);
  state.run_state = RunState::kStopped;
  state.status.trigger_event = true;
}

void ForceTrigger(InstrumentState& state) {
  if (state.run_state == RunState::kSingle) state.single_forced = true;
  state.status.trigger_event = true;
  UpdateRunState(state);
}

void UpdateRunState(InstrumentState& state) {
  if (state.run_state != RunState::kSingle) return;
  bool triggers =
      state.single_forced || TriggerFinds(state) || state.settings.Text(":TRIGger:SWEep") == "AUTO";
  if (!triggers) return;
  if (!state.single_forced &&
      std::chrono::steady_clock::now() - state.single_started < AcquisitionTime(state)) {
    return;
  }
  ++state.acquisition_number;
  KeepAcquiredChannels(state);
  state.run_state = RunState::kStopped;
  state.status.trigger_event = true;
}

void NextAcquisitionIfRunning(InstrumentState& state) {
  if (state.run_state == RunState::kRunning) ++state.acquisition_number;
}

int OperationCondition(const InstrumentState& state) {
  switch (state.run_state) {
    case RunState::kRunning:
      return kRunBit;
    case RunState::kSingle:
      return kRunBit | kWaitTriggerBit;
    case RunState::kStopped:
      return 0;
  }
  return 0;
}

void Autoscale(InstrumentState& state) {
  SettingStore& settings = state.settings;
  int first_channel = 0;
  double slowest_period = 0;
  for (int channel = 1; channel <= state.config.channels; ++channel) {
    double period = 0;
    auto [low, high] = Extremes(state, channel, &period);
    double probe = settings.Number(":CHANnel#C:PROBe", channel);
    bool has_signal = high - low > 10e-3 * probe || std::abs(high + low) / 2 > 10e-3 * probe;
    settings.SetNumber(":CHANnel#C:DISPlay", has_signal ? 1 : 0, channel);
    if (!has_signal) continue;
    // About six of the eight divisions for the signal, centred.
    double scale = std::clamp(NextStep125(std::max(high - low, 8e-3 * probe) / 6.0), 1e-3 * probe,
                              5.0 * probe);
    settings.SetNumber(":CHANnel#C:SCALe", scale, channel);
    settings.SetNumber(":CHANnel#C:OFFSet", (high + low) / 2, channel);
    settings.Clamp(":CHANnel#C:OFFSet", channel, LimitsFor(state));
    if (first_channel == 0) {
      first_channel = channel;
      settings.SetNumber(":TRIGger[:EDGE]:LEVel", (high + low) / 2);
    }
    if (period > 0 && (slowest_period == 0 || period > slowest_period)) slowest_period = period;
  }
  if (first_channel == 0) {
    settings.SetNumber(":CHANnel#C:DISPlay", 1, 1);
  } else {
    settings.SetText(":TRIGger[:EDGE]:SOURce", "CHAN" + std::to_string(first_channel));
    settings.SetText(":TRIGger[:EDGE]:SLOPe", "POS");
  }
  if (slowest_period > 0) {
    // Two periods of the slowest signal across the ten divisions.
    double scale = NextStep125(slowest_period * 2 / 10);
    settings.SetNumber(":TIMebase:SCALe",
                       std::clamp(scale, state.config.min_timebase_scale(), 50.0));
  }
  settings.SetNumber(":TIMebase:POSition", 0);
  settings.SetText(":TIMebase:MODE", "MAIN");
  settings.SetText(":TRIGger:SWEep", "AUTO");
  StartRunning(state);
}

void TriggerLevelAutoSetup(InstrumentState& state) {
  int channel = ChannelOf(state.settings.Text(":TRIGger[:EDGE]:SOURce"));
  if (channel == 0) return;
  double period = 0;
  auto [low, high] = Extremes(state, channel, &period);
  state.settings.SetNumber(":TRIGger[:EDGE]:LEVel", (high + low) / 2);
}

}  // namespace quarvelo::sim
