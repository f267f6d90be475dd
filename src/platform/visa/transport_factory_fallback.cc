// Built only while the VXI-11 or HiSLIP client folder is absent: such resources are then
// reported as not present.
#include "platform/visa/transport_factory.h"

namespace quarvelo::visa {

#ifndef QUARVELO_HAVE_VXI11
ViStatus OpenVxi11Transport(const std::string&, const std::string&, Deadline,
                            std::unique_ptr<Transport>*) {
  return VI_ERROR_RSRC_NFOUND;
}
#endif

#ifndef QUARVELO_HAVE_HISLIP
ViStatus OpenHislipTransport(const std::string&, const std::string&, std::uint16_t, Deadline,
                             std::unique_ptr<Transport>*) {
  return VI_ERROR_RSRC_NFOUND;
}
#endif

}  // namespace quarvelo::visa
