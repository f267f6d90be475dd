// What only the VXI-11 client and servers do (write splitting, write time-outs, the portmapper,
// open failures), over loopback TCP; lan_session_test.cc has what HiSLIP shares.
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "platform/visa/transport_factory.h"
#include "platform/visa/vxi11/vxi11_transport.h"
#include "sim/server/portmapper_server.h"
#include "sim/server/vxi11_server.h"
#include "tests/visa/test_instrument.h"

namespace quarvelo::testing {
namespace {

using visa::Clock;
using visa::ReadResult;
using visa::Transport;

class Vxi11Test : public ::testing::Test {
 protected:
  void StartServers(sim::Vxi11ServerOptions options = {}, bool omit_last_fragment_bit = false) {
    portmapper_.reset();
    core_ = std::make_unique<sim::Vxi11Server>(handler_, "127.0.0.1", 0, options);
    std::string error;
    ASSERT_TRUE(core_->Start(&error)) << error;
    portmapper_ = std::make_unique<sim::PortmapperServer>("127.0.0.1", 0, core_->port());
    portmapper_->set_omit_last_fragment_bit(omit_last_fragment_bit);
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

// Instruments answer a read that ran out of io_timeout a little late; the client waits for
// that answer, so the next exchange does not queue behind it.
TEST_F(Vxi11Test, LateTimeOutReplyIsReceivedNotLeftPending) {
  StartServers({.late_timeout_reply = std::chrono::milliseconds(400)});
  auto transport = Open();
  ASSERT_NE(transport, nullptr);
  std::string reply;
  EXPECT_EQ(Query(*transport, "SLOW?", &reply, 150), VI_ERROR_TMO);
  const auto start = Clock::now();
  ASSERT_EQ(Query(*transport, "*IDN?", &reply, 1000), VI_SUCCESS);
  EXPECT_EQ(reply, kIdn);
  EXPECT_LT(Clock::now() - start, std::chrono::milliseconds(250));
}

TEST_F(Vxi11Test, PortmapperReplyWithoutTheLastFragmentBit) {
  StartServers({}, /*omit_last_fragment_bit=*/true);
  auto transport = Open();
  ASSERT_NE(transport, nullptr);
  std::string reply;
  EXPECT_EQ(Query(*transport, "*IDN?", &reply), VI_SUCCESS);
}

TEST_F(Vxi11Test, LinkLimitIsABusyResourceAndClosingFreesTheLink) {
  StartServers({.max_links = 1});
  std::unique_ptr<Transport> link = Open();
  ASSERT_NE(link, nullptr);
  EXPECT_EQ(core_->live_links(), 1);
  link.reset();
  EXPECT_EQ(core_->live_links(), 0) << "destroy_link landed";
  link = Open();
  ASSERT_NE(link, nullptr);
  link.reset();
  StartServers({.max_links = 0});
  EXPECT_EQ(visa::OpenVxi11Transport("127.0.0.1:core:" + std::to_string(core_->port()), "inst0",
                                     In(1000), &link),
            VI_ERROR_RSRC_BUSY);
}

TEST_F(Vxi11Test, LateWriteReplyWithinTheGraceThenAGoodExchange) {
  StartServers();
  auto transport = Open();
  ASSERT_NE(transport, nullptr);
  // The instrument is busy with the message and answers the device_write after io_timeout;
  // the answer is waited for, so nothing is left over.
  const auto start = Clock::now();
  EXPECT_EQ(WriteMessage(*transport, "STALL\n", In(200)), VI_SUCCESS);
  EXPECT_LT(Clock::now() - start, std::chrono::milliseconds(1200));
  std::string reply;
  ASSERT_EQ(Query(*transport, "*IDN?", &reply), VI_SUCCESS);
  EXPECT_EQ(reply, kIdn);
  EXPECT_EQ(handler_.cleared.load(), 0);
}

TEST_F(Vxi11Test, OpenFailuresAreResourceNotFound) {
  StartServers();
  std::unique_ptr<Transport> transport;
  const auto start = Clock::now();
  // A refused portmapper port, a device the instrument does not have.
  EXPECT_EQ(visa::OpenVxi11Transport("127.0.0.1:1", "inst0", In(2000), &transport),
            VI_ERROR_RSRC_NFOUND);
  EXPECT_EQ(visa::OpenVxi11Transport("127.0.0.1:" + std::to_string(portmapper_->port()), "gpib0,7",
                                     In(2000), &transport),
            VI_ERROR_RSRC_NFOUND);
  EXPECT_LT(Clock::now() - start, std::chrono::milliseconds(1000));
  EXPECT_EQ(visa::OpenVxi11Transport("127.0.0.1:port", "inst0", In(2000), &transport),
            VI_ERROR_INV_RSRC_NAME);
  EXPECT_EQ(transport, nullptr);
}

}  // namespace
}  // namespace quarvelo::testing
