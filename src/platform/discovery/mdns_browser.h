// Instruments announced by mDNS/DNS-SD (_vxi-11._tcp, _hislip._tcp, _scpi-raw._tcp), browsed
// through the Avahi daemon when it runs. Polled in short waits like the portmapper probe.
#ifndef QUARVELO_PLATFORM_DISCOVERY_MDNS_BROWSER_H_
#define QUARVELO_PLATFORM_DISCOVERY_MDNS_BROWSER_H_

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace quarvelo::discovery {

inline constexpr std::string_view kMdnsServiceTypes[] = {"_vxi-11._tcp", "_hislip._tcp",
                                                         "_scpi-raw._tcp"};

// The resource string for a resolved service: VXI-11 through the standard portmapper, HiSLIP
// with its port when it is not 4880, the raw socket with its port. "" for another type.
std::string MdnsResource(std::string_view service_type, const std::string& address,
                         std::uint16_t port);

class MdnsBrowser {
 public:
  MdnsBrowser();
  ~MdnsBrowser();
  MdnsBrowser(const MdnsBrowser&) = delete;
  MdnsBrowser& operator=(const MdnsBrowser&) = delete;

  // Starts browsing; false (and nothing to poll) when no Avahi daemon answers or the program
  // was built without the Avahi client library.
  bool Start();
  void Poll(int wait_ms);
  // The resource strings resolved so far, in order of resolution, without repeats.
  const std::vector<std::string>& resources() const;

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace quarvelo::discovery

#endif  // QUARVELO_PLATFORM_DISCOVERY_MDNS_BROWSER_H_
