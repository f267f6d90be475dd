#include "platform/discovery/usb_instruments.h"

#include <algorithm>
#include <cstdio>

namespace quarvelo::discovery {
namespace {

constexpr std::uint8_t kClassApplication = 0xFE;
constexpr std::uint8_t kSubclassUsbtmc = 3;

const visa::UsbInterfaceInfo* UsbtmcInterface(const visa::UsbDeviceInfo& info) {
  for (const visa::UsbInterfaceInfo& interface : info.interfaces) {
    if (interface.interface_class == kClassApplication &&
        interface.interface_subclass == kSubclassUsbtmc && interface.bulk_in_endpoint != 0 &&
        interface.bulk_out_endpoint != 0) {
      return &interface;
    }
  }
  return nullptr;
}

}  // namespace

std::vector<FoundInstrument> UsbInstruments(std::span<const UsbListedDevice> devices) {
  std::vector<FoundInstrument> found;
  for (const UsbListedDevice& device : devices) {
    const visa::UsbDeviceInfo& info = device.info;
    if (std::ranges::find(kInstrumentVendorIds, info.vendor_id) == std::end(kInstrumentVendorIds)) {
      continue;
    }
    const visa::UsbInterfaceInfo* interface = UsbtmcInterface(info);
    if (interface == nullptr) continue;
    char ids[32];
    std::snprintf(ids, sizeof ids, "0x%04X::0x%04X", info.vendor_id, info.product_id);
    std::string resource = "USB0::" + std::string(ids) + "::" + info.serial;
    if (interface->number != 0) resource += "::" + std::to_string(interface->number);
    resource += "::INSTR";
    std::string identity = device.manufacturer;
    if (!device.product.empty()) identity += (identity.empty() ? "" : " ") + device.product;
    if (identity.empty()) identity = "USB-TMC instrument";
    if (!device.accessible) identity += " (no access: install the udev rules)";
    found.push_back({std::move(resource), std::move(identity)});
  }
  return found;
}

}  // namespace quarvelo::discovery
