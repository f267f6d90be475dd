// Automatic measurements and the voltmeter, computed from the channel's signal as shown.
#include <algorithm>
#include <chrono>
#include <cmath>
#include <numeric>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "sim/model/channel_data.h"
#include "sim/model/command_table.h"
#include "sim/scpi/header_pattern.h"
#include "sim/scpi/number_text.h"
#include "sim/signal/pulse_analysis.h"

namespace quarvelo::sim {
namespace {

constexpr double kNoValue = 9.9e37;
constexpr size_t kMeasurePoints = 10000;

std::string ValueText(double value) { return value >= kNoValue ? "+9.9E+37" : FormatNr3(value, 5); }

// A channel source mnemonic as the instrument replies it, or "" when it is not one.
std::string SourceMnemonic(const InstrumentState& state, const std::string& word) {
  std::vector<HeaderNode> nodes = ParseProgramMessage(":" + word).front().nodes;
  std::vector<int> instances;
  SuffixLimits limits = state.config.suffix_limits();
  struct Choice {
    const char* pattern;
    const char* reply;
  };
  for (Choice choice :
       {Choice{"CHANnel#C", "CHAN"}, Choice{"WMEMory#2", "WMEM"}, Choice{"FUNCtion", "FUNC"},
        Choice{"MATH", "MATH"}, Choice{"EXTernal", "EXT"}, Choice{"NONE", "NONE"}}) {
    if (HeaderPattern(choice.pattern).Match(nodes, limits, &instances) == MatchResult::kMatch) {
      return std::string(choice.reply) + (instances.empty() ? "" : std::to_string(instances[0]));
    }
  }
  return "";
}

struct Statistics {
  double minimum = 0, maximum = 0, mean = 0, rms = 0, ac_rms = 0;
};

Statistics Measure(const InstrumentState& state, int channel, double t0, double span) {
  std::vector<double> volts =
      ChannelVolts(state, channel, t0, span / kMeasurePoints, kMeasurePoints);
  Statistics result;
  auto [low, high] = std::minmax_element(volts.begin(), volts.end());
  result.minimum = *low;
  result.maximum = *high;
  result.mean = std::accumulate(volts.begin(), volts.end(), 0.0) / volts.size();
  double squares = 0;
  for (double value : volts) squares += value * value;
  result.rms = std::sqrt(squares / volts.size());
  result.ac_rms = std::sqrt(std::max(0.0, result.rms * result.rms - result.mean * result.mean));
  return result;
}

// The measurement's source channel: a channel among the parameters, else the default source.
int MeasuredChannel(const InstrumentState& state, const Call& call) {
  for (const ScpiParameter& parameter : call.parameters) {
    std::string source = SourceMnemonic(state, parameter.text);
    if (!source.empty()) return ChannelOf(source);
  }
  return ChannelOf(state.measure_source1);
}

template <typename Pick>
int ScreenMeasurement(InstrumentState& state, const Call& call, std::string* reply, Pick pick) {
  int channel = MeasuredChannel(state, call);
  if (channel == 0 || !state.settings.Flag(":CHANnel#C:DISPlay", channel)) {
    *reply = ValueText(kNoValue);
    return 0;
  }
  double timebase = state.settings.Number(":TIMebase:SCALe");
  double left = CurrentGeometry(state).screen_left;
  bool ac = false;
  for (const ScpiParameter& parameter : call.parameters) {
    if (MnemonicMatches("AC", parameter.text)) ac = true;
  }
  *reply = ValueText(pick(Measure(state, channel, left, 10 * timebase), ac));
  return 0;
}

double PeriodOnScreen(const InstrumentState& state, int channel) {
  double period = ChannelInput(state, channel).RepetitionPeriod();
  double screen = 10 * state.settings.Number(":TIMebase:SCALe");
  return period > 0 && period <= screen ? period : 0;
}

int Vrms(InstrumentState& s, const Call& c, std::string* r) {
  return ScreenMeasurement(s, c, r,
                           [](const Statistics& m, bool ac) { return ac ? m.ac_rms : m.rms; });
}
int Vpp(InstrumentState& s, const Call& c, std::string* r) {
  return ScreenMeasurement(s, c, r,
                           [](const Statistics& m, bool) { return m.maximum - m.minimum; });
}
int Vmax(InstrumentState& s, const Call& c, std::string* r) {
  return ScreenMeasurement(s, c, r, [](const Statistics& m, bool) { return m.maximum; });
}
int Vmin(InstrumentState& s, const Call& c, std::string* r) {
  return ScreenMeasurement(s, c, r, [](const Statistics& m, bool) { return m.minimum; });
}
int Vaverage(InstrumentState& s, const Call& c, std::string* r) {
  return ScreenMeasurement(s, c, r, [](const Statistics& m, bool) { return m.mean; });
}
// The pulse parameters of a channel's displayed waveform, and the time at the screen's
// reference point (time measurements are made nearest it); nullopt when the channel is off.
struct ScreenPulses {
  PulseAnalysis analysis;
  double reference = 0;
  double signal_period = 0;  // of the input, when a whole one fits the screen; else 0

