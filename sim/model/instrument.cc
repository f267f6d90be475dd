#include "sim/model/instrument.h"

#include <thread>

#include "sim/model/pace.h"
#include "sim/model/run_control.h"
#include "sim/model/setting_rules.h"
#include "sim/model/signal_presets.h"

namespace quarvelo::sim {
namespace {

bool OptionPresent(Option option, const InstrumentConfig& config) {
  switch (option) {
    case Option::kNone:
      return true;
    case Option::kWgen:
      return config.has_wgen;
    case Option::kDvm:
      return config.has_dvm;
  }
  return false;
}

// The event status bit an error number sets.
int EventBitFor(int number) {
  if (number <= -100 && number > -200) return 1 << 5;
  if (number <= -200 && number > -300) return 1 << 4;
  if (number <= -300 && number > -400) return 1 << 3;
  if (number <= -400 && number > -500) return 1 << 2;
  return 0;
}

std::string Garble(size_t length) {
  static constexpr char kJunk[] = "\x15\xfe?#9*Q~\x7f\x01%&!ZqX";
  std::string text;
  for (size_t i = 0; i < std::max<size_t>(length, 8); ++i) text.push_back(kJunk[i % 16]);
  return text;
}

}  // namespace

std::vector<CommandEntry> CommandTable() {
  std::vector<CommandEntry> table;
  AddSystemCommands(table);
  AddWaveformCommands(table);
  AddDisplayCommands(table);
  AddMeasureCommands(table);
  AddGeneratorCommands(table);
  AddSimulateCommands(table);
  AddRangeCommands(table);
  return table;
}

Instrument::Instrument(const InstrumentConfig& config) : state_(config) {
  commands_ = CommandTable();
  Preset(state_);
  ConnectSignalPreset(state_, config.signal_preset);
}

void Instrument::QueueError(int number) {
  state_.errors.Push(number);
  state_.status.event_status |= EventBitFor(number);
}

int Instrument::RunCommand(const ScpiCommand& command, std::string* reply) {
  if (command.error != 0) return command.error;
  if (command.nodes.empty()) return -102;
  SuffixLimits limits = state_.config.suffix_limits();
  std::vector<int> instances;
  bool suffix_out_of_range = false;
  for (const CommandEntry& entry : commands_) {
    MatchResult match = entry.pattern.Match(command.nodes, limits, &instances);
    if (match == MatchResult::kSuffixOutOfRange) suffix_out_of_range = true;
    if (match != MatchResult::kMatch) continue;
    CommandHandler handler = command.query ? entry.query : entry.set;
    if (handler == nullptr) continue;
    if (!OptionPresent(entry.option, state_.config)) return -241;
    return handler(state_, Call{instances, command.parameters}, reply);
  }
  SettingRef ref = state_.settings.Find(command.nodes);
  if (ref.error == -113 && suffix_out_of_range) return -114;
  if (ref.error != 0) return ref.error;
  if (command.query) {
    if (!command.parameters.empty()) return -108;
    *reply = state_.settings.Reply(ref);
    return 0;
  }
  const SettingRow& row = state_.settings.row(ref.row);
  double old_number = state_.settings.Number(row.pattern, ref.instance);
  std::string old_text = state_.settings.Text(row.pattern, ref.instance);
  int error = state_.settings.Set(ref, command.parameters, LimitsFor(state_));
  if (error == 0) ApplyKnockOnEffects(state_, row, ref.instance, old_number, old_text);
  return error;
}

std::string Instrument::Run(std::string_view message) {
  UpdateRunState(state_);
  std::string replies;
  bool any_reply = false;
  for (const ScpiCommand& command : ParseProgramMessage(message)) {
    std::string reply;
    int error = RunCommand(command, &reply);
    if (error != 0) QueueError(error);
    // A failed query answers nothing, except where the handler still produced a reply (an
    // empty block for a source without data) so that the client is not left waiting.
    if (command.query && !reply.empty()) {
      if (any_reply) replies += ";";
      replies += reply;
      any_reply = true;
    }
  }
  return replies;
}

HandlerResponse Instrument::HandleMessage(std::string_view message) {
  HandlerResponse response;
  std::chrono::microseconds busy{0};
  {
    std::lock_guard lock(mutex_);
    response = Respond(message);
    busy = TakeMessageTime(state_);
  }
  // The instrument is busy with the message before it answers or reads the next one; other
  // connections may still be served meanwhile.
  if (busy.count() > 0) std::this_thread::sleep_for(busy);
  return response;
}

HandlerResponse Instrument::Respond(std::string_view message) {
  HandlerResponse response;
  Faults& faults = state_.faults;
  if (faults.drop_after == 0) {
    faults.drop_after = -1;
    response.drop_connection = true;
    return response;
  }
  if (faults.drop_after > 0) --faults.drop_after;
  std::string reply = Run(message);
  if (reply.empty()) return response;
  response.delay = std::chrono::milliseconds(faults.reply_delay_ms);
  if (faults.silent_next_query) {
    faults.silent_next_query = false;
    return response;
  }
  if (faults.garbage_replies > 0) {
    --faults.garbage_replies;
    response.reply = Garble(reply.size()) + "\n";
    return response;
  }
  if (faults.cut_block_bytes != -1 && reply.size() > 10 && reply[0] == '#' && reply[1] == '8') {
    size_t data = reply.size() - 10;
    size_t keep = faults.cut_block_bytes == -2
                      ? data / 2
                      : std::min(data, static_cast<size_t>(faults.cut_block_bytes));
    faults.cut_block_bytes = -1;
    // The header still announces the whole block; the bytes stop short and no LF follows.
    response.reply = reply.substr(0, 10 + keep);
    return response;
  }
  response.reply = std::move(reply);
  response.reply.push_back('\n');
  return response;
}

void Instrument::ReplyInterrupted() {
  std::lock_guard lock(mutex_);
  QueueError(-410);
}

void Instrument::DeviceClear() {
  std::lock_guard lock(mutex_);
  state_.faults.silent_next_query = false;
}

std::string Instrument::Execute(std::string_view message) {
  std::lock_guard lock(mutex_);
  std::string reply = Run(message);
  state_.charged_seconds = 0;  // a set-up step takes no time
  return reply;
}

}  // namespace quarvelo::sim
