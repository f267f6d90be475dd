// Announces the simulated oscilloscope's services by mDNS/DNS-SD through the Avahi daemon
// (_vxi-11._tcp on the portmapper's port, _hislip._tcp, _scpi-raw._tcp), for as long as it
// lives. Without a daemon (or without the Avahi client library) Start fails with the reason.
#ifndef QUARVELO_SIM_SERVER_MDNS_ANNOUNCER_H_
#define QUARVELO_SIM_SERVER_MDNS_ANNOUNCER_H_

#include <cstdint>
#include <memory>
#include <string>

namespace quarvelo::sim {

struct AnnouncedPorts {
  std::uint16_t portmapper = 0;  // 0: that service is not announced
  std::uint16_t hislip = 0;
  std::uint16_t socket = 0;
};

class MdnsAnnouncer {
 public:
  MdnsAnnouncer();
  ~MdnsAnnouncer();
  MdnsAnnouncer(const MdnsAnnouncer&) = delete;
  MdnsAnnouncer& operator=(const MdnsAnnouncer&) = delete;

  bool Start(const std::string& name, const AnnouncedPorts& ports, std::string* error);

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace quarvelo::sim

#endif  // QUARVELO_SIM_SERVER_MDNS_ANNOUNCER_H_
