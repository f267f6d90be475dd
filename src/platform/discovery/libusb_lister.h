// The UsbLister over libusb-1.0: reads device, configuration and string descriptors, opens no
// interface and sends nothing to the instrument.
#ifndef QUARVELO_PLATFORM_DISCOVERY_LIBUSB_LISTER_H_
#define QUARVELO_PLATFORM_DISCOVERY_LIBUSB_LISTER_H_

#include "platform/discovery/usb_instruments.h"

namespace quarvelo::discovery {

class LibusbLister : public UsbLister {
 public:
  std::vector<UsbListedDevice> List(std::span<const std::uint16_t> vendor_ids) override;
};

}  // namespace quarvelo::discovery

#endif  // QUARVELO_PLATFORM_DISCOVERY_LIBUSB_LISTER_H_
