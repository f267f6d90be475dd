// The command line of quarvelo-scope-sim.
#ifndef QUARVELO_SIM_COMMAND_LINE_H_
#define QUARVELO_SIM_COMMAND_LINE_H_

#include <string>
#include <vector>

#include "sim/simulator.h"

namespace quarvelo::sim {

struct CommandLine {
  SimulatorOptions options;
  bool help = false;
  bool announce = false;  // --announce: mDNS/DNS-SD through the Avahi daemon
  std::string error;  // non-empty when the arguments are not understood
};

// Defaults: loopback, socket 5025, VXI-11 core on an ephemeral port with the portmapper on
// 111, HiSLIP 4880, a 3000X with four channels and both options.
CommandLine ParseCommandLine(const std::vector<std::string>& arguments);

const char* Usage();

}  // namespace quarvelo::sim

#endif  // QUARVELO_SIM_COMMAND_LINE_H_
