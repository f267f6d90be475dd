// What the VXI-11 and HiSLIP clients share, each against the simulator's server on loopback
// TCP: replies in pieces, time-outs, a device clear, a server stopping, an open the server never
// answers. A server closing mid-block is in transport_loopback_test.cc, for every transport.
#include <gtest/gtest.h>

#include <memory>
#include <ostream>
#include <string>
#include <thread>
#include <vector>

#include "platform/visa/hislip/hislip_transport.h"
#include "platform/visa/hislip/message.h"
#include "platform/visa/transport_factory.h"
#include "sim/server/hislip_server.h"
#include "sim/server/portmapper_server.h"
#include "sim/server/tcp_listener.h"
#include "sim/server/vxi11_server.h"
#include "tests/visa/test_instrument.h"

namespace quarvelo::testing {
namespace {

using visa::Clock;
using visa::ReadResult;
using visa::Transport;

enum class Protocol { kVxi11, kHislip };

void PrintTo(Protocol protocol, std::ostream* os) {
  *os << (protocol == Protocol::kVxi11 ? "VXI-11" : "HiSLIP");
}

class LanSessionTest : public ::testing::TestWithParam<Protocol> {
 protected:
  bool vxi11() const { return GetParam() == Protocol::kVxi11; }

  // `piece`: the most reply bytes the server sends at a time (0: its default).
  void StartServer(std::size_t piece = 0) {
    std::string error;
    piece_ = piece;
    if (vxi11()) {
      sim::Vxi11ServerOptions options;
      if (piece > 0) options.max_read_size = piece;
      core_ = std::make_unique<sim::Vxi11Server>(handler_, "127.0.0.1", 0, options);
      ASSERT_TRUE(core_->Start(&error)) << error;
    } else {
      hislip_ = std::make_unique<sim::HislipServer>(handler_, "127.0.0.1", 0);
      ASSERT_TRUE(hislip_->Start(&error)) << error;
    }
  }

  ViStatus OpenAt(std::uint16_t port, visa::Deadline deadline,
                  std::unique_ptr<Transport>* transport) const {
    if (vxi11()) {
      return visa::OpenVxi11Transport("127.0.0.1:core:" + std::to_string(port), "inst0", deadline,
                                      transport);
    }
    // HiSLIP's message size is the client's to choose.
    std::unique_ptr<visa::HislipTransport> hislip;
    const ViStatus status = visa::HislipTransport::Open(
        "127.0.0.1", "hislip0", port, deadline,
        {.max_message_size = piece_ > 0 ? piece_ : visa::HislipOptions{}.max_message_size},
        &hislip);
    *transport = std::move(hislip);
    return status;
  }

  std::unique_ptr<Transport> Open() {
    std::unique_ptr<Transport> transport;
    EXPECT_EQ(OpenAt(vxi11() ? core_->port() : hislip_->port(), In(2000), &transport), VI_SUCCESS);
    return transport;
  }

