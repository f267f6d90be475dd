#include <avahi-client/client.h>
#include <avahi-client/publish.h>
#include <avahi-common/error.h>
#include <avahi-common/thread-watch.h>

#include <utility>

#include "sim/server/mdns_announcer.h"

namespace quarvelo::sim {

struct MdnsAnnouncer::State {
  AvahiThreadedPoll* poll = nullptr;
  AvahiClient* client = nullptr;  // owns the entry group

  ~State() {
    if (poll != nullptr) avahi_threaded_poll_stop(poll);
    if (client != nullptr) avahi_client_free(client);
    if (poll != nullptr) avahi_threaded_poll_free(poll);
  }
};

MdnsAnnouncer::MdnsAnnouncer() = default;
MdnsAnnouncer::~MdnsAnnouncer() = default;

bool MdnsAnnouncer::Start(const std::string& name, const AnnouncedPorts& ports,
                          std::string* error) {
  auto state = std::make_unique<State>();
  state->poll = avahi_threaded_poll_new();
  if (state->poll == nullptr) {
    *error = "cannot start the mDNS event loop";
    return false;
  }
  int code = 0;
  state->client = avahi_client_new(avahi_threaded_poll_get(state->poll),
                                   static_cast<AvahiClientFlags>(0), nullptr, nullptr, &code);
  if (state->client == nullptr) {
    *error = std::string("no Avahi daemon: ") + avahi_strerror(code);
    return false;
  }
  AvahiEntryGroup* group = avahi_entry_group_new(state->client, nullptr, nullptr);
  if (group == nullptr) {
    *error = avahi_strerror(avahi_client_errno(state->client));
    return false;
  }
  const std::pair<const char*, std::uint16_t> services[] = {
      {"_vxi-11._tcp", ports.portmapper},
      {"_hislip._tcp", ports.hislip},
      {"_scpi-raw._tcp", ports.socket},
  };
  for (const auto& [type, port] : services) {
    if (port == 0) continue;
    const int added = avahi_entry_group_add_service(group, AVAHI_IF_UNSPEC, AVAHI_PROTO_INET,
                                                    static_cast<AvahiPublishFlags>(0), name.c_str(),
                                                    type, nullptr, nullptr, port, nullptr);
    if (added < 0) {
      *error = std::string(type) + ": " + avahi_strerror(added);
      return false;
    }
  }
  const int committed = avahi_entry_group_commit(group);
  if (committed < 0 || avahi_threaded_poll_start(state->poll) < 0) {
    *error = committed < 0 ? avahi_strerror(committed) : "cannot start the mDNS event loop";
    return false;
  }
  state_ = std::move(state);
  return true;
}

}  // namespace quarvelo::sim
