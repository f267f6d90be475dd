#include "platform/visa/usbtmc/usb_backend.h"

namespace quarvelo::visa {
namespace {

constexpr std::uint8_t kApplicationClass = 0xFE;
constexpr std::uint8_t kTestAndMeasurementSubclass = 0x03;

bool IsUsbtmc(const UsbInterfaceInfo& interface) {
  return interface.interface_class == kApplicationClass &&
         interface.interface_subclass == kTestAndMeasurementSubclass &&
         interface.bulk_in_endpoint != 0 && interface.bulk_out_endpoint != 0;
}

}  // namespace

std::optional<UsbInterfaceInfo> MatchUsbtmcInterface(const UsbDeviceInfo& device,
                                                     const UsbAddress& address) {
  if (device.vendor_id != address.vendor_id || device.product_id != address.product_id ||
      device.serial != address.serial) {
    return std::nullopt;
  }
  std::optional<UsbInterfaceInfo> first;
  for (const UsbInterfaceInfo& interface : device.interfaces) {
    if (!IsUsbtmc(interface)) continue;
    if (interface.number == address.interface_number) return interface;
    if (!first) first = interface;
  }
  return first;
}

}  // namespace quarvelo::visa
