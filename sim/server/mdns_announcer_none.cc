// Built without the Avahi client library: the simulator cannot announce itself.
#include "sim/server/mdns_announcer.h"

namespace quarvelo::sim {

struct MdnsAnnouncer::State {};

MdnsAnnouncer::MdnsAnnouncer() = default;
MdnsAnnouncer::~MdnsAnnouncer() = default;

bool MdnsAnnouncer::Start(const std::string&, const AnnouncedPorts&, std::string* error) {
  *error = "built without the Avahi client library";
  return false;
}

}  // namespace quarvelo::sim
