#include "platform/discovery/instrument_search.h"

#include <algorithm>
#include <array>

#include "platform/visa/visa.h"

namespace quarvelo::discovery {

std::string Vxi11Resource(const std::string& host, std::uint16_t portmapper_port) {
  const std::string where = portmapper_port == visa::portmapper::kStandardPort
                                ? host
                                : host + ":" + std::to_string(portmapper_port);
  return "TCPIP0::" + where + "::inst0::INSTR";
}

InstrumentSearch::InstrumentSearch(SearchOptions options, UsbLister* usb)
    : options_(std::move(options)), usb_(usb) {
  deadline_ = Clock::now() + std::chrono::milliseconds(options_.time_limit_ms);
  ViSession resource_manager = VI_NULL;
  if (viOpenDefaultRM(&resource_manager) == VI_SUCCESS) resource_manager_ = resource_manager;
}

InstrumentSearch::~InstrumentSearch() {
  if (resource_manager_ != 0) viClose(resource_manager_);
}

int InstrumentSearch::MillisecondsLeft(Clock::time_point until) const {
  const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
      std::min(until, deadline_) - Clock::now());
  return static_cast<int>(std::max<long long>(0, left.count()));
}

bool InstrumentSearch::Step(int wait_ms) {
  if (cancelled_) phase_ = Phase::kDone;
  switch (phase_) {
    case Phase::kUsb: {
      if (usb_ != nullptr) {
        const std::vector<UsbListedDevice> devices = usb_->List(kInstrumentVendorIds);
        for (FoundInstrument& instrument : UsbInstruments(devices)) {
          found_.push_back(std::move(instrument));
        }
      }
      // mDNS only for the local networks: a search of chosen hosts stays among them.
      const bool local = options_.lan_addresses.empty();
      browsing_ = local && mdns_.Start();
      const std::vector<std::string> addresses =
          local ? LocalBroadcastAddresses() : options_.lan_addresses;
      bool probing = false;
      if (addresses.empty()) {
        lan_problem_ = "no local network to search";
      } else {
        probing = probe_.Start(addresses, options_.portmapper_port, &lan_problem_);
      }
      if (probing || browsing_) {
        answers_until_ = Clock::now() + std::chrono::milliseconds(options_.answer_window_ms);
        phase_ = Phase::kListening;
      } else {
        phase_ = Phase::kDone;
      }
      break;
    }
    case Phase::kListening: {
      const int wait = std::min(wait_ms, MillisecondsLeft(answers_until_));
      probe_.Poll(browsing_ ? wait / 2 : wait);
      if (browsing_) mdns_.Poll(wait - wait / 2);
      if (MillisecondsLeft(answers_until_) == 0) {
        for (const std::string& host : probe_.responders()) {
          resources_.push_back(Vxi11Resource(host, options_.portmapper_port));
        }
        for (const std::string& resource : mdns_.resources()) {
          if (std::ranges::find(resources_, resource) == resources_.end()) {
            resources_.push_back(resource);
          }
        }
        phase_ = Phase::kAsking;
      }
      break;
    }
    case Phase::kAsking: {
      if (asked_ >= resources_.size()) {
        phase_ = Phase::kDone;
        break;
      }
      const std::string resource = resources_[asked_++];
      const int timeout = std::min(options_.idn_timeout_ms, MillisecondsLeft(deadline_));
      found_.push_back({resource, timeout > 0 ? AskIdentity(resource, timeout)
                                              : "not asked: the search ran out of time"});
      break;
    }
    case Phase::kDone:
      break;
  }
  return phase_ != Phase::kDone;
}

std::string InstrumentSearch::AskIdentity(const std::string& resource, int timeout_ms) {
  const std::string no_answer = "no answer to *IDN?";
  if (resource_manager_ == 0) return no_answer;
  // One time-out for the whole exchange: each step gets what the steps before it left.
  const Clock::time_point until = Clock::now() + std::chrono::milliseconds(timeout_ms);
  const auto left = [until] {
    const auto ms = std::chrono::duration_cast<std::chrono::milliseconds>(until - Clock::now());
    return static_cast<ViUInt32>(std::max<long long>(1, ms.count()));
  };
  ViSession session = VI_NULL;
  if (viOpen(resource_manager_, resource.c_str(), VI_NULL, left(), &session) < VI_SUCCESS) {
    return no_answer;
  }
  std::string identity = no_answer;
  static constexpr char kQuery[] = "*IDN?\n";
  ViUInt32 count = 0;
  std::array<unsigned char, 256> reply{};
  if (viSetAttribute(session, VI_ATTR_TMO_VALUE, left()) >= VI_SUCCESS &&
      viWrite(session, reinterpret_cast<ViConstBuf>(kQuery), sizeof kQuery - 1, &count) >=
          VI_SUCCESS &&
      viSetAttribute(session, VI_ATTR_TMO_VALUE, left()) >= VI_SUCCESS &&
      viRead(session, reply.data(), reply.size(), &count) >= VI_SUCCESS) {
    identity.assign(reinterpret_cast<const char*>(reply.data()), count);
    while (!identity.empty() && (identity.back() == '\n' || identity.back() == '\r')) {
      identity.pop_back();
    }
  }
  viClose(session);
  return identity;
}

}  // namespace quarvelo::discovery
