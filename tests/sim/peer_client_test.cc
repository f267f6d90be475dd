// Clients written by others talk to the real quarvelo-scope-sim program: pyvisa-py over SOCKET
// and VXI-11, lxi over raw TCP and VXI-11. Each identifies, sets and reads back a channel
// scale, reads a waveform block of its announced length, and reads the replies client code for
// these instruments relies on.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
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
      for (std::string word; words >> word;) {
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
  for (size_t n; (n = std::fread(buffer.data(), 1, buffer.size(), pipe)) > 0;) {
    result.output.append(buffer.data(), n);
  }
  result.status = pclose(pipe);
  return result;
}

std::vector<std::string> Lines(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

std::string Quoted(const std::string& text) {
  std::string quoted = "'";
  for (char c : text) quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return quoted + "'";
}

// "text*" matches by prefix, "~2.5" a number within 0.05, anything else exactly.
bool Matches(const std::string& expected, const std::string& actual) {
  if (expected.ends_with('*')) return actual.starts_with(expected.substr(0, expected.size() - 1));
  if (expected.starts_with('~')) {
    return std::abs(std::strtod(actual.c_str(), nullptr) - std::stod(expected.substr(1))) < 0.05;
  }
  return actual == expected;
}

enum class Transport { kSocket, kVxi11, kVxi11OnPort111 };

std::vector<std::string> Arguments(Transport transport, std::vector<std::string> extra) {
  std::vector<std::string> arguments = {"--socket-port",     "0",  "--vxi11-port",  "-1",
                                        "--portmapper-port", "-1", "--hislip-port", "-1"};
  if (transport != Transport::kSocket) {
    arguments[1] = "-1";
    arguments[3] = "0";
    arguments[5] = transport == Transport::kVxi11 ? "0" : "111";
  }
  arguments.insert(arguments.end(), extra.begin(), extra.end());
  return arguments;
}

// A step is a message and what its reply must match; a message without a reply expects none.
struct Step {
  std::string message, reply;
};

struct PeerCase {
  const char* name;
  Transport transport;
  std::vector<std::string> extra_arguments;
  std::vector<Step> steps;
};

std::string CaseName(const testing::TestParamInfo<PeerCase>& info) { return info.param.name; }
void PrintTo(const PeerCase& c, std::ostream* os) { *os << c.name; }

// The pyvisa-py client; the portmapper's port is patched in for VXI-11 because the library
// otherwise asks port 111 only. "b:" reads a binary block and prints its length.
constexpr const char* kPyvisaScript = R"(
import sys, pyvisa
import pyvisa_py.protocols.rpc as rpc
rpc.PMAP_PORT = int(sys.argv[2])
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

const std::vector<Step> kPyvisaSession = {
    {"w::CHANnel1:SCALe 200mV", ""},
    {"q::CHANnel1:SCALe?", "+2.00000E-01"},
    {"w::CHANnel2:DISPlay 1;:WAVeform:SOURce CHANnel2;:WAVeform:POINts 1000", ""},
    {"b::WAVeform:DATA?", "1000"},
    {"q::SYSTem:ERRor?", "+0,\"No error\""}};

std::vector<Step> Joined(std::vector<Step> first, const std::vector<Step>& second) {
  first.insert(first.end(), second.begin(), second.end());
  return first;
}

// Over SOCKET a 2000X with a settable identity and live default signals gives the replies
// client code relies on; over VXI-11 a query left unread when the next message arrives is
// discarded with -410.
const std::vector<Step> kPyvisaSocketSession =
    Joined({{"q:*IDN?", "AGILENT TECHNOLOGIES,DSO-X 2024A,MY1,02.42.2017032900"},
            {"q:*OPT?", "DSOX2WAVEGEN,DSOX2DVM"},
            {"q::CHANnel1:PROBe:ID?", "NONE"},
            {"q::RUN;:AER?", "+1"},
            {"q::MEASure:FREQuency?", "+1.00000E+03"},  // the probe-compensation square
            {"q::MEASure:VAMPlitude? CHANnel1", "~2.5"}},
           kPyvisaSession);
const std::vector<Step> kPyvisaVxi11Session =
    Joined(Joined({{"q:*IDN?", "KEYSIGHT TECHNOLOGIES,*"}}, kPyvisaSession),
           {{"w:*IDN?", ""},
            {"w::CHANnel1:SCALe 0.5", ""},
            {"q::SYSTem:ERRor?", "-410,\"Query INTERRUPTED\""},
            {"q::SYSTem:ERRor?", "+0,\"No error\""}});

class PyvisaTest : public testing::TestWithParam<PeerCase> {};

TEST_P(PyvisaTest, Session) {
  if (RunCommand("/usr/bin/python3 -c 'import pyvisa, pyvisa_py' 2>/dev/null").status != 0) {
    GTEST_SKIP() << "pyvisa-py is not installed";
  }
  const PeerCase& c = GetParam();
  SimulatorProcess simulator(Arguments(c.transport, c.extra_arguments));
  bool socket = c.transport == Transport::kSocket;
  ASSERT_NE(simulator.port(socket ? "socket" : "portmapper"), 0);
  std::string command = "/usr/bin/python3 -c \"$QUARVELO_PEER_SCRIPT\" ";
  command += socket ? "TCPIP0::127.0.0.1::" + std::to_string(simulator.port("socket")) + "::SOCKET"
                    : "TCPIP0::127.0.0.1::inst0::INSTR";
  command += " " + std::to_string(simulator.port("portmapper"));
  std::vector<std::string> expected;
  for (const Step& step : c.steps) {
    command += " " + Quoted(step.message);
    if (!step.message.starts_with("w:")) expected.push_back(step.reply);
  }
  setenv("QUARVELO_PEER_SCRIPT", kPyvisaScript, 1);
  CommandResult result = RunCommand(command + " 2>&1");
  ASSERT_EQ(result.status, 0) << result.output;
  std::vector<std::string> lines = Lines(result.output);
  ASSERT_EQ(lines.size(), expected.size()) << result.output;
  for (size_t i = 0; i < lines.size(); ++i) EXPECT_TRUE(Matches(expected[i], lines[i])) << lines[i];
}

INSTANTIATE_TEST_SUITE_P(
    Clients, PyvisaTest,
    testing::Values(PeerCase{"Socket",
                             Transport::kSocket,
                             {"--model", "2000X", "--identity",
                              "AGILENT TECHNOLOGIES,DSO-X 2024A,MY1,02.42.2017032900"},
                             kPyvisaSocketSession},
                    PeerCase{"Vxi11", Transport::kVxi11, {}, kPyvisaVxi11Session}),
    CaseName);

// `lxi scpi`, one message per call; a block's whole announced length must arrive.
class LxiTest : public testing::TestWithParam<PeerCase> {};

TEST_P(LxiTest, Session) {
  if (RunCommand("command -v lxi >/dev/null").status != 0) {
    GTEST_SKIP() << "lxi-tools is not installed";
  }
  const PeerCase& c = GetParam();
  SimulatorProcess simulator(Arguments(c.transport, c.extra_arguments));
  std::string lxi = "lxi scpi -a 127.0.0.1 -t 5 ";
  if (c.transport == Transport::kSocket) {
    ASSERT_NE(simulator.port("socket"), 0);
    lxi += "-r -p " + std::to_string(simulator.port("socket")) + " ";
  } else {
    // lxi finds the VXI-11 core channel only through a portmapper on port 111; when that port
    // is not ours to take (no privileges, or another test holds it), there is nothing to test.
    ASSERT_NE(simulator.port("vxi11"), 0);
    if (simulator.port("portmapper") != 111) GTEST_SKIP() << "port 111 is not available";
  }
  for (const Step& step : c.steps) {
    CommandResult result = RunCommand(lxi + Quoted(step.message));
    ASSERT_EQ(result.status, 0) << step.message << ": " << result.output;
    if (step.reply.empty()) continue;
    std::vector<std::string> lines = Lines(result.output);
    ASSERT_FALSE(lines.empty()) << step.message;
    EXPECT_TRUE(Matches(step.reply, lines[0])) << step.message << ": " << lines[0];
    if (step.reply.starts_with("#8")) {
      EXPECT_GE(result.output.size(), 10 + std::stoul(result.output.substr(2, 8)));
    }
  }
}

// The fidelity replies first: reading the trigger event register clears it.
const std::vector<Step> kLxiSession = {
    {"*OPT?", "DSOX3WAVEGEN,DSOX3DVM"},
    {":TER?", "+1"},
    {":MEASure:VTOP? CHAN1", "~2.5"},
    {":WAVeform:POINts 50;:SYSTem:ERRor?", "-222,\"Data out of range\""},
    {"*IDN?", "KEYSIGHT TECHNOLOGIES,*"},
    {":CHANnel1:SCALe 50mV", ""},
    {":CHANnel1:SCALe?", "+5.00000E-02"},
    {":CHANnel2:DISPlay 1;:WAVeform:SOURce CHANnel2", ""},
    {":WAVeform:DATA?", "#800001000*"}};

INSTANTIATE_TEST_SUITE_P(Clients, LxiTest,
                         testing::Values(PeerCase{"RawSocket", Transport::kSocket, {}, kLxiSession},
                                         PeerCase{
                                             "Vxi11", Transport::kVxi11OnPort111, {}, kLxiSession}),
                         CaseName);

}  // namespace
}  // namespace quarvelo::sim
