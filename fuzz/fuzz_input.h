// Takes a fuzzer's input apart: a few leading bytes steer the harness (which directive, how
// the stream is cut), the rest is what the peer sends. Every getter has a default for an input
// that ran out, so any byte string is a valid input.
#ifndef QUARVELO_FUZZ_FUZZ_INPUT_H_
#define QUARVELO_FUZZ_FUZZ_INPUT_H_

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace quarvelo::fuzz {

class FuzzInput {
 public:
  FuzzInput(const std::uint8_t* data, std::size_t size) : data_(data), size_(size) {}

  bool empty() const { return offset_ == size_; }
  std::size_t remaining() const { return size_ - offset_; }

  std::uint8_t Byte() { return offset_ < size_ ? data_[offset_++] : 0; }

  // Up to `count` bytes (fewer when the input runs out).
  std::span<const std::byte> Bytes(std::size_t count) {
    if (count > remaining()) count = remaining();
    const auto part = std::as_bytes(std::span(data_ + offset_, count));
    offset_ += count;
    return part;
  }
  std::span<const std::byte> Rest() { return Bytes(remaining()); }
  std::string_view RestText() {
    const auto rest = Rest();
    return {reinterpret_cast<const char*>(rest.data()), rest.size()};
  }

 private:
  const std::uint8_t* data_;
  std::size_t size_;
  std::size_t offset_ = 0;
};

}  // namespace quarvelo::fuzz

// A finding the sanitizers cannot see (a broken invariant): abort so that libFuzzer keeps the
// input.
#define QUARVELO_FUZZ_CHECK(condition)  \
  do {                                  \
    if (!(condition)) __builtin_trap(); \
  } while (false)

#endif  // QUARVELO_FUZZ_FUZZ_INPUT_H_
