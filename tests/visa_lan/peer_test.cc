// Clients written by others against our VXI-11 server. pyvisa-py: a block read up to END and
// with a termination character, a time-out and device clears. It finds the core channel through
// a portmapper on the standard port 111 only, so the test runs where 111 can be bound and is
// skipped, saying why, elsewhere. lxi asks two plain queries the same way.
#include <gtest/gtest.h>
#include <stdio.h>
#include <sys/wait.h>
#include <unistd.h>

#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "sim/server/portmapper_server.h"
#include "sim/server/vxi11_server.h"
#include "tests/visa/test_instrument.h"

namespace quarvelo::testing {
namespace {

struct ProcessResult {
  int exit_code = -1;  // 137: killed at its time-out
  std::string output;  // stdout and stderr together
};

// `command` is a shell command line; coreutils' timeout ends it after `seconds`.
ProcessResult RunProcess(const std::string& command, int seconds) {
  ProcessResult result;
  FILE* pipe =
      popen(("timeout -s KILL " + std::to_string(seconds) + " " + command + " 2>&1").c_str(), "r");
  if (pipe == nullptr) return result;
  char buffer[4096];
  while (const std::size_t n = fread(buffer, 1, sizeof(buffer), pipe)) {
    result.output.append(buffer, n);
  }
  const int status = pclose(pipe);
  if (WIFEXITED(status)) result.exit_code = WEXITSTATUS(status);
  return result;
}

class Vxi11PeerTest : public ::testing::Test {
 protected:
  void SetUp() override {
    core_ = std::make_unique<sim::Vxi11Server>(handler_, "127.0.0.1", 0);
    std::string error;
    ASSERT_TRUE(core_->Start(&error)) << error;
    // Port 111 is shared by every peer test: wait a while for another one to let it go.
    const auto give_up = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    for (;;) {
      portmapper_ = std::make_unique<sim::PortmapperServer>("127.0.0.1", 111, core_->port());
      if (portmapper_->Start(&error)) break;
      portmapper_.reset();
      if (std::chrono::steady_clock::now() > give_up) {
        GTEST_SKIP() << "port 111 cannot be bound here (" << error
                     << "); the peers only look for the portmapper there";
      }
      std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
  }

  CannedHandler handler_;
  std::unique_ptr<sim::Vxi11Server> core_;
  std::unique_ptr<sim::PortmapperServer> portmapper_;
};

TEST_F(Vxi11PeerTest, PyvisaPyQueriesReadsABlockTimesOutAndClears) {
  if (RunProcess("/usr/bin/python3 -c 'import pyvisa_py'", 30).exit_code != 0) {
    GTEST_SKIP() << "/usr/bin/python3 with pyvisa-py (python3-pyvisa-py) is not installed";
  }
  const ProcessResult run =
      RunProcess(std::string("/usr/bin/python3 ") + QUARVELO_PYVISA_PEER_SCRIPT +
                     " TCPIP0::127.0.0.1::inst0::INSTR",
                 60);
  ASSERT_EQ(run.exit_code, 0) << run.output;
  EXPECT_EQ(run.output,
            "IDN QUARVELO,LAN-TEST,0001,1.0\n"
            "BLOCK 524297 True\n"
            "CHR True\n"
            "SLOW timeout True\n"
            "ECHO after the time-out\n"
            "CLEAR done\n");
  EXPECT_EQ(handler_.interrupted.load(), 1) << "the slow reply was never read";
  EXPECT_EQ(handler_.cleared.load(), 2) << "once after the cut block, once at the end";
}

TEST_F(Vxi11PeerTest, LxiScpiQueries) {
  if (access("/usr/bin/lxi", X_OK) != 0) GTEST_SKIP() << "lxi (lxi-tools) is not installed";
  ProcessResult run = RunProcess("/usr/bin/lxi scpi --address 127.0.0.1 '*IDN?'", 30);
  ASSERT_EQ(run.exit_code, 0) << run.output;
  EXPECT_EQ(run.output, kIdn);
  run = RunProcess("/usr/bin/lxi scpi --address 127.0.0.1 'ECHO PEER?'", 30);
  EXPECT_EQ(run.exit_code, 0) << run.output;
  EXPECT_EQ(run.output, "PEER?\n");
  EXPECT_EQ(handler_.messages(), (std::vector<std::string>{"*IDN?", "ECHO PEER?"}));
}

}  // namespace
}  // namespace quarvelo::testing
