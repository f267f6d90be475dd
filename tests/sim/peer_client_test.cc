// Clients written by others talk to the real quarvelo-scope-sim program: pyvisa-py over SOCKET
// and VXI-11, lxi over raw TCP and VXI-11. Each identifies, sets and reads back a channel
// scale, and reads a waveform block of its announced length.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <map>
#include <sstream>
#include <string>
#include <vector>

namespace quarvelo::sim {
namespace {

// The program started on ephemeral ports (or the given arguments); killed at the end.
class SimulatorProcess {
 public:
  explicit SimulatorProcess(std::vector<std::string> arguments) {
    int out[2];
    if (pipe(out) != 0) return;
    pid_ = fork();
    if (pid_ == 0) {
      dup2(out[1], STDOUT_FILENO);
      close(out[0]);
      close(out[1]);
      std::vector<char*> argv;
      std::string program = QUARVELO_SCOPE_SIM_PATH;
      argv.push_back(program.data());
      for (std::string& argument : arguments) argv.push_back(argument.data());
      argv.push_back(nullptr);
      execv(program.c_str(), argv.data());
      _exit(127);
    }
    close(out[1]);
    output_ = fdopen(out[0], "r");
    char line[256];
    // The first line names the ports: "quarvelo-scope-sim ports: socket=N vxi11=N ...".
    if (output_ != nullptr && std::fgets(line, sizeof line, output_) != nullptr) {
      std::istringstream words(line);
      std::string word;
      while (words >> word) {
        size_t equals = word.find('=');
        if (equals != std::string::npos) {
          ports_[word.substr(0, equals)] = std::stoi(word.substr(equals + 1));
        }
      }
    }
  }
  ~SimulatorProcess() {
    if (pid_ > 0) {
      kill(pid_, SIGTERM);
      waitpid(pid_, nullptr, 0);
    }
    if (output_ != nullptr) std::fclose(output_);
  }
  int port(const std::string& name) const {
    auto found = ports_.find(name);
    return found == ports_.end() ? 0 : found->second;
  }

 private:
  pid_t pid_ = -1;
  std::FILE* output_ = nullptr;
  std::map<std::string, int> ports_;
};

struct CommandResult {
  int status = -1;
  std::string output;
};

CommandResult RunCommand(const std::string& command) {
  CommandResult result;
  std::FILE* pipe = popen(command.c_str(), "r");
  if (pipe == nullptr) return result;
  std::array<char, 65536> buffer;
  size_t n = 0;
  while ((n = std::fread(buffer.data(), 1, buffer.size(), pipe)) > 0) {
    result.output.append(buffer.data(), n);
  }
  result.status = pclose(pipe);
  return result;
}

std::vector<std::string> Lines(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  std::string line;
  while (std::getline(stream, line)) lines.push_back(line);
  return lines;
}

std::vector<std::string> SocketOnly() {
  return {"--socket-port",     "0",  "--vxi11-port",  "-1",
          "--portmapper-port", "-1", "--hislip-port", "-1"};
}

// The pyvisa-py client; the portmapper's port is patched in for VXI-11 because the library
// otherwise asks port 111 only.
constexpr const char* kPyvisaScript = R"(
import sys, pyvisa
import pyvisa_py.protocols.rpc as rpc
rpc.PMAP_PORT = int(sys.argv[2])
rm = pyvisa.ResourceManager('@py')
inst = rm.open_resource(sys.argv[1])
inst.read_termination = '\n'
inst.write_termination = '\n'
inst.timeout = 5000
print(inst.query('*IDN?'))
inst.write(':CHANnel1:SCALe 200mV')
print(inst.query(':CHANnel1:SCALe?'))
inst.write(':CHANnel2:DISPlay 1;:WAVeform:SOURce CHANnel2;:WAVeform:POINts 1000')
data = inst.query_binary_values(':WAVeform:DATA?', datatype='B', container=bytes)
print(len(data))
print(inst.query(':SYSTem:ERRor?'))
inst.close()
)";

bool PyvisaAvailable() {
  return RunCommand("/usr/bin/python3 -c 'import pyvisa, pyvisa_py' 2>/dev/null").status == 0;
}

void ExpectPyvisaSession(const std::string& resource, int portmapper_port) {
  std::string command = "/usr/bin/python3 -c \"$QUARVELO_PEER_SCRIPT\" '" + resource + "' " +
                        std::to_string(portmapper_port) + " 2>&1";
  setenv("QUARVELO_PEER_SCRIPT", kPyvisaScript, 1);
  CommandResult result = RunCommand(command);
  ASSERT_EQ(result.status, 0) << result.output;
  std::vector<std::string> lines = Lines(result.output);
  ASSERT_EQ(lines.size(), 4u) << result.output;
  EXPECT_EQ(lines[0].substr(0, 22), "KEYSIGHT TECHNOLOGIES,");
  EXPECT_EQ(lines[1], "+2.00000E-01");
  EXPECT_EQ(lines[2], "1000");
  EXPECT_EQ(lines[3], "+0,\"No error\"");
}

TEST(PeerClientTest, PyvisaOverSocket) {
  if (!PyvisaAvailable()) GTEST_SKIP() << "pyvisa-py is not installed";
  SimulatorProcess simulator(SocketOnly());
  ASSERT_NE(simulator.port("socket"), 0);
  ExpectPyvisaSession("TCPIP0::127.0.0.1::" + std::to_string(simulator.port("socket")) + "::SOCKET",
                      0);
}

TEST(PeerClientTest, PyvisaOverVxi11) {
  if (!PyvisaAvailable()) GTEST_SKIP() << "pyvisa-py is not installed";
  SimulatorProcess simulator({"--socket-port", "-1", "--vxi11-port", "0", "--portmapper-port", "0",
                              "--hislip-port", "-1"});
  ASSERT_NE(simulator.port("portmapper"), 0);
  ExpectPyvisaSession("TCPIP0::127.0.0.1::inst0::INSTR", simulator.port("portmapper"));
}

// A query left unread when the next message arrives is discarded with -410.
constexpr const char* kInterruptedScript = R"(
import sys, pyvisa
import pyvisa_py.protocols.rpc as rpc
rpc.PMAP_PORT = int(sys.argv[2])
rm = pyvisa.ResourceManager('@py')
inst = rm.open_resource(sys.argv[1])
inst.read_termination = '\n'
inst.write_termination = '\n'
inst.timeout = 5000
inst.write('*CLS')
inst.write('*IDN?')
inst.write(':CHANnel1:SCALe 0.5')
print(inst.query(':SYSTem:ERRor?'))
print(inst.query(':SYSTem:ERRor?'))
inst.close()
)";

