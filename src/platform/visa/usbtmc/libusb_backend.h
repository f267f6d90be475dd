// The UsbBackend over libusb-1.0.
#ifndef QUARVELO_PLATFORM_VISA_USBTMC_LIBUSB_BACKEND_H_
#define QUARVELO_PLATFORM_VISA_USBTMC_LIBUSB_BACKEND_H_

#include "platform/visa/usbtmc/usb_backend.h"

namespace quarvelo::visa {

// Each opened device owns its own libusb context, so devices are independent of one another
// and nothing global is kept.
class LibusbBackend : public UsbBackend {
 public:
  ViStatus Open(const UsbAddress& address, std::unique_ptr<UsbDevice>* out) override;
};

}  // namespace quarvelo::visa

#endif  // QUARVELO_PLATFORM_VISA_USBTMC_LIBUSB_BACKEND_H_
