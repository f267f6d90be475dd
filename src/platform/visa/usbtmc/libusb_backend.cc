#include "platform/visa/usbtmc/libusb_backend.h"

#include <libusb.h>

#include <algorithm>
#include <chrono>
#include <limits>

namespace quarvelo::visa {
namespace {

struct ContextDeleter {
  void operator()(libusb_context* context) const { libusb_exit(context); }
};
using ContextPtr = std::unique_ptr<libusb_context, ContextDeleter>;

struct HandleDeleter {
  void operator()(libusb_device_handle* handle) const { libusb_close(handle); }
};
using HandlePtr = std::unique_ptr<libusb_device_handle, HandleDeleter>;

struct DeviceListDeleter {
  void operator()(libusb_device** list) const { libusb_free_device_list(list, 1); }
};
using DeviceListPtr = std::unique_ptr<libusb_device*, DeviceListDeleter>;

struct ConfigDeleter {
  void operator()(libusb_config_descriptor* config) const { libusb_free_config_descriptor(config); }
};
using ConfigPtr = std::unique_ptr<libusb_config_descriptor, ConfigDeleter>;

// libusb takes 0 as "no time-out", so an expired deadline still waits 1 ms.
unsigned int TimeoutMs(Deadline deadline) {
  if (deadline == Deadline::max()) return 0;
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
  return static_cast<unsigned int>(
      std::clamp<long long>(left, 1, std::numeric_limits<unsigned int>::max()));
}

ViStatus StatusOf(int error) {
  switch (error) {
    case LIBUSB_SUCCESS:
      return VI_SUCCESS;
    case LIBUSB_ERROR_TIMEOUT:
      return VI_ERROR_TMO;
    case LIBUSB_ERROR_NO_DEVICE:
      return VI_ERROR_CONN_LOST;
    case LIBUSB_ERROR_ACCESS:
      return VI_ERROR_NPERMISSION;
    case LIBUSB_ERROR_BUSY:
      return VI_ERROR_RSRC_BUSY;
    case LIBUSB_ERROR_NOT_FOUND:
      return VI_ERROR_RSRC_NFOUND;
    case LIBUSB_ERROR_NO_MEM:
      return VI_ERROR_ALLOC;
    case LIBUSB_ERROR_PIPE:
      return kUsbStall;
    default:
      return VI_ERROR_IO;
  }
}

class LibusbDevice : public UsbDevice {
 public:
  LibusbDevice(ContextPtr context, HandlePtr handle, const UsbInterfaceInfo& interface,
               bool reattach_kernel_driver)
      : context_(std::move(context)),
        handle_(std::move(handle)),
        interface_(interface),
        reattach_kernel_driver_(reattach_kernel_driver) {}

  ~LibusbDevice() override {
    libusb_release_interface(handle_.get(), interface_.number);
    if (reattach_kernel_driver_) libusb_attach_kernel_driver(handle_.get(), interface_.number);
    handle_.reset();  // before the context it belongs to
  }

  ViStatus BulkOut(std::span<const std::byte> data, Deadline deadline) override {
    std::size_t sent = 0;
    while (sent < data.size()) {
      int transferred = 0;
      const int part = static_cast<int>(std::min<std::size_t>(data.size() - sent, 1 << 20));
      const int error = libusb_bulk_transfer(
          handle_.get(), interface_.bulk_out_endpoint,
          const_cast<unsigned char*>(reinterpret_cast<const unsigned char*>(data.data() + sent)),
          part, &transferred, TimeoutMs(deadline));
      sent += static_cast<std::size_t>(std::max(transferred, 0));
      if (error != LIBUSB_SUCCESS) return StatusOf(error);
    }
    return VI_SUCCESS;
  }

  ViStatus BulkIn(std::span<std::byte> buffer, Deadline deadline, std::size_t* count,
                  bool* ended_short) override {
    int transferred = 0;
    const int length = static_cast<int>(std::min<std::size_t>(buffer.size(), 1 << 30));
    const int error = libusb_bulk_transfer(handle_.get(), interface_.bulk_in_endpoint,
                                           reinterpret_cast<unsigned char*>(buffer.data()), length,
                                           &transferred, TimeoutMs(deadline));
    *count = static_cast<std::size_t>(std::max(transferred, 0));
    // A transfer that completes with room left in the buffer ended at a short packet.
    *ended_short = error == LIBUSB_SUCCESS && transferred < length;
    // Data that arrived before a time-out is still data.
    if (error == LIBUSB_ERROR_TIMEOUT && transferred > 0) return VI_SUCCESS;
    return StatusOf(error);
  }

  ViStatus InterruptIn(std::span<std::byte> buffer, Deadline deadline,
                       std::size_t* count) override {
    *count = 0;
    if (interface_.interrupt_in_endpoint == 0) return VI_ERROR_NSUP_OPER;
    int transferred = 0;
    const int error = libusb_interrupt_transfer(handle_.get(), interface_.interrupt_in_endpoint,
                                                reinterpret_cast<unsigned char*>(buffer.data()),
                                                static_cast<int>(buffer.size()), &transferred,
                                                TimeoutMs(deadline));
    *count = static_cast<std::size_t>(std::max(transferred, 0));
    return StatusOf(error);
  }

  ViStatus ControlIn(std::uint8_t request_type, std::uint8_t request, std::uint16_t value,
                     std::uint16_t index, std::span<std::byte> data, Deadline deadline,
                     std::size_t* count) override {
    const int result =
        libusb_control_transfer(handle_.get(), request_type, request, value, index,
                                reinterpret_cast<unsigned char*>(data.data()),
                                static_cast<std::uint16_t>(data.size()), TimeoutMs(deadline));
    *count = result > 0 ? static_cast<std::size_t>(result) : 0;
    return result < 0 ? StatusOf(result) : VI_SUCCESS;
  }

