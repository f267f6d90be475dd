// One instrument a search found: the resource string to open it and what it says it is.
#ifndef QUARVELO_PLATFORM_DISCOVERY_FOUND_INSTRUMENT_H_
#define QUARVELO_PLATFORM_DISCOVERY_FOUND_INSTRUMENT_H_

#include <string>

namespace quarvelo::discovery {

struct FoundInstrument {
  std::string resource;  // a VISA resource string, e.g. "TCPIP0::10.0.0.5::inst0::INSTR"
  std::string identity;  // the *IDN? reply, the USB descriptors' names, or why it is unknown

  bool operator==(const FoundInstrument&) const = default;
};

}  // namespace quarvelo::discovery

#endif  // QUARVELO_PLATFORM_DISCOVERY_FOUND_INSTRUMENT_H_
