// Round trip of "*IDN?" and the time of a 524,288-byte block over VXI-11 and HiSLIP against
// the simulator's servers on loopback, beside the raw loopback TCP throughput of the same
// machine measured in the same run.
#include <benchmark/benchmark.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "platform/visa/tcp_connection.h"
#include "platform/visa/transport_factory.h"
#include "sim/server/hislip_server.h"
#include "sim/server/message_handler.h"
#include "sim/server/tcp_listener.h"
#include "sim/server/vxi11_server.h"

namespace quarvelo {
namespace {

constexpr std::size_t kBlockSize = 524288;

class BenchHandler : public sim::MessageHandler {
 public:
  BenchHandler() : block_("#6524288" + std::string(kBlockSize, 'x') + "\n") {}
  sim::HandlerResponse HandleMessage(std::string_view message) override {
    sim::HandlerResponse response;
    if (message == "*IDN?") response.reply = "QUARVELO,BENCH,0,1.0\n";
    if (message == ":WAVeform:DATA?") response.reply = block_;
    return response;
  }
  void ReplyInterrupted() override {}
  void DeviceClear() override {}

 private:
  std::string block_;
};

visa::Deadline Soon() { return visa::Clock::now() + std::chrono::seconds(5); }

bool Query(visa::Transport& transport, std::string_view message, std::vector<std::byte>& buffer,
           std::size_t* total) {
  if (transport.Write(std::as_bytes(std::span(message.data(), message.size())), true, Soon()) !=
      VI_SUCCESS) {
    return false;
  }
  *total = 0;
  for (;;) {
    visa::ReadResult result;
    if (transport.Read(std::span(buffer).subspan(*total), Soon(), &result) != VI_SUCCESS) {
      return false;
    }
    *total += result.count;
    if (result.end) return true;
    if (*total == buffer.size()) return false;
  }
}

enum class Protocol { kVxi11, kHislip };

void RunQuery(benchmark::State& state, Protocol protocol, std::string_view message,
              std::size_t expected) {
  BenchHandler handler;
  sim::Vxi11Server vxi11(handler, "127.0.0.1", 0);
  sim::HislipServer hislip(handler, "127.0.0.1", 0);
  std::string error;
  std::unique_ptr<visa::Transport> transport;
  ViStatus status = VI_ERROR_RSRC_NFOUND;
  if (protocol == Protocol::kVxi11 && vxi11.Start(&error)) {
    status = visa::OpenVxi11Transport("127.0.0.1:core:" + std::to_string(vxi11.port()), "inst0",
                                      Soon(), &transport);
  } else if (protocol == Protocol::kHislip && hislip.Start(&error)) {
    status = visa::OpenHislipTransport("127.0.0.1", "hislip0", hislip.port(), Soon(), &transport);
  }
  if (status != VI_SUCCESS) {
    state.SkipWithError("cannot open the transport");
    return;
  }
  std::vector<std::byte> buffer(kBlockSize + 64);
  for (auto _ : state) {
    std::size_t total = 0;
    if (!Query(*transport, message, buffer, &total) || total != expected) {
      state.SkipWithError("query failed");
      return;
    }
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * expected));
}

void BM_Vxi11IdnRoundTrip(benchmark::State& state) {
  RunQuery(state, Protocol::kVxi11, "*IDN?\n", 21);
}
void BM_HislipIdnRoundTrip(benchmark::State& state) {
  RunQuery(state, Protocol::kHislip, "*IDN?\n", 21);
}
void BM_Vxi11Block(benchmark::State& state) {
  RunQuery(state, Protocol::kVxi11, ":WAVeform:DATA?\n", kBlockSize + 9);
}
void BM_HislipBlock(benchmark::State& state) {
  RunQuery(state, Protocol::kHislip, ":WAVeform:DATA?\n", kBlockSize + 9);
}

// The machine's own loopback: one request byte, then the block's size of bytes back.
void BM_RawLoopbackTcp(benchmark::State& state) {
  std::string error;
  sim::Socket listener = sim::OpenTcpListener("127.0.0.1", 0, &error);
  sim::StopSignal stop;
  std::thread server([&] {
    sim::Socket connection = sim::Accept(listener.fd(), stop, sim::ServerDeadline::max());
    const std::vector<std::byte> block(kBlockSize + 9, std::byte{'x'});
    std::byte request[1];
    while (connection.valid() &&
           sim::ReadExact(connection.fd(), request, stop, sim::ServerDeadline::max()) ==
               sim::IoResult::kOk &&
           sim::WriteAll(connection.fd(), block, stop, sim::ServerDeadline::max()) ==
               sim::IoResult::kOk) {
    }
  });
  std::unique_ptr<visa::TcpConnection> stream;
  if (visa::TcpConnection::Connect("127.0.0.1", sim::LocalPort(listener.fd()), Soon(), &stream) !=
      VI_SUCCESS) {
    state.SkipWithError("cannot connect");
  } else {
    std::vector<std::byte> buffer(kBlockSize + 9);
    const std::byte request[1] = {std::byte{'?'}};
    for (auto _ : state) {
      stream->SendAll(request, Soon());
      std::size_t total = 0;
      while (total < buffer.size()) {
        std::size_t count = 0;
        if (stream->ReceiveSome(std::span(buffer).subspan(total), Soon(), &count) != VI_SUCCESS) {
          break;
        }
        total += count;
      }
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * buffer.size()));
  }
  stream.reset();
  stop.Raise();
  server.join();
}

BENCHMARK(BM_RawLoopbackTcp)->Unit(benchmark::kMicrosecond)->UseRealTime();
BENCHMARK(BM_Vxi11IdnRoundTrip)->Unit(benchmark::kMicrosecond)->UseRealTime();
BENCHMARK(BM_HislipIdnRoundTrip)->Unit(benchmark::kMicrosecond)->UseRealTime();
BENCHMARK(BM_Vxi11Block)->Unit(benchmark::kMicrosecond)->UseRealTime();
BENCHMARK(BM_HislipBlock)->Unit(benchmark::kMicrosecond)->UseRealTime();

}  // namespace
}  // namespace quarvelo
