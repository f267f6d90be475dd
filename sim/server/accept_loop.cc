#include "sim/server/accept_loop.h"

#include <sys/socket.h>

namespace quarvelo::sim {

bool AcceptLoop::Start(const std::string& bind_address, std::uint16_t port, ServeFunction serve,
                       std::string* error) {
  if (thread_.joinable()) return true;
  listener_ = OpenTcpListener(bind_address, port, error);
  if (!listener_.valid()) return false;
  port_ = LocalPort(listener_.fd());
  serve_ = std::move(serve);
  stop_.Reset();
  {
    std::lock_guard lock(mutex_);
    stopping_ = false;
  }
  thread_ = std::thread([this] { Run(); });
  return true;
}

void AcceptLoop::Stop() {
  if (!thread_.joinable()) return;
  stop_.Raise();
  {
    std::lock_guard lock(mutex_);
    stopping_ = true;
    if (blocking_fd_ >= 0) shutdown(blocking_fd_, SHUT_RDWR);
  }
  thread_.join();
  listener_ = Socket();
}

bool AcceptLoop::WakeOnStop(int fd) {
  std::lock_guard lock(mutex_);
  if (stopping_) return false;
  blocking_fd_ = fd;
  return true;
}

void AcceptLoop::Forget(int fd) {
  std::lock_guard lock(mutex_);
  if (blocking_fd_ == fd) blocking_fd_ = -1;
}

void AcceptLoop::Run() {
  while (!stop_.raised()) {
    Socket connection = Accept(listener_.fd(), stop_, ServerDeadline::max());
    if (connection.valid()) serve_(std::move(connection));
  }
}

}  // namespace quarvelo::sim
