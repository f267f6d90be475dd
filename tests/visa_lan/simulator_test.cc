// The VISA calls over VXI-11 and HiSLIP against the real simulated oscilloscope (not the
// canned test instrument): identification, a screen image block, the traffic it logged.
#include "sim/simulator.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "platform/visa/visa.h"

namespace quarvelo::testing {
namespace {

class SimulatorLanTest : public ::testing::TestWithParam<bool> {};

TEST_P(SimulatorLanTest, IdentifiesAndSendsItsScreenImage) {
  const bool hislip = GetParam();
  std::string error;
  sim::SimulatorOptions options;
  options.socket_port = -1;
  auto simulator = sim::Simulator::Start(options, &error);
  ASSERT_NE(simulator, nullptr) << error;
  const std::string resource =
      hislip
          ? simulator->HislipResource()
          : "TCPIP0::127.0.0.1:" + std::to_string(simulator->portmapper_port()) + "::inst0::INSTR";
  ViSession rm = VI_NULL;
  ViSession vi = VI_NULL;
  ASSERT_EQ(viOpenDefaultRM(&rm), VI_SUCCESS);
  ASSERT_EQ(viOpen(rm, resource.c_str(), VI_NO_LOCK, 2000, &vi), VI_SUCCESS) << resource;
  ASSERT_EQ(viSetAttribute(vi, VI_ATTR_TMO_VALUE, 5000), VI_SUCCESS);

  char text[256] = {};
  ASSERT_EQ(viPrintf(vi, "*IDN?\n"), VI_SUCCESS);
  ASSERT_EQ(viScanf(vi, "%t", text), VI_SUCCESS);
  EXPECT_EQ(std::string(text), simulator->Execute("*IDN?") + "\n");

  std::vector<unsigned char> image(2'000'000);
  ViUInt32 count = static_cast<ViUInt32>(image.size());
  ASSERT_EQ(viPrintf(vi, ":DISPlay:DATA? BMP8bit,COLor\n"), VI_SUCCESS);
  ASSERT_EQ(viScanf(vi, "%#b", &count, image.data()), VI_SUCCESS);
  ASSERT_GT(count, 54u);
  EXPECT_EQ(image[0], 'B');
  EXPECT_EQ(image[1], 'M');
  // The BMP's own file size field matches what the block carried.
  const ViUInt32 file_size = image[2] | (image[3] << 8) | (image[4] << 16) | (image[5] << 24);
  EXPECT_EQ(file_size, count);
  viFlush(vi, VI_READ_BUF);
  EXPECT_EQ(viClose(vi), VI_SUCCESS);
  viClose(rm);
  EXPECT_EQ(simulator->ReceivedMessages(),
            (std::vector<std::string>{"*IDN?", ":DISPlay:DATA? BMP8bit,COLor"}));
}

INSTANTIATE_TEST_SUITE_P(Transports, SimulatorLanTest, ::testing::Values(false, true),
                         [](const auto& info) { return info.param ? "hislip" : "vxi11"; });

}  // namespace
}  // namespace quarvelo::testing