  ViStatus ClearHalt(std::uint8_t endpoint) override {
    return StatusOf(libusb_clear_halt(handle_.get(), endpoint));
  }

  std::uint8_t interface_number() const override { return interface_.number; }
  std::uint8_t bulk_in_endpoint() const override { return interface_.bulk_in_endpoint; }
  std::uint8_t bulk_out_endpoint() const override { return interface_.bulk_out_endpoint; }
  bool has_interrupt_in() const override { return interface_.interrupt_in_endpoint != 0; }
  std::size_t bulk_in_packet_size() const override { return interface_.bulk_in_packet_size; }

 private:
  ContextPtr context_;
  HandlePtr handle_;
  UsbInterfaceInfo interface_;
  bool reattach_kernel_driver_;
};

std::vector<UsbInterfaceInfo> InterfacesOf(libusb_device* device) {
  std::vector<UsbInterfaceInfo> interfaces;
  libusb_config_descriptor* raw_config = nullptr;
  if (libusb_get_active_config_descriptor(device, &raw_config) != LIBUSB_SUCCESS) {
    return interfaces;
  }
  const ConfigPtr config(raw_config);
  for (int i = 0; i < config->bNumInterfaces; ++i) {
    const libusb_interface& interface = config->interface[i];
    if (interface.num_altsetting < 1) continue;
    const libusb_interface_descriptor& setting = interface.altsetting[0];
    UsbInterfaceInfo info;
    info.number = setting.bInterfaceNumber;
    info.interface_class = setting.bInterfaceClass;
    info.interface_subclass = setting.bInterfaceSubClass;
    for (int e = 0; e < setting.bNumEndpoints; ++e) {
      const libusb_endpoint_descriptor& endpoint = setting.endpoint[e];
      const int type = endpoint.bmAttributes & LIBUSB_TRANSFER_TYPE_MASK;
      if (type == LIBUSB_TRANSFER_TYPE_INTERRUPT &&
          (endpoint.bEndpointAddress & LIBUSB_ENDPOINT_DIR_MASK) == LIBUSB_ENDPOINT_IN) {
        info.interrupt_in_endpoint = endpoint.bEndpointAddress;
        continue;
      }
      if (type != LIBUSB_TRANSFER_TYPE_BULK) continue;
      if ((endpoint.bEndpointAddress & LIBUSB_ENDPOINT_DIR_MASK) == LIBUSB_ENDPOINT_IN) {
        info.bulk_in_endpoint = endpoint.bEndpointAddress;
        info.bulk_in_packet_size = endpoint.wMaxPacketSize;
      } else {
        info.bulk_out_endpoint = endpoint.bEndpointAddress;
      }
    }
    interfaces.push_back(info);
  }
  return interfaces;
}

std::string SerialOf(libusb_device_handle* handle, std::uint8_t index) {
  if (index == 0) return {};
  unsigned char text[256] = {};
  const int length = libusb_get_string_descriptor_ascii(handle, index, text, sizeof text);
  return length > 0 ? std::string(reinterpret_cast<char*>(text), static_cast<std::size_t>(length))
                    : std::string();
}

}  // namespace

ViStatus LibusbBackend::Open(const UsbAddress& address, std::unique_ptr<UsbDevice>* out) {
  libusb_context* raw_context = nullptr;
  if (libusb_init(&raw_context) != LIBUSB_SUCCESS) return VI_ERROR_RSRC_NFOUND;
  ContextPtr context(raw_context);
  libusb_device** raw_list = nullptr;
  const ssize_t device_count = libusb_get_device_list(context.get(), &raw_list);
  if (device_count < 0) return VI_ERROR_RSRC_NFOUND;
  const DeviceListPtr list(raw_list);
  // A matching device that could not be opened explains the failure better than "not found".
  ViStatus failure = VI_ERROR_RSRC_NFOUND;
  for (ssize_t i = 0; i < device_count; ++i) {
    libusb_device* device = raw_list[i];
    libusb_device_descriptor descriptor{};
    if (libusb_get_device_descriptor(device, &descriptor) != LIBUSB_SUCCESS ||
        descriptor.idVendor != address.vendor_id || descriptor.idProduct != address.product_id) {
      continue;
    }
    libusb_device_handle* raw_handle = nullptr;
    const int opened = libusb_open(device, &raw_handle);
    if (opened != LIBUSB_SUCCESS) {
      failure = StatusOf(opened);
      continue;
    }
    HandlePtr handle(raw_handle);
    const UsbDeviceInfo info{descriptor.idVendor, descriptor.idProduct,
                             SerialOf(handle.get(), descriptor.iSerialNumber),
                             InterfacesOf(device)};
    const auto interface = MatchUsbtmcInterface(info, address);
    if (!interface) continue;
    bool detached = false;
    if (libusb_kernel_driver_active(handle.get(), interface->number) == 1) {
      // The kernel's usbtmc driver claims the interface first; take it over for this session.
      detached = libusb_detach_kernel_driver(handle.get(), interface->number) == LIBUSB_SUCCESS;
    }
    const int claimed = libusb_claim_interface(handle.get(), interface->number);
    if (claimed != LIBUSB_SUCCESS) {
      if (detached) libusb_attach_kernel_driver(handle.get(), interface->number);
      return StatusOf(claimed);
    }
    *out =
        std::make_unique<LibusbDevice>(std::move(context), std::move(handle), *interface, detached);
    return VI_SUCCESS;
  }
  return failure;
}

}  // namespace quarvelo::visa
