// The waveform generator's settings that are views of others: the period is the frequency's
// inverse, high and low levels are amplitude and offset seen differently.
#include <algorithm>
#include <string>

#include "sim/model/command_table.h"
#include "sim/model/setting_rules.h"
#include "sim/scpi/number_text.h"

namespace quarvelo::sim {
namespace {

int OneNumber(const Call& call, double* value, double maximum, double minimum) {
  if (call.parameters.empty()) return -109;
  if (call.parameters.size() > 1) return -108;
  NumberParse number = ParseNumber(call.parameters.front().text);
  if (number.error != 0) return number.error;
  *value = number.kind == NumberParse::Kind::kMaximum   ? maximum
           : number.kind == NumberParse::Kind::kMinimum ? minimum
                                                        : number.value;
  return 0;
}

void SetAndClamp(InstrumentState& state, const char* pattern, double value, int generator) {
  state.settings.SetNumber(pattern, value, generator);
  state.settings.Clamp(pattern, generator, LimitsFor(state));
}

int PeriodSet(InstrumentState& state, const Call& call, std::string*) {
  int generator = call.instance();
  auto [low, high] = LimitsFor(state)(LimitRule::kWgenFrequency, generator);
  double period = 0;
  if (int error = OneNumber(call, &period, 1.0 / low, 1.0 / high); error != 0) return error;
  if (period <= 0) return -222;
  SetAndClamp(state, ":WGEN#W:FREQuency", 1.0 / period, generator);
  state.settings.Clamp(":WGEN#W:FUNCtion:PULSe:WIDTh", generator, LimitsFor(state));
  return 0;
}
int PeriodQuery(InstrumentState& state, const Call& call, std::string* reply) {
  *reply = FormatNr3Short(1.0 / state.settings.Number(":WGEN#W:FREQuency", call.instance()));
  return 0;
}

double Amplitude(const InstrumentState& state, int generator) {
  return state.settings.Number(":WGEN#W:VOLTage", generator);
}
double Offset(const InstrumentState& state, int generator) {
  return state.settings.Number(":WGEN#W:VOLTage:OFFSet", generator);
}

// Sets the levels to `high` and `low`, as far as amplitude and offset limits allow.
void SetLevels(InstrumentState& state, int generator, double high, double low) {
  auto [min_amplitude, max_amplitude] = LimitsFor(state)(LimitRule::kWgenAmplitude, generator);
  double amplitude = std::clamp(high - low, min_amplitude, max_amplitude);
  SetAndClamp(state, ":WGEN#W:VOLTage", amplitude, generator);
  SetAndClamp(state, ":WGEN#W:VOLTage:OFFSet", (high + low) / 2, generator);
}

int HighSet(InstrumentState& state, const Call& call, std::string*) {
  int generator = call.instance();
  double high = 0;
  if (int error = OneNumber(call, &high, 2.5, -2.5); error != 0) return error;
  SetLevels(state, generator, high, Offset(state, generator) - Amplitude(state, generator) / 2);
  return 0;
}
int LowSet(InstrumentState& state, const Call& call, std::string*) {
  int generator = call.instance();
  double low = 0;
  if (int error = OneNumber(call, &low, 2.5, -2.5); error != 0) return error;
  SetLevels(state, generator, Offset(state, generator) + Amplitude(state, generator) / 2, low);
  return 0;
}
int HighQuery(InstrumentState& state, const Call& call, std::string* reply) {
  int generator = call.instance();
  *reply = FormatNr3Short(Offset(state, generator) + Amplitude(state, generator) / 2);
  return 0;
}
int LowQuery(InstrumentState& state, const Call& call, std::string* reply) {
  int generator = call.instance();
  *reply = FormatNr3Short(Offset(state, generator) - Amplitude(state, generator) / 2);
  return 0;
}
int GeneratorReset(InstrumentState& state, const Call& call, std::string*) {
  state.settings.ResetRows(":WGEN#W", call.instance());
  return call.parameters.empty() ? 0 : -108;
}

}  // namespace

void AddGeneratorCommands(std::vector<CommandEntry>& table) {
  table.push_back({HeaderPattern(":WGEN#W:PERiod"), PeriodSet, PeriodQuery, Option::kWgen});
  table.push_back({HeaderPattern(":WGEN#W:VOLTage:HIGH"), HighSet, HighQuery, Option::kWgen});
  table.push_back({HeaderPattern(":WGEN#W:VOLTage:LOW"), LowSet, LowQuery, Option::kWgen});
  table.push_back({HeaderPattern(":WGEN#W:RST"), GeneratorReset, nullptr, Option::kWgen});
}

}  // namespace quarvelo::sim