TEST(PeerClientTest, PyvisaOverVxi11UnreadReplyIsInterrupted) {
  if (!PyvisaAvailable()) GTEST_SKIP() << "pyvisa-py is not installed";
  SimulatorProcess simulator({"--socket-port", "-1", "--vxi11-port", "0", "--portmapper-port", "0",
                              "--hislip-port", "-1"});
  ASSERT_NE(simulator.port("portmapper"), 0);
  setenv("QUARVELO_PEER_SCRIPT", kInterruptedScript, 1);
  CommandResult result =
      RunCommand("/usr/bin/python3 -c \"$QUARVELO_PEER_SCRIPT\" TCPIP0::127.0.0.1::inst0::INSTR " +
                 std::to_string(simulator.port("portmapper")) + " 2>&1");
  ASSERT_EQ(result.status, 0) << result.output;
  std::vector<std::string> lines = Lines(result.output);
  ASSERT_EQ(lines.size(), 2u) << result.output;
  EXPECT_EQ(lines[0], "-410,\"Query INTERRUPTED\"");
  EXPECT_EQ(lines[1], "+0,\"No error\"");
}

bool LxiAvailable() { return RunCommand("command -v lxi >/dev/null").status == 0; }

// `lxi scpi` against the given port, one command per call; raw selects TCP instead of VXI-11.
void ExpectLxiSession(const std::string& port_option) {
  std::string lxi = "lxi scpi -a 127.0.0.1 -t 5 " + port_option + " ";
  CommandResult identity = RunCommand(lxi + "'*IDN?'");
  ASSERT_EQ(identity.status, 0) << identity.output;
  EXPECT_EQ(identity.output.substr(0, 22), "KEYSIGHT TECHNOLOGIES,");
  ASSERT_EQ(RunCommand(lxi + "':CHANnel1:SCALe 50mV'").status, 0);
  EXPECT_EQ(Lines(RunCommand(lxi + "':CHANnel1:SCALe?'").output).at(0), "+5.00000E-02");
  ASSERT_EQ(RunCommand(lxi + "':CHANnel2:DISPlay 1;:WAVeform:SOURce CHANnel2'").status, 0);
  CommandResult block = RunCommand(lxi + "':WAVeform:DATA?'");
  ASSERT_EQ(block.status, 0);
  ASSERT_GE(block.output.size(), 10u);
  ASSERT_EQ(block.output.substr(0, 2), "#8");
  size_t announced = std::stoul(block.output.substr(2, 8));
  EXPECT_EQ(announced, 1000u);
  EXPECT_GE(block.output.size(), 10 + announced);
}

