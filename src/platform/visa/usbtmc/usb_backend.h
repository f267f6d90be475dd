// The USB operations the USB-TMC protocol needs, behind an interface so that the protocol can
// be exercised against a simulated device: bulk and control transfers with deadlines on one
// claimed interface, and finding and claiming that interface.
#ifndef QUARVELO_PLATFORM_VISA_USBTMC_USB_BACKEND_H_
#define QUARVELO_PLATFORM_VISA_USBTMC_USB_BACKEND_H_

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "platform/visa/resource_name.h"
#include "platform/visa/transport.h"
#include "platform/visa/visa.h"

namespace quarvelo::visa {

// One claimed USB-TMC interface. Transfers return VI_ERROR_TMO at the deadline,
// VI_ERROR_CONN_LOST when the device is gone, kUsbStall when the endpoint is halted (it stays
// halted until ClearHalt), VI_ERROR_IO for other failures.
inline constexpr ViStatus kUsbStall = VI_ERROR_INP_PROT_VIOL;

class UsbDevice {
 public:
  virtual ~UsbDevice() = default;

  virtual ViStatus BulkOut(std::span<const std::byte> data, Deadline deadline) = 0;
  // One bulk-in transfer: ends at a short packet (*ended_short, a zero-length one included),
  // when `buffer` is full, or at the deadline with what came before it.
  virtual ViStatus BulkIn(std::span<std::byte> buffer, Deadline deadline, std::size_t* count,
                          bool* ended_short) = 0;
  virtual ViStatus ControlIn(std::uint8_t request_type, std::uint8_t request, std::uint16_t value,
                             std::uint16_t index, std::span<std::byte> data, Deadline deadline,
                             std::size_t* count) = 0;
  // Interrupt-IN notification (USB488 status byte); VI_ERROR_NSUP_OPER without that endpoint.
  virtual ViStatus InterruptIn(std::span<std::byte> buffer, Deadline deadline,
                               std::size_t* count) = 0;
  virtual ViStatus ClearHalt(std::uint8_t endpoint) = 0;

  virtual std::uint8_t interface_number() const = 0;
  virtual std::uint8_t bulk_in_endpoint() const = 0;
  virtual std::uint8_t bulk_out_endpoint() const = 0;
  virtual bool has_interrupt_in() const = 0;
  virtual std::size_t bulk_in_packet_size() const = 0;
};

struct UsbInterfaceInfo {
  std::uint8_t number = 0;
  std::uint8_t interface_class = 0;
  std::uint8_t interface_subclass = 0;
  std::uint8_t bulk_in_endpoint = 0;  // 0: none
  std::uint8_t bulk_out_endpoint = 0;
  std::size_t bulk_in_packet_size = 0;
  std::uint8_t interrupt_in_endpoint = 0;  // 0: none
};

struct UsbDeviceInfo {
  std::uint16_t vendor_id = 0;
  std::uint16_t product_id = 0;
  std::string serial;
  std::vector<UsbInterfaceInfo> interfaces;
};

// The USB-TMC interface (class 0xFE, subclass 3, with a bulk-in and a bulk-out endpoint) of
// `device` that `address` names: vendor and product compared as numbers, the serial number
// exactly, the interface number when the device has a USB-TMC interface of that number, else
// its first one. nullopt when `device` is not the one asked for.
std::optional<UsbInterfaceInfo> MatchUsbtmcInterface(const UsbDeviceInfo& device,
                                                     const UsbAddress& address);

class UsbBackend {
 public:
  virtual ~UsbBackend() = default;
  // Finds and claims the device's USB-TMC interface. VI_ERROR_RSRC_NFOUND when absent.
  virtual ViStatus Open(const UsbAddress& address, std::unique_ptr<UsbDevice>* out) = 0;
};

}  // namespace quarvelo::visa

#endif  // QUARVELO_PLATFORM_VISA_USBTMC_USB_BACKEND_H_
