// A transport that plays back canned chunks, so that the formatted I/O can be checked against
// byte streams split at any packet boundary without a network.
#ifndef QUARVELO_TESTS_VISA_FAKE_TRANSPORT_H_
#define QUARVELO_TESTS_VISA_FAKE_TRANSPORT_H_

#include <algorithm>
#include <cstring>
#include <deque>
#include <string>
#include <vector>

#include "platform/visa/transport.h"

namespace quarvelo::visa::testing {

struct Chunk {
  std::string bytes;
  bool end = false;
};

class FakeTransport : public Transport {
 public:
  explicit FakeTransport(bool ends_on_line_feed) : ends_on_line_feed_(ends_on_line_feed) {}

  void Add(std::string bytes, bool end) { chunks_.push_back({std::move(bytes), end}); }

  // `stream` cut at the given offsets; END (when the transport has it) on the last byte.
  void AddSplit(const std::string& stream, const std::vector<std::size_t>& cuts) {
    std::size_t start = 0;
    for (const std::size_t cut : cuts) {
      Add(stream.substr(start, cut - start), false);
      start = cut;
    }
    Add(stream.substr(start), !ends_on_line_feed_);
  }

  ViStatus Write(std::span<const std::byte> data, bool end, Deadline) override {
    written_.append(reinterpret_cast<const char*>(data.data()), data.size());
    if (end) ++messages_ended_;
    return VI_SUCCESS;
  }

  ViStatus Read(std::span<std::byte> buffer, Deadline, ReadResult* result) override {
    *result = ReadResult{};
    ++reads_;
    if (chunks_.empty()) return VI_ERROR_TMO;
    Chunk& chunk = chunks_.front();
    const std::size_t take = std::min(buffer.size(), chunk.bytes.size());
    std::memcpy(buffer.data(), chunk.bytes.data(), take);
    result->count = take;
    chunk.bytes.erase(0, take);
    if (chunk.bytes.empty()) {
      result->end = chunk.end;
      chunks_.pop_front();
    }
    return VI_SUCCESS;
  }

  bool EndsOnLineFeed() const override { return ends_on_line_feed_; }
  ViStatus Clear(Deadline) override { return VI_SUCCESS; }

  const std::string& written() const { return written_; }
  int messages_ended() const { return messages_ended_; }
  int reads() const { return reads_; }

 private:
  bool ends_on_line_feed_;
  std::deque<Chunk> chunks_;
  std::string written_;
  int messages_ended_ = 0;
  int reads_ = 0;
};

}  // namespace quarvelo::visa::testing

#endif  // QUARVELO_TESTS_VISA_FAKE_TRANSPORT_H_
