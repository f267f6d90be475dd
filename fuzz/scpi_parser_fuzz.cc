// The simulated instrument's SCPI parser on its own: the splitter of program messages, numeric
// program data, and the header patterns of every setting and command the instrument knows,
// matched against each parsed header. Running the messages on the instrument is the business
// of sim_instrument_fuzz; this target, free of the model's cost, covers the parser many times
// more often.
#include <cctype>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "fuzz/fuzz_input.h"
#include "sim/model/command_table.h"
#include "sim/model/setting_table.h"
#include "sim/scpi/header_pattern.h"
#include "sim/scpi/number_text.h"
#include "sim/scpi/program_message.h"

namespace quarvelo::sim {
namespace {

std::vector<HeaderPattern> AllPatterns() {
  std::vector<HeaderPattern> patterns;
  for (const CommandEntry& entry : CommandTable()) patterns.push_back(entry.pattern);
  for (const SettingRow& row : SettingTable()) patterns.emplace_back(row.pattern);
  return patterns;
}

}  // namespace
}  // namespace quarvelo::sim

// Input: the suffix limits' byte (two bits each: channels 1..4, functions and generators 1..4),
// then a program message.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace quarvelo::sim;
  static const std::vector<HeaderPattern> patterns = AllPatterns();
  quarvelo::fuzz::FuzzInput input(data, size);
  const std::uint8_t limits_byte = input.Byte();
  const SuffixLimits limits{1 + (limits_byte & 3), 1 + ((limits_byte >> 2) & 3),
                            1 + ((limits_byte >> 4) & 3)};
  const std::string_view message = input.RestText();

  std::vector<int> instances;
  for (const ScpiCommand& command : ParseProgramMessage(message)) {
    for (const HeaderNode& node : command.nodes) {
      for (const char c : node.name)
        QUARVELO_FUZZ_CHECK(!std::islower(static_cast<unsigned char>(c)));
    }
    for (const ScpiParameter& parameter : command.parameters) {
      if (parameter.kind == ScpiParameter::Kind::kText) ParseNumber(parameter.text);
    }
    if (command.error != 0) continue;
    for (const HeaderPattern& pattern : patterns) {
      instances.clear();
      if (pattern.Match(command.nodes, limits, &instances) != MatchResult::kMatch) continue;
      // A match never lets a suffix through beyond the largest limit.
      for (const int instance : instances) QUARVELO_FUZZ_CHECK(instance >= 1 && instance <= 4);
    }
  }
  return 0;
}
