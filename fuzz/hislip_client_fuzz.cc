// What a HiSLIP server sends back, through the real client: a stand-in server on loopback
// answers the opening handshake properly, then sends the fuzzer's bytes on the synchronous and
// the asynchronous channel and closes both. The client reads responses (stale ids, errors,
// fatal errors, unknown types, huge lengths) and runs a device clear over them. Connections
// are reset, not closed, at the end of each input, so that millions of them leave no
// TIME_WAIT sockets behind.
#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <span>
#include <thread>
#include <vector>

#include "fuzz/fuzz_input.h"
#include "platform/visa/hislip/hislip_transport.h"
#include "platform/visa/hislip/message.h"

namespace quarvelo::visa {
namespace {

using hislip::Header;
using hislip::MessageType;

struct Script {
  std::vector<std::byte> sync;
  std::vector<std::byte> async;
  std::uint64_t max_message_size = 0;
};

void WriteAll(int fd, std::span<const std::byte> data) {
  while (!data.empty()) {
    const ssize_t n = send(fd, data.data(), data.size(), MSG_NOSIGNAL);
    if (n <= 0) return;
    data = data.subspan(static_cast<std::size_t>(n));
  }
}

void WriteHeader(int fd, const Header& header) { WriteAll(fd, hislip::EncodeHeader(header)); }

int AcceptWithin(int listener, int milliseconds) {
  pollfd entry{listener, POLLIN, 0};
  if (poll(&entry, 1, milliseconds) <= 0) return -1;
  return accept(listener, nullptr, nullptr);
}

// Closes with a reset: no TIME_WAIT on either side.
void Reset(int fd) {
  if (fd < 0) return;
  const linger option{1, 0};
  setsockopt(fd, SOL_SOCKET, SO_LINGER, &option, sizeof option);
  close(fd);
}

class StandInServer {
 public:
  StandInServer() {
    listener_ = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    if (listener_ < 0 || bind(listener_, reinterpret_cast<sockaddr*>(&address), length) != 0 ||
        listen(listener_, 4) != 0 ||
        getsockname(listener_, reinterpret_cast<sockaddr*>(&address), &length) != 0) {
      __builtin_trap();
    }
    port_ = ntohs(address.sin_port);
    std::thread([this] { Run(); }).detach();  // lives as long as the fuzzing process
  }

  std::uint16_t port() const { return port_; }

  void Serve(Script script) {
    std::lock_guard lock(mutex_);
    script_ = std::move(script);
    state_ = State::kServing;
    changed_.notify_all();
  }

  // The client is done with the connections: reset them and wait until that happened.
  void Finish() {
    std::unique_lock lock(mutex_);
    state_ = State::kFinishing;
    changed_.notify_all();
    changed_.wait(lock, [this] { return state_ == State::kIdle; });
  }

 private:
  enum class State { kIdle, kServing, kFinishing };

  void Run() {
    for (;;) {
      Script script;
      {
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [this] { return state_ != State::kIdle; });
        script = std::move(script_);
      }
      const int sync = AcceptWithin(listener_, 2000);
      int async = -1;
      if (sync >= 0) {
        WriteHeader(sync, {MessageType::kInitializeResponse, 0,
                           hislip::InitializeResponseParameter(hislip::kProtocolVersion, 7), 0});
        async = AcceptWithin(listener_, 2000);
      }
      if (async >= 0) {
        WriteHeader(async, {MessageType::kAsyncInitializeResponse, 0, hislip::kVendorId, 0});
        WriteHeader(async, {MessageType::kAsyncMaxMsgSizeResponse, 0, 0, 8});
        WriteAll(async, hislip::EncodeUint64(script.max_message_size));
        WriteAll(sync, script.sync);
        WriteAll(async, script.async);
        shutdown(sync, SHUT_WR);
        shutdown(async, SHUT_WR);
      }
      std::unique_lock lock(mutex_);
      changed_.wait(lock, [this] { return state_ == State::kFinishing; });
      Reset(sync);
      Reset(async);
      state_ = State::kIdle;
      changed_.notify_all();
    }
  }

  int listener_ = -1;
  std::uint16_t port_ = 0;
  std::mutex mutex_;
  std::condition_variable changed_;
  State state_ = State::kIdle;
  Script script_;
};

StandInServer& Server() {
  static StandInServer* server = new StandInServer;  // never destroyed: its thread runs on
  return *server;
}

constexpr std::size_t kReadSizes[] = {1, 2, 7, 16, 100, 4096};
constexpr std::uint64_t kMaxSizes[] = {0, 1, 5, 1024, UINT64_MAX};

}  // namespace
}  // namespace quarvelo::visa

// Input: read size, actions, server's maximum message size, the length of the synchronous
// part (two bytes), then the synchronous channel's bytes and the asynchronous channel's.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace quarvelo::visa;
  quarvelo::fuzz::FuzzInput input(data, size);
  const std::size_t read_size = kReadSizes[input.Byte() % std::size(kReadSizes)];
  const std::uint8_t actions = input.Byte();
  Script script;
  script.max_message_size = kMaxSizes[input.Byte() % std::size(kMaxSizes)];
  std::size_t sync_length = input.Byte();
  sync_length |= std::size_t{input.Byte()} << 8;
  const auto sync = input.Bytes(sync_length);
  const auto async = input.Rest();
  script.sync.assign(sync.begin(), sync.end());
  script.async.assign(async.begin(), async.end());

  StandInServer& server = Server();
  server.Serve(std::move(script));
  {
    const Deadline deadline = Clock::now() + std::chrono::seconds(2);
    std::unique_ptr<HislipTransport> transport;
    if (HislipTransport::Open("127.0.0.1", "hislip0", server.port(), deadline, HislipOptions{},
                              &transport) == VI_SUCCESS) {
      std::vector<std::byte> buffer(read_size);
      constexpr char kQuery[] = "*IDN?\n";
      const auto query = std::as_bytes(std::span(kQuery, sizeof kQuery - 1));
      // Every read returns at once: the data is there or the stream has ended.
      for (int k = 0; k < 64; ++k) {
        if ((actions >> (k % 8)) & 1) transport->Write(query, true, deadline);
        ReadResult result;
        if (transport->Read(buffer, deadline, &result) != VI_SUCCESS) break;
        QUARVELO_FUZZ_CHECK(result.count <= buffer.size());
      }
      if (actions & 0x80) transport->Clear(deadline);
    }
    server.Finish();
  }
  return 0;
}
