// Raw SCPI over TCP (TCPIP::host::port::SOCKET): no END indicator, LF ends a message.
#ifndef QUARVELO_PLATFORM_VISA_SOCKET_TRANSPORT_H_
#define QUARVELO_PLATFORM_VISA_SOCKET_TRANSPORT_H_

#include <cstdint>
#include <memory>
#include <string>

#include "platform/visa/transport.h"
#include "platform/visa/visa.h"

namespace quarvelo::visa {

// Connects with TCP_NODELAY before the deadline. A refused connection, an unknown host or no
// answer before the deadline give VI_ERROR_RSRC_NFOUND. `host` may be an IPv6 address in
// brackets.
ViStatus OpenSocketTransport(const std::string& host, std::uint16_t port, Deadline deadline,
                             std::unique_ptr<Transport>* out);

}  // namespace quarvelo::visa

#endif  // QUARVELO_PLATFORM_VISA_SOCKET_TRANSPORT_H_
