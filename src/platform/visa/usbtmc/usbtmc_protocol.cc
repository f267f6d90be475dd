#include "platform/visa/usbtmc/usbtmc_protocol.h"

namespace quarvelo::visa::usbtmc {
namespace {

void PutLittleEndian32(Header* header, std::size_t at, std::uint32_t value) {
  for (int k = 0; k < 4; ++k) (*header)[at + k] = static_cast<std::byte>((value >> (8 * k)) & 0xFF);
}

std::uint32_t GetLittleEndian32(std::span<const std::byte, kHeaderSize> header, std::size_t at) {
  std::uint32_t value = 0;
  for (int k = 3; k >= 0; --k)
    value = (value << 8) | std::to_integer<std::uint32_t>(header[at + k]);
  return value;
}

Header Start(std::uint8_t message_id, std::uint8_t tag) {
  Header header{};
  header[0] = std::byte{message_id};
  header[1] = std::byte{tag};
  header[2] = static_cast<std::byte>(~tag & 0xFF);
  return header;
}

bool TagPairValid(std::span<const std::byte, kHeaderSize> header) {
  const auto tag = std::to_integer<std::uint8_t>(header[1]);
  const auto inverse = std::to_integer<std::uint8_t>(header[2]);
  return tag != 0 && static_cast<std::uint8_t>(~tag) == inverse;
}

}  // namespace

std::uint8_t NextTag(std::uint8_t tag) { return static_cast<std::uint8_t>(tag % 255 + 1); }

std::size_t PaddedLength(std::size_t length) { return (length + 3) & ~std::size_t{3}; }

Header DevDepMsgOutHeader(std::uint8_t tag, std::uint32_t transfer_size, bool end_of_message) {
  Header header = Start(kDevDepMsgOut, tag);
  PutLittleEndian32(&header, 4, transfer_size);
  header[8] = end_of_message ? std::byte{1} : std::byte{0};
  return header;
}

Header RequestDevDepMsgInHeader(std::uint8_t tag, std::uint32_t max_transfer_size) {
  Header header = Start(kRequestDevDepMsgIn, tag);
  PutLittleEndian32(&header, 4, max_transfer_size);
  return header;  // no term char: messages end at EOM
}

Header DevDepMsgInHeader(std::uint8_t tag, std::uint32_t transfer_size, bool end_of_message) {
  Header header = Start(kDevDepMsgIn, tag);
  PutLittleEndian32(&header, 4, transfer_size);
  header[8] = end_of_message ? std::byte{1} : std::byte{0};
  return header;
}

std::optional<InHeader> ParseDevDepMsgInHeader(std::span<const std::byte, kHeaderSize> header) {
  if (std::to_integer<std::uint8_t>(header[0]) != kDevDepMsgIn || !TagPairValid(header)) {
    return std::nullopt;
  }
  return InHeader{std::to_integer<std::uint8_t>(header[1]), GetLittleEndian32(header, 4),
                  (std::to_integer<std::uint8_t>(header[8]) & 1) != 0};
}

std::optional<OutHeader> ParseOutHeader(std::span<const std::byte, kHeaderSize> header) {
  if (!TagPairValid(header)) return std::nullopt;
  return OutHeader{std::to_integer<std::uint8_t>(header[0]),
                   std::to_integer<std::uint8_t>(header[1]), GetLittleEndian32(header, 4),
                   (std::to_integer<std::uint8_t>(header[8]) & 1) != 0};
}

}  // namespace quarvelo::visa::usbtmc
