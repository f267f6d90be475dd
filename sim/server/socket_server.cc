#include "sim/server/socket_server.h"

#include <poll.h>
#include <sys/socket.h>

#include <cstddef>
#include <string_view>
#include <vector>

namespace quarvelo::sim {
namespace {

// A client that sends this much without a line end is sending garbage; what it sent so far is
// thrown away rather than let memory grow without bound.
constexpr std::size_t kMaxMessageBytes = 64 * 1024 * 1024;

}  // namespace

SocketServer::SocketServer(MessageHandler& handler, std::string bind_address, std::uint16_t port)
    : handler_(handler), bind_address_(std::move(bind_address)), requested_port_(port) {}

SocketServer::~SocketServer() { Stop(); }

bool SocketServer::Start(std::string* error) {
  listener_ = OpenTcpListener(bind_address_, requested_port_, error);
  if (!listener_.valid()) return false;
  port_ = LocalPort(listener_.fd());
  stop_.Reset();
  {
    std::lock_guard lock(serving_mutex_);
    stopping_ = false;
  }
  thread_ = std::thread([this] { Run(); });
  return true;
}

void SocketServer::Stop() {
  stop_.Raise();
  {
    std::lock_guard lock(serving_mutex_);
    stopping_ = true;
    if (serving_fd_ >= 0) shutdown(serving_fd_, SHUT_RDWR);
  }
  if (thread_.joinable()) thread_.join();
  listener_ = Socket();
}

void SocketServer::Run() {
  while (!stop_.raised()) {
    Socket connection = Accept(listener_.fd(), stop_, ServerDeadline::max());
    if (!connection.valid()) continue;
    Serve(std::move(connection));
  }
}

void SocketServer::Serve(Socket connection) {
  {
    std::lock_guard lock(serving_mutex_);
    if (stopping_ || !MakeBlocking(connection.fd())) return;
    serving_fd_ = connection.fd();
  }
  // Forgotten before the descriptor closes, so Stop never shuts down a reused number.
  struct Forget {
    SocketServer* server;
    ~Forget() {
      std::lock_guard lock(server->serving_mutex_);
      server->serving_fd_ = -1;
    }
  } forget{this};
  // Room for a whole waveform block in the kernel, so that sending one does not wait on the
  // client being scheduled again and again on a busy machine.
  const int send_buffer = 4 * 1024 * 1024;
  setsockopt(connection.fd(), SOL_SOCKET, SO_SNDBUF, &send_buffer, sizeof send_buffer);
  std::string pending;
  std::vector<std::byte> buffer(64 * 1024);
  while (true) {
    std::size_t count = 0;
    if (ReadSomeBlocking(connection.fd(), buffer, &count) != IoResult::kOk) return;
    pending.append(reinterpret_cast<const char*>(buffer.data()), count);
    std::size_t start = 0;
    for (std::size_t end = pending.find('\n'); end != std::string::npos;
         end = pending.find('\n', start)) {
      std::string_view message(pending.data() + start, end - start);
      if (!message.empty() && message.back() == '\r') message.remove_suffix(1);
      start = end + 1;
      HandlerResponse response = handler_.HandleMessage(message);
      if (response.delay.count() > 0 &&
          WaitFor(stop_.fd(), 0, stop_, ServerClock::now() + response.delay) ==
              IoResult::kStopped) {
        return;
      }
      if (!response.reply.empty()) {
        auto bytes = std::as_bytes(std::span(response.reply.data(), response.reply.size()));
        // A client that stops reading for a minute is given up, so that the next one gets served.
        if (WriteAll(connection.fd(), bytes, stop_, ServerClock::now() + std::chrono::minutes(1)) !=
            IoResult::kOk) {
          return;
        }
      }
      if (response.drop_connection) return;
    }
    pending.erase(0, start);
    if (pending.size() > kMaxMessageBytes) pending.clear();
  }
}

}  // namespace quarvelo::sim
