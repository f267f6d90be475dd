// The simulator program killed with SIGKILL at four moments of the real main window's work, over
// each LAN transport, and started again on the same ports: the window reports the lost link,
// keeps what the failed exchange did not touch, analyses a CSV file off line and reconnects.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QApplication>
#include <QTimer>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

#include "platform/qt/picture_box.h"
#include "tests/app/fault_harness.h"

namespace quarvelo::app {
namespace {

// quarvelo-scope-sim as a child process. A thread reads its traffic log (standard output) so
// that the process dies the moment a given message reaches it, whatever the window is doing.
class SimulatorProcess {
 public:
  ~SimulatorProcess() { Kill(); }

  // `ports` are the program's port options; false when it did not come up.
  bool Start(const std::vector<std::string>& ports) {
    int out[2];
    if (pipe2(out, O_CLOEXEC) != 0) return false;
    std::vector<std::string> arguments = {
        QUARVELO_SCOPE_SIM, "--model", "2000X", "--latency", "1", "--log", "-"};
    arguments.insert(arguments.end(), ports.begin(), ports.end());
    std::vector<char*> argv;
    for (std::string& argument : arguments) argv.push_back(argument.data());
    argv.push_back(nullptr);
    pid_ = fork();
    if (pid_ == 0) {
      dup2(out[1], STDOUT_FILENO);
      close(out[0]);
      close(out[1]);
      execv(argv[0], argv.data());
      _exit(127);
    }
    close(out[1]);
    out_ = fdopen(out[0], "r");
    char line[256] = {};
    if (pid_ < 0 || out_ == nullptr || std::fgets(line, sizeof line, out_) == nullptr) return false;
    ports_ = line;
    reader_ = std::thread([this] { Read(); });
    return ports_.find("ports:") != std::string::npos;
  }

  // The same ports again, for a restart.
  std::vector<std::string> SamePorts() const {
    std::vector<std::string> options;
    for (const char* name : {"socket", "vxi11", "portmapper", "hislip"}) {
      options.insert(options.end(), {std::string("--") + name + "-port", Port(name)});
    }
    return options;
  }
  // The port a ports line names ("socket=5025").
  std::string Port(const std::string& name) const {
    const std::size_t at = ports_.find(" " + name + "=") + name.size() + 2;
    return ports_.substr(at, ports_.find_first_of(" \n", at) - at);
  }

  // From now on, the `nth` arrival of `message` kills the process.
  void KillOn(const std::string& message, int nth) {
    std::lock_guard lock(mutex_);
    kill_on_ = message;
    arrivals_left_ = nth;
  }
  bool killed() const {
    std::lock_guard lock(mutex_);
    return killed_;
  }
  std::vector<std::string> Received() const {
    std::lock_guard lock(mutex_);
    return received_;
  }

  void Kill() {
    if (pid_ > 0) ::kill(pid_, SIGKILL);
    // Reaped only once the reader has seen the end of the log: until then the id cannot be
    // reused, so the reader never signals another process.
    if (reader_.joinable()) reader_.join();
    if (pid_ > 0) waitpid(pid_, nullptr, 0);
    pid_ = -1;
    if (out_ != nullptr) std::fclose(out_);
    out_ = nullptr;
  }

 private:
  void Read() {
    char line[512];
    while (std::fgets(line, sizeof line, out_) != nullptr) {
      const char* arrow = std::strstr(line, " << ");
      if (arrow == nullptr) continue;
      std::string message(arrow + 4);
      message.erase(message.find_last_not_of("\r\n") + 1);
      std::lock_guard lock(mutex_);
      received_.push_back(message);
      if (message == kill_on_ && --arrivals_left_ == 0) killed_ = ::kill(pid_, SIGKILL) == 0;
    }
  }

