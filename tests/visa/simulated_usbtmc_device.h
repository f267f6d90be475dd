// A USB-TMC device in software: it decodes the bulk-out transfers the host sends, hands each
// complete message to a sim::MessageHandler, and answers REQUEST_DEV_DEP_MSG_IN with
// DEV_DEP_MSG_IN transfers cut into packets, as an instrument on the bus would. It also checks
// what the host does (tags, alignment, EOM) and records it for the tests.
#ifndef QUARVELO_TESTS_VISA_SIMULATED_USBTMC_DEVICE_H_
#define QUARVELO_TESTS_VISA_SIMULATED_USBTMC_DEVICE_H_

#include <cstdint>
#include <deque>
#include <string>
#include <vector>

#include "platform/visa/usbtmc/usb_backend.h"
#include "sim/server/message_handler.h"

namespace quarvelo::visa::testing {

struct UsbDeviceOptions {
  std::size_t packet_size = 64;
  // At most this many packets per bulk-in call (1 splits every header across calls when
  // the packet is smaller than a header).
  std::size_t packets_per_bulk_in = 1000;
  // Largest payload the device puts in one DEV_DEP_MSG_IN transfer; a longer response takes
  // several requests, EOM only on the last.
  std::size_t max_in_payload = 1 << 20;
  // Sends a wrong bTag in the next response header.
  bool corrupt_next_tag = false;
  // Answers every request at once with an empty transfer that does not end the message.
  bool empty_transfers_only = false;
};

// What the device saw the host do.
struct UsbDeviceLog {
  std::vector<std::uint8_t> tags;        // every bulk-out header's bTag, in order
  std::vector<bool> out_end_of_message;  // EOM of every DEV_DEP_MSG_OUT
  std::vector<std::uint8_t> control_requests;
  int misaligned_transfers = 0;
  int bad_headers = 0;
};

class SimulatedUsbtmcDevice : public UsbDevice {
 public:
  SimulatedUsbtmcDevice(sim::MessageHandler* handler, UsbDeviceOptions options, UsbDeviceLog* log);

  ViStatus BulkOut(std::span<const std::byte> data, Deadline deadline) override;
  ViStatus BulkIn(std::span<std::byte> buffer, Deadline deadline, std::size_t* count) override;
  ViStatus ControlIn(std::uint8_t request_type, std::uint8_t request, std::uint16_t value,
                     std::uint16_t index, std::span<std::byte> data, Deadline deadline,
                     std::size_t* count) override;
  ViStatus ClearHalt(std::uint8_t) override { return VI_SUCCESS; }

  std::uint8_t interface_number() const override { return 0; }
  std::uint8_t bulk_in_endpoint() const override { return 0x81; }
  std::uint8_t bulk_out_endpoint() const override { return 0x02; }
  std::size_t bulk_in_packet_size() const override { return options_.packet_size; }

  UsbDeviceOptions& options() { return options_; }

 private:
  void MessageComplete();
  void StartTransfer();

  sim::MessageHandler* handler_;
  UsbDeviceOptions options_;
  UsbDeviceLog* log_;
  std::string incoming_;  // the program message being received
  std::string response_;  // the response not yet sent
  bool response_pending_ = false;
  Clock::time_point response_ready_{};
  bool drop_after_response_ = false;
  bool gone_ = false;
  bool request_pending_ = false;
  std::uint8_t request_tag_ = 0;
  std::uint32_t request_size_ = 0;
  std::deque<std::byte> wire_;  // the current transfer's bytes, not yet read by the host
  // After an aborted transfer the device ends it with a short (here empty) packet.
  bool short_packet_owed_ = false;
};

}  // namespace quarvelo::visa::testing

#endif  // QUARVELO_TESTS_VISA_SIMULATED_USBTMC_DEVICE_H_
