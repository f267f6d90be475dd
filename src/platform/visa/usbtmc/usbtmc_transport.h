// USB-TMC over one claimed interface: DEV_DEP_MSG_OUT transfers with EOM on the last,
// REQUEST_DEV_DEP_MSG_IN / DEV_DEP_MSG_IN until EOM, headers checked (MsgID, bTag, ~bTag)
// even when they straddle bulk-in packets, and an abort (or a clear) after a time-out so that
// the device and the host agree again on what comes next.
#ifndef QUARVELO_PLATFORM_VISA_USBTMC_USBTMC_TRANSPORT_H_
#define QUARVELO_PLATFORM_VISA_USBTMC_USBTMC_TRANSPORT_H_

#include <cstdint>
#include <memory>
#include <vector>

#include "platform/visa/transport.h"
#include "platform/visa/usbtmc/usb_backend.h"
#include "platform/visa/usbtmc/usbtmc_protocol.h"

namespace quarvelo::visa {

class UsbtmcTransport : public Transport {
 public:
  // Largest transfer asked of the device, and largest sent to it, in payload bytes.
  static constexpr std::uint32_t kMaxInTransfer = 1u << 20;
  static constexpr std::size_t kMaxOutPayload = 64 * 1024 - usbtmc::kHeaderSize;

  explicit UsbtmcTransport(std::unique_ptr<UsbDevice> device);

  ViStatus Write(std::span<const std::byte> data, bool end, Deadline deadline) override;
  ViStatus Read(std::span<std::byte> buffer, Deadline deadline, ReadResult* result) override;
  bool EndsOnLineFeed() const override { return false; }
  bool DropsLateReplies() const override { return true; }
  // INITIATE_CLEAR, CHECK_CLEAR_STATUS while pending, then the bulk-out halt cleared.
  ViStatus Clear(Deadline deadline) override;

 private:
  ViStatus ReceiveChunk(Deadline deadline);
  void ResetIn();
  // After a time-out: abort the bulk-in transfer with its tag, falling back to a clear.
  void RecoverIn();
  void RecoverOut(std::uint8_t tag);
  void DrainBulkIn(Deadline deadline);
  ViStatus Control(std::uint8_t type, std::uint8_t request, std::uint16_t value,
                   std::uint16_t index, std::size_t length, Deadline deadline,
                   std::array<std::byte, 8>* reply);

  std::unique_ptr<UsbDevice> device_;
  std::uint8_t last_tag_ = 0;
  std::vector<std::byte> staging_;
  std::size_t staged_begin_ = 0;
  std::size_t staged_end_ = 0;
  bool last_chunk_short_ = true;

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
