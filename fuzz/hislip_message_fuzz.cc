// HiSLIP messages as either end reads them, without sockets: the header decoder (prologue,
// type, control code, parameter, payload length) over a stream of messages whose payloads are
// skipped as a reader skips them, whatever length they announce, and the 8-byte sizes of the
// maximum message size exchange. Decoding and encoding must be each other's inverse. The
// client's own handling of what it decodes (stale ids, errors, device clear) needs its
// connections and is taken apart by hislip_client_fuzz.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>

#include "fuzz/fuzz_input.h"
#include "platform/visa/hislip/message.h"

// Input: messages back to back, each a 16-byte header and as much of its payload as the input
// still holds; a header without the "HS" prologue is refused and the next 16 bytes are tried.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  namespace hislip = quarvelo::visa::hislip;
  quarvelo::fuzz::FuzzInput input(data, size);
  while (input.remaining() >= hislip::kHeaderSize) {
    const auto bytes = input.Bytes(hislip::kHeaderSize);
    const std::span<const std::byte, hislip::kHeaderSize> fixed(bytes.data(), bytes.size());
    hislip::Header header;
    if (!hislip::DecodeHeader(fixed, &header)) {
      QUARVELO_FUZZ_CHECK(bytes[0] != std::byte{'H'} || bytes[1] != std::byte{'S'});
      continue;
    }
    const hislip::HeaderBytes again = hislip::EncodeHeader(header);
    QUARVELO_FUZZ_CHECK(std::equal(again.begin(), again.end(), bytes.begin()));
    const auto payload = input.Bytes(static_cast<std::size_t>(
        std::min<std::uint64_t>(header.payload_length, input.remaining())));
    if (payload.size() == 8) {
      const std::span<const std::byte, 8> size_bytes(payload.data(), 8);
      const auto encoded = hislip::EncodeUint64(hislip::DecodeUint64(size_bytes));
      QUARVELO_FUZZ_CHECK(std::equal(encoded.begin(), encoded.end(), payload.begin()));
    }
    if (header.type == hislip::MessageType::kInitializeResponse) {
      QUARVELO_FUZZ_CHECK(hislip::InitializeResponseParameter(
                              static_cast<std::uint16_t>(header.parameter >> 16),
                              hislip::SessionIdOf(header.parameter)) == header.parameter);
    }
  }
  return 0;
}
