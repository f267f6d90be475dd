// One search for instruments, run in small steps so that a UI thread stays responsive: the
// USB-TMC devices first (descriptors only), then the portmapper answers and mDNS announcements
// on the LAN, then each LAN instrument's *IDN?. The whole search ends by its time limit and can be
// cancelled between steps.
#ifndef QUARVELO_PLATFORM_DISCOVERY_INSTRUMENT_SEARCH_H_
#define QUARVELO_PLATFORM_DISCOVERY_INSTRUMENT_SEARCH_H_

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "platform/discovery/found_instrument.h"
#include "platform/discovery/mdns_browser.h"
#include "platform/discovery/portmapper_probe.h"
#include "platform/discovery/usb_instruments.h"
#include "platform/visa/visa.h"

namespace quarvelo::discovery {

struct SearchOptions {
  std::uint16_t portmapper_port = visa::portmapper::kStandardPort;
  // Where the portmapper call goes; empty: the local networks' broadcast addresses.
  std::vector<std::string> lan_addresses;
  int time_limit_ms = 2000;
  int answer_window_ms = 700;  // how long portmapper answers are awaited
  int idn_timeout_ms = 300;    // per instrument, connection included
};

// The VXI-11 resource string of a host whose portmapper listens on `portmapper_port`.
std::string Vxi11Resource(const std::string& host, std::uint16_t portmapper_port);

class InstrumentSearch {
 public:
  // `usb` may be null (no USB search); it must outlive the search.
  InstrumentSearch(SearchOptions options, UsbLister* usb);
  ~InstrumentSearch();
  InstrumentSearch(const InstrumentSearch&) = delete;
  InstrumentSearch& operator=(const InstrumentSearch&) = delete;

  // One step: lists USB, or waits up to `wait_ms` for portmapper answers, or asks one
  // instrument *IDN? (bounded by its time-out and the time left). False once the search is over.
  bool Step(int wait_ms);
  void Cancel() { cancelled_ = true; }
  bool cancelled() const { return cancelled_; }
  const std::vector<FoundInstrument>& found() const { return found_; }
  // Why the LAN could not be searched ("" when it was).
  const std::string& lan_problem() const { return lan_problem_; }

 private:
  enum class Phase { kUsb, kListening, kAsking, kDone };
  using Clock = std::chrono::steady_clock;

  int MillisecondsLeft(Clock::time_point until) const;
  std::string AskIdentity(const std::string& resource, int timeout_ms);

  SearchOptions options_;
  UsbLister* usb_;
  Clock::time_point deadline_;
  Clock::time_point answers_until_;
  Phase phase_ = Phase::kUsb;
  PortmapperProbe probe_;
  MdnsBrowser mdns_;
  bool browsing_ = false;
  std::vector<std::string> resources_;  // what answered, once the answers are in
  std::size_t asked_ = 0;
  bool cancelled_ = false;
  ViSession resource_manager_ = 0;  // VI_NULL without one
  std::vector<FoundInstrument> found_;
  std::string lan_problem_;
};

}  // namespace quarvelo::discovery

#endif  // QUARVELO_PLATFORM_DISCOVERY_INSTRUMENT_SEARCH_H_
