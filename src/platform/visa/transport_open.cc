#include "platform/visa/transport_open.h"

#include "platform/visa/socket_transport.h"
#include "platform/visa/transport_factory.h"
#include "platform/visa/usbtmc/usbtmc_open.h"

namespace quarvelo::visa {

ViStatus OpenTransport(const ResourceAddress& address, Deadline deadline,
                       std::unique_ptr<Transport>* out) {
  struct Visitor {
    Deadline deadline;
    std::unique_ptr<Transport>* out;
    ViStatus operator()(const SocketAddress& a) const {
      return OpenSocketTransport(a.host, a.port, deadline, out);
    }
    ViStatus operator()(const Vxi11Address& a) const {
      return OpenVxi11Transport(a.host, a.device_name, deadline, out);
    }
    ViStatus operator()(const HislipAddress& a) const {
      return OpenHislipTransport(a.host, a.sub_address, a.port, deadline, out);
    }
    ViStatus operator()(const UsbAddress& a) const { return OpenUsbtmcTransport(a, deadline, out); }
  };
  return std::visit(Visitor{deadline, out}, address);
}

}  // namespace quarvelo::visa
