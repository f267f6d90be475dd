// Built without the Avahi client library: there is no mDNS browsing, and Start says so.
#include "platform/discovery/mdns_browser.h"

namespace quarvelo::discovery {

struct MdnsBrowser::State {};

MdnsBrowser::MdnsBrowser() = default;
MdnsBrowser::~MdnsBrowser() = default;
bool MdnsBrowser::Start() { return false; }
void MdnsBrowser::Poll(int) {}
const std::vector<std::string>& MdnsBrowser::resources() const {
  static const std::vector<std::string> kNone;
  return kNone;
}

}  // namespace quarvelo::discovery
