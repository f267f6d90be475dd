#include "platform/discovery/mdns_browser.h"

namespace quarvelo::discovery {

std::string MdnsResource(std::string_view service_type, const std::string& address,
                         std::uint16_t port) {
  if (service_type == "_vxi-11._tcp") return "TCPIP0::" + address + "::inst0::INSTR";
  if (service_type == "_hislip._tcp") {
    const std::string device = port == 4880 ? "hislip0" : "hislip0," + std::to_string(port);
    return "TCPIP0::" + address + "::" + device + "::INSTR";
  }
  if (service_type == "_scpi-raw._tcp") {
    return "TCPIP0::" + address + "::" + std::to_string(port) + "::SOCKET";
  }
  return {};
}

}  // namespace quarvelo::discovery
