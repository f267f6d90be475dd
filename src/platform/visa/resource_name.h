// Parsing of VISA resource strings into the address each transport needs. Keywords (TCPIP,
// USB, INSTR, SOCKET, hislip) are case-insensitive; host names and serial numbers are kept
// exactly as given.
#ifndef QUARVELO_PLATFORM_VISA_RESOURCE_NAME_H_
#define QUARVELO_PLATFORM_VISA_RESOURCE_NAME_H_

#include <cstdint>
#include <string>
#include <string_view>
#include <variant>

#include "platform/visa/visa.h"

namespace quarvelo::visa {

// TCPIP[board]::host[::device][::INSTR] with a device not beginning with "hislip".
struct Vxi11Address {
  unsigned board = 0;
  std::string host;  // verbatim; may carry ":port" for a portmapper on another port
  std::string device_name = "inst0";
};

// TCPIP[board]::host::hislipN[,port][::INSTR]
struct HislipAddress {
  unsigned board = 0;
  std::string host;
  std::string sub_address = "hislip0";  // without the ",port" suffix
  std::uint16_t port = 4880;
  bool port_given = false;
};

// TCPIP[board]::host::port::SOCKET
struct SocketAddress {
  unsigned board = 0;
  std::string host;
  std::uint16_t port = 0;
};

// USB[board]::vendor::product::serial[::interface][::INSTR]
struct UsbAddress {
  unsigned board = 0;
  std::uint16_t vendor_id = 0;
  std::uint16_t product_id = 0;
  std::string vendor_text;   // as written, for the canonical name
  std::string product_text;  // as written
  std::string serial;
  unsigned interface_number = 0;
};

using ResourceAddress = std::variant<Vxi11Address, HislipAddress, SocketAddress, UsbAddress>;

// VI_SUCCESS with *out set, or VI_ERROR_INV_RSRC_NAME for a malformed string (too few or too
// many fields, an empty field, a bad number, an unknown interface or resource class).
ViStatus ParseResourceName(std::string_view name, ResourceAddress* out);

// The name with every default filled in, e.g. "TCPIP0::1.2.3.4::inst0::INSTR".
std::string CanonicalResourceName(const ResourceAddress& address);

}  // namespace quarvelo::visa

#endif  // QUARVELO_PLATFORM_VISA_RESOURCE_NAME_H_
