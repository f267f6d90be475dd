// USB-TMC over one claimed interface: DEV_DEP_MSG_OUT transfers with EOM on the last,
// REQUEST_DEV_DEP_MSG_IN / DEV_DEP_MSG_IN until EOM, headers checked (MsgID, bTag, ~bTag)
// even when they straddle bulk-in packets, and the recovery the USBTMC standard asks of
// a host: an abort (or a clear) after a time-out, the halts cleared that the device raised by
// rule, and a stalled endpoint cleared together with the device.
#ifndef QUARVELO_PLATFORM_VISA_USBTMC_USBTMC_TRANSPORT_H_
#define QUARVELO_PLATFORM_VISA_USBTMC_USBTMC_TRANSPORT_H_

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "platform/visa/transport.h"
#include "platform/visa/usbtmc/usb_backend.h"
#include "platform/visa/usbtmc/usbtmc_protocol.h"

namespace quarvelo::visa {

// How long each recovery step may take. A step never inherits the caller's spent time-out:
// a device that is told to abort gets seconds to do it, polled every `poll_interval`.
struct UsbtmcTimings {
  std::chrono::milliseconds step{1000};         // one control request
  std::chrono::milliseconds poll_interval{50};  // between CHECK_* requests
  std::chrono::milliseconds poll_budget{3000};  // all CHECK_* requests of one recovery
  std::chrono::milliseconds drain_read{100};    // one bulk-in read while draining
  int abort_retries = 5;                        // INITIATE_ABORT_* answered "try later"
};

class UsbtmcTransport : public Transport {
 public:
  // Largest transfer asked of the device, and largest sent to it, in payload bytes.
  static constexpr std::uint32_t kMaxInTransfer = 1u << 20;
  static constexpr std::size_t kMaxOutPayload = 64 * 1024 - usbtmc::kHeaderSize;

  explicit UsbtmcTransport(std::unique_ptr<UsbDevice> device, UsbtmcTimings timings = {});
  // Aborts a bulk-in transfer still in flight, so the next session starts clean.
  ~UsbtmcTransport() override;

  // Reads the capabilities, clears the device (a crash or a close in mid-read may have left
  // an old bTag, half a message or a halted endpoint) and asserts REN when the USB488
  // interface takes REN_CONTROL. Only a device that is gone fails it.
  ViStatus Start();

  ViStatus Write(std::span<const std::byte> data, bool end, Deadline deadline) override;
  ViStatus Read(std::span<std::byte> buffer, Deadline deadline, ReadResult* result) override;
  bool EndsOnLineFeed() const override { return false; }
  bool DropsLateReplies() const override { return true; }
  // INITIATE_CLEAR, CHECK_CLEAR_STATUS while pending, then both bulk halts cleared. Each step
  // has its own budget.
  ViStatus Clear(Deadline deadline) override;
  // USB488 READ_STATUS_BYTE; the byte comes on the interrupt endpoint when there is one.
  ViStatus ReadStatusByte(Deadline deadline, ViUInt16* status_byte) override;

  std::uint8_t usb488_interface_capabilities() const { return usb488_capabilities_; }

 private:
  ViStatus ReceiveChunk(Deadline deadline);
  void ResetIn();
  // After a time-out: abort the bulk-in transfer with its tag, falling back to a clear.
  void RecoverIn(std::uint8_t tag);
  void RecoverOut(std::uint8_t tag);
  // A stalled endpoint: clear its halt and the device.
  ViStatus RecoverStall(std::uint8_t endpoint);
  // INITIATE_ABORT_BULK_IN/OUT, asked again while the device says "try later". The device's
  // last answer, or 0 when the request itself failed.
  std::uint8_t InitiateAbort(std::uint8_t request, std::uint8_t tag, std::uint8_t endpoint);
  // Polls a CHECK_* request while it answers PENDING, draining bulk-in when asked to; the
  // last status, or 0 when a request failed.
  std::uint8_t PollCheck(std::uint8_t request, std::uint8_t type, std::uint16_t index,
                         std::size_t length);
  void DrainBulkIn();
  ViStatus Control(std::uint8_t type, std::uint8_t request, std::uint16_t value,
                   std::uint16_t index, std::span<std::byte> reply);
  ViStatus SendTransfer(std::span<const std::byte> transfer, Deadline deadline);

  std::unique_ptr<UsbDevice> device_;
  UsbtmcTimings timings_;
  std::uint8_t last_tag_ = 0;
  std::uint8_t status_tag_ = 1;  // READ_STATUS_BYTE's own bTag, 2..127
  std::uint8_t usb488_capabilities_ = 0;
  // The last byte of a message still open: EOM must travel with at least one byte.
  std::optional<std::byte> held_byte_;
  std::vector<std::byte> staging_;
  std::size_t staged_begin_ = 0;
  std::size_t staged_end_ = 0;
  bool chunk_ended_short_ = true;

  // The bulk-in transfer being received.
  bool in_transfer_ = false;
  std::uint8_t in_tag_ = 0;
  usbtmc::Header header_{};
  std::size_t header_received_ = 0;
  std::uint32_t data_left_ = 0;
  std::size_t padding_left_ = 0;
  bool end_of_message_ = false;
};

}  // namespace quarvelo::visa

#endif  // QUARVELO_PLATFORM_VISA_USBTMC_USBTMC_TRANSPORT_H_
