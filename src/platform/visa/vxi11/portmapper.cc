#include "platform/visa/vxi11/portmapper.h"

namespace quarvelo::visa::portmapper {

void PutMapping(xdr::Writer& out, const Mapping& mapping) {
  out.PutUint32(mapping.program);
  out.PutUint32(mapping.version);
  out.PutUint32(mapping.protocol);
  out.PutUint32(mapping.port);
}

bool GetMapping(xdr::Reader& in, Mapping* mapping) {
  return in.GetUint32(&mapping->program) && in.GetUint32(&mapping->version) &&
         in.GetUint32(&mapping->protocol) && in.GetUint32(&mapping->port);
}

void PutPort(xdr::Writer& out, std::uint32_t port) { out.PutUint32(port); }

bool GetPort(xdr::Reader& in, std::uint16_t* port) {
  std::uint32_t raw = 0;
  if (!in.GetUint32(&raw) || raw > 0xFFFF) return false;
  *port = static_cast<std::uint16_t>(raw);
  return true;
}

}  // namespace quarvelo::visa::portmapper
