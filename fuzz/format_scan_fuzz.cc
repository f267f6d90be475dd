// The formatted read over any byte stream an instrument might send: the three directives the
// program reads replies with ("%#t", "%,#lf\n", "%#b\n"), each into an area of exactly the
// size it announces so that one byte past it is a sanitizer report, over a raw socket (LF ends
// a message) or a transport with END, cut into reads wherever the input says. Each round
// writes first, as the program does, so that leftovers of the previous reply are discarded.
#include <algorithm>
#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <deque>
#include <memory>
#include <vector>

#include "fuzz/fuzz_input.h"
#include "platform/visa/session.h"
#include "platform/visa/transport.h"

namespace quarvelo::visa {
namespace {

struct Chunk {
  std::vector<std::byte> bytes;
  bool end = false;
};

// Plays the peer's reads back; a read past the last one times out at once.
class ScriptedTransport : public Transport {
 public:
  ScriptedTransport(bool ends_on_line_feed, std::deque<Chunk> chunks)
      : ends_on_line_feed_(ends_on_line_feed), chunks_(std::move(chunks)) {}

  ViStatus Write(std::span<const std::byte>, bool, Deadline) override { return VI_SUCCESS; }
  ViStatus Read(std::span<std::byte> buffer, Deadline, ReadResult* result) override {
    *result = ReadResult{};
    if (chunks_.empty()) return VI_ERROR_TMO;
    Chunk& chunk = chunks_.front();
    const std::size_t take = std::min(buffer.size(), chunk.bytes.size());
    if (take > 0) std::memcpy(buffer.data(), chunk.bytes.data(), take);
    chunk.bytes.erase(chunk.bytes.begin(), chunk.bytes.begin() + static_cast<long>(take));
    result->count = take;
    if (chunk.bytes.empty()) {
      result->end = chunk.end && !ends_on_line_feed_;
      chunks_.pop_front();
    }
    return VI_SUCCESS;
  }
  bool EndsOnLineFeed() const override { return ends_on_line_feed_; }
  ViStatus Clear(Deadline) override { return VI_SUCCESS; }

 private:
  bool ends_on_line_feed_;
  std::deque<Chunk> chunks_;
};

ViStatus Scan(Session& session, const char* format, ...) {
  VaArgs args;
  va_start(args.list, format);
  const ViStatus status = session.Scanf(format, &args);
  va_end(args.list);
  return status;
}

// Area sizes around the edges that matter: none, one, a few, the program's own.
constexpr ViInt32 kCapacities[] = {0, 1, 2, 3, 8, 20, 64, 1000};

void ScanOnce(Session& session, std::uint8_t selector) {
  const ViInt32 capacity = kCapacities[(selector >> 2) & 7];
  ViInt32 count = capacity;
  // Exactly `capacity` elements on the heap: an overrun is an ASan report.
  switch (selector & 3) {
    case 0: {
      // The count holds the area's size including its NUL.
      auto text = std::make_unique<char[]>(static_cast<std::size_t>(capacity));
      const ViStatus status = Scan(session, "%#t", &count, text.get());
      if (status >= VI_SUCCESS)
        QUARVELO_FUZZ_CHECK(count >= 0 && count <= std::max(capacity - 1, 0));
      break;
    }
    case 1: {
      auto numbers = std::make_unique<double[]>(static_cast<std::size_t>(capacity));
      const ViStatus status = Scan(session, "%,#lf\n", &count, numbers.get());
      if (status >= VI_SUCCESS) QUARVELO_FUZZ_CHECK(count >= 0 && count <= capacity);
      break;
    }
    case 2: {
      auto block = std::make_unique<std::byte[]>(static_cast<std::size_t>(capacity));
      const ViStatus status = Scan(session, "%#b\n", &count, block.get());
      if (status >= VI_SUCCESS) QUARVELO_FUZZ_CHECK(count >= 0 && count <= capacity);
      break;
    }
    case 3: {
      auto raw = std::make_unique<std::byte[]>(static_cast<std::size_t>(capacity));
      ViUInt32 got = 0;
      session.Read(std::span(raw.get(), static_cast<std::size_t>(capacity)), &got);
      QUARVELO_FUZZ_CHECK(got <= static_cast<ViUInt32>(capacity));
      break;
    }
  }
}

}  // namespace
}  // namespace quarvelo::visa

// Input: a mode byte (bit 0: raw socket), three round selectors, then chunks, each a control
// byte (low 6 bits: length, bit 6: END after it) and its bytes.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace quarvelo::visa;
  quarvelo::fuzz::FuzzInput input(data, size);
  const bool raw_socket = input.Byte() & 1;
  std::uint8_t rounds[3];
  for (auto& round : rounds) round = input.Byte();
  std::deque<Chunk> chunks;
  while (!input.empty()) {
    const std::uint8_t control = input.Byte();
    const auto bytes = input.Bytes(control & 0x3F);
    const bool end = (control & 0x40) != 0;
    if (bytes.empty() && !end) continue;  // a read returns data, END, or waits
    chunks.push_back({{bytes.begin(), bytes.end()}, end});
  }
  Session session(std::make_unique<ScriptedTransport>(raw_socket, std::move(chunks)));
  session.SetTimeout(1);
  constexpr char kQuery[] = "Q?\n";
  for (const std::uint8_t round : rounds) {
    ViUInt32 written = 0;
    session.Write(std::as_bytes(std::span(kQuery, 3)), &written);
    ScanOnce(session, round);
  }
  session.Flush(VI_READ_BUF);
  return 0;
}
