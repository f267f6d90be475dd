// The VXI-11 client against the simulator's VXI-11 and portmapper servers over loopback TCP.
#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <memory>
#include <string>

#include "platform/visa/transport_factory.h"
#include "platform/visa/vxi11/portmapper.h"
#include "platform/visa/vxi11/rpc.h"
#include "platform/visa/vxi11/vxi11_transport.h"
#include "sim/server/portmapper_server.h"
#include "sim/server/vxi11_server.h"
#include "test_handler.h"

namespace quarvelo::testing {
namespace {

using visa::Clock;
using visa::ReadResult;
using visa::Transport;

class Vxi11Test : public ::testing::Test {
 protected:
  void StartServers(sim::Vxi11ServerOptions options = {}) {
    core_ = std::make_unique<sim::Vxi11Server>(handler_, "127.0.0.1", 0, options);
    std::string error;
    ASSERT_TRUE(core_->Start(&error)) << error;
    portmapper_ = std::make_unique<sim::PortmapperServer>("127.0.0.1", 0, core_->port());
    ASSERT_TRUE(portmapper_->Start(&error)) << error;
  }

  std::unique_ptr<Transport> Open(const std::string& device = "inst0") {
    std::unique_ptr<Transport> transport;
    const std::string host = "127.0.0.1:" + std::to_string(portmapper_->port());
    EXPECT_EQ(visa::OpenVxi11Transport(host, device, In(2000), &transport), VI_SUCCESS);
    return transport;
  }

