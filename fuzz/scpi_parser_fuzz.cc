// Program messages a client may send the simulated instrument: the SCPI splitter, numeric
// program data, and the instrument model behind them, which runs up to a few messages on a
// fresh instrument of the family and channel count the first byte picks.
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "fuzz/fuzz_input.h"
#include "sim/model/instrument.h"
#include "sim/scpi/number_text.h"
#include "sim/scpi/program_message.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace quarvelo::sim;
  quarvelo::fuzz::FuzzInput input(data, size);
  const std::uint8_t config_byte = input.Byte();
  std::string_view text = input.RestText();

  for (const ScpiCommand& command : ParseProgramMessage(text)) {
    for (const ScpiParameter& parameter : command.parameters) {
      if (parameter.kind == ScpiParameter::Kind::kText) ParseNumber(parameter.text);
    }
  }

  InstrumentConfig config;
  config.is_3000x = config_byte & 1;
  config.channels = (config_byte & 2) ? 4 : 2;
  config.has_wgen = config_byte & 4;
  config.has_dvm = config_byte & 8;
  Instrument instrument(config);
  // One message per line, as a raw socket client sends them.
  for (int k = 0; k < 8 && !text.empty(); ++k) {
    const std::size_t line_feed = text.find('\n');
    instrument.HandleMessage(text.substr(0, line_feed));
    text.remove_prefix(line_feed == std::string_view::npos ? text.size() : line_feed + 1);
  }
  return 0;
}
