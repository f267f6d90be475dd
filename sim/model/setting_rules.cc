#include "sim/model/setting_rules.h"

#include <algorithm>
#include <cmath>
#include <string>

#include "sim/model/channel_data.h"

namespace quarvelo::sim {
namespace {

std::pair<double, double> GeneratorFrequencyLimits(const InstrumentState& state, int generator) {
  const std::string& function = state.settings.Text(":WGEN#W:FUNCtion", generator);
  if (function == "SQU" || function == "PULS") return {0.1, 10e6};
  if (function == "RAMP") return {0.1, 100e3};
  if (function == "SIN") return {0.1, 20e6};
  return {0.1, 1e6};
}

double GeneratorMaxAmplitude(const InstrumentState& state, int generator) {
  return state.settings.Text(":WGEN#W:OUTPut:LOAD", generator) == "FIFT" ? 2.5 : 5.0;
}

}  // namespace

double NextStep125(double value) {
  if (value <= 0) return 1e-3;
  double decade = std::pow(10.0, std::floor(std::log10(value)));
  for (double step : {1.0, 2.0, 5.0, 10.0}) {
    if (step * decade >= value * (1 - 1e-9)) return step * decade;
  }
  return 10 * decade;
}

LimitFunction LimitsFor(const InstrumentState& state) {
  return [&state](LimitRule rule, int instance) -> std::pair<double, double> {
    const SettingStore& settings = state.settings;
    switch (rule) {
      case LimitRule::kFixed:
        return {-1e300, 1e300};
      case LimitRule::kChannelScale: {
        double probe = settings.Number(":CHANnel#C:PROBe", instance);
        return {1e-3 * probe, 5.0 * probe};
      }
      case LimitRule::kChannelOffset: {
        double probe = settings.Number(":CHANnel#C:PROBe", instance);
        double scale = settings.Number(":CHANnel#C:SCALe", instance) / probe;
        double range = (scale <= 0.2 ? 2.0 : 50.0) * probe;
        return {-range, range};
      }
      case LimitRule::kTimebaseScale:
        return {state.config.min_timebase_scale(), 50.0};
      case LimitRule::kTriggerLevel: {
        const std::string& source = settings.Text(":TRIGger[:EDGE]:SOURce");
        if (source.rfind("CHAN", 0) == 0) {
          int channel = source.back() - '0';
          double scale = settings.Number(":CHANnel#C:SCALe", channel);
          double offset = settings.Number(":CHANnel#C:OFFSet", channel);
          return {offset - 6 * scale, offset + 6 * scale};
        }
        return {-8.0, 8.0};
      }
      case LimitRule::kWgenFrequency:
        return GeneratorFrequencyLimits(state, instance);
      case LimitRule::kWgenAmplitude:
        return {GeneratorMaxAmplitude(state, instance) / 250.0,
                GeneratorMaxAmplitude(state, instance)};
      case LimitRule::kWgenOffset: {
        double half_range = GeneratorMaxAmplitude(state, instance) / 2.0;
        double room = half_range - settings.Number(":WGEN#W:VOLTage", instance) / 2.0;
        return {-std::max(room, 0.0), std::max(room, 0.0)};
      }
      case LimitRule::kWgenPulseWidth: {
        double period = 1.0 / settings.Number(":WGEN#W:FREQuency", instance);
        return {20e-9, std::max(20e-9, period - 20e-9)};
      }
    }
    return {-1e300, 1e300};
  };
}

void ApplyKnockOnEffects(InstrumentState& state, const SettingRow& row, int instance,
                         double old_number, const std::string& old_text) {
  SettingStore& settings = state.settings;
  const std::string pattern = row.pattern;
  LimitFunction limits = LimitsFor(state);
  if (pattern == ":CHANnel#C:PROBe" && old_number > 0) {
    // A new probe factor keeps the picture: scale and offset follow the ratio.
    double ratio = settings.Number(pattern, instance) / old_number;
    settings.SetNumber(":CHANnel#C:SCALe", settings.Number(":CHANnel#C:SCALe", instance) * ratio,
                       instance);
    settings.SetNumber(":CHANnel#C:OFFSet", settings.Number(":CHANnel#C:OFFSet", instance) * ratio,
                       instance);
  } else if (pattern == ":CHANnel#C:SCALe") {
    settings.Clamp(":CHANnel#C:OFFSet", instance, limits);
  } else if (pattern == ":WGEN#W:FUNCtion" && old_text != settings.Text(pattern, instance)) {
    settings.Clamp(":WGEN#W:FREQuency", instance, limits);
    settings.Clamp(":WGEN#W:FUNCtion:PULSe:WIDTh", instance, limits);
  } else if (pattern == ":WGEN#W:FREQuency") {
    settings.Clamp(":WGEN#W:FUNCtion:PULSe:WIDTh", instance, limits);
  } else if (pattern == ":CHANnel#C:DISPlay" && !settings.Flag(pattern, instance)) {
    // A stopped instrument discards the trace of a channel turned off.
    state.stopped_with_data[instance] = false;
  } else if (pattern == ":WAVeform:SOURce") {
    // The instrument turns the channel it is to transfer on.
    if (int channel = ChannelOf(settings.Text(pattern)); channel > 0) {
      settings.SetNumber(":CHANnel#C:DISPlay", 1, channel);
    }
  } else if (pattern == ":DVM:ENABle" && old_number == 0 && settings.Flag(pattern)) {
    state.dvm_enabled_at = std::chrono::steady_clock::now();
  } else if (pattern == ":WGEN#W:VOLTage" || pattern == ":WGEN#W:OUTPut:LOAD") {
    settings.Clamp(":WGEN#W:VOLTage", instance, limits);
    settings.Clamp(":WGEN#W:VOLTage:OFFSet", instance, limits);
  }
}

void Preset(InstrumentState& state) {
  state.settings.Reset();
  state.settings.SetNumber(":CHANnel#C:DISPlay", 1, 1);
  state.run_state = RunState::kRunning;
  state.requested_points = 1000;
  state.persistence = "MIN";
  state.measure_source1 = "CHAN1";
  state.measure_source2 = "CHAN2";
  state.status.armed_event = true;
}

}  // namespace quarvelo::sim
