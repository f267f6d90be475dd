// The formatted I/O engines. Reads: canned byte streams, each cut at every possible packet
// boundary, over a transport with END (VXI-11, HiSLIP, USB-TMC) and one without (raw socket).
// Writes: the text of each conversion and where a message ends.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdarg>
#include <cstring>
#include <deque>
#include <string>
#include <tuple>
#include <vector>

#include "platform/visa/format_print.h"
#include "platform/visa/format_scan.h"
#include "platform/visa/message_reader.h"
#include "platform/visa/session.h"

namespace quarvelo::visa {
namespace {

// A transport that plays back canned chunks, each with or without END, and records writes,
// "<END>" where END was sent.
class FakeTransport : public Transport {
 public:
  explicit FakeTransport(bool ends_on_line_feed) : ends_on_line_feed_(ends_on_line_feed) {}

  void Add(std::string bytes, bool end) { chunks_.emplace_back(std::move(bytes), end); }

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
    if (end) written_ += "<END>";
    return VI_SUCCESS;
  }

  ViStatus Read(std::span<std::byte> buffer, Deadline, ReadResult* result) override {
    *result = ReadResult{};
    ++reads_;
    if (chunks_.empty()) return VI_ERROR_TMO;
    auto& [bytes, end] = chunks_.front();
    result->count = std::min(buffer.size(), bytes.size());
    std::memcpy(buffer.data(), bytes.data(), result->count);
    bytes.erase(0, result->count);
    if (bytes.empty()) {
      result->end = end;
      chunks_.pop_front();
    }
    return VI_SUCCESS;
  }

  bool EndsOnLineFeed() const override { return ends_on_line_feed_; }
  ViStatus Clear(Deadline) override { return VI_SUCCESS; }

  const std::string& written() const { return written_; }
  int reads() const { return reads_; }

