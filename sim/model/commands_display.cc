// The screen: its image transfer, persistence and clearing.
#include <cctype>
#include <string>

#include "sim/image/image_encoding.h"
#include "sim/image/screen_drawing.h"
#include "sim/model/channel_data.h"
#include "sim/model/command_table.h"
#include "sim/model/pace.h"
#include "sim/model/run_control.h"
#include "sim/scpi/definite_block.h"
#include "sim/scpi/header_pattern.h"
#include "sim/scpi/number_text.h"

namespace quarvelo::sim {
namespace {

constexpr size_t kTracePoints = 1440;  // two samples per pixel column

ScreenContent CurrentScreen(const InstrumentState& state) {
  ScreenContent content;
  const SettingStore& settings = state.settings;
  double timebase = settings.Number(":TIMebase:SCALe");
  AcquisitionGeometry geometry = CurrentGeometry(state);
  for (int channel = 1; channel <= state.config.channels; ++channel) {
    if (!settings.Flag(":CHANnel#C:DISPlay", channel)) continue;
    double scale = settings.Number(":CHANnel#C:SCALe", channel);
    double offset = settings.Number(":CHANnel#C:OFFSet", channel);
    ScreenTrace trace;
    trace.channel = channel;
    trace.divisions = ChannelVolts(state, channel, geometry.screen_left,
                                   10 * timebase / kTracePoints, kTracePoints);
    for (double& value : trace.divisions) value = (value - offset) / scale;
    trace.scale_text = EngineeringText(scale, "V/");
    content.traces.push_back(std::move(trace));
  }
  content.running = state.run_state != RunState::kStopped;
  content.ink_saver = settings.Flag(":HARDcopy:INKSaver");
  content.timebase_text = EngineeringText(timebase, "s/");
  content.trigger_text = EngineeringText(settings.Number(":TRIGger[:EDGE]:LEVel"), "V");
  int trigger_channel = ChannelOf(settings.Text(":TRIGger[:EDGE]:SOURce"));
  if (trigger_channel > 0) {
    content.trigger_channel = trigger_channel;
    content.trigger_divisions = (settings.Number(":TRIGger[:EDGE]:LEVel") -
                                 settings.Number(":CHANnel#C:OFFSet", trigger_channel)) /
                                settings.Number(":CHANnel#C:SCALe", trigger_channel);
  }
  const std::string& reference = settings.Text(":TIMebase:REFerence");
  content.reference_divisions = reference == "LEFT" ? 1 : reference == "RIGH" ? 9 : 5;
  return content;
}

int ScreenImage(InstrumentState& state, const Call& call, std::string* reply) {
  if (call.parameters.size() > 2) return -108;
  ChargeSlowCommand(state, SlowCommand::kScreenImage);
  ImageFormat format = ImageFormat::kBmp24;
  bool gray = false;
  if (!call.parameters.empty()) {
    const std::string& word = call.parameters[0].text;
    if (MnemonicMatches("BMP", word) || MnemonicMatches("BMP24bit", word)) {
      format = ImageFormat::kBmp24;
    } else if (MnemonicMatches("BMP8bit", word)) {
      format = ImageFormat::kBmp8;
    } else if (MnemonicMatches("PNG", word)) {
      format = ImageFormat::kPng;
    } else {
      return -224;
    }
  }
  if (call.parameters.size() == 2) {
    const std::string& word = call.parameters[1].text;
    if (MnemonicMatches("GRAYscale", word)) {
      gray = true;
    } else if (!MnemonicMatches("COLor", word)) {
      return -224;
    }
  }
  NextAcquisitionIfRunning(state);
  *reply = DefiniteBlock(EncodeImage(DrawScreen(CurrentScreen(state)), format, gray));
  return 0;
}

int Clear(InstrumentState&, const Call& call, std::string*) {
  return call.parameters.empty() ? 0 : -108;
}

int PersistenceSet(InstrumentState& state, const Call& call, std::string*) {
  if (call.parameters.empty()) return -109;
  if (call.parameters.size() > 1) return -108;
  const std::string& word = call.parameters.front().text;
  if (MnemonicMatches("MINimum", word)) {
    state.persistence = "MIN";
    return 0;
  }
  if (MnemonicMatches("INFinite", word)) {
    state.persistence = "INF";
    return 0;
  }
  NumberParse number = ParseNumber(word);
  if (number.error != 0) return number.error == -104 ? -224 : number.error;
  if (number.kind != NumberParse::Kind::kValue) return -224;
  if (number.value < 0.1 || number.value > 60) return -222;
  state.persistence = FormatNr3Short(number.value);
  return 0;
}

int PersistenceQuery(InstrumentState& state, const Call&, std::string* reply) {
  *reply = state.persistence;
  return 0;
}

}  // namespace

void AddDisplayCommands(std::vector<CommandEntry>& table) {
  table.push_back({HeaderPattern(":DISPlay:DATA"), nullptr, ScreenImage});
  table.push_back({HeaderPattern(":DISPlay:CLEar"), Clear, nullptr});
  table.push_back({HeaderPattern(":DISPlay:PERSistence"), PersistenceSet, PersistenceQuery});
}

}  // namespace quarvelo::sim