  CannedHandler handler_;
  std::unique_ptr<sim::Vxi11Server> core_;
  std::unique_ptr<sim::HislipServer> hislip_;
  std::size_t piece_ = 0;
};

INSTANTIATE_TEST_SUITE_P(Protocols, LanSessionTest,
                         ::testing::Values(Protocol::kVxi11, Protocol::kHislip),
                         [](const auto& info) {
                           return info.param == Protocol::kVxi11 ? "Vxi11" : "Hislip";
                         });

TEST_P(LanSessionTest, RepliesArriveInPiecesAndFitSmallCallerBuffers) {
  StartServer(100);
  auto transport = Open();
  ASSERT_NE(transport, nullptr);
  EXPECT_FALSE(transport->EndsOnLineFeed());
  ASSERT_EQ(WriteMessage(*transport, "BLOCK?\n", In(2000)), VI_SUCCESS);
  std::string reply;
  std::vector<std::byte> buffer(4096);
  std::size_t pieces = 0;
  for (;;) {
    ReadResult result;
    ASSERT_EQ(transport->Read(buffer, In(2000), &result), VI_SUCCESS);
    ASSERT_LE(result.count, 100u);
    reply.append(reinterpret_cast<const char*>(buffer.data()), result.count);
    ++pieces;
    if (result.end) break;
  }
  EXPECT_EQ(reply, BlockReply());
  const std::size_t messages = (BlockReply().size() + 99) / 100;
  // A VXI-11 read returns one device_read; a HiSLIP message may also take several reads.
  if (vxi11()) {
    EXPECT_EQ(pieces, messages);
  } else {
    EXPECT_GE(pieces, messages);
  }
  // A caller's buffer smaller than what arrived gets the rest on the next reads.
  ASSERT_EQ(WriteMessage(*transport, "*IDN?\n", In(2000)), VI_SUCCESS);
  ASSERT_EQ(ReadMessage(*transport, In(2000), &reply, 5), VI_SUCCESS);
  EXPECT_EQ(reply, kIdn);
}

TEST_P(LanSessionTest, TimeOutThenAGoodExchangeDropsTheStaleResponse) {
  StartServer();
  auto transport = Open();
  ASSERT_NE(transport, nullptr);
  std::string reply;
  EXPECT_EQ(ReadMessage(*transport, In(150), &reply), VI_ERROR_TMO) << "nothing was asked";
  ASSERT_EQ(WriteMessage(*transport, "SLOW?\n", In(2000)), VI_SUCCESS);
  const auto start = Clock::now();
  EXPECT_EQ(ReadMessage(*transport, In(200), &reply), VI_ERROR_TMO);
  // VXI-11's instrument waits for the same time (io_timeout), no less.
  EXPECT_GE(Clock::now() - start, std::chrono::milliseconds(190));
  EXPECT_LT(Clock::now() - start, std::chrono::milliseconds(450));
  EXPECT_TRUE(reply.empty());
  // By now the slow reply is on its way, so only its message id or the link's state tells
  // the client to drop it; the instrument hears that it was never read.
  std::this_thread::sleep_for(std::chrono::milliseconds(500));
  ASSERT_EQ(Query(*transport, "*IDN?", &reply), VI_SUCCESS);
  EXPECT_EQ(reply, kIdn);
  EXPECT_EQ(handler_.interrupted.load(), 1);
  // A response read whole is no interruption.
  ASSERT_EQ(Query(*transport, "ECHO next", &reply), VI_SUCCESS);
  ASSERT_EQ(Query(*transport, "ECHO again", &reply), VI_SUCCESS);
  EXPECT_EQ(reply, "again\n");
  EXPECT_EQ(handler_.interrupted.load(), 1);
}

TEST_P(LanSessionTest, DeviceClearDiscardsThePendingReply) {
  StartServer();
  auto transport = Open();
  ASSERT_NE(transport, nullptr);
  ASSERT_EQ(WriteMessage(*transport, "ECHO stale\n", In(2000)), VI_SUCCESS);
  std::this_thread::sleep_for(std::chrono::milliseconds(50));  // the reply is on its way
  ASSERT_EQ(transport->Clear(In(2000)), VI_SUCCESS);
  EXPECT_EQ(handler_.cleared.load(), 1);
  if (!vxi11()) {
    EXPECT_EQ(static_cast<visa::HislipTransport&>(*transport).next_message_id(),
              visa::hislip::kFirstMessageId);
  }
  std::string reply;
  ASSERT_EQ(Query(*transport, "ECHO fresh", &reply), VI_SUCCESS);
  EXPECT_EQ(reply, "fresh\n");
  if (vxi11()) {
    EXPECT_EQ(handler_.interrupted.load(), 0);
  }
}

TEST_P(LanSessionTest, StopEndsAServerWhoseClientStaysConnected) {
  StartServer();
  auto transport = Open();
  ASSERT_NE(transport, nullptr);
  const auto start = Clock::now();
  if (vxi11()) {
    core_->Stop();
  } else {
    hislip_->Stop();
  }
  EXPECT_LT(Clock::now() - start, std::chrono::milliseconds(500));
  std::string reply;
  const ViStatus status = Query(*transport, "*IDN?", &reply, 500);
  EXPECT_TRUE(status == VI_ERROR_CONN_LOST || status == VI_ERROR_IO) << std::hex << status;
}

TEST_P(LanSessionTest, OpenFailuresAreResourceNotFound) {
  std::unique_ptr<Transport> transport;
  EXPECT_EQ(OpenAt(1, In(1000), &transport), VI_ERROR_RSRC_NFOUND) << "a refused port";
  // A listener that accepts and stays silent: the open time-out bounds the wait.
  std::string error;
  const sim::Socket silent = sim::OpenTcpListener("127.0.0.1", 0, &error);
  ASSERT_TRUE(silent.valid()) << error;
  const auto start = Clock::now();
  EXPECT_EQ(OpenAt(sim::LocalPort(silent.fd()), In(300), &transport), VI_ERROR_RSRC_NFOUND);
  const auto elapsed = Clock::now() - start;
  EXPECT_GE(elapsed, std::chrono::milliseconds(290));
  EXPECT_LT(elapsed, std::chrono::milliseconds(800));
  EXPECT_EQ(transport, nullptr);
}

}  // namespace
}  // namespace quarvelo::testing