 private:
  bool ends_on_line_feed_;
  std::deque<std::pair<std::string, bool>> chunks_;
  std::string written_;
  int reads_ = 0;
};

ViStatus Scan(MessageReader* reader, const char* format, ...) {
  VaArgs args;
  va_start(args.list, format);
  const ViStatus status = ScanFormatted(reader, format, &args);
  va_end(args.list);
  return status;
}

class FormatScanTest : public ::testing::TestWithParam<bool> {
 protected:
  bool socket() const { return GetParam(); }
};

INSTANTIATE_TEST_SUITE_P(Transports, FormatScanTest, ::testing::Values(false, true),
                         [](const auto& info) { return info.param ? "Socket" : "EndFlag"; });

// Runs `check` on a reader over `stream`, whole, one byte per chunk and cut once at every
// offset, followed by a next message.
template <typename Check>
void ForEverySplit(bool socket, const std::string& stream, std::size_t buffer, Check check) {
  std::vector<std::vector<std::size_t>> splits{{}, {}};
  for (std::size_t cut = 1; cut < stream.size(); ++cut) {
    splits[1].push_back(cut);
    splits.push_back({cut});
  }
  for (const auto& split : splits) {
    FakeTransport transport(socket);
    transport.AddSplit(stream, split);
    transport.Add("NEXT\n", !socket);
    MessageReader reader(&transport, buffer);
    check(reader, split.size());
  }
}

// Whatever the last read left unread belonged to its reply: the next one starts clean.
void ExpectNextMessage(MessageReader* reader) {
  char next[16] = {};
  ASSERT_EQ(Scan(reader, "%t", next), VI_SUCCESS);
  EXPECT_STREQ(next, "NEXT\n");
}

TEST_P(FormatScanTest, TextReadsToEndWithinItsBound) {
  const struct {
    std::string stream;
    const char* format;
    int capacity;  // for "%#t"; 0 when the format has its own bound
    std::string expected;
  } cases[] = {
      {"KEYSIGHT TECHNOLOGIES,DSO-X 3034T\n", "%t", 0, "KEYSIGHT TECHNOLOGIES,DSO-X 3034T\n"},
      {"ABC\r\n", "%t", 0, "ABC\r\n"},
      {"a\tb\n", "%t", 0, "a\tb\n"},
      {"0123456789\n", "%4t", 0, "0123"},
      {"0123456789\n", "%#t", 5, "0123"},
      {"\n", "%t", 0, "\n"},
      {"+1.0E+00\n", "%T", 0, "+1.0E+00\n"},
  };
  for (const auto& c : cases) {
    ForEverySplit(socket(), c.stream, 16, [&c](MessageReader& reader, std::size_t cuts) {
      char text[64] = {};
      ViInt32 capacity = c.capacity;
      const ViStatus status =
          c.capacity > 0 ? Scan(&reader, c.format, &capacity, text) : Scan(&reader, c.format, text);
      ASSERT_EQ(status, VI_SUCCESS) << c.stream;
      const ViInt32 stored = c.capacity > 0 ? static_cast<ViInt32>(c.expected.size()) : 0;
      EXPECT_EQ(std::pair(std::string(text), capacity), std::pair(c.expected, stored))
          << c.stream << " split " << cuts;
      ExpectNextMessage(&reader);
    });
  }
}

TEST_P(FormatScanTest, NumberListsInTheInstrumentsForms) {
  const struct {
    std::string stream;
    ViInt32 capacity;
    std::vector<double> expected;
  } cases[] = {
      {"+1.00000000E-03,-5,9.9E+37\n", 20, {1e-3, -5, 9.9e37}},
      {"+7680\n", 20, {7680}},
      {"0,1,+100,+1.2E+01,-3.5e-2,.5\n", 20, {0, 1, 100, 12, -0.035, 0.5}},
      {"1,2,3,4,5\n", 3, {1, 2, 3}},
      {"garbage\n", 20, {}},
      {"1,2,x\n", 20, {1, 2}},
  };
  for (const auto& c : cases) {
    ForEverySplit(socket(), c.stream, 8, [&c](MessageReader& reader, std::size_t) {
      double values[20] = {};
      ViInt32 count = c.capacity;
      ASSERT_EQ(Scan(&reader, "%,#lf\n", &count, values), VI_SUCCESS) << c.stream;
      EXPECT_EQ(std::vector<double>(values, values + count), c.expected) << c.stream;
    });
  }
}

std::string Block(const std::string& data) {
  const std::string length = std::to_string(data.size());
  std::string block(1, '#');  // appended piecewise: GCC 12 misreads "#" + string at -O3
  block.append(std::to_string(length.size())).append(length).append(data);
  return block;
}

// Block data with LF, NUL and every other byte value in it.
std::string BinaryData(std::size_t size) {
  std::string data(size, '\0');
  for (std::size_t k = 0; k < size; ++k) data[k] = static_cast<char>((k * 7 + 10) & 0xFF);
  return data;
}

// A definite block of every byte value, and an indefinite one ending at END (on a socket the
// LF is the end, so its data must not contain one there).
TEST_P(FormatScanTest, DefiniteAndIndefiniteBlocksAtEverySplit) {
  const std::string binary = BinaryData(40), indefinite = socket() ? "abc\x01\x02\xff" : binary;
  for (const auto& [stream, block] :
       {std::pair{Block(binary) + "\n", binary}, std::pair{"#0" + indefinite + "\n", indefinite}}) {
    const std::string& data = block;  // clang does not capture structured bindings
    ForEverySplit(socket(), stream, 16, [&data](MessageReader& reader, std::size_t) {
      std::vector<char> area(101, 'X');
      ViInt32 count = 100;
      ASSERT_EQ(Scan(&reader, "%#b\n", &count, area.data()), VI_SUCCESS);
      EXPECT_EQ(std::string(area.data(), count + 1), data + 'X');  // nothing written past it
      ExpectNextMessage(&reader);
    });
  }
}

// Directives the program does not use: a number, a word after a literal, a word block; and
// formats that are no formats, which read nothing.
TEST_P(FormatScanTest, ScalarsLiteralsAndBigEndianWordBlocks) {
  FakeTransport transport(socket());
  transport.AddSplit("+0,\"No error\"\n", {3, 7});
  transport.Add(std::string("#14\x01\x02\x80\x00\n", 8), !socket());
  MessageReader reader(&transport, 4);
  int number = 99;
  char word[32] = {};
  EXPECT_EQ(Scan(&reader, "%", &number), VI_ERROR_INV_FMT);
  EXPECT_EQ(Scan(&reader, "%q", &number), VI_ERROR_INV_FMT);
  EXPECT_EQ(Scan(&reader, "%b", &number), VI_ERROR_INV_FMT);  // a block needs a count
  EXPECT_EQ(Scan(&reader, "%[a-z]", &number), VI_ERROR_NSUP_FMT);
  ASSERT_EQ(Scan(&reader, "%d,\"%s", &number, word), VI_SUCCESS);
  ASSERT_EQ(reader.DiscardResponse(), VI_SUCCESS);
  std::int16_t words[4] = {};
  ViInt32 count = 4;
  ASSERT_EQ(Scan(&reader, "%#hb", &count, words), VI_SUCCESS);
  EXPECT_EQ(std::make_tuple(number, std::string(word), count, words[0], words[1]),
            std::make_tuple(0, std::string("No"), 2, std::int16_t{0x0102}, std::int16_t{-32768}));
}

// A header promising 50 bytes of which 9 arrive before the message ends (END) or nothing
// more comes (socket), and headers that are no headers.
TEST_P(FormatScanTest, BlockCutShortOrMalformedIsAnError) {
  const struct {
    std::string stream;
    ViStatus status;  // with END; a socket waits for the rest in vain
    ViInt32 most;
  } cases[] = {
      {"#250" + BinaryData(9) + "\n", VI_ERROR_IO, 49},
      {"no block\n", VI_SUCCESS, 0},  // no '#': nothing matched, nothing stored
      {"#x12\n", VI_ERROR_IO, 0},
      {"#3a1\n", VI_ERROR_IO, 0},
  };
  for (const auto& c : cases) {
    FakeTransport transport(socket());
    transport.Add(c.stream, !socket());
    MessageReader reader(&transport, 16);
    std::vector<char> area(100);
    ViInt32 count = 100;
    const ViStatus expected = socket() && c.most > 0 ? VI_ERROR_TMO : c.status;
    EXPECT_EQ(Scan(&reader, "%#b", &count, area.data()), expected) << c.stream;
    EXPECT_TRUE(count >= 0 && count <= c.most) << c.stream << " " << count;
  }
}

// What a read leaves of its reply goes with the flush before the next message: the rest of a
// block larger than the area or longer than its header says; a reply cut off by a time-out
// (the read returns none of it) with its late rest, or with none; the late rest of a block,
// whose LF bytes only the header's length tells from the end. At a boundary nothing is read.
TEST_P(FormatScanTest, FlushDiscardsOnlyAnUnreadResponse) {
  const std::string large = Block(BinaryData(300)) + "\n";
  const std::string line_feeds = Block(std::string(100, '\n')) + "\n";
  const struct {
    const char* format;
    std::string stream;
    std::size_t cut;  // where the stream is split; when it times out, what came before
    bool time_out;
    std::string expected;  // what the read stores when it does not time out
  } cases[] = {
      {"%#b\n", large, 3, false, BinaryData(50)},
      {"%#b\n", large, 60, false, BinaryData(50)},
      {"%#b\n", large, 200, false, BinaryData(50)},
      {"%#b", "#15abcdefgh\n", 0, false, "abcde"},
      {"%#b\n", "#12AB\n", 0, false, "AB"},
      {"%#t", "PARTIAL\n", 7, true, ""},
      {"%#t", "", 0, true, ""},
      {"%#b", line_feeds, 30, true, ""},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.stream.substr(0, 12) + " cut at " + std::to_string(c.cut));
    FakeTransport transport(socket());
    if (!c.time_out) {
      transport.AddSplit(c.stream, c.cut > 0 ? std::vector{c.cut} : std::vector<std::size_t>{});
    } else if (c.cut > 0) {
      transport.Add(c.stream.substr(0, c.cut), false);
    }
    MessageReader reader(&transport, 32);
    std::vector<char> area(100, 'X');
    ViInt32 count = 50;
    const ViStatus status = Scan(&reader, c.format, &count, area.data());
    ASSERT_EQ(status, c.time_out ? VI_ERROR_TMO : VI_SUCCESS);
    if (c.time_out && c.cut > 0) transport.Add(c.stream.substr(c.cut), !socket());
    if (!c.time_out) {
      ASSERT_LE(count, 50);  // nothing written past what the read stores
      EXPECT_EQ(std::string(area.data(), count + 1), c.expected + 'X');
    }
    if (!c.stream.empty()) transport.Add("NEXT\n", !socket());
    const bool at_boundary = c.stream == Block(c.expected) + "\n";  // read whole
    EXPECT_EQ(reader.HasUnreadResponse(), !at_boundary);
    const int reads = transport.reads();
    ASSERT_EQ(reader.DiscardResponse(), VI_SUCCESS);
    EXPECT_FALSE(reader.HasUnreadResponse());
    if (at_boundary) {
      EXPECT_EQ(transport.reads(), reads);
    }
    if (!c.stream.empty()) ExpectNextMessage(&reader);
  }
}

