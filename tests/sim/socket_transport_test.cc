// The in-process simulator's raw socket over real loopback TCP: bad bytes, one client after
// another, the traffic log, latency. (Queries, blocks and the faults over this socket are in the
// link, readback and capture tests and the window's fault matrix.)
#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <string>

#include "sim/simulator.h"
#include "tests/sim/loopback_client.h"

namespace quarvelo::sim {
namespace {

using std::chrono::milliseconds;
constexpr milliseconds kWait{3000};
constexpr milliseconds kShort{150};

class SocketTransportTest : public testing::Test {
 protected:
  void SetUp() override { Start(0); }
  void Start(double latency_ms) {
    SimulatorOptions options;
    options.vxi11_port = options.portmapper_port = options.hislip_port = -1;
    options.latency_ms = latency_ms;
    std::string error;
    simulator_ = Simulator::Start(options, &error);
    ASSERT_TRUE(simulator_) << error;
    ASSERT_NE(simulator_->socket_port(), 0);
  }
  std::unique_ptr<Simulator> simulator_;
};

TEST_F(SocketTransportTest, TrafficLogHoldsMessagesAndSummarisedReplies) {
  simulator_->Execute(":CHANnel2:DISPlay 1");  // set-up steps are not traffic
  LoopbackClient client(simulator_->socket_port());
  client.Send("*IDN?\n:STOP\n:DISPlay:DATA? BMP8bit,COLor\n");
  ASSERT_TRUE(client.ReadLine(kWait));
  ASSERT_TRUE(client.ReadExact(10 + 385078 + 1, kWait));
  std::vector<TrafficEntry> traffic = simulator_->Traffic();
  ASSERT_EQ(traffic.size(), 5u);  // three messages, two replies
  EXPECT_EQ(traffic.back().direction, TrafficEntry::Direction::kSent);
  EXPECT_EQ(traffic.back().text, "#800385078 (385078 bytes)");
  EXPECT_LE(traffic.front().seconds, traffic.back().seconds);
}

TEST_F(SocketTransportTest, BadBytesNeitherCrashNorStopTheServer) {
  LoopbackClient client(simulator_->socket_port());
  std::string junk("\x00\xff\x01:CHAN\x80:SC;;;\"unterminated\n", 27);
  client.Send(junk);
  client.Send(std::string(200000, 'A') + "\n");
  client.Send("#9999\n*IDN?\n");
  EXPECT_EQ(client.ReadLine(kWait).value_or("").substr(0, 8), "KEYSIGHT");
  client.Send(":SYSTem:ERRor?\n");
  EXPECT_NE(client.ReadLine(kWait).value_or("+0").substr(0, 2), "+0");
}

TEST_F(SocketTransportTest, ServesOneClientAfterAnother) {
  auto first = std::make_unique<LoopbackClient>(simulator_->socket_port());
  first->Send("*OPC?\n");
  ASSERT_EQ(first->ReadLine(kWait), "1\n");
  LoopbackClient second(simulator_->socket_port());  // queued while the first is served
  second.Send("*OPC?\n");
  EXPECT_FALSE(second.ReadLine(kShort));
  first.reset();
  EXPECT_EQ(second.ReadLine(kWait), "1\n");
}

// (That it closes the open connection, the link's dead-link test sees.)
TEST_F(SocketTransportTest, StopRefusesNewConnections) {
  const std::uint16_t port = simulator_->socket_port();
  simulator_->Stop();
  EXPECT_FALSE(LoopbackClient(port).connected());
}

// With a latency set, every exchange (commands included) and each slow command takes at least
// the time the pace model gives it.
TEST_F(SocketTransportTest, LatencyAddsItsTimeToEveryExchangeAndSlowCommands) {
  Start(10);
  LoopbackClient client(simulator_->socket_port());
  ASSERT_TRUE(client.connected());
  using Clock = std::chrono::steady_clock;
  auto start = Clock::now();
  client.Send("*CLS\n:CHANnel1:SCALe 0.5\n");
  for (int i = 0; i < 3; ++i) {
    client.Send("*IDN?\n");
    ASSERT_TRUE(client.ReadLine(kWait));
  }
  EXPECT_GE(Clock::now() - start, milliseconds(5 * 10));
  // A digitize of 10 ms of screen: the acquisition, its transfer and the exchange.
  client.Send(":TIMebase:SCALe 1ms\n");
  start = Clock::now();
  client.Send(":DIGitize;*OPC?\n");
  ASSERT_TRUE(client.ReadLine(kWait));
  EXPECT_GE(Clock::now() - start, milliseconds(10 + 20 * 10 + 10));
}

}  // namespace
}  // namespace quarvelo::sim
