#include <avahi-client/client.h>
#include <avahi-client/lookup.h>
#include <avahi-common/address.h>
#include <avahi-common/simple-watch.h>

#include <algorithm>

#include "platform/discovery/mdns_browser.h"

namespace quarvelo::discovery {

struct MdnsBrowser::State {
  AvahiSimplePoll* poll = nullptr;
  AvahiClient* client = nullptr;
  std::vector<AvahiServiceBrowser*> browsers;
  std::vector<std::string> resources;

  ~State() {
    for (AvahiServiceBrowser* browser : browsers) avahi_service_browser_free(browser);
    if (client != nullptr) avahi_client_free(client);  // frees the resolvers still running
    if (poll != nullptr) avahi_simple_poll_free(poll);
  }

  static void Resolved(AvahiServiceResolver* resolver, AvahiIfIndex, AvahiProtocol,
                       AvahiResolverEvent event, const char*, const char* type, const char*,
                       const char*, const AvahiAddress* address, std::uint16_t port,
                       AvahiStringList*, AvahiLookupResultFlags, void* user) {
    auto* state = static_cast<State*>(user);
    if (event == AVAHI_RESOLVER_FOUND && address != nullptr) {
      char text[AVAHI_ADDRESS_STR_MAX] = {};
      avahi_address_snprint(text, sizeof text, address);
      const std::string resource = MdnsResource(type, text, port);
      if (!resource.empty() &&
          std::ranges::find(state->resources, resource) == state->resources.end()) {
        state->resources.push_back(resource);
      }
    }
    avahi_service_resolver_free(resolver);
  }

  static void Browsed(AvahiServiceBrowser*, AvahiIfIndex interface, AvahiProtocol protocol,
                      AvahiBrowserEvent event, const char* name, const char* type,
                      const char* domain, AvahiLookupResultFlags, void* user) {
    auto* state = static_cast<State*>(user);
    if (event != AVAHI_BROWSER_NEW) return;
    // IPv4 only: the resource strings and the LAN transports take IPv4 addresses.
    avahi_service_resolver_new(state->client, interface, protocol, name, type, domain,
                               AVAHI_PROTO_INET, static_cast<AvahiLookupFlags>(0), Resolved, state);
  }
};

MdnsBrowser::MdnsBrowser() = default;
MdnsBrowser::~MdnsBrowser() = default;

bool MdnsBrowser::Start() {
  auto state = std::make_unique<State>();
  state->poll = avahi_simple_poll_new();
  if (state->poll == nullptr) return false;
  int error = 0;
  // Without AVAHI_CLIENT_NO_FAIL the call fails at once when no daemon runs.
  state->client = avahi_client_new(avahi_simple_poll_get(state->poll),
                                   static_cast<AvahiClientFlags>(0), nullptr, nullptr, &error);
  if (state->client == nullptr) return false;
  for (std::string_view type : kMdnsServiceTypes) {
    AvahiServiceBrowser* browser = avahi_service_browser_new(
        state->client, AVAHI_IF_UNSPEC, AVAHI_PROTO_INET, std::string(type).c_str(), nullptr,
        static_cast<AvahiLookupFlags>(0), State::Browsed, state.get());
    if (browser != nullptr) state->browsers.push_back(browser);
  }
  if (state->browsers.empty()) return false;
  state_ = std::move(state);
  return true;
}

void MdnsBrowser::Poll(int wait_ms) {
  if (state_ == nullptr) return;
  avahi_simple_poll_iterate(state_->poll, std::max(0, wait_ms));
}

const std::vector<std::string>& MdnsBrowser::resources() const {
  static const std::vector<std::string> kNone;
  return state_ == nullptr ? kNone : state_->resources;
}

}  // namespace quarvelo::discovery
