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
  return loop_.Start(
      bind_address_, requested_port_, [this](Socket connection) { Serve(std::move(connection)); },
      error);
}

void SocketServer::Stop() { loop_.Stop(); }

void SocketServer::Serve(Socket connection) {
  // Read with plain blocking receives, one system call per message; stopping wakes them.
  if (!MakeBlocking(connection.fd()) || !loop_.WakeOnStop(connection.fd())) return;
  struct Forget {
    AcceptLoop& loop;
    int fd;
    ~Forget() { loop.Forget(fd); }
  } forget{loop_, connection.fd()};
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
          WaitFor(loop_.stop().fd(), 0, loop_.stop(), ServerClock::now() + response.delay) ==
              IoResult::kStopped) {
        return;
      }
      if (!response.reply.empty()) {
        auto bytes = std::as_bytes(std::span(response.reply.data(), response.reply.size()));
        // A client that stops reading for a minute is given up, so that the next one gets served.
        if (WriteAll(connection.fd(), bytes, loop_.stop(),
                     ServerClock::now() + std::chrono::minutes(1)) != IoResult::kOk) {
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
