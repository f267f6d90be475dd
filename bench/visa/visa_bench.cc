// VISA transports on loopback: "*IDN?" round trip (median of every iteration) and the time of
// a 524,288-byte ":WAVeform:DATA?" block, for the raw socket, VXI-11 and HiSLIP, served by the
// simulator's own transport servers; beside them the raw loopback TCP throughput and round trip
// of this machine, measured in the same run. With the full simulator built, the same exchanges
// also run against its instrument model.
#include <arpa/inet.h>
#include <benchmark/benchmark.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "platform/visa/visa.h"
#include "sim/server/hislip_server.h"
#include "sim/server/message_handler.h"
#include "sim/server/portmapper_server.h"
#include "sim/server/socket_server.h"
#include "sim/server/vxi11_server.h"
#ifdef QUARVELO_BENCH_WITH_SIMULATOR
#include "sim/simulator.h"
#endif

namespace {

using Clock = std::chrono::steady_clock;
constexpr std::size_t kBlockBytes = 524288;

std::string BlockReply() {
  std::string data(kBlockBytes, '\0');
  for (std::size_t k = 0; k < kBlockBytes; ++k) data[k] = static_cast<char>(k * 13 + 7);
  return "#6524288" + data + "\n";
}

// Answers "*IDN?" and ":WAVeform:DATA?" from memory, so that the transports are measured
// rather than waveform synthesis.
class BlockInstrument : public quarvelo::sim::MessageHandler {
 public:
  quarvelo::sim::HandlerResponse HandleMessage(std::string_view message) override {
    if (message == "*IDN?") return {"KEYSIGHT TECHNOLOGIES,DSO-X 3034T,MY12345678,07.50\n"};
    if (message == ":WAVeform:DATA?") return {block_};
    return {};
  }
  void ReplyInterrupted() override {}
  void DeviceClear() override {}

 private:
  const std::string block_ = BlockReply();
};

// The simulator's three TCP servers around one BlockInstrument.
struct Servers {
  BlockInstrument instrument;
  quarvelo::sim::SocketServer socket{instrument, "127.0.0.1", 0};
  quarvelo::sim::Vxi11Server vxi11{instrument, "127.0.0.1", 0};
  std::unique_ptr<quarvelo::sim::PortmapperServer> portmapper;
  quarvelo::sim::HislipServer hislip{instrument, "127.0.0.1", 0};

  Servers() {
    std::string error;
    socket.Start(&error);
    vxi11.Start(&error);
    portmapper = std::make_unique<quarvelo::sim::PortmapperServer>("127.0.0.1", 0, vxi11.port());
    portmapper->Start(&error);
    hislip.Start(&error);
  }

  std::string Resource(int transport) const {
    switch (transport) {
      case 0:
        return "TCPIP0::127.0.0.1::" + std::to_string(socket.port()) + "::SOCKET";
      case 1:
        return "TCPIP0::127.0.0.1:" + std::to_string(portmapper->port()) + "::inst0::INSTR";
      default:
        return "TCPIP0::127.0.0.1::hislip0," + std::to_string(hislip.port()) + "::INSTR";
    }
  }
};

Servers& SharedServers() {
  static Servers servers;
  return servers;
}

const char* const kTransportNames[] = {"SOCKET", "VXI-11", "HiSLIP"};

// One open VISA session for a benchmark's lifetime.
class VisaSession {
 public:
  explicit VisaSession(const std::string& resource) {
    viOpenDefaultRM(&rm_);
    status_ = viOpen(rm_, resource.c_str(), VI_NO_LOCK, 5000, &vi_);
    if (status_ == VI_SUCCESS) viSetAttribute(vi_, VI_ATTR_TMO_VALUE, 5000);
  }
  ~VisaSession() { viClose(rm_); }
  ViSession vi() const { return vi_; }
  ViStatus status() const { return status_; }

