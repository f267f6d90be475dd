// What only HiSLIP does (message ids, split messages, interrupted replies, write time-outs
// mid-message) against the simulator's server over loopback TCP, and the server against
// hand-made message sequences; lan_session_test.cc has what VXI-11 shares.
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "platform/visa/hislip/hislip_transport.h"
#include "platform/visa/hislip/message.h"
#include "platform/visa/tcp_connection.h"
#include "platform/visa/transport_factory.h"
#include "sim/server/hislip_server.h"
#include "tests/visa/test_instrument.h"

namespace quarvelo::testing {
namespace {

using visa::Clock;
using visa::HislipTransport;
using visa::ReadResult;
using visa::Transport;
namespace hislip = visa::hislip;

class HislipTest : public ::testing::Test {
 protected:
  void StartServer(sim::HislipServerOptions options = {}) {
    server_ = std::make_unique<sim::HislipServer>(handler_, "127.0.0.1", 0, options);
    std::string error;
    ASSERT_TRUE(server_->Start(&error)) << error;
  }

  std::unique_ptr<HislipTransport> Open(visa::HislipOptions options = {}) {
    std::unique_ptr<HislipTransport> transport;
    EXPECT_EQ(HislipTransport::Open("127.0.0.1", "hislip0", server_->port(), In(2000), options,
                                    &transport),
              VI_SUCCESS);
    return transport;
  }

