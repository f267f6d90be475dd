// Identification, status reporting and acquisition control.
#include <cmath>
#include <string>

#include "sim/model/command_table.h"
#include "sim/model/pace.h"
#include "sim/model/run_control.h"
#include "sim/model/setting_rules.h"
#include "sim/scpi/header_pattern.h"
#include "sim/scpi/number_text.h"

namespace quarvelo::sim {
namespace {

int NoParameters(const Call& call) { return call.parameters.empty() ? 0 : -108; }

int ParseRegister(const Call& call, int* value) {
  if (call.parameters.empty()) return -109;
  if (call.parameters.size() > 1) return -108;
  NumberParse number = ParseNumber(call.parameters.front().text);
  if (number.error != 0) return number.error;
  if (number.value < 0 || number.value > 255) return -222;
  *value = static_cast<int>(std::lround(number.value));
  return 0;
}

int StatusByte(const InstrumentState& state) {
  int byte = 0;
  if (state.errors.size() > 0) byte |= 1 << 2;
  if ((state.status.event_status & state.status.event_enable) != 0) byte |= 1 << 5;
  if ((byte & state.status.service_enable) != 0) byte |= 1 << 6;
  return byte;
}

int Identify(InstrumentState& state, const Call& call, std::string* reply) {
  *reply = state.config.Identity();
  return NoParameters(call);
}
// The installed options by their order names, "0" when there are none.
int Options(InstrumentState& state, const Call& call, std::string* reply) {
  const InstrumentConfig& config = state.config;
  std::string family = config.is_3000x ? "DSOX3" : "DSOX2";
  std::string text;
  auto add = [&](bool installed, const char* name) {
    if (!installed) return;
    if (!text.empty()) text += ",";
    text += family + name;
  };
  add(config.has_wgen, "WAVEGEN");
  add(config.has_dvm, "DVM");
  add(config.has_memory_upgrade, "MEMUP");
  *reply = text.empty() ? "0" : text;
  return NoParameters(call);
}
// The simulated inputs carry passive probes without an identification.
int ProbeId(InstrumentState&, const Call& call, std::string* reply) {
  *reply = "NONE";
  return NoParameters(call);
}
int Reset(InstrumentState& state, const Call& call, std::string*) {
  Preset(state);
  return NoParameters(call);
}
int ClearStatus(InstrumentState& state, const Call& call, std::string*) {
  state.errors.Clear();
  state.status.event_status = 0;
  state.status.trigger_event = false;
  return NoParameters(call);
}
int EventStatusQuery(InstrumentState& state, const Call&, std::string* reply) {
  *reply = FormatNr1(state.status.event_status);
  state.status.event_status = 0;
  return 0;
}
int EventEnableSet(InstrumentState& state, const Call& call, std::string*) {
  return ParseRegister(call, &state.status.event_enable);
}
int EventEnableQuery(InstrumentState& state, const Call&, std::string* reply) {
  *reply = FormatNr1(state.status.event_enable);
  return 0;
}
int ServiceEnableSet(InstrumentState& state, const Call& call, std::string*) {
  return ParseRegister(call, &state.status.service_enable);
}
int ServiceEnableQuery(InstrumentState& state, const Call&, std::string* reply) {
  *reply = FormatNr1(state.status.service_enable);
  return 0;
}
int StatusByteQuery(InstrumentState& state, const Call&, std::string* reply) {
  *reply = FormatNr1(StatusByte(state));
  return 0;
}
int OperationComplete(InstrumentState& state, const Call&, std::string*) {
  state.status.event_status |= 1;
  return 0;
}
int OperationCompleteQuery(InstrumentState&, const Call&, std::string* reply) {
  *reply = "1";
  return 0;
}
int SelfTest(InstrumentState&, const Call&, std::string* reply) {
  *reply = "+0";
  return 0;
}
int Nothing(InstrumentState&, const Call& call, std::string*) { return NoParameters(call); }
int NextError(InstrumentState& state, const Call&, std::string* reply) {
  *reply = state.errors.Pop();
  return 0;
}
int Version(InstrumentState&, const Call&, std::string* reply) {
  *reply = "1999.0";
  return 0;
}
int OperationConditionQuery(InstrumentState& state, const Call&, std::string* reply) {
  *reply = FormatNr1(OperationCondition(state));
  return 0;
}
int ArmEventQuery(InstrumentState& state, const Call&, std::string* reply) {
  // Reading clears it; a running instrument re-arms at once.
  *reply = state.status.armed_event ? "+1" : "+0";
  state.status.armed_event = state.run_state == RunState::kRunning;
  return 0;
}
int TriggerEventQuery(InstrumentState& state, const Call&, std::string* reply) {
  bool triggered = state.status.trigger_event || state.run_state == RunState::kRunning;
  *reply = triggered ? "+1" : "+0";
  state.status.trigger_event = false;
  return 0;
}
int RunCommand(InstrumentState& state, const Call& call, std::string*) {
  StartRunning(state);
  return NoParameters(call);
}
int StopCommand(InstrumentState& state, const Call& call, std::string*) {
  StopRunning(state);
  return NoParameters(call);
}
int SingleCommand(InstrumentState& state, const Call& call, std::string*) {
  StartSingle(state);
  return NoParameters(call);
}
int DigitizeCommand(InstrumentState& state, const Call& call, std::string*) {
  SuffixLimits limits = state.config.suffix_limits();
  for (const ScpiParameter& parameter : call.parameters) {
    std::vector<HeaderNode> nodes = ParseProgramMessage(":" + parameter.text).front().nodes;
    std::vector<int> instances;
    bool known = false;
    for (const char* source : {"CHANnel#C", "FUNCtion#F", "MATH"}) {
      if (HeaderPattern(source).Match(nodes, limits, &instances) == MatchResult::kMatch) {
        known = true;
      }
    }
    if (!known) return -224;
  }
  Digitize(state);
  ChargeSlowCommand(state, SlowCommand::kDigitize);
  return 0;
}
int ForceCommand(InstrumentState& state, const Call& call, std::string*) {
  ForceTrigger(state);
  return NoParameters(call);
}
int AutoscaleCommand(InstrumentState& state, const Call&, std::string*) {
  Autoscale(state);
  ChargeSlowCommand(state, SlowCommand::kAutoscale);
  return 0;
}
int LevelSetupCommand(InstrumentState& state, const Call& call, std::string*) {
  TriggerLevelAutoSetup(state);
  return NoParameters(call);
}

}  // namespace

void AddSystemCommands(std::vector<CommandEntry>& table) {
  table.push_back({HeaderPattern("*IDN"), nullptr, Identify});
  table.push_back({HeaderPattern("*OPT"), nullptr, Options});
  table.push_back({HeaderPattern(":CHANnel#C:PROBe:ID"), nullptr, ProbeId});
  table.push_back({HeaderPattern("*RST"), Reset, nullptr});
  table.push_back({HeaderPattern("*CLS"), ClearStatus, nullptr});
  table.push_back({HeaderPattern("*ESR"), nullptr, EventStatusQuery});
  table.push_back({HeaderPattern("*ESE"), EventEnableSet, EventEnableQuery});
  table.push_back({HeaderPattern("*SRE"), ServiceEnableSet, ServiceEnableQuery});
  table.push_back({HeaderPattern("*STB"), nullptr, StatusByteQuery});
  table.push_back({HeaderPattern("*OPC"), OperationComplete, OperationCompleteQuery});
  table.push_back({HeaderPattern("*TST"), nullptr, SelfTest});
  table.push_back({HeaderPattern("*WAI"), Nothing, nullptr});
  table.push_back({HeaderPattern("*TRG"), ForceCommand, nullptr});
  table.push_back({HeaderPattern(":SYSTem:ERRor[:NEXT]"), nullptr, NextError});
  table.push_back({HeaderPattern(":SYSTem:PRESet"), Reset, nullptr});
  table.push_back({HeaderPattern(":SYSTem:VERSion"), nullptr, Version});
  table.push_back({HeaderPattern(":OPERegister:CONDition"), nullptr, OperationConditionQuery});
  table.push_back({HeaderPattern(":OPERegister[:EVENt]"), nullptr, OperationConditionQuery});
  table.push_back({HeaderPattern(":AER"), nullptr, ArmEventQuery});
  table.push_back({HeaderPattern(":TER"), nullptr, TriggerEventQuery});
  table.push_back({HeaderPattern(":RUN"), RunCommand, nullptr});
  table.push_back({HeaderPattern(":STOP"), StopCommand, nullptr});
  table.push_back({HeaderPattern(":SINGle"), SingleCommand, nullptr});
  table.push_back({HeaderPattern(":DIGitize"), DigitizeCommand, nullptr});
  table.push_back({HeaderPattern(":TRIGger:FORCe"), ForceCommand, nullptr});
  table.push_back({HeaderPattern(":AUToscale"), AutoscaleCommand, nullptr});
  table.push_back({HeaderPattern(":TRIGger:LEVel:ASETup"), LevelSetupCommand, nullptr});
}

}  // namespace quarvelo::sim