TEST(PeerClientTest, LxiOverRawSocket) {
  if (!LxiAvailable()) GTEST_SKIP() << "lxi-tools is not installed";
  SimulatorProcess simulator(SocketOnly());
  ASSERT_NE(simulator.port("socket"), 0);
  ExpectLxiSession("-r -p " + std::to_string(simulator.port("socket")));
}

TEST(PeerClientTest, LxiOverVxi11) {
  if (!LxiAvailable()) GTEST_SKIP() << "lxi-tools is not installed";
  // lxi finds the VXI-11 core channel only through a portmapper on port 111; when that port
  // is not ours to take (no privileges, or another test holds it), there is nothing to test.
  SimulatorProcess simulator({"--socket-port", "-1", "--vxi11-port", "0", "--portmapper-port",
                              "111", "--hislip-port", "-1"});
  ASSERT_NE(simulator.port("vxi11"), 0);
  if (simulator.port("portmapper") != 111) GTEST_SKIP() << "port 111 is not available";
  ExpectLxiSession("");
}

}  // namespace
}  // namespace quarvelo::sim

namespace quarvelo::sim {
namespace {

// The replies added for fidelity with what client code for these instruments expects, read by
// pyvisa-py from a 2000X with a settable identity and live default signals.
constexpr const char* kFidelityScript = R"(
import sys, pyvisa
rm = pyvisa.ResourceManager('@py')
inst = rm.open_resource(sys.argv[1])
inst.read_termination = '\n'
inst.write_termination = '\n'
inst.timeout = 5000
for query in ['*IDN?', '*OPT?', ':CHANnel1:PROBe:ID?', ':RUN;:AER?', ':MEASure:FREQuency?',
              ':MEASure:VAMPlitude? CHANnel1', ':SYSTem:ERRor?']:
    print(inst.query(query))
inst.close()
)";

TEST(PeerClientTest, PyvisaReadsTheFidelityReplies) {
  if (!PyvisaAvailable()) GTEST_SKIP() << "pyvisa-py is not installed";
  std::vector<std::string> arguments = SocketOnly();
  for (const char* argument : {"--model", "2000X", "--identity",
                               "AGILENT TECHNOLOGIES,DSO-X 2024A,MY1,02.42.2017032900"}) {
    arguments.push_back(argument);
  }
  SimulatorProcess simulator(arguments);
  ASSERT_NE(simulator.port("socket"), 0);
  setenv("QUARVELO_PEER_SCRIPT", kFidelityScript, 1);
  CommandResult result =
      RunCommand("/usr/bin/python3 -c \"$QUARVELO_PEER_SCRIPT\" TCPIP0::127.0.0.1::" +
                 std::to_string(simulator.port("socket")) + "::SOCKET 2>&1");
  ASSERT_EQ(result.status, 0) << result.output;
  std::vector<std::string> lines = Lines(result.output);
  ASSERT_EQ(lines.size(), 7u) << result.output;
  EXPECT_EQ(lines[0], "AGILENT TECHNOLOGIES,DSO-X 2024A,MY1,02.42.2017032900");
  EXPECT_EQ(lines[1], "DSOX2WAVEGEN,DSOX2DVM");
  EXPECT_EQ(lines[2], "NONE");
  EXPECT_EQ(lines[3], "+1");
  EXPECT_EQ(lines[4], "+1.00000E+03");  // the probe-compensation square
  EXPECT_NEAR(std::stod(lines[5]), 2.5, 0.05);
  EXPECT_EQ(lines[6], "+0,\"No error\"");
}

TEST(PeerClientTest, LxiReadsTheFidelityReplies) {
  if (!LxiAvailable()) GTEST_SKIP() << "lxi-tools is not installed";
  SimulatorProcess simulator(SocketOnly());
  ASSERT_NE(simulator.port("socket"), 0);
  std::string lxi =
      "lxi scpi -a 127.0.0.1 -t 5 -r -p " + std::to_string(simulator.port("socket")) + " ";
  EXPECT_EQ(Lines(RunCommand(lxi + "'*OPT?'").output).at(0), "DSOX3WAVEGEN,DSOX3DVM");
  EXPECT_EQ(Lines(RunCommand(lxi + "':TER?'").output).at(0), "+1");
  EXPECT_NEAR(std::stod(Lines(RunCommand(lxi + "':MEASure:VTOP? CHAN1'").output).at(0)), 2.5, 0.05);
  EXPECT_EQ(Lines(RunCommand(lxi + "':WAVeform:POINts 50;:SYSTem:ERRor?'").output).at(0),
            "-222,\"Data out of range\"");
}

}  // namespace
}  // namespace quarvelo::sim
