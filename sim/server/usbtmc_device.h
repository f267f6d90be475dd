// A USB-TMC device in software: it decodes the bulk-out transfers the host sends, hands each
// complete message to a MessageHandler, and answers REQUEST_DEV_DEP_MSG_IN with
// DEV_DEP_MSG_IN transfers cut into packets, as an instrument on the bus would. Its aborts,
// clears and halts follow the USBTMC standard's state tables (switchable quirks below),
// and it records what the host did, including every step the tables forbid.
#ifndef QUARVELO_SIM_SERVER_USBTMC_DEVICE_H_
#define QUARVELO_SIM_SERVER_USBTMC_DEVICE_H_

#include <cstdint>
#include <deque>
#include <string>
#include <vector>

#include "platform/visa/usbtmc/usb_backend.h"
#include "sim/server/message_handler.h"

namespace quarvelo::sim {

struct UsbDeviceOptions {
  std::size_t packet_size = 64;
  // At most this many packets per bulk-in call (1 splits every header across calls when
  // the packet is smaller than a header); a call cut by this limit did not end the transfer.
  std::size_t packets_per_bulk_in = 1000;
  // Largest payload the device puts in one DEV_DEP_MSG_IN transfer; a longer response takes
  // several requests, EOM only on the last.
  std::size_t max_in_payload = 1 << 20;
  // Sends a wrong bTag in the next response header.
  bool corrupt_next_tag = false;
  // Answers every request at once with an empty transfer that does not end the message.
  bool empty_transfers_only = false;
  // A transfer that fills whole packets ends with a zero-length packet.
  bool zero_length_packets = true;
  // INITIATE_ABORT_BULK_IN/OUT answer 0x81 ("try again later") this many times first.
  int abort_busy_answers = 0;
  // CHECK_ABORT_* and CHECK_CLEAR_STATUS answer PENDING this many times first.
  int pending_answers = 0;
  // An aborted bulk-in transfer is ended with this many full packets, then a short one.
  int abort_flush_packets = 0;
  // The next transfer ends with a short packet before the size its header announced.
  bool short_transfer_next = false;
  // The next bulk-in transfer stalls (bulk-in halted until the host clears it).
  bool stall_bulk_in_next = false;
  // The next DEV_DEP_MSG_OUT takes its header and times out (the host must abort it).
  bool bulk_out_timeout_next = false;
  // USB488 interface capabilities in GET_CAPABILITIES (bit 1: REN_CONTROL accepted).
  std::uint8_t usb488_capabilities = 0x06;
  // With an interrupt-IN endpoint, READ_STATUS_BYTE's byte comes there.
  bool interrupt_in = false;
  std::uint8_t status_byte = 0x10;
  // Left by an earlier session: half a program message received and bulk-out halted.
  bool stale_session = false;
};

// What the device saw the host do.
struct UsbDeviceLog {
  std::vector<std::uint8_t> tags;        // every bulk-out header's bTag, in order
  std::vector<bool> out_end_of_message;  // EOM of every DEV_DEP_MSG_OUT
  std::vector<std::uint32_t> out_sizes;  // TransferSize of every DEV_DEP_MSG_OUT
  std::vector<std::uint8_t> control_requests;
  std::vector<std::string> violations;  // steps the USBTMC standard forbids
  int misaligned_transfers = 0;
  int bad_headers = 0;
  int stalls = 0;
};

class UsbtmcDevice : public visa::UsbDevice {
 public:
  UsbtmcDevice(MessageHandler* handler, UsbDeviceOptions options, UsbDeviceLog* log);

  ViStatus BulkOut(std::span<const std::byte> data, visa::Deadline deadline) override;
  ViStatus BulkIn(std::span<std::byte> buffer, visa::Deadline deadline, std::size_t* count,
                  bool* ended_short) override;
  ViStatus ControlIn(std::uint8_t request_type, std::uint8_t request, std::uint16_t value,
                     std::uint16_t index, std::span<std::byte> data, visa::Deadline deadline,
                     std::size_t* count) override;
  ViStatus InterruptIn(std::span<std::byte> buffer, visa::Deadline deadline,
                       std::size_t* count) override;
  ViStatus ClearHalt(std::uint8_t endpoint) override;

  std::uint8_t interface_number() const override { return 0; }
  std::uint8_t bulk_in_endpoint() const override { return 0x81; }
  std::uint8_t bulk_out_endpoint() const override { return 0x02; }
  bool has_interrupt_in() const override { return options_.interrupt_in; }
  std::size_t bulk_in_packet_size() const override { return options_.packet_size; }

  UsbDeviceOptions& options() { return options_; }
  bool bulk_out_halted() const { return halted_out_; }

 private:
  void MessageComplete();
  void StartTransfer();
  void Violation(std::string what) { log_->violations.push_back(std::move(what)); }
  void ResetState();

  MessageHandler* handler_;
  UsbDeviceOptions options_;
  UsbDeviceLog* log_;
  std::string incoming_;  // the program message being received
  std::string response_;  // the response not yet sent
  bool response_pending_ = false;
  visa::Clock::time_point response_ready_{};
  bool drop_after_response_ = false;
  bool gone_ = false;
  bool request_pending_ = false;
  std::uint8_t request_tag_ = 0;
  std::uint32_t request_size_ = 0;
  std::uint8_t wire_tag_ = 0;       // the bTag of the transfer on the wire
  std::deque<std::byte> wire_;      // the current transfer's bytes, not yet read by the host
  bool short_packet_owed_ = false;  // the transfer on the wire ends with a short packet
  bool halted_out_ = false;
  bool halted_in_ = false;
  // An abort the host started and has not seen finish, or one it was told to retry.
  bool abort_in_running_ = false;
  bool abort_out_running_ = false;
  bool abort_owed_ = false;
  bool clear_running_ = false;
  int pending_left_ = 0;
  int busy_left_ = 0;
  bool out_in_progress_ = false;
  std::uint8_t out_tag_ = 0;
  std::uint8_t pending_status_tag_ = 0;
};

}  // namespace quarvelo::sim

#endif  // QUARVELO_SIM_SERVER_USBTMC_DEVICE_H_
