// Entry points that open the LAN transports living in their own folders (vxi11/, hislip/).
// viOpen parses the resource string and calls one of these; each returns VI_SUCCESS with *out
// set, or a VISA error (VI_ERROR_RSRC_NFOUND when the host refuses or cannot be reached before
// the deadline). Later reads and writes get their own deadlines from the session's time-out.
#ifndef QUARVELO_PLATFORM_VISA_TRANSPORT_FACTORY_H_
#define QUARVELO_PLATFORM_VISA_TRANSPORT_FACTORY_H_

#include <cstdint>
#include <memory>
#include <string>

#include "platform/visa/transport.h"
#include "platform/visa/visa.h"

namespace quarvelo::visa {

// `host` is passed through verbatim from the resource string and may carry ":port" to reach a
// portmapper on a non-standard port (tests do). `device_name` is e.g. "inst0".
ViStatus OpenVxi11Transport(const std::string& host, const std::string& device_name,
                            Deadline deadline, std::unique_ptr<Transport>* out);

// `sub_address` is e.g. "hislip0"; `port` is 4880 unless the resource string names another.
ViStatus OpenHislipTransport(const std::string& host, const std::string& sub_address,
                             std::uint16_t port, Deadline deadline,
                             std::unique_ptr<Transport>* out);

}  // namespace quarvelo::visa

#endif  // QUARVELO_PLATFORM_VISA_TRANSPORT_FACTORY_H_