  CannedHandler handler_;
  std::unique_ptr<sim::Vxi11Server> core_;
  std::unique_ptr<sim::PortmapperServer> portmapper_;
};

TEST_F(Vxi11Test, QueryRoundTripThroughThePortmapperAndDirectly) {
  StartServers();
  for (const std::string& host : {"127.0.0.1:" + std::to_string(portmapper_->port()),
                                  "127.0.0.1:core:" + std::to_string(core_->port())}) {
    std::unique_ptr<Transport> transport;
    ASSERT_EQ(visa::OpenVxi11Transport(host, "inst0", In(2000), &transport), VI_SUCCESS) << host;
    std::string reply;
    ASSERT_EQ(Query(*transport, "*IDN?", &reply), VI_SUCCESS) << host;
    EXPECT_EQ(reply, kIdn);
    EXPECT_FALSE(transport->EndsOnLineFeed());
  }
  EXPECT_EQ(handler_.messages(), (std::vector<std::string>{"*IDN?", "*IDN?"}));
}

TEST_F(Vxi11Test, BlockOfHalfAMebibyteArrivesIntact) {
  StartServers();
  auto transport = Open();
  ASSERT_NE(transport, nullptr);
  std::string reply;
  ASSERT_EQ(Query(*transport, "BLOCK?", &reply), VI_SUCCESS);
  EXPECT_EQ(reply, BlockReply());
}

TEST_F(Vxi11Test, WritesAreSplitToTheLinksMaxRecvSize) {
  // The server refuses any device_write larger than what it announced.
  StartServers({.max_recv_size = 1024, .max_read_size = 0});
  auto transport = Open();
  ASSERT_NE(transport, nullptr);
  std::string text(5000, 'x');
  for (std::size_t i = 0; i < text.size(); i += 97) text[i] = static_cast<char>('a' + i % 26);
  std::string reply;
  ASSERT_EQ(Query(*transport, "ECHO " + text, &reply), VI_SUCCESS);
  EXPECT_EQ(reply, text + "\n");
}

TEST_F(Vxi11Test, ReadsLoopUntilEndWhenTheDeviceSendsSmallPieces) {
  StartServers({.max_recv_size = 64 * 1024, .max_read_size = 100});
  auto transport = Open();
  ASSERT_NE(transport, nullptr);
  ASSERT_EQ(WriteMessage(*transport, "BLOCK?\n", In(2000)), VI_SUCCESS);
  std::string reply;
  std::vector<std::byte> buffer(4096);
  int pieces = 0;
  for (;;) {
    ReadResult result;
    ASSERT_EQ(transport->Read(buffer, In(2000), &result), VI_SUCCESS);
    ASSERT_LE(result.count, 100u);
    reply.append(reinterpret_cast<const char*>(buffer.data()), result.count);
    ++pieces;
    if (result.end) break;
  }
  EXPECT_EQ(reply, BlockReply());
  EXPECT_EQ(pieces, static_cast<int>((BlockReply().size() + 99) / 100));
}

TEST_F(Vxi11Test, CallerBufferSmallerThanTheReplyGetsItInPieces) {
  StartServers();
  auto transport = Open();
  ASSERT_NE(transport, nullptr);
  ASSERT_EQ(WriteMessage(*transport, "*IDN?\n", In(2000)), VI_SUCCESS);
  std::string reply;
  ASSERT_EQ(ReadMessage(*transport, In(2000), &reply, 5), VI_SUCCESS);
  EXPECT_EQ(reply, kIdn);
}

TEST_F(Vxi11Test, TimeOutThenAGoodExchange) {
  StartServers();
  auto transport = Open();
  ASSERT_NE(transport, nullptr);
  ASSERT_EQ(WriteMessage(*transport, "SLOW?\n", In(2000)), VI_SUCCESS);
  const auto start = Clock::now();
  std::string reply;
  EXPECT_EQ(ReadMessage(*transport, In(200), &reply), VI_ERROR_TMO);
  // The instrument waited for the same time (io_timeout), no less.
  EXPECT_GE(Clock::now() - start, std::chrono::milliseconds(190));
  EXPECT_LT(Clock::now() - start, std::chrono::milliseconds(450));
  EXPECT_TRUE(reply.empty());
  // The late reply must not answer the next query; the instrument hears of it instead.
  ASSERT_EQ(Query(*transport, "*IDN?", &reply), VI_SUCCESS);
  EXPECT_EQ(reply, kIdn);
  EXPECT_EQ(handler_.interrupted.load(), 1);
}

TEST_F(Vxi11Test, WriteTimeOutThenAGoodExchange) {
  StartServers();
  auto transport = Open();
  ASSERT_NE(transport, nullptr);
  // The instrument is busy with the message and answers the device_write late.
  const auto start = Clock::now();
  EXPECT_EQ(WriteMessage(*transport, "STALL\n", In(200)), VI_ERROR_TMO);
  EXPECT_LT(Clock::now() - start, std::chrono::milliseconds(450));
  std::string reply;
  ASSERT_EQ(Query(*transport, "*IDN?", &reply), VI_SUCCESS);
  EXPECT_EQ(reply, kIdn);
  EXPECT_EQ(handler_.cleared.load(), 1) << "the next write clears what may be left over";
}

TEST_F(Vxi11Test, ReadWithNothingAskedTimesOutAndLeavesTheLinkUsable) {
  StartServers();
  auto transport = Open();
  ASSERT_NE(transport, nullptr);
  std::string reply;
  EXPECT_EQ(ReadMessage(*transport, In(150), &reply), VI_ERROR_TMO);
  ASSERT_EQ(Query(*transport, "*IDN?", &reply), VI_SUCCESS);
  EXPECT_EQ(reply, kIdn);
}

TEST_F(Vxi11Test, ServerClosingMidBlockIsALostConnection) {
  StartServers();
  auto transport = Open();
  ASSERT_NE(transport, nullptr);
  ASSERT_EQ(WriteMessage(*transport, "DROP?\n", In(2000)), VI_SUCCESS);
  std::string reply;
  const ViStatus status = ReadMessage(*transport, In(2000), &reply);
  EXPECT_TRUE(status == VI_ERROR_CONN_LOST || status == VI_ERROR_IO) << std::hex << status;
  EXPECT_EQ(reply, BlockReply().substr(0, 100000)) << "what came before the drop, without END";
  // The session stays an error, promptly, rather than hanging or crashing.
  EXPECT_NE(Query(*transport, "*IDN?", &reply, 500), VI_SUCCESS);
  // The server serves the next client.
  auto next = Open();
  ASSERT_NE(next, nullptr);
  ASSERT_EQ(Query(*next, "*IDN?", &reply), VI_SUCCESS);
}

TEST_F(Vxi11Test, DeviceClearDiscardsThePendingReply) {
  StartServers();
  auto transport = Open();
  ASSERT_NE(transport, nullptr);
  ASSERT_EQ(WriteMessage(*transport, "ECHO stale\n", In(2000)), VI_SUCCESS);
  ASSERT_EQ(transport->Clear(In(2000)), VI_SUCCESS);
  EXPECT_EQ(handler_.cleared.load(), 1);
  std::string reply;
  ASSERT_EQ(Query(*transport, "ECHO fresh", &reply), VI_SUCCESS);
  EXPECT_EQ(reply, "fresh\n");
  EXPECT_EQ(handler_.interrupted.load(), 0);
}

TEST_F(Vxi11Test, PortmapperAnswersDatagramsToo) {
  // Discovery asks over UDP; a datagram carries the call without record marking.
  StartServers();
  ASSERT_TRUE(portmapper_->serves_udp());
  const int fd = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
  ASSERT_GE(fd, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(portmapper_->port());
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  visa::xdr::Writer call;
  visa::rpc::PutCallHeader(call,
                           {77, visa::portmapper::kProgram, 2, visa::portmapper::kProcGetPort});
  visa::portmapper::PutMapping(call, {0x0607AF, 1, visa::portmapper::kProtocolTcp, 0});
  ASSERT_EQ(sendto(fd, call.bytes().data(), call.bytes().size(), 0,
                   reinterpret_cast<const sockaddr*>(&address), sizeof(address)),
            static_cast<ssize_t>(call.bytes().size()));
  pollfd waiter{fd, POLLIN, 0};
  ASSERT_EQ(poll(&waiter, 1, 2000), 1);
  std::byte reply[256];
  const ssize_t n = recv(fd, reply, sizeof(reply), 0);
  close(fd);
  ASSERT_GT(n, 0);
  visa::xdr::Reader in(std::span(reply, static_cast<std::size_t>(n)));
  visa::rpc::ReplyHeader header;
  ASSERT_TRUE(visa::rpc::GetReplyHeader(in, &header));
  EXPECT_EQ(header.xid, 77u);
  std::uint16_t port = 0;
  ASSERT_TRUE(visa::portmapper::GetPort(in, &port));
  EXPECT_EQ(port, core_->port());
}

TEST_F(Vxi11Test, OpenFailuresAreResourceNotFound) {
  StartServers();
  std::unique_ptr<Transport> transport;
  const auto start = Clock::now();
  // A refused port, a device the instrument does not have, a refused core port.
  EXPECT_EQ(visa::OpenVxi11Transport("127.0.0.1:1", "inst0", In(2000), &transport),
            VI_ERROR_RSRC_NFOUND);
  EXPECT_EQ(visa::OpenVxi11Transport("127.0.0.1:" + std::to_string(portmapper_->port()), "gpib0,7",
                                     In(2000), &transport),
            VI_ERROR_RSRC_NFOUND);
  EXPECT_EQ(visa::OpenVxi11Transport("127.0.0.1:core:1", "inst0", In(2000), &transport),
            VI_ERROR_RSRC_NFOUND);
  EXPECT_LT(Clock::now() - start, std::chrono::milliseconds(1000));
  EXPECT_EQ(visa::OpenVxi11Transport("127.0.0.1:port", "inst0", In(2000), &transport),
            VI_ERROR_INV_RSRC_NAME);
  EXPECT_EQ(transport, nullptr);
}

TEST_F(Vxi11Test, CoreChannelThatNeverAnswersTimesOutTheOpen) {
  // A listener that accepts and stays silent: the open time-out bounds the wait.
  std::string error;
  sim::Socket silent = sim::OpenTcpListener("127.0.0.1", 0, &error);
  ASSERT_TRUE(silent.valid()) << error;
  const auto start = Clock::now();
  std::unique_ptr<Transport> transport;
  EXPECT_EQ(
      visa::OpenVxi11Transport("127.0.0.1:core:" + std::to_string(sim::LocalPort(silent.fd())),
                               "inst0", In(300), &transport),
      VI_ERROR_RSRC_NFOUND);
  const auto elapsed = Clock::now() - start;
  EXPECT_GE(elapsed, std::chrono::milliseconds(290));
  EXPECT_LT(elapsed, std::chrono::milliseconds(800));
}

TEST_F(Vxi11Test, StopEndsAServerWhoseClientStaysConnected) {
  StartServers();
  auto transport = Open();
  ASSERT_NE(transport, nullptr);
  const auto start = Clock::now();
  core_->Stop();
  portmapper_->Stop();
  EXPECT_LT(Clock::now() - start, std::chrono::milliseconds(500));
  std::string reply;
  const ViStatus status = Query(*transport, "*IDN?", &reply, 500);
  EXPECT_TRUE(status == VI_ERROR_CONN_LOST || status == VI_ERROR_IO) << std::hex << status;
}

}  // namespace
}  // namespace quarvelo::testing
