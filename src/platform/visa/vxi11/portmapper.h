// The portmapper (program 100000, version 2) that tells clients on which TCP port an RPC
// program listens; VXI-11 clients ask it for the core channel.
#ifndef QUARVELO_PLATFORM_VISA_VXI11_PORTMAPPER_H_
#define QUARVELO_PLATFORM_VISA_VXI11_PORTMAPPER_H_

#include <cstdint>

#include "platform/visa/vxi11/xdr.h"

namespace quarvelo::visa::portmapper {

inline constexpr std::uint32_t kProgram = 100000;
inline constexpr std::uint32_t kVersion = 2;
inline constexpr std::uint16_t kStandardPort = 111;
inline constexpr std::uint32_t kProcNull = 0;
inline constexpr std::uint32_t kProcGetPort = 3;
inline constexpr std::uint32_t kProtocolTcp = 6;
inline constexpr std::uint32_t kProtocolUdp = 17;

struct Mapping {
  std::uint32_t program = 0;
  std::uint32_t version = 0;
  std::uint32_t protocol = 0;
  std::uint32_t port = 0;
};

void PutMapping(xdr::Writer& out, const Mapping& mapping);
bool GetMapping(xdr::Reader& in, Mapping* mapping);

// GETPORT's result: the port, 0 when the program is not registered.
void PutPort(xdr::Writer& out, std::uint32_t port);
// Fails on a port outside 0..65535.
bool GetPort(xdr::Reader& in, std::uint16_t* port);

}  // namespace quarvelo::visa::portmapper

#endif  // QUARVELO_PLATFORM_VISA_VXI11_PORTMAPPER_H_
