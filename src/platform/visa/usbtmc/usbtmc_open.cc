#include "platform/visa/usbtmc/usbtmc_open.h"

#include "platform/visa/usbtmc/libusb_backend.h"
#include "platform/visa/usbtmc/usbtmc_transport.h"

namespace quarvelo::visa {

ViStatus OpenUsbtmcTransport(const UsbAddress& address, Deadline /*deadline*/,
                             std::unique_ptr<Transport>* out) {
  // Finding and claiming a local device does not wait on anything remote; the deadline only
  // matters for the transfers, which get their own.
  LibusbBackend backend;
  std::unique_ptr<UsbDevice> device;
  const ViStatus status = backend.Open(address, &device);
  if (status < VI_SUCCESS) return status;
  auto transport = std::make_unique<UsbtmcTransport>(std::move(device));
  const ViStatus started = transport->Start();
  if (started < VI_SUCCESS) return started;
  *out = std::move(transport);
  return VI_SUCCESS;
}

}  // namespace quarvelo::visa