  pid_t pid_ = -1;
  std::FILE* out_ = nullptr;
  std::string ports_;
  std::thread reader_;
  mutable std::mutex mutex_;
  std::vector<std::string> received_;
  std::string kill_on_;
  int arrivals_left_ = 0;
  bool killed_ = false;
};

struct MomentCase {
  const char* name;
  const char* tool;     // what the user does
  const char* kill_on;  // the message the process dies on, and its arrival
  int nth;
  int time_out_ms;  // of the exchanges at that moment
};
constexpr MomentCase kMoments[] = {
    {"Readback", "ID_Remote", ":TIMebase:SCALe?", 1, 5000},
    {"SweepCapture", "ID_DIG", ":WAVeform:DATA?", 1, 10000},
    {"FftThirdPass", "ID_FFT1", ":DIGitize CHANnel1", 3, 10000},
    {"ImageImport", "ID_ScreenShoot", ":DISPlay:DATA? BMP8BIT, COLor", 1, 5000},
};
using testing_support::Transport;

class ProcessKilled : public testing_support::FaultTest,
                      public testing::WithParamInterface<std::tuple<Transport, int>> {
 protected:
  // Not the base's set-up: the simulator here is a process, not a library.
  void SetUp() override {
    qputenv("XDG_DATA_HOME", (dir_.path() + "/data").toUtf8());
    process_ = std::make_unique<SimulatorProcess>();
    ASSERT_TRUE(process_->Start({"--socket-port", "0", "--vxi11-port", "0", "--portmapper-port",
                                 "0", "--hislip-port", "0"}));
    store_ = std::make_unique<qt::QSettingsStore>(dir_.path() + "/QUARVELO.conf");
    store_->Set("Setup", "VISA",
                testing_support::ResourceFor(
                    std::get<0>(GetParam()), std::stoi(process_->Port("socket")),
                    std::stoi(process_->Port("portmapper")), std::stoi(process_->Port("hislip"))));
    store_->Set("Setup", "Channels", "4");
    window_ = std::make_unique<frmKeysight>(*store_, platform_);
    Load({}, false);
  }

  std::unique_ptr<SimulatorProcess> process_;
};

TEST_P(ProcessKilled, ReportsKeepsAnalysesAndReconnects) {
  const MomentCase& moment = kMoments[std::get<1>(GetParam())];
  ASSERT_NO_FATAL_FAILURE(OpenWithFourChannelsCaptured());
  window_->Settings().AverageCount = 4;
  if (std::string(moment.tool) == "ID_Remote") Trigger("ID_Remote");  // off, to switch it on
  const std::vector<testing_support::RecordCopy> records = testing_support::CopyRecords(*window_);
  ASSERT_GT(records[3].bytes, 0);
  const QImage picture = window_->picKeysight()->Image();
  ASSERT_TRUE(user_.Boxes().empty()) << user_.Boxes().front();

  process_->KillOn(moment.kill_on, moment.nth);
  user_.ResetBlock();
  Trigger(moment.tool);
  const std::chrono::milliseconds blocked = user_.LongestBlock();
  ASSERT_TRUE(process_->killed()) << moment.kill_on << " never arrived";

  // The lost link as reported, the window free again, and the records the failed exchange was
  // not filling as they were: the channel whose transfer was under way when a capture died is
  // the only one that may have changed.
  int involved = 0;
  if (moment.time_out_ms == 10000) {
    for (const std::string& line : process_->Received()) {
      if (line.rfind(":WAVeform:SOURce CHANnel", 0) == 0) involved = line.back() - '0';
    }
  }
  ASSERT_NO_FATAL_FAILURE(ExpectLinkLost(records, involved));
  ExpectFreeAgain(blocked, moment.time_out_ms);
  EXPECT_EQ(window_->picKeysight()->Image(), picture);
  if (moment.nth == 3) {  // the spectrum of the two passes before the fault stays
    EXPECT_TRUE(window_->SpectrumRecord().SpectrumReady);
    EXPECT_EQ(window_->SpectrumRecord().AverageSlot, 2);
  }

  ExpectCsvAnalysedOffline();

  // The instrument back on the same ports: Control on reads it back and sweeps.
  const std::vector<std::string> ports = process_->SamePorts();
  process_ = std::make_unique<SimulatorProcess>();
  ASSERT_TRUE(process_->Start(ports));
  Trigger("ID_Remote");
  EXPECT_TRUE(window_->Session().RemoteOn);
  EXPECT_EQ(user_.Boxes().size(), 1u);
  const std::vector<std::string> received = process_->Received();
  EXPECT_NE(std::find(received.begin(), received.end(), "*IDN?"), received.end());
  EXPECT_NE(std::find(received.begin(), received.end(), ":WAVeform:DATA?"), received.end());
}

INSTANTIATE_TEST_SUITE_P(
    Cells, ProcessKilled,
    testing::Combine(testing::Values(Transport::kSocket, Transport::kVxi11, Transport::kHislip),
                     testing::Range(0, 4)),
    [](const auto& info) {
      return std::string(testing_support::TransportName(std::get<0>(info.param))) +
             kMoments[std::get<1>(info.param)].name;
    });

}  // namespace
}  // namespace quarvelo::app
