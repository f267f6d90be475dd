#include "tests/visa/loopback_server.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>

namespace quarvelo::visa::testing {
namespace {

int BindLoopback(std::uint16_t* port) {
  const int fd = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  address.sin_port = 0;
  bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof address);
  socklen_t length = sizeof address;
  getsockname(fd, reinterpret_cast<sockaddr*>(&address), &length);
  *port = ntohs(address.sin_port);
  return fd;
}

bool WaitReadable(int fd, const std::atomic<bool>& stop) {
  while (!stop) {
    pollfd entry{fd, POLLIN, 0};
    if (poll(&entry, 1, 20) > 0) return true;
  }
  return false;
}

}  // namespace

LoopbackServer::LoopbackServer(Script script) : script_(std::move(script)) {
  listen_fd_ = BindLoopback(&port_);
  listen(listen_fd_, 4);
  thread_ = std::thread([this] { Serve(); });
}

LoopbackServer::~LoopbackServer() {
  stop_ = true;
  thread_.join();
  close(listen_fd_);
}

std::string LoopbackServer::SocketResource() const {
  return "TCPIP0::127.0.0.1::" + std::to_string(port_) + "::SOCKET";
}

std::vector<std::string> LoopbackServer::Received() const {
  std::lock_guard lock(mutex_);
  return received_;
}

void LoopbackServer::Serve() {
  while (WaitReadable(listen_fd_, stop_)) {
    const int fd = accept4(listen_fd_, nullptr, nullptr, SOCK_CLOEXEC);
    if (fd < 0) continue;
    const int on = 1;
    setsockopt(fd, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    ServeConnection(fd);
    close(fd);
  }
}

bool LoopbackServer::SendAll(int fd, std::string_view data) {
  while (!data.empty()) {
    const ssize_t n = send(fd, data.data(), data.size(), MSG_NOSIGNAL);
    if (n <= 0) return false;
    data.remove_prefix(static_cast<std::size_t>(n));
  }
  return true;
}

void LoopbackServer::ServeConnection(int fd) {
  std::string pending;
  char chunk[4096];
  while (WaitReadable(fd, stop_)) {
    const ssize_t n = recv(fd, chunk, sizeof chunk, 0);
    if (n <= 0) return;
    pending.append(chunk, static_cast<std::size_t>(n));
    for (std::size_t lf = pending.find('\n'); lf != std::string::npos; lf = pending.find('\n')) {
      const std::string message = pending.substr(0, lf);
      pending.erase(0, lf + 1);
      {
        std::lock_guard lock(mutex_);
        received_.push_back(message);
      }
      const sim::HandlerResponse response = script_(message);
      const auto until = std::chrono::steady_clock::now() + response.delay;
      while (!stop_ && std::chrono::steady_clock::now() < until) {
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
      }
      if (!response.reply.empty() && !SendAll(fd, response.reply)) return;
      if (response.drop_connection) return;
    }
  }
}

std::uint16_t UnusedPort() {
  std::uint16_t port = 0;
  close(BindLoopback(&port));
  return port;
}

}  // namespace quarvelo::visa::testing
