// The VISA calls the program makes (viOpen, viPrintf, viScanf, viFlush, time-outs) over the
// VXI-11 and HiSLIP transports, end to end against the simulator's servers on loopback.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "platform/visa/visa.h"
#include "sim/server/hislip_server.h"
#include "sim/server/portmapper_server.h"
#include "sim/server/vxi11_server.h"
#include "test_handler.h"

namespace quarvelo::testing {
namespace {

inline constexpr ViAttr kTimeout = VI_ATTR_TMO_VALUE;

class LanApiTest : public ::testing::TestWithParam<const char*> {
 protected:
  void SetUp() override {
    std::string error;
    ASSERT_TRUE(core_.Start(&error)) << error;
    portmapper_ = std::make_unique<sim::PortmapperServer>("127.0.0.1", 0, core_.port());
    ASSERT_TRUE(portmapper_->Start(&error)) << error;
    ASSERT_TRUE(hislip_.Start(&error)) << error;
    ASSERT_EQ(viOpenDefaultRM(&rm_), VI_SUCCESS);
  }
  void TearDown() override {
    if (rm_ != VI_NULL) viClose(rm_);
  }

  std::string Resource() const {
    const std::string which = GetParam();
    if (which == "vxi11") {
      return "TCPIP0::127.0.0.1:" + std::to_string(portmapper_->port()) + "::inst0::INSTR";
    }
    if (which == "vxi11-core") {
      return "TCPIP::127.0.0.1:core:" + std::to_string(core_.port()) + "::INSTR";
    }
    return "TCPIP0::127.0.0.1::hislip0," + std::to_string(hislip_.port()) + "::INSTR";
  }

  CannedHandler handler_;
  sim::Vxi11Server core_{handler_, "127.0.0.1", 0};
  std::unique_ptr<sim::PortmapperServer> portmapper_;
  sim::HislipServer hislip_{handler_, "127.0.0.1", 0};
  ViSession rm_ = VI_NULL;
};

TEST_P(LanApiTest, QueryBlockTimeOutAndRecovery) {
  ViSession vi = VI_NULL;
  ASSERT_EQ(viOpen(rm_, Resource().c_str(), VI_NO_LOCK, 2000, &vi), VI_SUCCESS) << Resource();
  ASSERT_EQ(viSetAttribute(vi, kTimeout, 2000), VI_SUCCESS);

  char text[256] = {};
  ASSERT_EQ(viPrintf(vi, "*IDN?\n"), VI_SUCCESS);
  ASSERT_EQ(viScanf(vi, "%t", text), VI_SUCCESS);
  EXPECT_STREQ(text, kIdn);

  std::vector<unsigned char> block(kBlockSize + 100);
  ViUInt32 count = static_cast<ViUInt32>(block.size());
  ASSERT_EQ(viPrintf(vi, "BLOCK?\n"), VI_SUCCESS);
  ASSERT_EQ(viScanf(vi, "%#b", &count, block.data()), VI_SUCCESS);
  ASSERT_EQ(count, kBlockSize);
  EXPECT_EQ(std::string(reinterpret_cast<const char*>(block.data()), count),
            BlockReply().substr(8, kBlockSize));
  ASSERT_EQ(viFlush(vi, VI_READ_BUF), VI_SUCCESS);

  ASSERT_EQ(viSetAttribute(vi, kTimeout, 200), VI_SUCCESS);
  ASSERT_EQ(viPrintf(vi, "SLOW?\n"), VI_SUCCESS);
  EXPECT_EQ(viScanf(vi, "%t", text), VI_ERROR_TMO);
  ASSERT_EQ(viSetAttribute(vi, kTimeout, 2000), VI_SUCCESS);
  ASSERT_EQ(viPrintf(vi, "ECHO recovered\n"), VI_SUCCESS);
  ASSERT_EQ(viScanf(vi, "%t", text), VI_SUCCESS);
  EXPECT_STREQ(text, "recovered\n");

  ASSERT_EQ(viPrintf(vi, "DROP?\n"), VI_SUCCESS);
  count = static_cast<ViUInt32>(block.size());
  const ViStatus dropped = viScanf(vi, "%#b", &count, block.data());
  EXPECT_TRUE(dropped == VI_ERROR_CONN_LOST || dropped == VI_ERROR_IO) << std::hex << dropped;
  EXPECT_EQ(viClose(vi), VI_SUCCESS);
}

INSTANTIATE_TEST_SUITE_P(Transports, LanApiTest, ::testing::Values("vxi11", "vxi11-core", "hislip"),
                         [](const auto& info) {
                           std::string name = info.param;
                           std::erase(name, '-');
                           return name;
                         });

}  // namespace
}  // namespace quarvelo::testing