  CannedHandler handler_;
  std::unique_ptr<sim::HislipServer> server_;
};

TEST_F(HislipTest, MessageIdsStartAtTheFirstIdAndStepByTwoPerMessage) {
  StartServer({.max_message_size = 32});
  auto transport = Open();
  ASSERT_NE(transport, nullptr);
  EXPECT_EQ(transport->server_max_message_size(), 32u);
  EXPECT_EQ(transport->next_message_id(), hislip::kFirstMessageId);
  std::string reply;
  ASSERT_EQ(Query(*transport, "*IDN?", &reply), VI_SUCCESS);
  EXPECT_EQ(transport->next_message_id(), hislip::kFirstMessageId + 2);
  // 40 bytes to a server taking 32-byte messages, 16 of them header: Data, Data, DataEnd.
  const std::string text(34, 'z');
  ASSERT_EQ(Query(*transport, "ECHO " + text, &reply), VI_SUCCESS);
  EXPECT_EQ(reply, text + "\n");
  EXPECT_EQ(transport->next_message_id(), hislip::kFirstMessageId + 8);
  EXPECT_EQ(handler_.messages().back(), "ECHO " + text);
}

// Servers as real instruments run them: starting overlapped (and granting synchronised mode,
// or not), preferring overlapped mode in a device clear, counting the header in the maximum
// message size and sending service requests. Every one must give the same exchanges.
TEST_F(HislipTest, ServerModesAndQuirks) {
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
    StartServer(c.options);
    auto transport = Open();
    ASSERT_NE(transport, nullptr);
    EXPECT_EQ(transport->overlapped(), c.overlapped);
    std::string reply;
    ASSERT_EQ(Query(*transport, "*IDN?", &reply), VI_SUCCESS);
    ASSERT_EQ(WriteMessage(*transport, "*CLS\n", In(1000)), VI_SUCCESS);  // no reply
    ASSERT_EQ(Query(*transport, "*IDN?", &reply, 1000), VI_SUCCESS);
    EXPECT_EQ(reply, kIdn);
    ASSERT_EQ(transport->Clear(In(1000)), VI_SUCCESS);
    EXPECT_EQ(transport->overlapped(), c.overlapped);
    ASSERT_EQ(WriteMessage(*transport, "*CLS\n", In(1000)), VI_SUCCESS);
    const std::string text(296, 'w');  // a 302-byte message
    ASSERT_EQ(Query(*transport, "ECHO " + text, &reply, 1000), VI_SUCCESS);
    EXPECT_EQ(reply, text + "\n");
    EXPECT_EQ(Query(*transport, "SLOW?", &reply, 150), VI_ERROR_TMO);
    ASSERT_EQ(Query(*transport, "*IDN?", &reply, 1500), VI_SUCCESS);
    EXPECT_EQ(reply, kIdn);
  }
}

TEST_F(HislipTest, LateAnswerIsStaleOnceTheNextMessageHasBegun) {
  StartServer();
  auto transport = Open();
  ASSERT_NE(transport, nullptr);
  std::string reply;
  EXPECT_EQ(Query(*transport, "SLOW?", &reply, 150), VI_ERROR_TMO);
  // A Data message without END is now the most recent: the late "SLOW" does not answer it.
  const std::string start = "ECHO ";
  ASSERT_EQ(transport->Write(std::as_bytes(std::span(start)), false, In(500)), VI_SUCCESS);
  EXPECT_EQ(ReadMessage(*transport, In(700), &reply), VI_ERROR_TMO) << reply;
}

TEST_F(HislipTest, WriteTimeOutMidMessageThenAGoodExchange) {
  StartServer();
  auto transport = Open();
  ASSERT_NE(transport, nullptr);
  // While the instrument is busy, a message far larger than the socket buffers cannot go out
  // before the deadline; part of it has, part waits in the client.
  ASSERT_EQ(WriteMessage(*transport, "STALL\n", In(1000)), VI_SUCCESS);
  const std::string huge = "IGNORE " + std::string(32 * 1024 * 1024, 'i') + "\n";
  const auto start = Clock::now();
  EXPECT_EQ(WriteMessage(*transport, huge, In(200)), VI_ERROR_TMO);
  EXPECT_LT(Clock::now() - start, std::chrono::milliseconds(450));
  std::string reply;
  ASSERT_EQ(Query(*transport, "*IDN?", &reply, 5000), VI_SUCCESS);
  EXPECT_EQ(reply, kIdn);
  // Neither the cut message nor a message glued to its start reached the instrument.
  EXPECT_EQ(handler_.messages(), (std::vector<std::string>{"STALL", "*IDN?"}));
  EXPECT_EQ(handler_.cleared.load(), 1);
}

TEST_F(HislipTest, NewMessageInterruptsAReplyNotYetSent) {
  StartServer();
  auto transport = Open();
  ASSERT_NE(transport, nullptr);
  ASSERT_EQ(WriteMessage(*transport, "SLOW?\n", In(2000)), VI_SUCCESS);
  std::string reply;
  ASSERT_EQ(Query(*transport, "*IDN?", &reply), VI_SUCCESS);
  EXPECT_EQ(reply, kIdn);
  EXPECT_EQ(handler_.interrupted.load(), 1);
}

// Raw HiSLIP exchanges with the server, for what a well-behaved client never sends.
class RawHislip {
 public:
  explicit RawHislip(std::uint16_t port) {
    EXPECT_EQ(visa::TcpConnection::Connect("127.0.0.1", port, In(1000), &stream_), VI_SUCCESS);
  }
  void Send(const hislip::Header& header, std::string_view payload = {}) {
    const auto head = hislip::EncodeHeader(header);
    ASSERT_EQ(stream_->SendAll(head, In(1000)), VI_SUCCESS);
    ASSERT_EQ(stream_->SendAll(std::as_bytes(std::span(payload.data(), payload.size())), In(1000)),
              VI_SUCCESS);
  }
  // The next header, or nullopt when the server closed the connection.
  std::optional<hislip::Header> Receive(std::string* payload = nullptr) {
    hislip::HeaderBytes bytes;
    if (!ReceiveExact(bytes)) return std::nullopt;
    hislip::Header header;
    EXPECT_TRUE(hislip::DecodeHeader(bytes, &header));
    std::string data(header.payload_length, '\0');
    if (!ReceiveExact(std::as_writable_bytes(std::span(data)))) return std::nullopt;
    if (payload != nullptr) *payload = data;
    return header;
  }

