// HiSLIP (IVI-6.1) message framing: a 16-byte header ("HS", type, control code, 32-bit
// parameter, 64-bit payload length, network order) followed by the payload, on both the
// synchronous and the asynchronous channel.
#ifndef QUARVELO_PLATFORM_VISA_HISLIP_MESSAGE_H_
#define QUARVELO_PLATFORM_VISA_HISLIP_MESSAGE_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace quarvelo::visa::hislip {

inline constexpr std::uint16_t kStandardPort = 4880;
inline constexpr std::size_t kHeaderSize = 16;

enum class MessageType : std::uint8_t {
  kInitialize = 0,
  kInitializeResponse = 1,
  kFatalError = 2,
  kError = 3,
  kAsyncLock = 4,
  kAsyncLockResponse = 5,
  kData = 6,
  kDataEnd = 7,
  kDeviceClearComplete = 8,
  kDeviceClearAcknowledge = 9,
  kAsyncRemoteLocalControl = 10,
  kAsyncRemoteLocalResponse = 11,
  kTrigger = 12,
  kInterrupted = 13,
  kAsyncInterrupted = 14,
  kAsyncMaxMsgSize = 15,
  kAsyncMaxMsgSizeResponse = 16,
  kAsyncInitialize = 17,
  kAsyncInitializeResponse = 18,
  kAsyncDeviceClear = 19,
  kAsyncServiceRequest = 20,
  kAsyncStatusQuery = 21,
  kAsyncStatusResponse = 22,
  kAsyncDeviceClearAcknowledge = 23,
  kAsyncLockInfo = 24,
  kAsyncLockInfoResponse = 25,
};

enum class FatalErrorCode : std::uint8_t {
  kUnidentified = 0,
  kPoorlyFormedHeader = 1,
  kNoBothChannels = 2,
  kInvalidInitialization = 3,
  kTooManyClients = 4,
};

enum class ErrorCode : std::uint8_t {
  kUnidentified = 0,
  kUnrecognizedMessageType = 1,
  kUnrecognizedControlCode = 2,
  kUnrecognizedVendorMessage = 3,
  kMessageTooLarge = 4,
};

struct Header {
  MessageType type = MessageType::kData;
  std::uint8_t control = 0;
  std::uint32_t parameter = 0;
  std::uint64_t payload_length = 0;
};

using HeaderBytes = std::array<std::byte, kHeaderSize>;

HeaderBytes EncodeHeader(const Header& header);
// False when the prologue is not "HS". Any type byte is accepted (an unknown one is the
// receiver's to answer), so `type` may hold a value outside the enumeration.
bool DecodeHeader(std::span<const std::byte, kHeaderSize> bytes, Header* header);

// Message ids of the synchronous channel: the first after Initialize or a device clear is
// 0xFFFFFF00, each following one two more, wrapping at 32 bits.
inline constexpr std::uint32_t kFirstMessageId = 0xFFFFFF00u;
inline constexpr std::uint32_t kAnyMessageId = 0xFFFFFFFFu;
constexpr std::uint32_t NextMessageId(std::uint32_t id) { return id + 2; }

// Control code bit a client sets on Data/DataEnd when it has read the previous response
// completely ("response message transferred").
inline constexpr std::uint8_t kRmtDelivered = 0x01;

// Control code bit of InitializeResponse, DeviceClearComplete and DeviceClearAcknowledge:
// overlapped mode (clear: synchronised).
inline constexpr std::uint8_t kOverlapMode = 0x01;

inline constexpr std::uint16_t kProtocolVersion = 0x0100;  // 1.0
// Our two-character vendor id.
inline constexpr std::uint16_t kVendorId = ('Q' << 8) | 'V';

// Initialize: version in the high half, vendor id in the low half.
constexpr std::uint32_t InitializeParameter(std::uint16_t version, std::uint16_t vendor) {
  return (std::uint32_t{version} << 16) | vendor;
}
// InitializeResponse: server version in the high half, session id in the low half.
constexpr std::uint32_t InitializeResponseParameter(std::uint16_t version,
                                                    std::uint16_t session_id) {
  return (std::uint32_t{version} << 16) | session_id;
}
constexpr std::uint16_t SessionIdOf(std::uint32_t parameter) {
  return static_cast<std::uint16_t>(parameter & 0xFFFF);
}

// AsyncMaxMsgSize and its response carry the size as an 8-byte big-endian payload.
std::array<std::byte, 8> EncodeUint64(std::uint64_t value);
std::uint64_t DecodeUint64(std::span<const std::byte, 8> bytes);

}  // namespace quarvelo::visa::hislip

#endif  // QUARVELO_PLATFORM_VISA_HISLIP_MESSAGE_H_