// Records what would go on the wire, "<END>" where END was sent.
struct RecordingOutput : public FormattedOutput {
  ViStatus Append(std::string_view data) override {
    wire += data;
    return VI_SUCCESS;
  }
  ViStatus EndMessage() override {
    wire += "<END>";
    return VI_SUCCESS;
  }
  std::string wire;
};

std::string Error(ViStatus status) { return "error " + std::to_string(status); }

// What one formatted write sends, or the error it returns.
std::string Printed(const char* format, ...) {
  RecordingOutput output;
  VaArgs args;
  va_start(args.list, format);
  const ViStatus status = PrintFormatted(format, &args, &output);
  va_end(args.list);
  return status == VI_SUCCESS ? output.wire : Error(status);
}

// An LF in the format (also typed as backslash and n) ends the message; without one the output
// stays pending, and an LF through an argument is data.
TEST(FormatPrint, ConversionsAndRejectedFormats) {
  const ViInt32 ints[3] = {1, -2, 3};
  const double reals[2] = {0.5, 2};
  const char bytes[3] = {'a', '\n', 'b'};
  EXPECT_EQ(Printed(":TIMebase:SCALe 4E-08\n"), ":TIMebase:SCALe 4E-08\n<END>");
  EXPECT_EQ(Printed("*IDN?\\n;*OPC?\n"), "*IDN?\n<END>;*OPC?\n<END>");
  EXPECT_EQ(Printed("100%%"), "100%");
  EXPECT_EQ(Printed("%5.2f|%-4d|%x|%c|%g|%lld", 3.14159, 7, 255, 'Z', 0.05, 1234567890123LL),
            " 3.14|7   |ff|Z|0.05|1234567890123");
  EXPECT_EQ(Printed("%*d|%.*f", 4, 12, 1, 2.25), "  12|2.2");
  EXPECT_EQ(Printed("%,3d", ints), "1,-2,3");
  EXPECT_EQ(Printed("%,#lf", 2, reals), "0.500000,2.000000");
  EXPECT_EQ(Printed("%#b", 3, bytes), std::string("#13a\nb"));
  EXPECT_EQ(Printed(":DISP:ANN:TEXT \"%s\"", "two\nlines"), ":DISP:ANN:TEXT \"two\nlines\"");
  EXPECT_EQ(Printed("abc %"), Error(VI_ERROR_INV_FMT));
  EXPECT_EQ(Printed("%y", 1), Error(VI_ERROR_NSUP_FMT));
  EXPECT_EQ(Printed("%s", static_cast<const char*>(nullptr)), Error(VI_ERROR_USER_BUF));
}

ViStatus SessionPrint(Session* session, const char* format, ...) {
  VaArgs args;
  va_start(args.list, format);
  const ViStatus status = session->Printf(format, &args);
  va_end(args.list);
  return status;
}

// Output without a line feed waits for a flush, which sends it with END, or a discard.
TEST(FormatPrint, SessionSendsEndOnlyWithTheMessagesEnd) {
  auto transport = std::make_unique<FakeTransport>(false);
  FakeTransport* wire = transport.get();
  Session session(std::move(transport));
  ASSERT_EQ(SessionPrint(&session, ":RUN"), VI_SUCCESS);
  EXPECT_EQ(wire->written(), "");
  ASSERT_EQ(session.Flush(VI_WRITE_BUF), VI_SUCCESS);
  ASSERT_EQ(SessionPrint(&session, ":STOP"), VI_SUCCESS);
  ASSERT_EQ(session.Flush(VI_WRITE_BUF_DISCARD), VI_SUCCESS);
  ASSERT_EQ(session.Flush(VI_WRITE_BUF), VI_SUCCESS);
  EXPECT_EQ(wire->written(), ":RUN<END>");
}

}  // namespace
}  // namespace quarvelo::visa