 private:
  bool ReceiveExact(std::span<std::byte> buffer) {
    std::size_t done = 0;
    while (done < buffer.size()) {
      std::size_t count = 0;
      if (stream_->ReceiveSome(buffer.subspan(done), In(1000), &count) != VI_SUCCESS) return false;
      done += count;
    }
    return true;
  }
  std::unique_ptr<visa::TcpConnection> stream_;
};

TEST_F(HislipTest, ServerAnswersWithTheIdOfTheMessageItAnswersAndRejectsBadSequences) {
  StartServer({.max_message_size = 64});
  {
    RawHislip sync(server_->port());
    sync.Send({hislip::MessageType::kInitialize, 0,
               hislip::InitializeParameter(hislip::kProtocolVersion, hislip::kVendorId), 7},
              "hislip0");
    const auto init = sync.Receive();
    ASSERT_TRUE(init.has_value());
    ASSERT_EQ(init->type, hislip::MessageType::kInitializeResponse);
    EXPECT_EQ(init->control, 0) << "synchronised mode";
    RawHislip async(server_->port());
    async.Send({hislip::MessageType::kAsyncInitialize, 0, hislip::SessionIdOf(init->parameter), 0});
    ASSERT_EQ(async.Receive()->type, hislip::MessageType::kAsyncInitializeResponse);
    // Any id the client chooses comes back on the response.
    sync.Send({hislip::MessageType::kDataEnd, 0, 0x1234, 6}, "*IDN?\n");
    std::string payload;
    const auto data = sync.Receive(&payload);
    ASSERT_TRUE(data.has_value());
    EXPECT_EQ(data->type, hislip::MessageType::kDataEnd);
    EXPECT_EQ(data->parameter, 0x1234u);
    EXPECT_EQ(payload, kIdn);
    // Too large a message is an error, not the end of the session.
    sync.Send({hislip::MessageType::kDataEnd, 0, 0x1236, 100}, std::string(100, 'a'));
    const auto error = sync.Receive();
    ASSERT_TRUE(error.has_value());
    EXPECT_EQ(error->type, hislip::MessageType::kError);
    EXPECT_EQ(error->control, static_cast<std::uint8_t>(hislip::ErrorCode::kMessageTooLarge));
    // An unknown message type likewise.
    sync.Send({static_cast<hislip::MessageType>(99), 0, 0, 3}, "abc");
    EXPECT_EQ(sync.Receive()->control,
              static_cast<std::uint8_t>(hislip::ErrorCode::kUnrecognizedMessageType));
    async.Send({hislip::MessageType::kAsyncStatusQuery, 0, 0, 0});
    EXPECT_EQ(async.Receive()->type, hislip::MessageType::kAsyncStatusResponse);
    sync.Send({hislip::MessageType::kDataEnd, 0, 0x1238, 6}, "*IDN?\n");
    EXPECT_EQ(sync.Receive()->parameter, 0x1238u);
    // A header without the "HS" prologue is fatal.
    const std::string garbage(16, 'G');
    sync.Send({hislip::MessageType::kData, 0, 0, 0}, garbage);  // header fine, then junk
    const auto fatal = sync.Receive();
    ASSERT_TRUE(fatal.has_value());
    EXPECT_EQ(fatal->type, hislip::MessageType::kFatalError);
    EXPECT_FALSE(sync.Receive().has_value()) << "the server closes after a fatal error";
  }
  {
    // Data before Initialize.
    RawHislip sync(server_->port());
    sync.Send({hislip::MessageType::kDataEnd, 0, 0, 6}, "*IDN?\n");
    const auto fatal = sync.Receive();
    ASSERT_TRUE(fatal.has_value());
    EXPECT_EQ(fatal->type, hislip::MessageType::kFatalError);
    EXPECT_EQ(fatal->control,
              static_cast<std::uint8_t>(hislip::FatalErrorCode::kInvalidInitialization));
  }
  auto transport = Open();
  ASSERT_NE(transport, nullptr);
  std::string reply;
  ASSERT_EQ(Query(*transport, "*IDN?", &reply), VI_SUCCESS);
}

}  // namespace
}  // namespace quarvelo::testing
