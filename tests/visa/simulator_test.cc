// The VISA layer against the in-process simulated oscilloscope: the raw socket and HiSLIP over
// loopback TCP, and USB-TMC through the simulated device answering from the same model.
#include "sim/simulator.h"

#include <gtest/gtest.h>

#include <cstdarg>
#include <memory>
#include <string>
#include <vector>

#include "platform/visa/session.h"
#include "platform/visa/usbtmc/usbtmc_transport.h"
#include "platform/visa/visa.h"
#include "tests/visa/simulated_usbtmc_device.h"

namespace quarvelo::visa {
namespace {

std::unique_ptr<sim::Simulator> StartSimulator() {
  sim::SimulatorOptions options;
  options.portmapper_port = -1;
  std::string error;
  auto simulator = sim::Simulator::Start(options, &error);
  EXPECT_NE(simulator, nullptr) << error;
  return simulator;
}

// Lets the simulated USB device answer from the simulator's instrument model.
class ModelHandler : public sim::MessageHandler {
 public:
  explicit ModelHandler(sim::Simulator* simulator) : simulator_(simulator) {}
  sim::HandlerResponse HandleMessage(std::string_view message) override {
    const std::string reply = simulator_->Execute(message);
    return {reply.empty() ? std::string() : reply + "\n"};
  }
  void ReplyInterrupted() override {}
  void DeviceClear() override {}

 private:
  sim::Simulator* simulator_;
};

class SimulatorTest : public ::testing::TestWithParam<bool> {};

INSTANTIATE_TEST_SUITE_P(Transports, SimulatorTest, ::testing::Values(false, true),
                         [](const auto& info) { return info.param ? "HiSLIP" : "Socket"; });

TEST_P(SimulatorTest, IdentifyAndReadBackASetting) {
  auto simulator = StartSimulator();
  ASSERT_NE(simulator, nullptr);
  const std::string resource =
      GetParam() ? simulator->HislipResource() : simulator->SocketResource();
  ViSession rm = VI_NULL, vi = VI_NULL;
  ASSERT_EQ(viOpenDefaultRM(&rm), VI_SUCCESS);
  ASSERT_EQ(viOpen(rm, resource.c_str(), VI_NO_LOCK, 5000, &vi), VI_SUCCESS) << resource;
  ASSERT_EQ(viSetAttribute(vi, VI_ATTR_TMO_VALUE, 5000), VI_SUCCESS);

  char reply[256] = {};
  ViInt32 size = sizeof reply;
  ASSERT_EQ(viPrintf(vi, "*IDN?\n"), VI_SUCCESS);
  ASSERT_EQ(viScanf(vi, "%#t", &size, reply), VI_SUCCESS);
  EXPECT_NE(std::string(reply).find(",DSO-X "), std::string::npos) << reply;
  EXPECT_EQ(std::string(reply).back(), '\n');

  ASSERT_EQ(viPrintf(vi, ":CHANnel1:SCALe 0.2\n"), VI_SUCCESS);
  ASSERT_EQ(viPrintf(vi, ":CHANnel1:SCALe?\n"), VI_SUCCESS);
  double scale[20] = {};
  ViInt32 count = 20;
  ASSERT_EQ(viScanf(vi, "%,#lf\n", &count, scale), VI_SUCCESS);
  ASSERT_EQ(count, 1);
  EXPECT_DOUBLE_EQ(scale[0], 0.2);
  viClose(rm);
}

TEST_P(SimulatorTest, WaveformBlockHasItsAnnouncedLength) {
  auto simulator = StartSimulator();
  ASSERT_NE(simulator, nullptr);
  const std::string resource =
      GetParam() ? simulator->HislipResource() : simulator->SocketResource();
  ViSession rm = VI_NULL, vi = VI_NULL;
  ASSERT_EQ(viOpenDefaultRM(&rm), VI_SUCCESS);
  ASSERT_EQ(viOpen(rm, resource.c_str(), VI_NO_LOCK, 5000, &vi), VI_SUCCESS);
  ASSERT_EQ(viSetAttribute(vi, VI_ATTR_TMO_VALUE, 10000), VI_SUCCESS);
  for (const char* command :
       {":WAVeform:SOURce CHANnel1\n", ":WAVeform:FORMat BYTE\n", ":DIGitize CHANnel1\n"}) {
    ASSERT_EQ(viPrintf(vi, command), VI_SUCCESS);
  }
  ASSERT_EQ(viPrintf(vi, ":WAVeform:POINts?\n"), VI_SUCCESS);
  double points[1] = {};
  ViInt32 count = 1;
  ASSERT_EQ(viScanf(vi, "%,#lf\n", &count, points), VI_SUCCESS);
  ASSERT_EQ(count, 1);
  std::vector<unsigned char> area(5000001);
  ViInt32 bytes = 5000000;
  ASSERT_EQ(viPrintf(vi, ":WAVeform:DATA?\n"), VI_SUCCESS);
  ASSERT_EQ(viScanf(vi, "%#b", &bytes, area.data()), VI_SUCCESS);
  EXPECT_EQ(bytes, static_cast<ViInt32>(points[0]));
  EXPECT_EQ(viFlush(vi, VI_READ_BUF), VI_SUCCESS);
  viClose(rm);
}

ViStatus Printf(Session* session, const char* format, ...) {
  VaArgs args;
  va_start(args.list, format);
  const ViStatus status = session->Printf(format, &args);
  va_end(args.list);
  return status;
}

ViStatus Scanf(Session* session, const char* format, ...) {
  VaArgs args;
  va_start(args.list, format);
  const ViStatus status = session->Scanf(format, &args);
  va_end(args.list);
  return status;
}

TEST(SimulatorUsbtmc, IdentifyThroughTheSimulatedDevice) {
  auto simulator = StartSimulator();
  ASSERT_NE(simulator, nullptr);
  ModelHandler handler(simulator.get());
  testing::UsbDeviceLog log;
  Session session(
      std::make_unique<UsbtmcTransport>(std::make_unique<testing::SimulatedUsbtmcDevice>(
          &handler, testing::UsbDeviceOptions{}, &log)));
  char reply[256] = {};
  ViInt32 size = sizeof reply;
  ASSERT_EQ(Printf(&session, "*IDN?\n"), VI_SUCCESS);
  ASSERT_EQ(Scanf(&session, "%#t", &size, reply), VI_SUCCESS);
  EXPECT_NE(std::string(reply).find(",DSO-X "), std::string::npos) << reply;
  EXPECT_EQ(log.bad_headers, 0);
}

}  // namespace
}  // namespace quarvelo::visa
