// USB-TMC message headers: the 12-byte bulk header, bTag sequencing and 4-byte alignment.
#ifndef QUARVELO_PLATFORM_VISA_USBTMC_USBTMC_PROTOCOL_H_
#define QUARVELO_PLATFORM_VISA_USBTMC_USBTMC_PROTOCOL_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace quarvelo::visa::usbtmc {

inline constexpr std::size_t kHeaderSize = 12;

inline constexpr std::uint8_t kDevDepMsgOut = 1;
inline constexpr std::uint8_t kRequestDevDepMsgIn = 2;
inline constexpr std::uint8_t kDevDepMsgIn = 2;

// Class-specific control requests.
inline constexpr std::uint8_t kInitiateAbortBulkOut = 1;
inline constexpr std::uint8_t kCheckAbortBulkOutStatus = 2;
inline constexpr std::uint8_t kInitiateAbortBulkIn = 3;
inline constexpr std::uint8_t kCheckAbortBulkInStatus = 4;
inline constexpr std::uint8_t kInitiateClear = 5;
inline constexpr std::uint8_t kCheckClearStatus = 6;
inline constexpr std::uint8_t kGetCapabilities = 7;
// USB488 requests.
inline constexpr std::uint8_t kReadStatusByte = 128;
inline constexpr std::uint8_t kRenControl = 160;

// bmRequestType: device-to-host, class, to the interface or to an endpoint.
inline constexpr std::uint8_t kRequestToInterface = 0xA1;
inline constexpr std::uint8_t kRequestToEndpoint = 0xA2;

inline constexpr std::uint8_t kStatusSuccess = 0x01;
inline constexpr std::uint8_t kStatusPending = 0x02;
inline constexpr std::uint8_t kStatusFailed = 0x80;
inline constexpr std::uint8_t kStatusTransferNotInProgress = 0x81;
// What the two failure codes mean in answer to INITIATE_ABORT_BULK_IN/OUT: 0x80 there is
// nothing to abort (no transfer, FIFO empty); 0x81 another transfer is in progress or the FIFO
// is not empty, so the host should try again a little later.
inline constexpr std::uint8_t kAbortNothingToAbort = kStatusFailed;
inline constexpr std::uint8_t kAbortTryLater = kStatusTransferNotInProgress;

// GET_CAPABILITIES reply (24 bytes): USB488 interface capabilities at byte 14; bit 1 says
// the interface takes REN_CONTROL, GO_TO_LOCAL and LOCAL_LOCKOUT.
inline constexpr std::size_t kCapabilitiesSize = 24;
inline constexpr std::size_t kUsb488InterfaceCapabilities = 14;
inline constexpr std::uint8_t kUsb488AcceptsRenControl = 0x02;

using Header = std::array<std::byte, kHeaderSize>;

// bTag runs 1..255 and never takes 0.
std::uint8_t NextTag(std::uint8_t tag);

// Transfers are padded with zeros to a multiple of 4 bytes.
std::size_t PaddedLength(std::size_t length);

Header DevDepMsgOutHeader(std::uint8_t tag, std::uint32_t transfer_size, bool end_of_message);
Header RequestDevDepMsgInHeader(std::uint8_t tag, std::uint32_t max_transfer_size);

struct InHeader {
  std::uint8_t tag = 0;
  std::uint32_t transfer_size = 0;
  bool end_of_message = false;
};

// Decodes a DEV_DEP_MSG_IN header; nullopt when the MsgID or the bTag/~bTag pair is wrong.
std::optional<InHeader> ParseDevDepMsgInHeader(std::span<const std::byte, kHeaderSize> header);

// The fields of an OUT header a device sees (for the simulated device in tests).
struct OutHeader {
  std::uint8_t message_id = 0;
  std::uint8_t tag = 0;
  std::uint32_t transfer_size = 0;
  bool end_of_message = false;
};
std::optional<OutHeader> ParseOutHeader(std::span<const std::byte, kHeaderSize> header);
Header DevDepMsgInHeader(std::uint8_t tag, std::uint32_t transfer_size, bool end_of_message);

}  // namespace quarvelo::visa::usbtmc

#endif  // QUARVELO_PLATFORM_VISA_USBTMC_USBTMC_PROTOCOL_H_
