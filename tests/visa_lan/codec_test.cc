// Wire codecs: XDR, ONC RPC headers and record marking, the portmapper's answers, the VXI-11
// core records, the HiSLIP header and the VXI-11 host-field grammar.
#include <gtest/gtest.h>

#include <string>
#include <tuple>

#include "platform/visa/hislip/message.h"
#include "platform/visa/vxi11/core_channel.h"
#include "platform/visa/vxi11/portmapper.h"
#include "platform/visa/vxi11/rpc.h"
#include "platform/visa/vxi11/vxi11_transport.h"
#include "platform/visa/vxi11/xdr.h"
#include "sim/server/portmapper_server.h"

namespace quarvelo::visa {
namespace {

xdr::Bytes Hex(std::initializer_list<int> values) {
  xdr::Bytes bytes;
  for (int v : values) bytes.push_back(static_cast<std::byte>(v));
  return bytes;
}

// Strings are length-prefixed and padded to four bytes; malformed input fails, without reading
// past the end, and a failed reader stays failed.
TEST(XdrTest, OpaqueOnTheWire) {
  const struct {
    const char* text;  // nullptr: malformed
    xdr::Bytes wire;
  } cases[] = {
      {"", Hex({0, 0, 0, 0})},
      {"a", Hex({0, 0, 0, 1, 'a', 0, 0, 0})},
      {"inst", Hex({0, 0, 0, 4, 'i', 'n', 's', 't'})},
      {"inst0", Hex({0, 0, 0, 5, 'i', 'n', 's', 't', '0', 0, 0, 0})},
      {nullptr, {}},
      {nullptr, Hex({0, 0, 5})},
      {nullptr, Hex({0, 0, 0, 5, 'a', 'b', 'c', 'd'})},
      {nullptr, Hex({0xFF, 0xFF, 0xFF, 0xFF, 'a', 'b', 'c', 'd'})},
      {nullptr, Hex({0, 0, 0, 1, 'a'})},
  };
  for (const auto& c : cases) {
    xdr::Reader reader(c.wire);
    std::string decoded;
    std::uint32_t word = 0;
    if (c.text == nullptr) {
      EXPECT_FALSE(reader.GetString(&decoded) || reader.ok() || reader.GetUint32(&word))
          << c.wire.size();
      continue;
    }
    xdr::Writer writer;
    writer.PutString(c.text);
    EXPECT_EQ(writer.bytes(), c.wire) << c.text;
    ASSERT_TRUE(reader.GetString(&decoded));
    EXPECT_EQ(decoded, c.text);
    EXPECT_EQ(reader.remaining(), 0u);
  }
  // A reader borrows its bytes: they must outlive it.
  const xdr::Bytes opaque = Hex({0, 0, 0, 8, 1, 2, 3, 4, 5, 6, 7, 8}), two = Hex({0, 0, 0, 2});
  std::span<const std::byte> data;
  EXPECT_FALSE(xdr::Reader(opaque).GetOpaque(&data, 4)) << "longer than the caller allows";
  bool flag = false;
  EXPECT_FALSE(xdr::Reader(two).GetBool(&flag));
}

TEST(RpcTest, MalformedHeadersAreRejected) {
  xdr::Writer credential;  // a credential body longer than RPC allows
  for (std::uint32_t word : {1u, 0u, 2u, 100000u, 2u, 3u, 1u, 500u}) credential.PutUint32(word);
  credential.PutRaw(xdr::Bytes(500));
  const xdr::Bytes cases[] = {
      {},
      Hex({0, 0, 0, 1}),                                   // xid only
      Hex({0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 2}),           // a reply where a call belongs
      Hex({0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0, 2, 0, 1, 0}),  // call cut inside program
      credential.bytes(),
  };
  rpc::CallHeader header;
  bool version_ok = false;
  for (const auto& wire : cases) {
    xdr::Reader in(wire);
    EXPECT_FALSE(rpc::GetCallHeader(in, &header, &version_ok)) << wire.size();
  }
  // A reply whose accept status is out of range; a denied reply decodes, as not accepted.
  const xdr::Bytes bad_stat =
      Hex({0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 99});
  rpc::ReplyHeader decoded;
  xdr::Reader reply_in(bad_stat);
  EXPECT_FALSE(rpc::GetReplyHeader(reply_in, &decoded));
  xdr::Writer denied;
  rpc::PutRpcMismatchReply(denied, 9);
  xdr::Reader denied_in(denied.bytes());
  ASSERT_TRUE(rpc::GetReplyHeader(denied_in, &decoded));
  EXPECT_FALSE(decoded.accepted);
}

xdr::Bytes Pattern(std::size_t size) {
  xdr::Bytes bytes(size);
  for (std::size_t i = 0; i < size; ++i) bytes[i] = static_cast<std::byte>(i * 13 + 1);
  return bytes;
}

TEST(RecordMarkingTest, RecordsSurviveEverySplitOfTheStream) {
  // Two records, the first in three fragments, the second empty, the third in one.
  const xdr::Bytes first = Pattern(10);
  const xdr::Bytes third = Pattern(7);
  xdr::Bytes stream;
  rpc::AppendRecord(first, &stream, 4);
  rpc::AppendRecord({}, &stream);
  rpc::AppendRecord(third, &stream);
  ASSERT_EQ(stream.size(), 3 * 4 + 10 + 4 + 4 + 7u);
  for (std::size_t split = 0; split <= stream.size(); ++split) {
    for (std::size_t second_split = split; second_split <= stream.size(); ++second_split) {
      rpc::RecordAssembler assembler(1024);
      ASSERT_TRUE(assembler.Feed(std::span(stream).first(split)));
      ASSERT_TRUE(assembler.Feed(std::span(stream).subspan(split, second_split - split)));
      ASSERT_TRUE(assembler.Feed(std::span(stream).subspan(second_split)));
      for (const xdr::Bytes& record : {first, xdr::Bytes{}, third}) {
        ASSERT_TRUE(assembler.HasRecord()) << split << "," << second_split;
        EXPECT_EQ(assembler.PopRecord(), record) << split << "," << second_split;
      }
      EXPECT_FALSE(assembler.HasRecord());
      EXPECT_FALSE(assembler.InsideRecord());
    }
  }
}

// One huge fragment, and fragments adding up.
TEST(RecordMarkingTest, RecordBeyondTheLimitPoisonsTheAssembler) {
  for (const xdr::Bytes& stream :
       {Hex({0xFF, 0xFF, 0xFF, 0xFF, 1, 2, 3}),
        Hex({0, 0, 0, 12, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 0x80, 0, 0, 12})}) {
    rpc::RecordAssembler assembler(16);
    EXPECT_FALSE(assembler.Feed(stream)) << stream.size();
    EXPECT_TRUE(assembler.failed() && !assembler.HasRecord()) << stream.size();
  }
}

xdr::Bytes PortmapperCall(std::uint32_t version, std::uint32_t procedure,
                          portmapper::Mapping mapping) {
  xdr::Writer call;
  rpc::PutCallHeader(call, {99, portmapper::kProgram, version, procedure});
  portmapper::PutMapping(call, mapping);
  return call.Take();
}

TEST(PortmapperAnswerTest, GetPortKnowsOnlyTheVxi11CoreOverTcp) {
  const struct {
    const char* what;
    std::uint32_t version;
    portmapper::Mapping mapping;
    rpc::AcceptStat stat;
    std::uint32_t port;
  } cases[] = {
      {"core over TCP", 2, {0x0607AF, 1, 6, 0}, rpc::AcceptStat::kSuccess, 4321},
      {"core over UDP", 2, {0x0607AF, 1, 17, 0}, rpc::AcceptStat::kSuccess, 0},
      {"core version 2", 2, {0x0607AF, 2, 6, 0}, rpc::AcceptStat::kSuccess, 0},
      {"abort channel", 2, {0x0607B0, 1, 6, 0}, rpc::AcceptStat::kSuccess, 0},
      {"rpcbind version 3", 3, {0x0607AF, 1, 6, 0}, rpc::AcceptStat::kProgMismatch, 0},
  };
  for (const auto& c : cases) {
    xdr::Writer reply;
    ASSERT_TRUE(sim::AnswerPortmapperCall(
        PortmapperCall(c.version, portmapper::kProcGetPort, c.mapping), 4321, &reply));
    xdr::Reader in(reply.bytes());
    rpc::ReplyHeader header;
    ASSERT_TRUE(rpc::GetReplyHeader(in, &header)) << c.what;
    std::uint16_t port = 0;
    const bool mismatch = c.stat == rpc::AcceptStat::kProgMismatch;
    ASSERT_TRUE(mismatch || portmapper::GetPort(in, &port)) << c.what;
    const std::uint32_t served = mismatch ? 2 : 0;
    EXPECT_EQ(std::tie(header.xid, header.stat, port, header.mismatch_low, header.mismatch_high),
              std::make_tuple(99u, c.stat, c.port, served, served))
        << c.what;
  }
  xdr::Writer reply;
  EXPECT_FALSE(sim::AnswerPortmapperCall(Hex({1, 2, 3}), 4321, &reply)) << "not a call";
}

// Every truncation of a read response fails to decode.
TEST(CoreChannelTest, TruncatedReadResponseIsRejected) {
  xdr::Writer out;
  vxi11::Put(out, vxi11::DeviceReadResp{0, vxi11::kReasonEnd, Pattern(5)});
  vxi11::DeviceReadResp back;
  for (std::size_t cut = 0; cut < out.bytes().size(); ++cut) {
    xdr::Reader short_in(std::span(out.bytes()).first(cut));
    EXPECT_FALSE(vxi11::Get(short_in, &back)) << cut;
  }
  xdr::Reader in(out.bytes());
  ASSERT_TRUE(vxi11::Get(in, &back));
  EXPECT_EQ(back.data.size(), 5u);
}

TEST(HislipHeaderTest, NetworkOrderAndThePrologue) {
  const hislip::Header header{hislip::MessageType::kDataEnd, 0x01, 0xFFFFFF02u,
                              0x0102030405060708ull};
  const hislip::HeaderBytes bytes = hislip::EncodeHeader(header);
  const xdr::Bytes expected = Hex({'H', 'S', 7, 1, 0xFF, 0xFF, 0xFF, 0x02, 1, 2, 3, 4, 5, 6, 7, 8});
  EXPECT_TRUE(std::equal(bytes.begin(), bytes.end(), expected.begin(), expected.end()));
  hislip::Header back;
  ASSERT_TRUE(hislip::DecodeHeader(bytes, &back));
  EXPECT_EQ(back.payload_length, header.payload_length);
  for (std::size_t i : {0u, 1u}) {
    hislip::HeaderBytes bad = bytes;
    bad[i] = std::byte{'X'};
    EXPECT_FALSE(hislip::DecodeHeader(bad, &back)) << i;
  }
  const auto size = hislip::EncodeUint64(0x0102030405060708ull);
  EXPECT_TRUE(std::equal(size.begin(), size.end(), expected.begin() + 8, expected.end()));
}

TEST(Vxi11HostTest, HostFieldGrammar) {
  const struct {
    const char* field;
    const char* host;
    std::uint16_t port;
    bool core;
  } valid[] = {
      {"192.168.1.20", "192.168.1.20", 111, false},
      {"scope.lab", "scope.lab", 111, false},
      {"127.0.0.1:4111", "127.0.0.1", 4111, false},
      {"127.0.0.1:core:5000", "127.0.0.1", 5000, true},
      {"[::1]", "[::1]", 111, false},
      {"[::1]:4111", "[::1]", 4111, false},
      {"[fe80::1]:core:9", "[fe80::1]", 9, true},
  };
  for (const auto& c : valid) {
    const auto endpoint = ParseVxi11Host(c.field);
    ASSERT_TRUE(endpoint.has_value()) << c.field;
    EXPECT_EQ(std::tie(endpoint->host, endpoint->port, endpoint->port_is_core),
              std::make_tuple(std::string(c.host), c.port, c.core));
  }
  for (const char* field : {"", ":111", "host:", "host:0", "host:65536", "host:12ab",
                            "host:core:", "host:core", "[::1", "[::1]x", "host:-5"}) {
    EXPECT_FALSE(ParseVxi11Host(field).has_value()) << field;
  }
}

}  // namespace
}  // namespace quarvelo::visa
