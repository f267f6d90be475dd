// Splits one program message into commands: ";"-separated, headers with their numeric
// suffixes resolved against the previous command's path, parameters split at commas with
// quoted strings and blocks kept whole.
#ifndef QUARVELO_SIM_SCPI_PROGRAM_MESSAGE_H_
#define QUARVELO_SIM_SCPI_PROGRAM_MESSAGE_H_

#include <string>
#include <string_view>
#include <vector>

namespace quarvelo::sim {

struct HeaderNode {
  std::string name;  // upper case, without its suffix
  int suffix = -1;   // -1 when the node carries none
};

struct ScpiParameter {
  enum class Kind { kText, kString, kBlock };
  Kind kind = Kind::kText;
  std::string text;  // trimmed character or numeric data; a string without its quotes
};

struct ScpiCommand {
  std::vector<HeaderNode> nodes;  // full path; one "*XXX" node for a common command
  bool common = false;
  bool query = false;
  std::vector<ScpiParameter> parameters;
  int error = 0;       // a syntax error found while splitting (-101, -102, -112 ...)
  std::string header;  // the header as sent, for messages and logs
};

std::vector<ScpiCommand> ParseProgramMessage(std::string_view message);

}  // namespace quarvelo::sim

#endif  // QUARVELO_SIM_SCPI_PROGRAM_MESSAGE_H_
