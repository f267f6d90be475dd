// The VISA layer against the in-process simulated oscilloscope: the raw socket, VXI-11 and
// HiSLIP over loopback TCP.
#include "sim/simulator.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "platform/visa/visa.h"

namespace quarvelo::visa {
namespace {

enum class Lan { kSocket, kVxi11, kHislip };

class SimulatorTest : public ::testing::TestWithParam<Lan> {
 protected:
  void SetUp() override {
    std::string error;
    simulator_ = sim::Simulator::Start(sim::SimulatorOptions{}, &error);
    ASSERT_NE(simulator_, nullptr) << error;
    std::string resource;
    switch (GetParam()) {
      case Lan::kSocket:
        resource = simulator_->SocketResource();
        break;
      case Lan::kVxi11:
        resource =
            "TCPIP0::127.0.0.1:" + std::to_string(simulator_->portmapper_port()) + "::inst0::INSTR";
        break;
      case Lan::kHislip:
        resource = simulator_->HislipResource();
        break;
    }
    ASSERT_EQ(viOpenDefaultRM(&rm_), VI_SUCCESS);
    ASSERT_EQ(viOpen(rm_, resource.c_str(), VI_NO_LOCK, 5000, &vi_), VI_SUCCESS) << resource;
    ASSERT_EQ(viSetAttribute(vi_, VI_ATTR_TMO_VALUE, 10000), VI_SUCCESS);
  }
  void TearDown() override {
    if (rm_ != VI_NULL) viClose(rm_);
  }

  std::unique_ptr<sim::Simulator> simulator_;
  ViSession rm_ = VI_NULL;
  ViSession vi_ = VI_NULL;
};

std::string LanName(const ::testing::TestParamInfo<Lan>& info) {
  const char* const names[] = {"Socket", "Vxi11", "Hislip"};
  return names[static_cast<int>(info.param)];
}

INSTANTIATE_TEST_SUITE_P(Transports, SimulatorTest,
                         ::testing::Values(Lan::kSocket, Lan::kVxi11, Lan::kHislip), LanName);

TEST_P(SimulatorTest, ReadsBackASettingAndAWaveformOfItsAnnouncedLength) {
  ASSERT_EQ(viPrintf(vi_, ":CHANnel1:SCALe 0.2\n"), VI_SUCCESS);
  ASSERT_EQ(viPrintf(vi_, ":CHANnel1:SCALe?\n"), VI_SUCCESS);
  double scale[20] = {};
  ViInt32 count = 20;
  ASSERT_EQ(viScanf(vi_, "%,#lf\n", &count, scale), VI_SUCCESS);
  ASSERT_EQ(count, 1);
  EXPECT_DOUBLE_EQ(scale[0], 0.2);

  for (const char* command :
       {":WAVeform:SOURce CHANnel1\n", ":WAVeform:FORMat BYTE\n", ":DIGitize CHANnel1\n"}) {
    ASSERT_EQ(viPrintf(vi_, command), VI_SUCCESS);
  }
  ASSERT_EQ(viPrintf(vi_, ":WAVeform:POINts?\n"), VI_SUCCESS);
  double points[1] = {};
  count = 1;
  ASSERT_EQ(viScanf(vi_, "%,#lf\n", &count, points), VI_SUCCESS);
  ASSERT_EQ(count, 1);
  std::vector<unsigned char> area(5000001);
  ViInt32 bytes = 5000000;
  ASSERT_EQ(viPrintf(vi_, ":WAVeform:DATA?\n"), VI_SUCCESS);
  ASSERT_EQ(viScanf(vi_, "%#b", &bytes, area.data()), VI_SUCCESS);
  EXPECT_EQ(bytes, static_cast<ViInt32>(points[0]));
  EXPECT_EQ(viFlush(vi_, VI_READ_BUF), VI_SUCCESS);
}

}  // namespace
}  // namespace quarvelo::visa
