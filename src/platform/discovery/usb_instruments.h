// The USB-TMC instruments among the devices on the bus, named from their descriptors alone.
#ifndef QUARVELO_PLATFORM_DISCOVERY_USB_INSTRUMENTS_H_
#define QUARVELO_PLATFORM_DISCOVERY_USB_INSTRUMENTS_H_

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "platform/discovery/found_instrument.h"
#include "platform/visa/usbtmc/usb_backend.h"

namespace quarvelo::discovery {

// The instrument makers' USB vendor ids.
inline constexpr std::uint16_t kInstrumentVendorIds[] = {0x0957, 0x2a8d};

struct UsbListedDevice {
  visa::UsbDeviceInfo info;  // serial empty when the device could not be opened
  std::string manufacturer;
  std::string product;
  bool accessible = true;  // false: no permission to open it (udev rules missing)
};

// Lists the devices of the given vendors; the libusb one reads descriptors only.
class UsbLister {
 public:
  virtual ~UsbLister() = default;
  virtual std::vector<UsbListedDevice> List(std::span<const std::uint16_t> vendor_ids) = 0;
};

// Devices of the instrument makers with a USB-TMC interface, as
// "USB0::0x0957::0x17A6::SERIAL::INSTR" (the interface number added when it is not 0).
std::vector<FoundInstrument> UsbInstruments(std::span<const UsbListedDevice> devices);

}  // namespace quarvelo::discovery

#endif  // QUARVELO_PLATFORM_DISCOVERY_USB_INSTRUMENTS_H_
