// The VXI-11 and HiSLIP clients against the simulator's servers on loopback TCP: what both
// share, then what only HiSLIP and only VXI-11 do. A server closing mid-block and the device
// clear are in transport_loopback_test.cc, for every transport.
#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

#include "platform/visa/hislip/hislip_transport.h"
#include "platform/visa/hislip/message.h"
#include "platform/visa/tcp_connection.h"
#include "platform/visa/transport_factory.h"
#include "sim/server/hislip_server.h"
#include "sim/server/portmapper_server.h"
#include "sim/server/tcp_listener.h"
#include "sim/server/vxi11_server.h"
#include "tests/visa/test_instrument.h"

namespace quarvelo::testing {
namespace {

using visa::Clock;
using visa::HislipTransport;
using visa::ReadResult;
using visa::Transport;
namespace hislip = visa::hislip;

enum class Protocol { kVxi11, kHislip };

class LanSessionTest : public ::testing::TestWithParam<Protocol> {
 protected:
  bool vxi11() const { return GetParam() == Protocol::kVxi11; }

  void StartVxi11(sim::Vxi11ServerOptions options = {}, bool omit_last_fragment_bit = false) {
    transport_.reset();
    portmapper_.reset();
    core_ = std::make_unique<sim::Vxi11Server>(handler_, "127.0.0.1", 0, options);
    std::string error;
    ASSERT_TRUE(core_->Start(&error)) << error;
    portmapper_ = std::make_unique<sim::PortmapperServer>("127.0.0.1", 0, core_->port());
    portmapper_->set_omit_last_fragment_bit(omit_last_fragment_bit);
    ASSERT_TRUE(portmapper_->Start(&error)) << error;
  }

  void StartHislip(sim::HislipServerOptions options = {}) {
    transport_.reset();
    hislip_ = std::make_unique<sim::HislipServer>(handler_, "127.0.0.1", 0, options);
    std::string error;
    ASSERT_TRUE(hislip_->Start(&error)) << error;
  }

  // `piece`: the most reply bytes the server sends at a time (0: its default); HiSLIP's message
  // size is the client's to choose.
  void StartServer(std::size_t piece = 0) {
    piece_ = piece;
    if (vxi11()) {
      StartVxi11({.max_read_size = static_cast<std::uint32_t>(piece)});
    } else {
      StartHislip();
    }
  }

  ViStatus OpenAt(std::uint16_t port, visa::Deadline deadline,
                  std::unique_ptr<Transport>* transport) const {
    if (vxi11()) {
      return visa::OpenVxi11Transport("127.0.0.1:core:" + std::to_string(port), "inst0", deadline,
                                      transport);
    }
    std::unique_ptr<HislipTransport> hislip;
    const ViStatus status = HislipTransport::Open(
        "127.0.0.1", "hislip0", port, deadline,
        {.max_message_size = piece_ > 0 ? piece_ : visa::HislipOptions{}.max_message_size},
        &hislip);
    *transport = std::move(hislip);
    return status;
  }

  void Connect() {
    ASSERT_EQ(OpenAt(vxi11() ? core_->port() : hislip_->port(), In(2000), &transport_), VI_SUCCESS);
  }
  HislipTransport& hislip() { return static_cast<HislipTransport&>(*transport_); }
  // The reply to `query`, or the error the exchange ended with.
  std::string Ask(const std::string& query, int timeout_ms = 2000) {
    std::string reply;
    const ViStatus status = Query(*transport_, query, &reply, timeout_ms);
    return status == VI_SUCCESS ? reply : "error " + std::to_string(status);
  }

