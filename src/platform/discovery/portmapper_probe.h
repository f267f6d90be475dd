// Asks portmappers over UDP where the VXI-11 core channel listens (GETPORT), sent to broadcast
// addresses or single hosts, and collects the hosts that answer with a port. Never blocks
// longer than the wait each Poll is given, so a UI thread can poll it between its events.
#ifndef QUARVELO_PLATFORM_DISCOVERY_PORTMAPPER_PROBE_H_
#define QUARVELO_PLATFORM_DISCOVERY_PORTMAPPER_PROBE_H_

#include <cstdint>
#include <string>
#include <vector>

#include "platform/visa/vxi11/portmapper.h"

namespace quarvelo::discovery {

// The IPv4 broadcast addresses of the interfaces that are up (loopback has none).
std::vector<std::string> LocalBroadcastAddresses();

class PortmapperProbe {
 public:
  PortmapperProbe() = default;
  ~PortmapperProbe();
  PortmapperProbe(const PortmapperProbe&) = delete;
  PortmapperProbe& operator=(const PortmapperProbe&) = delete;

  // Sends one GETPORT call to `port` at each of `addresses` (dotted IPv4, broadcast allowed).
  // False, with the reason, when no socket could be made or no call could be sent.
  bool Start(const std::vector<std::string>& addresses, std::uint16_t port, std::string* error);
  // Reads the answers that arrive within `wait_ms` (0: those already there).
  void Poll(int wait_ms);
  // The hosts that answered with a VXI-11 core port, in address order (answers arrive in
  // any order; the user's list should not).
  std::vector<std::string> responders() const;

 private:
  int socket_ = -1;
  std::uint32_t xid_ = 0;
  std::vector<std::string> responders_;
};

}  // namespace quarvelo::discovery

#endif  // QUARVELO_PLATFORM_DISCOVERY_PORTMAPPER_PROBE_H_