  // From the edges on screen, else (one cycle with its edges at the screen's borders) the
  // input's.
  std::optional<double> Period() const {
    if (std::optional<double> period = analysis.Period()) return period;
    if (signal_period > 0 && !analysis.edges.empty()) return signal_period;
    return std::nullopt;
  }
};

std::optional<ScreenPulses> AnalyseChannel(const InstrumentState& state, int channel) {
  if (channel == 0 || !state.settings.Flag(":CHANnel#C:DISPlay", channel)) return std::nullopt;
  double span = 10 * state.settings.Number(":TIMebase:SCALe");
  double left = CurrentGeometry(state).screen_left;
  std::vector<double> volts =
      ChannelVolts(state, channel, left, span / kMeasurePoints, kMeasurePoints);
  return ScreenPulses{AnalysePulses(volts, left, span / kMeasurePoints),
                      state.settings.Number(":TIMebase:POSition"), PeriodOnScreen(state, channel)};
}

using PulsePick = std::optional<double> (*)(const ScreenPulses& pulses);

int PulseMeasurement(InstrumentState& state, const Call& call, std::string* reply, PulsePick pick) {
  std::optional<ScreenPulses> pulses = AnalyseChannel(state, MeasuredChannel(state, call));
  std::optional<double> value = pulses ? pick(*pulses) : std::nullopt;
  *reply = ValueText(value.value_or(kNoValue));
  return 0;
}

// Percentages of the amplitude need one worth measuring: a tenth of a code at 1 mV/div.
std::optional<double> PercentOfAmplitude(const PulseAnalysis& a, double excursion) {
  if (a.amplitude() < 4e-6) return std::nullopt;
  return 100 * std::max(0.0, excursion) / a.amplitude();
}

std::optional<double> DutyCycle(const ScreenPulses& pulses) {
  const PulseAnalysis& a = pulses.analysis;
  double reference = pulses.reference;
  std::optional<double> period = pulses.Period();
  if (!period || *period <= 0) return std::nullopt;
  if (std::optional<double> width = a.PositiveWidth(reference)) return 100 * *width / *period;
  if (std::optional<double> width = a.NegativeWidth(reference)) {
    return 100 * (1 - *width / *period);
  }
  return std::nullopt;
}

int Vamplitude(InstrumentState& s, const Call& c, std::string* r) {
  return PulseMeasurement(s, c, r, [](const ScreenPulses& p) -> std::optional<double> {
    return p.analysis.amplitude();
  });
}
int Vtop(InstrumentState& s, const Call& c, std::string* r) {
  return PulseMeasurement(
      s, c, r, [](const ScreenPulses& p) -> std::optional<double> { return p.analysis.top; });
}
int Vbase(InstrumentState& s, const Call& c, std::string* r) {
  return PulseMeasurement(
      s, c, r, [](const ScreenPulses& p) -> std::optional<double> { return p.analysis.base; });
}
int Overshoot(InstrumentState& s, const Call& c, std::string* r) {
  return PulseMeasurement(s, c, r, [](const ScreenPulses& p) {
    return PercentOfAmplitude(p.analysis, p.analysis.maximum - p.analysis.top);
  });
}
int Preshoot(InstrumentState& s, const Call& c, std::string* r) {
  return PulseMeasurement(s, c, r, [](const ScreenPulses& p) {
    return PercentOfAmplitude(p.analysis, p.analysis.base - p.analysis.minimum);
  });
}
int PositiveWidth(InstrumentState& s, const Call& c, std::string* r) {
  return PulseMeasurement(
      s, c, r, [](const ScreenPulses& p) { return p.analysis.PositiveWidth(p.reference); });
}
int NegativeWidth(InstrumentState& s, const Call& c, std::string* r) {
  return PulseMeasurement(
      s, c, r, [](const ScreenPulses& p) { return p.analysis.NegativeWidth(p.reference); });
}
int Duty(InstrumentState& s, const Call& c, std::string* r) {
  return PulseMeasurement(s, c, r, [](const ScreenPulses& p) { return DutyCycle(p); });
}
int RiseTime(InstrumentState& s, const Call& c, std::string* r) {
  return PulseMeasurement(s, c, r,
                          [](const ScreenPulses& p) { return p.analysis.RiseTime(p.reference); });
}
int FallTime(InstrumentState& s, const Call& c, std::string* r) {
  return PulseMeasurement(s, c, r,
                          [](const ScreenPulses& p) { return p.analysis.FallTime(p.reference); });
}

// The two sources of a delay or phase: those given, else the measurement sources.
std::pair<int, int> SourcePair(const InstrumentState& state, const Call& call) {
  int first = ChannelOf(state.measure_source1);
  int second = ChannelOf(state.measure_source2);
  int given = 0;
  for (const ScpiParameter& parameter : call.parameters) {
    std::string source = SourceMnemonic(state, parameter.text);
    if (source.empty()) continue;
    (given++ == 0 ? first : second) = ChannelOf(source);
  }
  return {first, second};
}

// From the first source's rising edge nearest the reference to the second source's rising
// edge nearest that one; the phase is that delay in degrees of the first source's period.
std::optional<double> DelayBetween(const InstrumentState& state, const Call& call,
                                   std::optional<double>* period) {
  auto [first, second] = SourcePair(state, call);
  std::optional<ScreenPulses> a = AnalyseChannel(state, first);
  std::optional<ScreenPulses> b = AnalyseChannel(state, second);
  if (!a || !b) return std::nullopt;
  std::optional<double> from = a->analysis.EdgeNear(a->reference, true);
  if (!from) return std::nullopt;
  std::optional<double> to = b->analysis.EdgeNear(*from, true);
  if (!to) return std::nullopt;
  *period = a->Period();
  return *to - *from;
}

int Delay(InstrumentState& state, const Call& call, std::string* reply) {
  std::optional<double> period;
  *reply = ValueText(DelayBetween(state, call, &period).value_or(kNoValue));
  return 0;
}

int Phase(InstrumentState& state, const Call& call, std::string* reply) {
  std::optional<double> period;
  std::optional<double> delay = DelayBetween(state, call, &period);
  bool known = delay && period && *period > 0;
  *reply = ValueText(known ? *delay / *period * 360 : kNoValue);
  return 0;
}

int Frequency(InstrumentState& state, const Call& call, std::string* reply) {
  double period = PeriodOnScreen(state, MeasuredChannel(state, call));
  *reply = ValueText(period > 0 ? 1.0 / period : kNoValue);
  return 0;
}
int Period(InstrumentState& state, const Call& call, std::string* reply) {
  double period = PeriodOnScreen(state, MeasuredChannel(state, call));
  *reply = ValueText(period > 0 ? period : kNoValue);
  return 0;
}
// The command forms install a measurement on the screen; the simulator only checks them.
int Install(InstrumentState& state, const Call& call, std::string*) {
  for (const ScpiParameter& parameter : call.parameters) {
    const std::string& word = parameter.text;
    bool known = !SourceMnemonic(state, word).empty() || MnemonicMatches("DISPlay", word) ||
                 MnemonicMatches("CYCLe", word) || MnemonicMatches("AC", word) ||
                 MnemonicMatches("DC", word);
    if (!known) return -224;
  }
  return 0;
}
int Clear(InstrumentState&, const Call&, std::string*) { return 0; }

int SourceSet(InstrumentState& state, const Call& call, std::string*) {
  if (call.parameters.empty()) return -109;
  if (call.parameters.size() > 2) return -108;
  std::string first = SourceMnemonic(state, call.parameters[0].text);
  if (first.empty() || first == "NONE") return -224;
  std::string second = state.measure_source2;
  if (call.parameters.size() == 2) {
    second = SourceMnemonic(state, call.parameters[1].text);
    if (second.empty()) return -224;
  }
  state.measure_source1 = first;
  state.measure_source2 = second;
  return 0;
}
int SourceQuery(InstrumentState& state, const Call&, std::string* reply) {
  *reply = state.measure_source1 + "," + state.measure_source2;
  return 0;
}

// The voltmeter reads over many periods (or ten screens of a signal that does not repeat).
int DvmCurrent(InstrumentState& state, const Call&, std::string* reply) {
  auto settle = std::chrono::duration<double, std::milli>(state.config.dvm_settle_ms);
  bool settled = std::chrono::steady_clock::now() - state.dvm_enabled_at >= settle;
  if (!state.settings.Flag(":DVM:ENABle") || !settled) {
    *reply = ValueText(kNoValue);
    return 0;
  }
  int channel = ChannelOf(state.settings.Text(":DVM:SOURce"));
  const std::string& mode = state.settings.Text(":DVM:MODE");
  double period = ChannelInput(state, channel).RepetitionPeriod();
  if (mode == "FREQ") {
    *reply = ValueText(period > 0 ? 1.0 / period : kNoValue);
    return 0;
  }
  double span = period > 0 ? 20 * period : 100 * state.settings.Number(":TIMebase:SCALe");
  Statistics m = Measure(state, channel, 0, span);
  *reply = ValueText(mode == "ACRM" ? m.ac_rms : mode == "DCRM" ? m.rms : m.mean);
  return 0;
}
int DvmFrequency(InstrumentState& state, const Call&, std::string* reply) {
  int channel = ChannelOf(state.settings.Text(":DVM:SOURce"));
  double period = ChannelInput(state, channel).RepetitionPeriod();
  bool enabled = state.settings.Flag(":DVM:ENABle");
  *reply = ValueText(enabled && period > 0 ? 1.0 / period : kNoValue);
  return 0;
}

}  // namespace

void AddMeasureCommands(std::vector<CommandEntry>& table) {
  table.push_back({HeaderPattern(":MEASure:SOURce"), SourceSet, SourceQuery});
  table.push_back({HeaderPattern(":MEASure:VRMS"), Install, Vrms});
  table.push_back({HeaderPattern(":MEASure:VPP"), Install, Vpp});
  table.push_back({HeaderPattern(":MEASure:VMAX"), Install, Vmax});
  table.push_back({HeaderPattern(":MEASure:VMIN"), Install, Vmin});
  table.push_back({HeaderPattern(":MEASure:VAVerage"), Install, Vaverage});
  table.push_back({HeaderPattern(":MEASure:FREQuency"), Install, Frequency});
  table.push_back({HeaderPattern(":MEASure:PERiod"), Install, Period});
  table.push_back({HeaderPattern(":MEASure:VAMPlitude"), Install, Vamplitude});
  table.push_back({HeaderPattern(":MEASure:VTOP"), Install, Vtop});
  table.push_back({HeaderPattern(":MEASure:VBASe"), Install, Vbase});
  table.push_back({HeaderPattern(":MEASure:OVERshoot"), Install, Overshoot});
  table.push_back({HeaderPattern(":MEASure:PREShoot"), Install, Preshoot});
  table.push_back({HeaderPattern(":MEASure:PWIDth"), Install, PositiveWidth});
  table.push_back({HeaderPattern(":MEASure:NWIDth"), Install, NegativeWidth});
  table.push_back({HeaderPattern(":MEASure:DUTYcycle"), Install, Duty});
  table.push_back({HeaderPattern(":MEASure:RISetime"), Install, RiseTime});
  table.push_back({HeaderPattern(":MEASure:FALLtime"), Install, FallTime});
  table.push_back({HeaderPattern(":MEASure:DELay"), Install, Delay});
  table.push_back({HeaderPattern(":MEASure:PHASe"), Install, Phase});
  // A snapshot of every measurement on the screen; the command form only.
  table.push_back({HeaderPattern(":MEASure:ALL"), Install, nullptr});
  table.push_back({HeaderPattern(":MEASure:CLEar"), Clear, nullptr});
  table.push_back({HeaderPattern(":DVM:CURRent"), nullptr, DvmCurrent, Option::kDvm});
  table.push_back({HeaderPattern(":DVM:FREQuency"), nullptr, DvmFrequency, Option::kDvm});
}

}  // namespace quarvelo::sim
