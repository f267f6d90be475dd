// The ":SIMulate" subtree that only the simulator has: the signals on the inputs, a pressed
// front-panel key, and the faults the reliability tests ask for.
//
//   :SIMulate:CHANnel<n>:SIGNal SINusoid,<Hz>,<Vpp>[,<offset V>]     also SQUare/RAMP/PULSe
//                               (a fifth value: duty %, symmetry %, pulse width s)
//                               NOISe,<V rms> | DC,<V> | WGEN[<n>] | NONE
//   :SIMulate:CHANnel<n>:ADD    <same as SIGNal>   adds a component (sums of signals)
//   :SIMulate:CHANnel<n>:NOISe  <V rms>            noise added to whatever is there
//   :SIMulate:KEY                                  a front-panel key (User Request)
//   :SIMulate:DELay <ms> | :DROP <n> | :GARBage [<n>] | :CUT [<bytes>] | :SILent | :CLEar
#include <cmath>
#include <string>

#include "sim/model/command_table.h"
#include "sim/scpi/header_pattern.h"
#include "sim/scpi/number_text.h"

namespace quarvelo::sim {
namespace {

int NumberAt(const Call& call, size_t index, double fallback, double* value) {
  if (index >= call.parameters.size()) {
    *value = fallback;
    return 0;
  }
  NumberParse number = ParseNumber(call.parameters[index].text);
  if (number.error != 0) return number.error;
  if (number.kind != NumberParse::Kind::kValue) return -224;
  *value = number.value;
  return 0;
}

// Reads a signal description; a generator connection sets *generator instead.
int ParseSignal(const InstrumentState& state, const Call& call, Signal* signal, int* generator) {
  if (call.parameters.empty()) return -109;
  const std::string& word = call.parameters[0].text;
  *generator = 0;
  if (MnemonicMatches("NONE", word)) return call.parameters.size() == 1 ? 0 : -108;
  std::vector<HeaderNode> nodes = ParseProgramMessage(":" + word).front().nodes;
  std::vector<int> instances;
  if (HeaderPattern("WGEN#W").Match(nodes, state.config.suffix_limits(), &instances) ==
      MatchResult::kMatch) {
    *generator = instances.front();
    return call.parameters.size() == 1 ? 0 : -108;
  }
  Component component;
  int error = 0;
  if (MnemonicMatches("NOISe", word) || MnemonicMatches("DC", word)) {
    bool noise = MnemonicMatches("NOISe", word);
    double value = 0;
    if (call.parameters.size() != 2) return call.parameters.size() < 2 ? -109 : -108;
    if ((error = NumberAt(call, 1, 0, &value)) != 0) return error;
    component.shape = noise ? Shape::kNoise : Shape::kDc;
    component.amplitude = noise ? value : 0;
    component.offset = noise ? 0 : value;
    signal->components.push_back(component);
    return 0;
  }
  struct Named {
    const char* mnemonic;
    Shape shape;
    double parameter;
  };
  for (Named named : {Named{"SINusoid", Shape::kSine, 50}, Named{"SQUare", Shape::kSquare, 50},
                      Named{"RAMP", Shape::kRamp, 50}, Named{"PULSe", Shape::kPulse, -1}}) {
    if (!MnemonicMatches(named.mnemonic, word)) continue;
    if (call.parameters.size() < 3) return -109;
    if (call.parameters.size() > 5) return -108;
    component.shape = named.shape;
    if ((error = NumberAt(call, 1, 0, &component.frequency)) != 0) return error;
    if ((error = NumberAt(call, 2, 0, &component.amplitude)) != 0) return error;
    if ((error = NumberAt(call, 3, 0, &component.offset)) != 0) return error;
    double fallback = named.parameter >= 0 ? named.parameter : 0.1 / component.frequency;
    if ((error = NumberAt(call, 4, fallback, &component.parameter)) != 0) return error;
    if (component.frequency <= 0 || component.amplitude < 0) return -222;
    signal->components.push_back(component);
    return 0;
  }
  return -224;
}

int SignalSet(InstrumentState& state, const Call& call, std::string*) {
  Signal signal;
  int generator = 0;
  if (int error = ParseSignal(state, call, &signal, &generator); error != 0) return error;
  ChannelSource& source = state.sources[call.instance()];
  source.generator = generator;
  source.signal = signal;
  return 0;
}
int SignalAdd(InstrumentState& state, const Call& call, std::string*) {
  ChannelSource& source = state.sources[call.instance()];
  Signal signal = source.generator == 0 ? source.signal : Signal{};
  int generator = 0;
  if (int error = ParseSignal(state, call, &signal, &generator); error != 0) return error;
  if (generator != 0) return -224;
  source.generator = 0;
  source.signal = signal;
  return 0;
}
int SignalQuery(InstrumentState& state, const Call& call, std::string* reply) {
  const ChannelSource& source = state.sources[call.instance()];
  *reply = "\"" +
           (source.generator != 0 ? "WGEN" + std::to_string(source.generator)
                                  : source.signal.Describe()) +
           "\"";
  return 0;
}
int NoiseSet(InstrumentState& state, const Call& call, std::string*) {
  if (call.parameters.size() != 1) return call.parameters.empty() ? -109 : -108;
  double rms = 0;
  if (int error = NumberAt(call, 0, 0, &rms); error != 0) return error;
  if (rms < 0) return -222;
  state.sources[call.instance()].signal.noise_rms = rms;
  return 0;
}
int Key(InstrumentState& state, const Call&, std::string*) {
  state.status.event_status |= 1 << 6;
  return 0;
}
int IntegerArgument(const Call& call, double fallback, long* value) {
  if (call.parameters.size() > 1) return -108;
  double number = 0;
  if (int error = NumberAt(call, 0, fallback, &number); error != 0) return error;
  if (number < 0) return -222;
  *value = std::lround(number);
  return 0;
}
int DelaySet(InstrumentState& state, const Call& call, std::string*) {
  if (call.parameters.empty()) return -109;
  long ms = 0;
  if (int error = IntegerArgument(call, 0, &ms); error != 0) return error;
  state.faults.reply_delay_ms = static_cast<int>(std::min(ms, 600000L));
  return 0;
}
int DelayQuery(InstrumentState& state, const Call&, std::string* reply) {
  *reply = FormatNr1(state.faults.reply_delay_ms);
  return 0;
}
int DropSet(InstrumentState& state, const Call& call, std::string*) {
  long count = 0;
  if (int error = IntegerArgument(call, 0, &count); error != 0) return error;
  state.faults.drop_after = static_cast<int>(count);
  return 0;
}
int GarbageSet(InstrumentState& state, const Call& call, std::string*) {
  long count = 0;
  if (int error = IntegerArgument(call, 1, &count); error != 0) return error;
  state.faults.garbage_replies = static_cast<int>(count);
  return 0;
}
int CutSet(InstrumentState& state, const Call& call, std::string*) {
  long bytes = 0;
  if (call.parameters.empty()) {
    state.faults.cut_block_bytes = -2;  // half of the block
    return 0;
  }
  if (int error = IntegerArgument(call, 0, &bytes); error != 0) return error;
  state.faults.cut_block_bytes = bytes;
  return 0;
}
int SilentSet(InstrumentState& state, const Call& call, std::string*) {
  state.faults.silent_next_query = true;
  return call.parameters.empty() ? 0 : -108;
}
int ClearFaults(InstrumentState& state, const Call&, std::string*) {
  state.faults = Faults{};
  return 0;
}

}  // namespace

void AddSimulateCommands(std::vector<CommandEntry>& table) {
  table.push_back({HeaderPattern(":SIMulate:CHANnel#C:SIGNal"), SignalSet, SignalQuery});
  table.push_back({HeaderPattern(":SIMulate:CHANnel#C:ADD"), SignalAdd, nullptr});
  table.push_back({HeaderPattern(":SIMulate:CHANnel#C:NOISe"), NoiseSet, nullptr});
  table.push_back({HeaderPattern(":SIMulate:KEY"), Key, nullptr});
  table.push_back({HeaderPattern(":SIMulate:DELay"), DelaySet, DelayQuery});
  table.push_back({HeaderPattern(":SIMulate:DROP"), DropSet, nullptr});
  table.push_back({HeaderPattern(":SIMulate:GARBage"), GarbageSet, nullptr});
  table.push_back({HeaderPattern(":SIMulate:CUT"), CutSet, nullptr});
  table.push_back({HeaderPattern(":SIMulate:SILent"), SilentSet, nullptr});
  table.push_back({HeaderPattern(":SIMulate:CLEar"), ClearFaults, nullptr});
}

}  // namespace quarvelo::sim
