#include "sim/server/accept_loop.h"

#include <sys/socket.h>

namespace quarvelo::sim {

bool AcceptLoop::Start(const std::string& bind_address, std::uint16_t port, ServeFunction serve,
                       std::string* error, RefuseFunction refuse) {
  if (thread_.joinable()) return true;
  listener_ = OpenTcpListener(bind_address, port, error);
  if (!listener_.valid()) return false;
  port_ = LocalPort(listener_.fd());
  serve_ = std::move(serve);
  refuse_ = std::move(refuse);
  stop_.Reset();
  {
    std::lock_guard lock(mutex_);
    stopping_ = false;
  }
  acceptor_ = std::thread([this] { AcceptClients(); });
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
  arrived_.notify_all();
  thread_.join();
  acceptor_.join();
  std::lock_guard lock(mutex_);
  waiting_.clear();
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

Socket AcceptLoop::NextConnection(ServerDeadline deadline) {
  std::unique_lock lock(mutex_);
  const auto ready = [this] { return stopping_ || !waiting_.empty(); };
  if (deadline == ServerDeadline::max()) {
    arrived_.wait(lock, ready);
  } else if (!arrived_.wait_until(lock, deadline, ready)) {
    return Socket();
  }
  if (stopping_ || waiting_.empty()) return Socket();
  Socket connection = std::move(waiting_.front());
  waiting_.pop_front();
  ++serving_;
  return connection;
}

void AcceptLoop::AcceptClients() {
  while (!stop_.raised()) {
    Socket connection = Accept(listener_.fd(), stop_, ServerDeadline::max());
    if (!connection.valid()) continue;
    std::unique_lock lock(mutex_);
    if (waiting_.size() + serving_ < kMaxConnections) {
      waiting_.push_back(std::move(connection));
      lock.unlock();
      arrived_.notify_one();
      continue;
    }
    lock.unlock();
    // Refused at once rather than left waiting in silence.
    if (refuse_) refuse_(std::move(connection));
  }
}

void AcceptLoop::Run() {
  while (!stop_.raised()) {
    Socket connection = NextConnection(ServerDeadline::max());
    if (connection.valid()) serve_(std::move(connection));
    std::lock_guard lock(mutex_);
    serving_ = 0;  // every connection of that client has closed
  }
}

}  // namespace quarvelo::sim
