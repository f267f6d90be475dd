// pyvisa-py, a client written by others, talks to the simulator over SOCKET and VXI-11: it
// identifies, sets and reads back a channel scale, reads a waveform block of its announced
// length and reads the error queue. (lxi against the VXI-11 server, and pyvisa-py's time-outs
// and clears, are in the LAN peer tests; the simulator program itself, started with its
// options, in the window's fault-process test.)
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

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

// The portmapper's port is patched in because the library otherwise asks port 111 only.
// Steps: "w:" writes, "b:" reads a binary block and prints its length, "q:" queries.
constexpr const char* kPyvisaScript = R"(
import sys, pyvisa
import pyvisa_py.protocols.rpc as rpc
rpc.PMAP_PORT = int(sys.argv[2] or 0)
inst = pyvisa.ResourceManager('@py').open_resource(sys.argv[1])
inst.read_termination = inst.write_termination = '\n'
inst.timeout = 5000
for step in sys.argv[3:]:
    kind, text = step[:2], step[2:]
    if kind == 'w:': inst.write(text)
    elif kind == 'b:': print(len(inst.query_binary_values(text, datatype='B', container=bytes)))
    else: print(inst.query(text))
inst.close()
)";

struct PeerCase {
  const char* name;
  bool socket;
  const char* model;
  const char* identity;            // empty: the model's own
  std::vector<std::string> steps;  // without a quote
  std::string output;              // up to a '*', what the steps print
};

class PyvisaTest : public testing::TestWithParam<PeerCase> {};

TEST_P(PyvisaTest, Session) {
  int status = -1;
  RunCommand("/usr/bin/python3 -c 'import pyvisa, pyvisa_py' 2>/dev/null", &status);
  if (status != 0) GTEST_SKIP() << "pyvisa-py is not installed";
  const PeerCase& c = GetParam();
  SimulatorOptions options;
  options.model = c.model;
  options.identity = c.identity;
  (c.socket ? options.vxi11_port : options.socket_port) = -1;
  options.portmapper_port = c.socket ? -1 : 0;
  options.hislip_port = -1;
  std::string error;
  std::unique_ptr<Simulator> simulator = Simulator::Start(options, &error);
  ASSERT_TRUE(simulator) << error;
  const std::string port =
      std::to_string(c.socket ? simulator->socket_port() : simulator->portmapper_port());
  std::string command = "/usr/bin/python3 -c \"$QUARVELO_PEER_SCRIPT\" ";
  command += c.socket ? "TCPIP0::127.0.0.1::" + port + "::SOCKET ''"
                      : "TCPIP0::127.0.0.1::inst0::INSTR " + port;
  for (const std::string& step : c.steps) command += " '" + step + "'";
  setenv("QUARVELO_PEER_SCRIPT", kPyvisaScript, 1);
  const std::string output = RunCommand(command + " 2>&1", &status);
  ASSERT_EQ(status, 0) << output;
  const size_t star = c.output.find('*');
  EXPECT_EQ(output.substr(0, star), c.output.substr(0, star));
  if (star != std::string::npos) {
    EXPECT_TRUE(output.ends_with(c.output.substr(star + 1))) << output;
  }
}

// Set, read back, a block of its announced length and the error queue, as any client does.
const std::vector<std::string> kSession = {
    "w::CHANnel1:SCALe 200mV", "q::CHANnel1:SCALe?",
    "w::CHANnel2:DISPlay 1;:WAVeform:SOURce CHANnel2;:WAVeform:POINts 1000", "b::WAVeform:DATA?",
    "q::SYSTem:ERRor?"};
const char* const kSessionOutput = "+2.00000E-01\n1000\n+0,\"No error\"\n";

std::vector<std::string> Joined(std::vector<std::string> first,
                                const std::vector<std::string>& second) {
  first.insert(first.end(), second.begin(), second.end());
  return first;
}

// Over SOCKET the 2000X with a set identity; over VXI-11 a query left
// unread when the next message arrives is discarded with -410.
INSTANTIATE_TEST_SUITE_P(
    Clients, PyvisaTest,
    testing::Values(PeerCase{"Socket", true, "2000X",
                             "AGILENT TECHNOLOGIES,DSO-X 2024A,MY1,02.42.2017032900",
                             Joined({"q:*IDN?", "q:*OPT?"}, kSession),
                             std::string("AGILENT TECHNOLOGIES,DSO-X 2024A,MY1,02.42.2017032900\n"
                                         "DSOX2WAVEGEN,DSOX2DVM\n") +
                                 kSessionOutput},
                    PeerCase{"Vxi11", false, "3000X", "",
                             Joined(Joined({"q:*IDN?"}, kSession),
                                    {"w:*IDN?", "w::CHANnel1:SCALe 0.5", "q::SYSTem:ERRor?"}),
                             std::string("KEYSIGHT TECHNOLOGIES,*\n") + kSessionOutput +
                                 "-410,\"Query INTERRUPTED\"\n"}),
    [](const testing::TestParamInfo<PeerCase>& info) { return info.param.name; });

}  // namespace
}  // namespace quarvelo::sim
