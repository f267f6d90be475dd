// Program messages a client may send the simulated instrument: the SCPI splitter, numeric
// program data, and the instrument model behind them, which runs up to a few messages on an
// instrument of the family, channel count and options the first byte picks.
//
// Building an instrument costs milliseconds (its command and setting tables), so each of the
// sixteen configurations keeps one instrument for the whole run and puts it back to its
// power-on state after every input by assigning a copy of the state it had then: settings,
// error queue, status registers, faults, acquisition count and the signals on the inputs.
// Every 1024th input (the first one included, so that a saved input replays the check)
// compares the reset instrument with a new one through a probe of queries over every setting
// and register; a difference would be a ghost of an earlier input, and traps.
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>

#include "fuzz/fuzz_input.h"
#include "sim/model/instrument.h"
#include "sim/model/setting_table.h"
#include "sim/scpi/number_text.h"
#include "sim/scpi/program_message.h"

namespace quarvelo::sim {
namespace {

InstrumentConfig ConfigFor(std::uint8_t config_byte) {
  InstrumentConfig config;
  config.is_3000x = config_byte & 1;
  config.channels = (config_byte & 2) ? 4 : 2;
  config.has_wgen = config_byte & 4;
  config.has_dvm = config_byte & 8;
  return config;
}

// The queries of every setting row for instances 1..4, then the registers, queues, signals and
// waveforms the settings do not show.
std::string Probe(Instrument& instrument) {
  std::string replies;
  for (const SettingRow& row : SettingTable()) {
    for (char instance = '1'; instance <= '4'; ++instance) {
      std::string header;
      bool optional = false;
      const std::string_view pattern = row.pattern;
      for (std::size_t i = 0; i < pattern.size(); ++i) {
        if (pattern[i] == '[' || pattern[i] == ']') {
          optional = pattern[i] == '[';
        } else if (optional) {
          continue;
        } else if (pattern[i] == '#') {
          header += instance;  // in place of the suffix kind that follows
          ++i;
        } else {
          header += pattern[i];
        }
      }
      replies += instrument.Execute(header + "?") + "\n";
    }
  }
  for (const char* query : {"*ESR?",
                            "*ESE?",
                            "*SRE?",
                            "*STB?",
                            ":OPERegister:CONDition?",
                            ":AER?",
                            ":TER?",
                            ":SIMulate:DELay?",
                            ":DISPlay:PERSistence?",
                            ":MEASure:SOURce?",
                            ":WAVeform:POINts?",
                            ":SIMulate:CHANnel1:SIGNal?",
                            ":SIMulate:CHANnel2:SIGNal?",
                            ":SIMulate:CHANnel3:SIGNal?",
                            ":SIMulate:CHANnel4:SIGNal?",
                            ":WAVeform:SOURce CHAN1;DATA?",
                            ":WAVeform:SOURce CHAN2;DATA?",
                            ":WAVeform:PREamble?",
                            ":SYSTem:ERRor?",
                            ":SYSTem:ERRor?",
                            ":SYSTem:ERRor?"}) {
    replies += instrument.Execute(query) + "\n";
  }
  return replies;
}

// One instrument per configuration, each with a copy of its state at power-on.
class Instruments {
 public:
  Instrument& For(std::uint8_t config_byte) {
    Entry& entry = pool_[config_byte & 15];
    if (entry.instrument == nullptr) {
      entry.instrument = std::make_unique<Instrument>(ConfigFor(config_byte));
      entry.power_on = entry.instrument->WithState(
          [](const InstrumentState& state) { return std::make_unique<InstrumentState>(state); });
    }
    return *entry.instrument;
  }

  // Assigning the whole state reuses the memory of its strings and tables, which makes it much
  // cheaper than "*RST" (which formats every setting's default anew) and covers what "*RST"
  // leaves alone.
  void ResetToPowerOn(std::uint8_t config_byte) {
    Entry& entry = pool_[config_byte & 15];
    entry.instrument->WithState([&](InstrumentState& state) { state = *entry.power_on; });
  }

 private:
  struct Entry {
    std::unique_ptr<Instrument> instrument;
    std::unique_ptr<InstrumentState> power_on;
  };
  std::array<Entry, 16> pool_;
};

}  // namespace
}  // namespace quarvelo::sim

// Input: the configuration byte (bit 0: 3000X, else 2000X; bit 1: four channels, else two;
// bit 2: waveform generator; bit 3: voltmeter), then program messages, one per line, of which
// the first eight are run.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace quarvelo::sim;
  static Instruments instruments;
  static std::uint64_t inputs = 0;
  // QUARVELO_FUZZ_PROBE_EVERY=1 checks the reset after every input (replaying a corpus).
  static const std::uint64_t probe_every = [] {
    const char* every = std::getenv("QUARVELO_FUZZ_PROBE_EVERY");
    return every != nullptr && std::atoi(every) > 0 ? std::uint64_t(std::atoi(every)) : 1024;
  }();
  quarvelo::fuzz::FuzzInput input(data, size);
  const std::uint8_t config_byte = input.Byte();
  std::string_view text = input.RestText();

  for (const ScpiCommand& command : ParseProgramMessage(text)) {
    for (const ScpiParameter& parameter : command.parameters) {
      if (parameter.kind == ScpiParameter::Kind::kText) ParseNumber(parameter.text);
    }
  }

  Instrument& instrument = instruments.For(config_byte);
  // One message per line, as a raw socket client sends them.
  for (int k = 0; k < 8 && !text.empty(); ++k) {
    const std::size_t line_feed = text.find('\n');
    instrument.HandleMessage(text.substr(0, line_feed));
    text.remove_prefix(line_feed == std::string_view::npos ? text.size() : line_feed + 1);
  }
  instruments.ResetToPowerOn(config_byte);
  if (inputs++ % probe_every == 0) {
    Instrument fresh(ConfigFor(config_byte));
    QUARVELO_FUZZ_CHECK(Probe(instrument) == Probe(fresh));
    instruments.ResetToPowerOn(config_byte);
  }
  return 0;
}
