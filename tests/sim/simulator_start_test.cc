// The simulator's start on its ports and its command line.
#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <vector>

#include "sim/command_line.h"
#include "sim/simulator.h"

namespace quarvelo::sim {
namespace {

TEST(SimulatorStartTest, ServesEveryTransportOnEphemeralPorts) {
  std::string error;
  std::unique_ptr<Simulator> simulator = Simulator::Start(SimulatorOptions{}, &error);
  ASSERT_TRUE(simulator) << error;
  EXPECT_TRUE(simulator->socket_port() && simulator->vxi11_port() && simulator->portmapper_port() &&
              simulator->hislip_port());
  EXPECT_EQ(simulator->HislipResource(),
            "TCPIP0::127.0.0.1::hislip0," + std::to_string(simulator->hislip_port()) + "::INSTR");
  EXPECT_EQ(simulator->Execute("*IDN?").substr(0, 8), "KEYSIGHT");
}

TEST(SimulatorStartTest, PortInUseIsAnError) {
  std::string error;
  std::unique_ptr<Simulator> first = Simulator::Start(SimulatorOptions{}, &error);
  ASSERT_TRUE(first) << error;
  SimulatorOptions options;
  options.socket_port = first->socket_port();
  EXPECT_FALSE(Simulator::Start(options, &error));
  EXPECT_NE(error.find(std::to_string(first->socket_port())), std::string::npos) << error;
}

TEST(CommandLineTest, AcceptsTheDocumentedOptionsOnly) {
  struct Case {
    std::vector<std::string> arguments;
    bool ok;
  };
  for (const Case& c : std::initializer_list<Case>{
           {{}, true},
           {{"--model", "2000X", "--channels", "2"}, true},
           {{"--options", "wgen", "--socket-port", "0"}, true},
           {{"--options", "none", "--hislip-port", "-1"}, true},
           {{"--signals", "flat", "--latency", "0.5", "--options", "memup"}, true},
           {{"--identity", "A,B,C,D", "--dvm-settle", "0"}, true},
           {{"--model", "1000X"}, false},
           {{"--channels", "3"}, false},
           {{"--socket-port", "70000"}, false},
           {{"--socket-port"}, false},
           {{"--options", "fft"}, false},
           {{"--frobnicate", "1"}, false},
           {{"--signals", "loud"}, false},
           {{"--latency", "-1"}, false},
           {{"--identity", "no fields"}, false},
       }) {
    CommandLine line = ParseCommandLine(c.arguments);
    EXPECT_EQ(line.error.empty(), c.ok) << testing::PrintToString(c.arguments) << line.error;
  }
  const SimulatorOptions defaults = ParseCommandLine({}).options;
  EXPECT_EQ(std::tuple(defaults.bind_address, defaults.socket_port, defaults.portmapper_port,
                       defaults.hislip_port),
            std::tuple("127.0.0.1", 5025, 111, 4880));
  const SimulatorOptions variant =
      ParseCommandLine({"--model", "2000X", "--options", "dvm", "--identity", "A,B,C,D"}).options;
  EXPECT_EQ(std::tuple(variant.model, variant.has_wgen, variant.has_dvm, variant.identity),
            std::tuple("2000X", false, true, "A,B,C,D"));
}

}  // namespace
}  // namespace quarvelo::sim
