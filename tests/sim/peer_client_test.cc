// pyvisa-py, a client written by others, talks to the simulator over SOCKET: it identifies,
// sets and reads back a channel scale, reads a waveform block of its announced length and reads
// the error queue. (pyvisa-py and lxi against the VXI-11 server are in the LAN peer tests; our
// own VISA over every transport of the simulator in the window's fault matrix.)
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

#include "sim/simulator.h"

namespace quarvelo::sim {
namespace {

// Its output, or nothing when it fails.
std::string RunCommand(const std::string& command, int* status) {
  std::string output;
  std::FILE* pipe = popen(command.c_str(), "r");
  if (pipe == nullptr) return output;
  char buffer[4096];
  for (size_t n; (n = std::fread(buffer, 1, sizeof buffer, pipe)) > 0;) output.append(buffer, n);
  *status = pclose(pipe);
  return output;
}

// Steps: "w:" writes, "b:" reads a binary block and prints its length, "q:" queries.
constexpr const char* kPyvisaScript = R"(
import sys, pyvisa
inst = pyvisa.ResourceManager('@py').open_resource(sys.argv[1])
inst.read_termination = inst.write_termination = '\n'
inst.timeout = 5000
for step in sys.argv[2:]:
    kind, text = step[:2], step[2:]
    if kind == 'w:': inst.write(text)
    elif kind == 'b:': print(len(inst.query_binary_values(text, datatype='B', container=bytes)))
    else: print(inst.query(text))
inst.close()
)";

// The 2000X with a set identity, as a client of the instrument sees it.
TEST(PyvisaTest, SocketSession) {
  int status = -1;
  RunCommand("/usr/bin/python3 -c 'import pyvisa, pyvisa_py' 2>/dev/null", &status);
  if (status != 0) GTEST_SKIP() << "pyvisa-py is not installed";
  SimulatorOptions options;
  options.model = "2000X";
  options.identity = "AGILENT TECHNOLOGIES,DSO-X 2024A,MY1,02.42.2017032900";
  options.vxi11_port = options.portmapper_port = options.hislip_port = -1;
  std::string error;
  std::unique_ptr<Simulator> simulator = Simulator::Start(options, &error);
  ASSERT_TRUE(simulator) << error;
  setenv("QUARVELO_PEER_SCRIPT", kPyvisaScript, 1);
  const std::string output =
      RunCommand("/usr/bin/python3 -c \"$QUARVELO_PEER_SCRIPT\" TCPIP0::127.0.0.1::" +
                     std::to_string(simulator->socket_port()) +
                     "::SOCKET 'q:*IDN?' 'q:*OPT?' 'w::CHANnel1:SCALe 200mV' 'q::CHANnel1:SCALe?' "
                     "'w::CHANnel2:DISPlay 1;:WAVeform:SOURce CHANnel2;:WAVeform:POINts 1000' "
                     "'b::WAVeform:DATA?' 'q::SYSTem:ERRor?' 2>&1",
                 &status);
  ASSERT_EQ(status, 0) << output;
  EXPECT_EQ(output,
            "AGILENT TECHNOLOGIES,DSO-X 2024A,MY1,02.42.2017032900\nDSOX2WAVEGEN,DSOX2DVM\n"
            "+2.00000E-01\n1000\n+0,\"No error\"\n");
}

}  // namespace
}  // namespace quarvelo::sim
