#include "platform/discovery/libusb_lister.h"

#include <libusb.h>

#include <algorithm>
#include <memory>

namespace quarvelo::discovery {
namespace {

struct ContextDeleter {
  void operator()(libusb_context* context) const { libusb_exit(context); }
};
struct ListDeleter {
  void operator()(libusb_device** list) const { libusb_free_device_list(list, 1); }
};
struct HandleDeleter {
  void operator()(libusb_device_handle* handle) const { libusb_close(handle); }
};
struct ConfigDeleter {
  void operator()(libusb_config_descriptor* config) const { libusb_free_config_descriptor(config); }
};

std::vector<visa::UsbInterfaceInfo> InterfacesOf(libusb_device* device) {
  std::vector<visa::UsbInterfaceInfo> interfaces;
  libusb_config_descriptor* raw_config = nullptr;
  if (libusb_get_active_config_descriptor(device, &raw_config) != LIBUSB_SUCCESS &&
      libusb_get_config_descriptor(device, 0, &raw_config) != LIBUSB_SUCCESS) {
    return interfaces;
  }
  const std::unique_ptr<libusb_config_descriptor, ConfigDeleter> config(raw_config);
  for (int i = 0; i < config->bNumInterfaces; ++i) {
    if (config->interface[i].num_altsetting < 1) continue;
    const libusb_interface_descriptor& setting = config->interface[i].altsetting[0];
    visa::UsbInterfaceInfo info;
    info.number = setting.bInterfaceNumber;
    info.interface_class = setting.bInterfaceClass;
    info.interface_subclass = setting.bInterfaceSubClass;
    for (int e = 0; e < setting.bNumEndpoints; ++e) {
      const libusb_endpoint_descriptor& endpoint = setting.endpoint[e];
      if ((endpoint.bmAttributes & LIBUSB_TRANSFER_TYPE_MASK) != LIBUSB_TRANSFER_TYPE_BULK)
        continue;
      if ((endpoint.bEndpointAddress & LIBUSB_ENDPOINT_DIR_MASK) == LIBUSB_ENDPOINT_IN) {
        info.bulk_in_endpoint = endpoint.bEndpointAddress;
      } else {
        info.bulk_out_endpoint = endpoint.bEndpointAddress;
      }
    }
    interfaces.push_back(info);
  }
  return interfaces;
}

std::string StringOf(libusb_device_handle* handle, std::uint8_t index) {
  if (handle == nullptr || index == 0) return {};
  unsigned char text[256] = {};
  const int length = libusb_get_string_descriptor_ascii(handle, index, text, sizeof text);
  return length > 0 ? std::string(reinterpret_cast<char*>(text), static_cast<std::size_t>(length))
                    : std::string();
}

}  // namespace

std::vector<UsbListedDevice> LibusbLister::List(std::span<const std::uint16_t> vendor_ids) {
  std::vector<UsbListedDevice> devices;
  libusb_context* raw_context = nullptr;
  if (libusb_init(&raw_context) != LIBUSB_SUCCESS) return devices;
  const std::unique_ptr<libusb_context, ContextDeleter> context(raw_context);
  libusb_device** raw_list = nullptr;
  const ssize_t count = libusb_get_device_list(context.get(), &raw_list);
  if (count < 0) return devices;
  const std::unique_ptr<libusb_device*, ListDeleter> list(raw_list);
  for (ssize_t i = 0; i < count; ++i) {
    libusb_device_descriptor descriptor{};
    if (libusb_get_device_descriptor(raw_list[i], &descriptor) != LIBUSB_SUCCESS ||
        std::ranges::find(vendor_ids, descriptor.idVendor) == vendor_ids.end()) {
      continue;
    }
    UsbListedDevice device;
    device.info.vendor_id = descriptor.idVendor;
    device.info.product_id = descriptor.idProduct;
    device.info.interfaces = InterfacesOf(raw_list[i]);
    // The string descriptors need the device opened (a control transfer, no interface claimed).
    libusb_device_handle* raw_handle = nullptr;
    device.accessible = libusb_open(raw_list[i], &raw_handle) == LIBUSB_SUCCESS;
    const std::unique_ptr<libusb_device_handle, HandleDeleter> handle(raw_handle);
    device.info.serial = StringOf(handle.get(), descriptor.iSerialNumber);
    device.manufacturer = StringOf(handle.get(), descriptor.iManufacturer);
    device.product = StringOf(handle.get(), descriptor.iProduct);
    devices.push_back(std::move(device));
  }
  return devices;
}

}  // namespace quarvelo::discovery
