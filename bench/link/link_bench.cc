// End-to-end costs of the link against the in-process simulator on loopback: a full state
// readback (per exchange, beside a bare TCP ping-pong) and a 524,288-point capture from a
// stopped instrument (request to volts), each beside the same exchanges replayed by a plain
// pyvisa-py script in the same run. Also splits the capture into simulator, transfer and
// conversion time.
#include <arpa/inet.h>
#include <benchmark/benchmark.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "acquisition/capture.h"
#include "acquisition/readback.h"
#include "link/instrument_link.h"
#include "platform/settings/memory_settings_store.h"
#include "sim/simulator.h"

namespace quarvelo {
namespace {

using Clock = std::chrono::steady_clock;

double MillisecondsSince(Clock::time_point start) {
  return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

// A loopback echo of one small line per exchange: the kernel's share of every query.
class PingPongServer {
 public:
  PingPongServer() {
    listener_ = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    bind(listener_, reinterpret_cast<sockaddr*>(&address), sizeof address);
    listen(listener_, 1);
    socklen_t size = sizeof address;
    getsockname(listener_, reinterpret_cast<sockaddr*>(&address), &size);
    port_ = ntohs(address.sin_port);
    thread_ = std::thread([this] { Serve(); });
  }
  ~PingPongServer() {
    shutdown(listener_, SHUT_RDWR);
    close(listener_);
    thread_.join();
  }
  int port() const { return port_; }

 private:
  void Serve() {
    const int connection = accept(listener_, nullptr, nullptr);
    if (connection < 0) return;
    const int one = 1;
    setsockopt(connection, IPPROTO_TCP, TCP_NODELAY, &one, sizeof one);
    std::array<char, 256> buffer;
    while (true) {
      const ssize_t n = recv(connection, buffer.data(), buffer.size(), 0);
      if (n <= 0) break;
      if (send(connection, "+1\n", 3, MSG_NOSIGNAL) != 3) break;
    }
    close(connection);
  }

  int listener_ = -1;
  int port_ = 0;
  std::thread thread_;
};

void BM_TcpPingPong(benchmark::State& state) {
  PingPongServer server;
  const int fd = socket(AF_INET, SOCK_STREAM, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  address.sin_port = htons(static_cast<std::uint16_t>(server.port()));
  connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof address);
  const int one = 1;
  setsockopt(fd, IPPROTO_TCP, TCP_NODELAY, &one, sizeof one);
  std::array<char, 64> reply;
  for (auto _ : state) {
    send(fd, "*ESR?\n", 6, MSG_NOSIGNAL);
    benchmark::DoNotOptimize(recv(fd, reply.data(), reply.size(), 0));
  }
  close(fd);
}

std::unique_ptr<sim::Simulator> StartSimulator() {
  sim::SimulatorOptions options;
  options.model = "3000X";
  options.channels = 4;
  options.vxi11_port = -1;
  options.portmapper_port = -1;
  options.hislip_port = -1;
  std::string error;
  auto simulator = sim::Simulator::Start(options, &error);
  if (!simulator) std::fprintf(stderr, "simulator: %s\n", error.c_str());
  return simulator;
}

// UI and tools that do nothing: the benchmark measures the program, not a recorder that keeps
// every call of thousands of runs.
class NullUi final : public ui::UiServices {
 public:
  void ShowStatus(std::string_view) override {}
  ui::MessageResult ShowMessage(std::string_view, ui::MessageIcon, ui::MessageButtons) override {
    return ui::MessageResult::kOk;
  }
  std::optional<std::string> AskOpenFile(const ui::FileDialogRequest&) override { return {}; }
  std::optional<std::string> AskSaveFile(const ui::FileDialogRequest&) override { return {}; }
  void SetPointer(ui::PointerShape) override {}
  void ProcessPendingEvents() override {}
  void Pause(int) override {}
  void SetActivityColour(ui::Rgb) override {}
  void SetRefreshTimerEnabled(bool) override {}
  void SetSingleTimerEnabled(bool) override {}
};

class NullTools final : public ui::ToolHost {
 public:
  void SetToolState(std::string_view, bool) override {}
  bool ToolState(std::string_view) const override { return false; }
  void SetToolVisible(std::string_view, bool) override {}
  bool ToolVisible(std::string_view) const override { return true; }
  void SetToolEnabled(std::string_view, bool) override {}
  void SetToolCaption(std::string_view, std::string_view) override {}
  std::string ToolCaption(std::string_view) const override { return {}; }
  void SetComboItems(std::string_view, const std::vector<std::string>&) override {}
  std::vector<std::string> ComboItems(std::string_view) const override { return {}; }
  void SetComboIndex(std::string_view, int index) override { bins_index = index; }
  int ComboIndex(std::string_view) const override { return bins_index; }
  void SetComboText(std::string_view, std::string_view) override {}
  std::string ComboText(std::string_view) const override { return {}; }
  int bins_index = 0;  // the only combo the capture reads, "ID_Bins"
};

// An open link to a fresh 4-channel 3000X simulator with both options.
struct OnlineScope {
  OnlineScope() : simulator(StartSimulator()) {
    scope.Model = 1;
    scope.MathPrefix = ":FUNC1";
    scope.WgenPrefix = ":WGEN1";
    scope.HasDvm = true;
    scope.HasWgen = true;
    session.Address = simulator->SocketResource();
    link.OpenInstrument();
  }
  std::unique_ptr<sim::Simulator> simulator;
  link::InstrumentSession session;
  link::StatusFlags flags;
  acquisition::ScopeState scope;
  NullUi ui;
  NullTools tools;
  settings::MemorySettingsStore settings;
  link::NoLinkHooks hooks;
  link::InstrumentLink link{
      session, flags, {scope.ChannelCount, scope.HasDvm, scope.HasWgen, scope.ToolUpdateInProgress},
      ui,      tools, settings,
      hooks};
  acquisition::WaveformRecords records;
  acquisition::NoReadbackHooks readback_hooks;
  acquisition::StateReadback readback{link, scope, records, ui, tools, readback_hooks};
  acquisition::WaveformCapture capture{link, scope, records, ui, tools};
};

void WriteLines(const std::string& path, const std::vector<std::string>& lines) {
  std::ofstream out(path);
  for (const auto& line : lines) out << line << '\n';
}

// Runs the pyvisa-py replay of `lines` and returns its one-line report.
std::string RunScript(const std::string& resource, const std::vector<std::string>& lines,
                      int repeats) {
  char folder_template[] = "/tmp/quarvelo-bench-XXXXXX";
  const char* folder = mkdtemp(folder_template);
  if (folder == nullptr) return "no temporary folder";
  const std::string list = std::string(folder) + "/exchanges.txt";
  const std::string report = std::string(folder) + "/report.txt";
  WriteLines(list, lines);
  const std::string command = "/usr/bin/python3 " QUARVELO_BENCH_DIR "/pyvisa_exchanges.py '" +
                              resource + "' '" + list + "' " + std::to_string(repeats) + " > '" +
                              report + "' 2>&1";
  const int status = std::system(command.c_str());
  std::ifstream in(report);
  std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  std::remove(list.c_str());
  std::remove(report.c_str());
  rmdir(folder);
  if (status != 0) return "script failed: " + text;
  return text;
}

void BM_ReadBackState(benchmark::State& state) {
  OnlineScope scope;
  scope.readback.ReadBackState();  // warm-up: first replies, allocations
  std::size_t exchanges = 0;
  for (auto _ : state) {
    scope.simulator->ClearTraffic();
    scope.readback.ReadBackState();
    exchanges = scope.simulator->ReceivedMessages().size();
  }
  state.counters["exchanges"] = static_cast<double>(exchanges);
  state.counters["s_per_exchange"] =
      benchmark::Counter(static_cast<double>(state.iterations() * exchanges),
                         benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
  state.SetLabel(scope.session.RemoteOn ? "ok" : "link closed");
}

// A stopped instrument whose record is already acquired: the capture only transfers.
void PrepareStoppedCapture(OnlineScope& scope) {
  scope.simulator->Execute(":TIMebase:SCALe 1E-4");
  scope.simulator->Execute(":RUN");
  scope.simulator->Execute(":DIGitize");
  scope.scope.TimebaseScale = 1e-4;
  scope.tools.SetComboIndex("ID_Bins", 11);  // "524288"
}

void BM_Capture524k(benchmark::State& state) {
  OnlineScope scope;
  PrepareStoppedCapture(scope);
  scope.tools.SetComboIndex("ID_Bins", 11);
  scope.capture.CaptureChannel(1, true, false, 0);  // warm-up and storage growth
  for (auto _ : state) scope.capture.CaptureChannel(1, true, false, 0);
  state.counters["points"] = scope.records.Records[1].ByteCount;
  state.SetLabel(scope.session.RemoteOn ? "ok" : "link closed");
}

void BM_QueryBlockOnly(benchmark::State& state) {
  OnlineScope scope;
  PrepareStoppedCapture(scope);
  scope.link.SendCommand(":WAVeform:POINts:MODE RAW");
  scope.link.SendCommand(":WAVEFORM:POINTS 524288");
  scope.link.SendCommand(":WAVeform:FORMat BYTE");
  std::int32_t bytes = 0;
  for (auto _ : state) bytes = scope.link.QueryBinaryBlock(":WAVeform:DATA?");
  state.counters["bytes"] = bytes;
}

void BM_SimulatorBlockDirect(benchmark::State& state) {
  auto simulator = StartSimulator();
  simulator->Execute(":TIMebase:SCALe 1E-4");
  simulator->Execute(":DIGitize");
  simulator->Execute(":WAVeform:POINts:MODE RAW");
  simulator->Execute(":WAVEFORM:POINTS 524288");
  simulator->Execute(":WAVeform:FORMat BYTE");
  std::size_t size = 0;
  for (auto _ : state) size = simulator->Execute(":WAVeform:DATA?").size();
  state.counters["bytes"] = static_cast<double>(size);
}

// One query through our VISA layer and the simulator's socket server, without the link: what
// every exchange of the readback costs below the link.
void BM_VisaQueryOnly(benchmark::State& state) {
  OnlineScope scope;
  const ViSession instrument = scope.session.Instrument;
  std::array<char, 64> reply{};
  for (auto _ : state) {
    viPrintf(instrument, "%s\n", "*ESR?");
    ViInt32 count = static_cast<ViInt32>(reply.size());
    viScanf(instrument, "%#t", &count, reply.data());
  }
}

// The simulator's own share of a readback: the same messages run against its model directly,
// without a transport.
void BM_SimulatorReadbackDirect(benchmark::State& state) {
  OnlineScope scope;
  scope.readback.ReadBackState();
  scope.simulator->ClearTraffic();
  scope.readback.ReadBackState();
  const std::vector<std::string> lines = scope.simulator->ReceivedMessages();
  scope.link.CloseInstrument();
  for (auto _ : state) {
    for (const auto& line : lines) benchmark::DoNotOptimize(scope.simulator->Execute(line));
  }
  state.counters["exchanges"] = static_cast<double>(lines.size());
  state.counters["s_per_exchange"] =
      benchmark::Counter(static_cast<double>(state.iterations() * lines.size()),
                         benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

void BM_ConvertSamples524k(benchmark::State& state) {
  const std::size_t n = 524288;
  std::vector<std::uint8_t> codes(n);
  for (std::size_t i = 0; i < n; ++i) codes[i] = static_cast<std::uint8_t>(i * 7);
  std::vector<double> raw(n), time(n), volts(n);
  for (auto _ : state) {
    acquisition::ConvertSamples(codes, 1e-9, -2.6e-4, 128, 0.01, 0.5, raw, time, volts);
    benchmark::DoNotOptimize(volts.data());
  }
}

double Median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  return values.empty() ? 0 : values[values.size() / 2];
}

// A bare TCP ping-pong client: one small line out, one small reply back, per exchange.
class PingPongClient {
 public:
  explicit PingPongClient(int port) : fd_(socket(AF_INET, SOCK_STREAM, 0)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    connect(fd_, reinterpret_cast<sockaddr*>(&address), sizeof address);
    const int one = 1;
    setsockopt(fd_, IPPROTO_TCP, TCP_NODELAY, &one, sizeof one);
  }
  ~PingPongClient() { close(fd_); }
  void Exchange() {
    send(fd_, "*ESR?\n", 6, MSG_NOSIGNAL);
    recv(fd_, reply_.data(), reply_.size(), 0);
  }

 private:
  int fd_;
  std::array<char, 64> reply_;
};

// Processor time of the whole process (every thread: the program's and the simulator's or the
// echo server's), in seconds. On a shared machine this is the steadier measure of what an
// exchange costs; wall time also counts waiting for a processor.
double ProcessCpuSeconds() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return static_cast<double>(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
         static_cast<double>(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) * 1e-6;
}

struct Cost {
  double wall_us = 0;
  double cpu_us = 0;
};

// One round: a fresh simulator, the program's readback and capture (medians of single runs),
// a bare ping-pong, then the same exchanges replayed by the script. The machine is shared, so
// the rounds show how much the figures move.
void PrintScriptComparisonRound(int round) {
  constexpr int kRepeats = 30;
  OnlineScope scope;
  if (!scope.session.RemoteOn) return;
  scope.readback.ReadBackState();
  scope.simulator->ClearTraffic();
  scope.readback.ReadBackState();
  const std::size_t exchanges = scope.simulator->ReceivedMessages().size();
  std::vector<std::string> readback_lines = scope.simulator->ReceivedMessages();
  // Readbacks and ping-pong batches of as many exchanges take turns, so that both see the
  // same machine: the ratio then holds even while other work comes and goes.
  PingPongServer echo;
  PingPongClient ping(echo.port());
  for (std::size_t i = 0; i < exchanges; ++i) ping.Exchange();
  std::vector<double> readback_wall, readback_cpu, ping_wall, ping_cpu;
  for (int i = 0; i < kRepeats; ++i) {
    auto start = Clock::now();
    double cpu = ProcessCpuSeconds();
    scope.readback.ReadBackState();
    readback_wall.push_back(MillisecondsSince(start) * 1e3 / exchanges);
    readback_cpu.push_back((ProcessCpuSeconds() - cpu) * 1e6 / exchanges);
    start = Clock::now();
    cpu = ProcessCpuSeconds();
    for (std::size_t k = 0; k < exchanges; ++k) ping.Exchange();
    ping_wall.push_back(MillisecondsSince(start) * 1e3 / exchanges);
    ping_cpu.push_back((ProcessCpuSeconds() - cpu) * 1e6 / exchanges);
  }
  const Cost readback{Median(readback_wall), Median(readback_cpu)};
  const Cost pong{Median(ping_wall), Median(ping_cpu)};

  PrepareStoppedCapture(scope);
  scope.tools.SetComboIndex("ID_Bins", 11);
  scope.capture.CaptureChannel(1, true, false, 0);
  scope.simulator->ClearTraffic();
  std::vector<double> captures;
  for (int i = 0; i < kRepeats; ++i) {
    const auto start = Clock::now();
    scope.capture.CaptureChannel(1, true, false, 0);
    captures.push_back(MillisecondsSince(start));
  }
  std::vector<std::string> capture_lines = scope.simulator->ReceivedMessages();
  capture_lines.resize(capture_lines.size() / kRepeats);
  const std::int32_t points = scope.records.Records[1].ByteCount;

  const std::string resource = scope.simulator->SocketResource();
  // The instrument serves one client at a time: the script connects once the program is gone.
  scope.link.CloseInstrument();
  std::printf("round %d: bare TCP ping-pong %.1f us wall, %.1f us processor per exchange\n", round,
              pong.wall_us, pong.cpu_us);
  std::printf(
      "  program  readback: exchanges=%zu total_ms=%.3f per_exchange_us=%.1f (%.2fx ping-pong) "
      "processor_us=%.1f (%.2fx ping-pong)\n",
      exchanges, readback.wall_us * exchanges / 1e3, readback.wall_us,
      readback.wall_us / pong.wall_us, readback.cpu_us, readback.cpu_us / pong.cpu_us);
  std::printf("  pyvisa   readback: %s", RunScript(resource, readback_lines, kRepeats).c_str());
  std::printf("  program  capture : exchanges=%zu total_ms=%.3f points=%d\n", capture_lines.size(),
              Median(captures), points);
  std::printf("  pyvisa   capture : %s", RunScript(resource, capture_lines, kRepeats).c_str());
}

void PrintScriptComparison() {
  std::printf("\nSame exchanges, same simulator, same run (medians):\n");
  for (int round = 1; round <= 3; ++round) PrintScriptComparisonRound(round);
}

}  // namespace
}  // namespace quarvelo

BENCHMARK(quarvelo::BM_TcpPingPong)->UseRealTime()->Unit(benchmark::kMicrosecond);
BENCHMARK(quarvelo::BM_ReadBackState)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(quarvelo::BM_Capture524k)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(quarvelo::BM_QueryBlockOnly)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(quarvelo::BM_SimulatorBlockDirect)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(quarvelo::BM_VisaQueryOnly)->UseRealTime()->Unit(benchmark::kMicrosecond);
BENCHMARK(quarvelo::BM_SimulatorReadbackDirect)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(quarvelo::BM_ConvertSamples524k)->Unit(benchmark::kMillisecond);

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  // --no_comparison leaves out the rounds beside the script, e.g. when profiling one benchmark.
  const bool comparison = std::none_of(
      argv + 1, argv + argc, [](const char* a) { return std::string(a) == "--no_comparison"; });
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  if (comparison) quarvelo::PrintScriptComparison();
  return 0;
}
