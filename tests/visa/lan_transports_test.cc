// The formatted I/O over each TCP transport (raw socket, VXI-11, HiSLIP) against the
// simulator's own transport servers on loopback, with a canned instrument behind them.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "platform/visa/visa.h"
#include "sim/server/hislip_server.h"
#include "sim/server/portmapper_server.h"
#include "sim/server/socket_server.h"
#include "sim/server/vxi11_server.h"
#include "tests/visa/simulated_usbtmc_device.h"

namespace quarvelo::visa {
namespace {

enum class Lan { kSocket, kVxi11, kHislip };

class LanTransportTest : public ::testing::TestWithParam<Lan> {
 protected:
  void SetUp() override {
    std::string error;
    std::string resource;
    switch (GetParam()) {
      case Lan::kSocket:
        socket_ = std::make_unique<sim::SocketServer>(instrument_, "127.0.0.1", 0);
        ASSERT_TRUE(socket_->Start(&error)) << error;
        resource = "TCPIP0::127.0.0.1::" + std::to_string(socket_->port()) + "::SOCKET";
        break;
      case Lan::kVxi11:
        vxi11_ = std::make_unique<sim::Vxi11Server>(instrument_, "127.0.0.1", 0);
        ASSERT_TRUE(vxi11_->Start(&error)) << error;
        portmapper_ = std::make_unique<sim::PortmapperServer>("127.0.0.1", 0, vxi11_->port());
        ASSERT_TRUE(portmapper_->Start(&error)) << error;
        resource = "TCPIP0::127.0.0.1:" + std::to_string(portmapper_->port()) + "::inst0::INSTR";
        break;
      case Lan::kHislip:
        hislip_ = std::make_unique<sim::HislipServer>(instrument_, "127.0.0.1", 0);
        ASSERT_TRUE(hislip_->Start(&error)) << error;
        resource = "TCPIP0::127.0.0.1::hislip0," + std::to_string(hislip_->port()) + "::INSTR";
        break;
    }
    ASSERT_EQ(viOpenDefaultRM(&rm_), VI_SUCCESS);
    ASSERT_EQ(viOpen(rm_, resource.c_str(), VI_NO_LOCK, 5000, &vi_), VI_SUCCESS) << resource;
    ASSERT_EQ(viSetAttribute(vi_, VI_ATTR_TMO_VALUE, 5000), VI_SUCCESS);
  }
  void TearDown() override { viClose(rm_); }

  std::string Query(const char* query) {
    char reply[257];
    std::fill(std::begin(reply), std::end(reply), '#');
    ViInt32 size = 256;
    status_ = viPrintf(vi_, "%s\n", query);
    if (status_ != VI_SUCCESS) return {};
    status_ = viScanf(vi_, "%#t", &size, reply);
    EXPECT_EQ(reply[256], '#');
    return status_ == VI_SUCCESS ? std::string(reply) : std::string();
  }

  testing::CannedInstrument instrument_;
  std::unique_ptr<sim::SocketServer> socket_;
  std::unique_ptr<sim::Vxi11Server> vxi11_;
  std::unique_ptr<sim::PortmapperServer> portmapper_;
  std::unique_ptr<sim::HislipServer> hislip_;
  ViSession rm_ = VI_NULL;
  ViSession vi_ = VI_NULL;
  ViStatus status_ = VI_SUCCESS;
};

std::string TransportName(const ::testing::TestParamInfo<Lan>& info) {
  switch (info.param) {
    case Lan::kSocket:
      return "Socket";
    case Lan::kVxi11:
      return "Vxi11";
    case Lan::kHislip:
      return "Hislip";
  }
  return "Unknown";
}

INSTANTIATE_TEST_SUITE_P(Transports, LanTransportTest,
                         ::testing::Values(Lan::kSocket, Lan::kVxi11, Lan::kHislip), TransportName);

TEST_P(LanTransportTest, QueryRoundTrip) {
  EXPECT_EQ(Query("*IDN?"), testing::kCannedIdn);
  EXPECT_EQ(status_, VI_SUCCESS);
}

TEST_P(LanTransportTest, HalfMegabyteBlockThenAQuery) {
  std::vector<char> area(5000001, 'X');
  ViInt32 count = 5000000;
  ASSERT_EQ(viPrintf(vi_, ":WAVeform:DATA?\n"), VI_SUCCESS);
  ASSERT_EQ(viScanf(vi_, "%#b\n", &count, area.data()), VI_SUCCESS);
  ASSERT_EQ(count, 524288);
  EXPECT_EQ(std::string(area.data(), 524288), testing::CannedBlockData(524288));
  EXPECT_EQ(area[524288], 'X');
  EXPECT_EQ(viFlush(vi_, VI_READ_BUF), VI_SUCCESS);
  EXPECT_EQ(Query("*IDN?"), testing::kCannedIdn);
}

TEST_P(LanTransportTest, BlockLargerThanTheAreaThenFlushAndAQuery) {
  std::vector<char> area(4096);
  ViInt32 count = 4096;
  ASSERT_EQ(viPrintf(vi_, ":WAVeform:DATA?\n"), VI_SUCCESS);
  ASSERT_EQ(viScanf(vi_, "%#b\n", &count, area.data()), VI_SUCCESS);
  EXPECT_EQ(count, 4096);
  EXPECT_EQ(std::string(area.data(), 4096), testing::CannedBlockData(4096));
  EXPECT_EQ(viFlush(vi_, VI_READ_BUF), VI_SUCCESS);
  EXPECT_EQ(Query("*IDN?"), testing::kCannedIdn);
}

TEST_P(LanTransportTest, ReplyLongerThanTheCallersBufferThenAQuery) {
  EXPECT_EQ(Query("LONG?"), std::string(255, 'L'));
  EXPECT_EQ(Query("*IDN?"), testing::kCannedIdn);
}

TEST_P(LanTransportTest, TimeoutThenAGoodExchange) {
  ASSERT_EQ(viSetAttribute(vi_, VI_ATTR_TMO_VALUE, 150), VI_SUCCESS);
  Query("SLOW?");
  EXPECT_EQ(status_, VI_ERROR_TMO);
  ASSERT_EQ(viSetAttribute(vi_, VI_ATTR_TMO_VALUE, 2000), VI_SUCCESS);
  EXPECT_EQ(Query("*IDN?"), testing::kCannedIdn);
  EXPECT_EQ(status_, VI_SUCCESS);
}

TEST_P(LanTransportTest, InstrumentGoingAwayMidBlock) {
  std::vector<char> area(600000);
  ViInt32 count = 600000;
  ASSERT_EQ(viPrintf(vi_, "GONE?\n"), VI_SUCCESS);
  const ViStatus status = viScanf(vi_, "%#b", &count, area.data());
  EXPECT_TRUE(status == VI_ERROR_CONN_LOST || status == VI_ERROR_IO) << std::hex << status;
  EXPECT_LT(count, 524288);
  EXPECT_LT(viPrintf(vi_, "*IDN?\n"), VI_SUCCESS);
}

}  // namespace
}  // namespace quarvelo::visa