  CannedHandler handler_;
  std::unique_ptr<sim::Vxi11Server> core_;
  std::unique_ptr<sim::PortmapperServer> portmapper_;
  std::unique_ptr<sim::HislipServer> hislip_;
  std::size_t piece_ = 0;
  std::unique_ptr<Transport> transport_;  // closed before the servers stop
};

std::string ProtocolName(const ::testing::TestParamInfo<Protocol>& info) {
  return info.param == Protocol::kVxi11 ? "Vxi11" : "Hislip";
}

INSTANTIATE_TEST_SUITE_P(Protocols, LanSessionTest,
                         ::testing::Values(Protocol::kVxi11, Protocol::kHislip), ProtocolName);

TEST_P(LanSessionTest, RepliesArriveInPiecesAndFitSmallCallerBuffers) {
  StartServer(100);
  ASSERT_NO_FATAL_FAILURE(Connect());
  EXPECT_FALSE(transport_->EndsOnLineFeed());
  ASSERT_EQ(WriteMessage(*transport_, "BLOCK?\n", In(2000)), VI_SUCCESS);
  std::string reply;
  std::vector<std::byte> buffer(4096);
  std::size_t pieces = 0;
  for (ReadResult result; !result.end; ++pieces) {
    ASSERT_EQ(transport_->Read(buffer, In(2000), &result), VI_SUCCESS);
    ASSERT_LE(result.count, 100u);
    reply.append(reinterpret_cast<const char*>(buffer.data()), result.count);
  }
  EXPECT_EQ(reply, BlockReply());
  const std::size_t messages = (BlockReply().size() + 99) / 100;
  // A VXI-11 read returns one device_read; a HiSLIP message may also take several reads.
  EXPECT_TRUE(vxi11() ? pieces == messages : pieces >= messages) << pieces;
  // A caller's buffer smaller than what arrived gets the rest on the next reads.
  ASSERT_EQ(WriteMessage(*transport_, "*IDN?\n", In(2000)), VI_SUCCESS);
  ASSERT_EQ(ReadMessage(*transport_, In(2000), &reply, 5), VI_SUCCESS);
  EXPECT_EQ(reply, kIdn);
}

TEST_P(LanSessionTest, TimeOutThenAGoodExchangeDropsTheStaleResponse) {
  StartServer();
  ASSERT_NO_FATAL_FAILURE(Connect());
  std::string reply;
  EXPECT_EQ(ReadMessage(*transport_, In(150), &reply), VI_ERROR_TMO) << "nothing was asked";
  ASSERT_EQ(WriteMessage(*transport_, "SLOW?\n", In(2000)), VI_SUCCESS);
  const auto start = Clock::now();
  EXPECT_EQ(ReadMessage(*transport_, In(200), &reply), VI_ERROR_TMO);
  // VXI-11's instrument waits for the same time (io_timeout), no less.
  EXPECT_GE(Clock::now() - start, std::chrono::milliseconds(190));
  EXPECT_LT(Clock::now() - start, std::chrono::milliseconds(450));
  EXPECT_TRUE(reply.empty());
  // By now the slow reply is on its way, so only its message id or the link's state tells
  // the client to drop it; the instrument hears that it was never read.
  std::this_thread::sleep_for(std::chrono::milliseconds(500));
  EXPECT_EQ(Ask("*IDN?"), kIdn);
  EXPECT_EQ(handler_.interrupted.load(), 1);
  // A response read whole is no interruption.
  EXPECT_EQ(Ask("ECHO next"), "next\n");
  EXPECT_EQ(handler_.interrupted.load(), 1);
}

TEST_P(LanSessionTest, StopEndsAServerWhoseClientStaysConnected) {
  StartServer();
  ASSERT_NO_FATAL_FAILURE(Connect());
  const auto start = Clock::now();
  vxi11() ? core_->Stop() : hislip_->Stop();
  EXPECT_LT(Clock::now() - start, std::chrono::milliseconds(500));
  std::string reply;
  const ViStatus status = Query(*transport_, "*IDN?", &reply, 500);
  EXPECT_TRUE(status == VI_ERROR_CONN_LOST || status == VI_ERROR_IO) << std::hex << status;
}

// A refused port, and a listener that accepts and stays silent (the open time-out bounds the
// wait); through VXI-11's portmapper also a refused portmapper port, a device the instrument
// does not have and a host field that is no host field.
TEST_P(LanSessionTest, OpenFailuresAreResourceNotFound) {
  std::unique_ptr<Transport> transport;
  EXPECT_EQ(OpenAt(1, In(1000), &transport), VI_ERROR_RSRC_NFOUND) << "a refused port";
  std::string error;
  const sim::Socket silent = sim::OpenTcpListener("127.0.0.1", 0, &error);
  ASSERT_TRUE(silent.valid()) << error;
  auto start = Clock::now();
  EXPECT_EQ(OpenAt(sim::LocalPort(silent.fd()), In(300), &transport), VI_ERROR_RSRC_NFOUND);
  const auto elapsed = Clock::now() - start;
  EXPECT_GE(elapsed, std::chrono::milliseconds(290));
  EXPECT_LT(elapsed, std::chrono::milliseconds(800));
  if (vxi11()) {
    StartVxi11();
    start = Clock::now();
    EXPECT_EQ(visa::OpenVxi11Transport("127.0.0.1:1", "inst0", In(2000), &transport),
              VI_ERROR_RSRC_NFOUND);
    const std::string portmapper = "127.0.0.1:" + std::to_string(portmapper_->port());
    EXPECT_EQ(visa::OpenVxi11Transport(portmapper, "gpib0,7", In(2000), &transport),
              VI_ERROR_RSRC_NFOUND);
    EXPECT_LT(Clock::now() - start, std::chrono::milliseconds(1000));
    EXPECT_EQ(visa::OpenVxi11Transport("127.0.0.1:port", "inst0", In(2000), &transport),
              VI_ERROR_INV_RSRC_NAME);
  }
  EXPECT_EQ(transport, nullptr);
}

class HislipTest : public LanSessionTest {};

INSTANTIATE_TEST_SUITE_P(Protocol, HislipTest, ::testing::Values(Protocol::kHislip), ProtocolName);

// A new message also interrupts a reply not yet sent.
TEST_P(HislipTest, MessageIdsStartAtTheFirstIdAndStepByTwoPerMessage) {
  StartHislip({.max_message_size = 32});
  ASSERT_NO_FATAL_FAILURE(Connect());
  EXPECT_EQ(hislip().server_max_message_size(), 32u);
  EXPECT_EQ(hislip().next_message_id(), hislip::kFirstMessageId);
  EXPECT_EQ(Ask("*IDN?"), kIdn);
  EXPECT_EQ(hislip().next_message_id(), hislip::kFirstMessageId + 2);
  // 40 bytes to a server taking 32-byte messages, 16 of them header: Data, Data, DataEnd.
  const std::string text(34, 'z');
  EXPECT_EQ(Ask("ECHO " + text), text + "\n");
  EXPECT_EQ(hislip().next_message_id(), hislip::kFirstMessageId + 8);
  EXPECT_EQ(handler_.messages().back(), "ECHO " + text);
  ASSERT_EQ(WriteMessage(*transport_, "SLOW?\n", In(2000)), VI_SUCCESS);
  EXPECT_EQ(Ask("*IDN?"), kIdn);
  EXPECT_EQ(handler_.interrupted.load(), 1);
}

// Servers as real instruments run them: starting overlapped (and granting synchronised mode,
// or not), preferring overlapped mode in a device clear, counting the header in the maximum
// message size and sending service requests. Every one must give the same exchanges, and a
// device clear starts the message ids afresh.
TEST_P(HislipTest, ServerModesAndQuirks) {
  const struct {
    const char* name;
    sim::HislipServerOptions options;
    bool overlapped;  // the mode the session runs in
  } cases[] = {
      {"starts overlapped", {.overlapped = true, .prefer_overlapped = true}, false},
      {"stays overlapped",
       {.overlapped = true, .prefer_overlapped = true, .grant_synchronized = false},
       true},
      {"prefers overlapped", {.prefer_overlapped = true}, false},
      {"272-byte messages, service requests",
       {.max_message_size = 272, .service_requests = true},
       false},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    StartHislip(c.options);
    ASSERT_NO_FATAL_FAILURE(Connect());
    EXPECT_EQ(hislip().overlapped(), c.overlapped);
    EXPECT_EQ(Ask("*IDN?"), kIdn);
    ASSERT_EQ(WriteMessage(*transport_, "*CLS\n", In(1000)), VI_SUCCESS);  // no reply
    EXPECT_EQ(Ask("*IDN?", 1000), kIdn);
    ASSERT_EQ(transport_->Clear(In(1000)), VI_SUCCESS);
    EXPECT_EQ(hislip().overlapped(), c.overlapped);
    EXPECT_EQ(hislip().next_message_id(), hislip::kFirstMessageId);
    ASSERT_EQ(WriteMessage(*transport_, "*CLS\n", In(1000)), VI_SUCCESS);
    const std::string text(296, 'w');  // a 302-byte message
    EXPECT_EQ(Ask("ECHO " + text, 1000), text + "\n");
    EXPECT_EQ(Ask("SLOW?", 150), "error " + std::to_string(VI_ERROR_TMO));
    EXPECT_EQ(Ask("*IDN?", 1500), kIdn);
  }
}

TEST_P(HislipTest, WriteTimeOutMidMessageThenAGoodExchange) {
  StartHislip();
  ASSERT_NO_FATAL_FAILURE(Connect());
  // While the instrument is busy, a message far larger than the socket buffers cannot go out
  // before the deadline; part of it has, part waits in the client.
  ASSERT_EQ(WriteMessage(*transport_, "STALL\n", In(1000)), VI_SUCCESS);
  const std::string huge = "IGNORE " + std::string(32 * 1024 * 1024, 'i') + "\n";
  const auto start = Clock::now();
  EXPECT_EQ(WriteMessage(*transport_, huge, In(200)), VI_ERROR_TMO);
  EXPECT_LT(Clock::now() - start, std::chrono::milliseconds(450));
  EXPECT_EQ(Ask("*IDN?", 5000), kIdn);
  // Neither the cut message nor a message glued to its start reached the instrument.
  EXPECT_EQ(handler_.messages(), (std::vector<std::string>{"STALL", "*IDN?"}));
  EXPECT_EQ(handler_.cleared.load(), 1);
}

// Raw HiSLIP exchanges with the server, for what a well-behaved client never sends.
class RawHislip {
 public:
  explicit RawHislip(std::uint16_t port) {
    std::unique_ptr<visa::TcpConnection> stream;
    EXPECT_EQ(visa::TcpConnection::Connect("127.0.0.1", port, In(1000), &stream), VI_SUCCESS);
    channel_ = std::make_unique<visa::HislipChannel>(std::move(stream));
  }
  void Send(const hislip::Header& header, std::string_view payload = {}) {
    EXPECT_EQ(channel_->Send(header, std::as_bytes(std::span(payload)), In(1000)), VI_SUCCESS);
  }
  // The next header, or nullopt when the server closed the connection.
  std::optional<hislip::Header> Receive(std::string* payload = nullptr) {
    hislip::Header header;
    if (channel_->ReceiveHeader(In(1000), &header) != VI_SUCCESS) return std::nullopt;
    std::string data(header.payload_length, '\0');
    for (std::size_t done = 0, count = 0; done < data.size(); done += count) {
      const auto rest = std::as_writable_bytes(std::span(data)).subspan(done);
      if (channel_->ReceiveSome(rest, In(1000), &count) != VI_SUCCESS) return std::nullopt;
    }
    if (payload != nullptr) *payload = data;
    return header;
  }

