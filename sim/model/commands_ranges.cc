// Full-scale ranges: another view of the channel scale (eight divisions) and of the time base
// (ten divisions).
#include <string>

#include "sim/model/command_table.h"
#include "sim/model/setting_rules.h"
#include "sim/scpi/number_text.h"

namespace quarvelo::sim {
namespace {

int SetThroughScale(InstrumentState& state, const Call& call, const char* pattern, double divisions,
                    int instance) {
  if (call.parameters.empty()) return -109;
  if (call.parameters.size() > 1) return -108;
  NumberParse number = ParseNumber(call.parameters.front().text);
  if (number.error != 0) return number.error;
  if (number.kind != NumberParse::Kind::kValue) return -224;
  state.settings.SetNumber(pattern, number.value / divisions, instance);
  state.settings.Clamp(pattern, instance, LimitsFor(state));
  return 0;
}

int ChannelRangeSet(InstrumentState& state, const Call& call, std::string*) {
  int error = SetThroughScale(state, call, ":CHANnel#C:SCALe", 8, call.instance());
  if (error == 0) state.settings.Clamp(":CHANnel#C:OFFSet", call.instance(), LimitsFor(state));
  return error;
}
int ChannelRangeQuery(InstrumentState& state, const Call& call, std::string* reply) {
  *reply = FormatNr3(8 * state.settings.Number(":CHANnel#C:SCALe", call.instance()), 5);
  return 0;
}
int TimebaseRangeSet(InstrumentState& state, const Call& call, std::string*) {
  return SetThroughScale(state, call, ":TIMebase:SCALe", 10, 1);
}
int TimebaseRangeQuery(InstrumentState& state, const Call&, std::string* reply) {
  *reply = FormatNr3(10 * state.settings.Number(":TIMebase:SCALe"), 8);
  return 0;
}

}  // namespace

void AddRangeCommands(std::vector<CommandEntry>& table) {
  table.push_back({HeaderPattern(":CHANnel#C:RANGe"), ChannelRangeSet, ChannelRangeQuery});
  table.push_back({HeaderPattern(":TIMebase:RANGe"), TimebaseRangeSet, TimebaseRangeQuery});
}

}  // namespace quarvelo::sim