 private:
  ViSession rm_ = VI_NULL;
  ViSession vi_ = VI_NULL;
  ViStatus status_ = VI_SUCCESS;
};

double Median(std::vector<double> values) {
  if (values.empty()) return 0;
  std::nth_element(values.begin(), values.begin() + values.size() / 2, values.end());
  return values[values.size() / 2];
}

void IdnRoundTrip(benchmark::State& state, const std::string& resource) {
  VisaSession session(resource);
  if (session.status() != VI_SUCCESS) {
    state.SkipWithError("viOpen failed");
    return;
  }
  std::vector<double> microseconds;
  char reply[256];
  for (auto _ : state) {
    const auto start = Clock::now();
    ViInt32 size = sizeof reply;
    if (viPrintf(session.vi(), "*IDN?\n") != VI_SUCCESS ||
        viScanf(session.vi(), "%#t", &size, reply) != VI_SUCCESS) {
      state.SkipWithError("query failed");
      return;
    }
    microseconds.push_back(std::chrono::duration<double, std::micro>(Clock::now() - start).count());
  }
  state.counters["median_us"] = Median(microseconds);
}

void BlockTransfer(benchmark::State& state, const std::string& resource, const char* query) {
  VisaSession session(resource);
  if (session.status() != VI_SUCCESS) {
    state.SkipWithError("viOpen failed");
    return;
  }
  std::vector<unsigned char> area(5000001);
  std::vector<double> milliseconds;
  std::int64_t bytes = 0;
  ViInt32 count = 0;
  for (auto _ : state) {
    const auto start = Clock::now();
    count = 5000000;
    if (viPrintf(session.vi(), "%s\n", query) != VI_SUCCESS ||
        viScanf(session.vi(), "%#b", &count, area.data()) != VI_SUCCESS ||
        viFlush(session.vi(), VI_READ_BUF) != VI_SUCCESS) {
      state.SkipWithError("block query failed");
      return;
    }
    milliseconds.push_back(std::chrono::duration<double, std::milli>(Clock::now() - start).count());
    bytes += count;
  }
  state.SetBytesProcessed(bytes);
  const double median_ms = Median(milliseconds);
  state.counters["block_bytes"] = count;
  state.counters["median_ms"] = median_ms;
  state.counters["median_MBps"] = median_ms > 0 ? count / (median_ms * 1000) : 0;
}

// Raw loopback TCP: a peer thread that answers every 1-byte request with `reply_bytes` bytes.
class RawPeer {
 public:
  explicit RawPeer(std::size_t reply_bytes) : reply_(reply_bytes, 'x') {
    listener_ = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    bind(listener_, reinterpret_cast<sockaddr*>(&address), sizeof address);
    socklen_t length = sizeof address;
    getsockname(listener_, reinterpret_cast<sockaddr*>(&address), &length);
    listen(listener_, 1);
    thread_ = std::thread([this] { Serve(); });
    client_ = socket(AF_INET, SOCK_STREAM, 0);
    connect(client_, reinterpret_cast<sockaddr*>(&address), sizeof address);
    const int on = 1;
    setsockopt(client_, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
  }
  ~RawPeer() {
    shutdown(client_, SHUT_RDWR);
    close(client_);
    thread_.join();
    close(listener_);
  }

  // One request and its whole reply; false when the peer went away.
  bool Exchange(std::vector<char>* buffer) {
    if (send(client_, "?", 1, MSG_NOSIGNAL) != 1) return false;
    std::size_t got = 0;
    while (got < reply_.size()) {
      const ssize_t n = recv(client_, buffer->data(), buffer->size(), 0);
      if (n <= 0) return false;
      got += static_cast<std::size_t>(n);
    }
    return true;
  }

 private:
  void Serve() {
    const int connection = accept(listener_, nullptr, nullptr);
    const int on = 1;
    setsockopt(connection, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    char request;
    while (recv(connection, &request, 1, 0) == 1) {
      std::size_t sent = 0;
      while (sent < reply_.size()) {
        const ssize_t n =
            send(connection, reply_.data() + sent, reply_.size() - sent, MSG_NOSIGNAL);
        if (n <= 0) break;
        sent += static_cast<std::size_t>(n);
      }
    }
    close(connection);
  }

  std::string reply_;
  int listener_ = -1;
  int client_ = -1;
  std::thread thread_;
};

void RawLoopback(benchmark::State& state) {
  const auto reply_bytes = static_cast<std::size_t>(state.range(0));
  RawPeer peer(reply_bytes);
  std::vector<char> buffer(256 * 1024);
  std::vector<double> microseconds;
  for (auto _ : state) {
    const auto start = Clock::now();
    if (!peer.Exchange(&buffer)) {
      state.SkipWithError("raw exchange failed");
      return;
    }
    microseconds.push_back(std::chrono::duration<double, std::micro>(Clock::now() - start).count());
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * reply_bytes));
  const double median_us = Median(microseconds);
  state.counters["median_us"] = median_us;
  state.counters["median_MBps"] = median_us > 0 ? reply_bytes / median_us : 0;
}

void RegisterAll() {
  benchmark::RegisterBenchmark("RawLoopbackTcp/round_trip", RawLoopback)
      ->Arg(64)
      ->MinTime(1.0)
      ->UseRealTime();
  benchmark::RegisterBenchmark("RawLoopbackTcp/block_524288", RawLoopback)
      ->Arg(kBlockBytes)
      ->MinTime(1.0)
      ->UseRealTime()
      ->Unit(benchmark::kMillisecond);
  for (int transport = 0; transport < 3; ++transport) {
    const std::string name = kTransportNames[transport];
    benchmark::RegisterBenchmark(
        ("IdnRoundTrip/" + name).c_str(),
        [transport](benchmark::State& s) { IdnRoundTrip(s, SharedServers().Resource(transport)); })
        ->MinTime(1.0)
        ->UseRealTime();
    benchmark::RegisterBenchmark(("WaveformBlock524288/" + name).c_str(),
                                 [transport](benchmark::State& s) {
                                   BlockTransfer(s, SharedServers().Resource(transport),
                                                 ":WAVeform:DATA?");
                                 })
        ->MinTime(1.0)
        ->UseRealTime()
        ->Unit(benchmark::kMillisecond);
  }
  // Measured again after the transports, so that a change of machine load during the run
  // shows as a difference between the two raw figures.
  benchmark::RegisterBenchmark("RawLoopbackTcp/block_524288_again", RawLoopback)
      ->Arg(kBlockBytes)
      ->MinTime(1.0)
      ->UseRealTime()
      ->Unit(benchmark::kMillisecond);
#ifdef QUARVELO_BENCH_WITH_SIMULATOR
  // The instrument model behind the same servers: its parsing and waveform synthesis included.
  static std::unique_ptr<quarvelo::sim::Simulator> simulator = [] {
    quarvelo::sim::SimulatorOptions options;
    options.portmapper_port = -1;
    options.vxi11_port = -1;
    std::string error;
    return quarvelo::sim::Simulator::Start(options, &error);
  }();
  if (simulator != nullptr) {
    simulator->Execute(":WAVeform:SOURce CHANnel1");
    simulator->Execute(":WAVeform:FORMat BYTE");
    simulator->Execute(":WAVeform:POINts:MODE RAW");
    simulator->Execute(":WAVeform:POINts 500000");
    simulator->Execute(":DIGitize CHANnel1");
    const std::string socket = simulator->SocketResource();
    const std::string hislip = simulator->HislipResource();
    benchmark::RegisterBenchmark("Simulator/IdnRoundTrip/SOCKET",
                                 [socket](benchmark::State& s) { IdnRoundTrip(s, socket); })
        ->MinTime(1.0)
        ->UseRealTime();
    benchmark::RegisterBenchmark("Simulator/IdnRoundTrip/HiSLIP",
                                 [hislip](benchmark::State& s) { IdnRoundTrip(s, hislip); })
        ->MinTime(1.0)
        ->UseRealTime();
    benchmark::RegisterBenchmark(
        "Simulator/WaveformData/SOCKET",
        [socket](benchmark::State& s) { BlockTransfer(s, socket, ":WAVeform:DATA?"); })
        ->MinTime(1.0)
        ->UseRealTime()
        ->Unit(benchmark::kMillisecond);
  }
#endif
}

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  RegisterAll();
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
