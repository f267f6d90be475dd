#include "platform/visa/hislip/message.h"

namespace quarvelo::visa::hislip {
namespace {

void PutBigEndian(std::uint64_t value, std::size_t width, std::byte* out) {
  for (std::size_t i = 0; i < width; ++i) {
    out[i] = static_cast<std::byte>(value >> (8 * (width - 1 - i)));
  }
}

std::uint64_t GetBigEndian(const std::byte* in, std::size_t width) {
  std::uint64_t value = 0;
  for (std::size_t i = 0; i < width; ++i)
    value = (value << 8) | std::to_integer<std::uint8_t>(in[i]);
  return value;
}

}  // namespace

HeaderBytes EncodeHeader(const Header& header) {
  HeaderBytes bytes{};
  bytes[0] = std::byte{'H'};
  bytes[1] = std::byte{'S'};
  bytes[2] = static_cast<std::byte>(header.type);
  bytes[3] = static_cast<std::byte>(header.control);
  PutBigEndian(header.parameter, 4, bytes.data() + 4);
  PutBigEndian(header.payload_length, 8, bytes.data() + 8);
  return bytes;
}

bool DecodeHeader(std::span<const std::byte, kHeaderSize> bytes, Header* header) {
  if (bytes[0] != std::byte{'H'} || bytes[1] != std::byte{'S'}) return false;
  header->type = static_cast<MessageType>(bytes[2]);
  header->control = std::to_integer<std::uint8_t>(bytes[3]);
  header->parameter = static_cast<std::uint32_t>(GetBigEndian(bytes.data() + 4, 4));
  header->payload_length = GetBigEndian(bytes.data() + 8, 8);
  return true;
}

std::array<std::byte, 8> EncodeUint64(std::uint64_t value) {
  std::array<std::byte, 8> bytes{};
  PutBigEndian(value, 8, bytes.data());
  return bytes;
}

std::uint64_t DecodeUint64(std::span<const std::byte, 8> bytes) {
  return GetBigEndian(bytes.data(), 8);
}

}  // namespace quarvelo::visa::hislip