 private:
  std::unique_ptr<visa::HislipChannel> channel_;
};

// The type, control and parameter of a received header, or nothing when the server closed.
std::optional<std::tuple<hislip::MessageType, int, std::uint32_t>> Fields(
    const std::optional<hislip::Header>& header) {
  if (!header) return std::nullopt;
  return std::make_tuple(header->type, static_cast<int>(header->control), header->parameter);
}

TEST_P(HislipTest, ServerAnswersWithTheIdOfTheMessageItAnswersAndRejectsBadSequences) {
  using enum hislip::MessageType;
  using hislip::ErrorCode, hislip::FatalErrorCode;
  const auto expected = [](hislip::MessageType type, auto control, std::uint32_t parameter = 0) {
    return std::optional(std::make_tuple(type, static_cast<int>(control), parameter));
  };
  StartHislip({.max_message_size = 64});
  {
    RawHislip sync(hislip_->port());
    sync.Send({kInitialize, 0,
               hislip::InitializeParameter(hislip::kProtocolVersion, hislip::kVendorId), 7},
              "hislip0");
    const auto init = sync.Receive();
    ASSERT_TRUE(init.has_value());
    EXPECT_EQ(Fields(init), expected(kInitializeResponse, 0, init->parameter)) << "synchronised";
    RawHislip async(hislip_->port());
    async.Send({kAsyncInitialize, 0, hislip::SessionIdOf(init->parameter), 0});
    ASSERT_EQ(async.Receive()->type, kAsyncInitializeResponse);
    // Any id the client chooses comes back on the response.
    sync.Send({kDataEnd, 0, 0x1234, 6}, "*IDN?\n");
    std::string payload;
    EXPECT_EQ(Fields(sync.Receive(&payload)), expected(kDataEnd, 0, 0x1234));
    EXPECT_EQ(payload, kIdn);
    // Too large a message, or an unknown type, is an error, not the end of the session.
    sync.Send({kDataEnd, 0, 0x1236, 100}, std::string(100, 'a'));
    EXPECT_EQ(Fields(sync.Receive()), expected(kError, ErrorCode::kMessageTooLarge));
    sync.Send({static_cast<hislip::MessageType>(99), 0, 0, 3}, "abc");
    EXPECT_EQ(Fields(sync.Receive()), expected(kError, ErrorCode::kUnrecognizedMessageType));
    async.Send({kAsyncStatusQuery, 0, 0, 0});
    EXPECT_EQ(async.Receive()->type, kAsyncStatusResponse);
    sync.Send({kDataEnd, 0, 0x1238, 6}, "*IDN?\n");
    EXPECT_EQ(Fields(sync.Receive()), expected(kDataEnd, 0, 0x1238));
    // A header without the "HS" prologue is fatal, and the server closes.
    sync.Send({kData, 0, 0, 0}, std::string(16, 'G'));  // header fine, then junk
    EXPECT_EQ(Fields(sync.Receive()), expected(kFatalError, FatalErrorCode::kPoorlyFormedHeader));
    EXPECT_FALSE(sync.Receive().has_value());
  }
  RawHislip early(hislip_->port());
  early.Send({kDataEnd, 0, 0, 6}, "*IDN?\n");  // data before Initialize
  EXPECT_EQ(Fields(early.Receive()), expected(kFatalError, FatalErrorCode::kInvalidInitialization));
  ASSERT_NO_FATAL_FAILURE(Connect());
  EXPECT_EQ(Ask("*IDN?"), kIdn);
}

class Vxi11Test : public LanSessionTest {};

INSTANTIATE_TEST_SUITE_P(Protocol, Vxi11Test, ::testing::Values(Protocol::kVxi11), ProtocolName);

// The link is found through a portmapper whose reply lacks the last-fragment bit.
TEST_P(Vxi11Test, WritesAreSplitToTheLinksMaxRecvSize) {
  // The server refuses any device_write larger than what it announced.
  StartVxi11({.max_recv_size = 1024, .max_read_size = 0}, /*omit_last_fragment_bit=*/true);
  ASSERT_EQ(visa::OpenVxi11Transport("127.0.0.1:" + std::to_string(portmapper_->port()), "inst0",
                                     In(2000), &transport_),
            VI_SUCCESS);
  std::string text(5000, 'x');
  for (std::size_t i = 0; i < text.size(); i += 97) text[i] = static_cast<char>('a' + i % 26);
  EXPECT_EQ(Ask("ECHO " + text), text + "\n");
}

// Instruments answer a device_write they were busy with after io_timeout, and a read that ran
// out of io_timeout a little late; the client waits for both answers, so nothing is left over
// (no device clear needed) and the next exchange does not queue behind them.
TEST_P(Vxi11Test, LateWriteAndTimeOutRepliesAreReceivedNotLeftPending) {
  StartVxi11({.late_timeout_reply = std::chrono::milliseconds(400)});
  ASSERT_NO_FATAL_FAILURE(Connect());
  auto start = Clock::now();
  EXPECT_EQ(WriteMessage(*transport_, "STALL\n", In(200)), VI_SUCCESS);
  EXPECT_LT(Clock::now() - start, std::chrono::milliseconds(1200));
  EXPECT_EQ(handler_.cleared.load(), 0);
  EXPECT_EQ(Ask("SLOW?", 150), "error " + std::to_string(VI_ERROR_TMO));
  start = Clock::now();
  EXPECT_EQ(Ask("*IDN?", 1000), kIdn);
  EXPECT_LT(Clock::now() - start, std::chrono::milliseconds(250));
}

TEST_P(Vxi11Test, LinkLimitIsABusyResourceAndClosingFreesTheLink) {
  StartVxi11({.max_links = 1});
  ASSERT_NO_FATAL_FAILURE(Connect());
  EXPECT_EQ(core_->live_links(), 1);
  transport_.reset();
  EXPECT_EQ(core_->live_links(), 0) << "destroy_link landed";
  ASSERT_NO_FATAL_FAILURE(Connect());
  StartVxi11({.max_links = 0});
  EXPECT_EQ(OpenAt(core_->port(), In(1000), &transport_), VI_ERROR_RSRC_BUSY);
}

}  // namespace
}  // namespace quarvelo::testing
