// The instrument's behaviour commands (those that are more than a stored setting): a header
// pattern with a handler for its command form and one for its query form.
#ifndef QUARVELO_SIM_MODEL_COMMAND_TABLE_H_
#define QUARVELO_SIM_MODEL_COMMAND_TABLE_H_

#include <string>
#include <vector>

#include "sim/model/instrument_state.h"
#include "sim/scpi/header_pattern.h"
#include "sim/scpi/program_message.h"

namespace quarvelo::sim {

struct Call {
  std::vector<int> instances;  // suffixes of the header's suffixed nodes
  const std::vector<ScpiParameter>& parameters;
  int instance() const { return instances.empty() ? 1 : instances.front(); }
};

// Returns 0 or an SCPI error number; a query handler writes its reply without LF.
using CommandHandler = int (*)(InstrumentState& state, const Call& call, std::string* reply);

struct CommandEntry {
  HeaderPattern pattern;
  CommandHandler set = nullptr;    // nullptr: the header has no command form
  CommandHandler query = nullptr;  // nullptr: the header has no query form
  Option option = Option::kNone;
};

// Each area of the instrument adds its commands.
void AddSystemCommands(std::vector<CommandEntry>& table);
void AddWaveformCommands(std::vector<CommandEntry>& table);
void AddDisplayCommands(std::vector<CommandEntry>& table);
void AddMeasureCommands(std::vector<CommandEntry>& table);
void AddGeneratorCommands(std::vector<CommandEntry>& table);
void AddSimulateCommands(std::vector<CommandEntry>& table);
void AddRangeCommands(std::vector<CommandEntry>& table);

// Every area's commands: the table an instrument looks headers up in.
std::vector<CommandEntry> CommandTable();

}  // namespace quarvelo::sim

#endif  // QUARVELO_SIM_MODEL_COMMAND_TABLE_H_
