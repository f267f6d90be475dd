#include "sim/server/tcp_listener.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <sys/uio.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstring>

namespace quarvelo::sim {
namespace {

// Room for a burst of connections while the accepting thread is not running: the servers'
// own limit, not the kernel's queue, decides who is refused.
constexpr int kListenBacklog = 64;

int PollTimeout(ServerDeadline deadline) {
  if (deadline == ServerDeadline::max()) return -1;
  const auto now = ServerClock::now();
  if (deadline <= now) return 0;
  const auto ms = std::chrono::ceil<std::chrono::milliseconds>(deadline - now).count();
  return static_cast<int>(std::min<long long>(ms, INT_MAX));
}

Socket OpenBound(const std::string& bind_address, std::uint16_t port, int type,
                 std::string* error) {
  addrinfo hints{};
  hints.ai_family = AF_UNSPEC;
  hints.ai_socktype = type;
  hints.ai_flags = AI_PASSIVE | AI_NUMERICSERV;
  addrinfo* addresses = nullptr;
  const std::string service = std::to_string(port);
  const int lookup = getaddrinfo(bind_address.empty() ? nullptr : bind_address.c_str(),
                                 service.c_str(), &hints, &addresses);
  if (lookup != 0) {
    *error = "cannot resolve " + bind_address + ": " + gai_strerror(lookup);
    return Socket();
  }
  Socket result;
  std::string last_error = "no address";
  for (const addrinfo* a = addresses; a != nullptr && !result.valid(); a = a->ai_next) {
    Socket candidate(socket(a->ai_family, type | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
    if (!candidate.valid()) {
      last_error = std::strerror(errno);
      continue;
    }
    const int one = 1;
    setsockopt(candidate.fd(), SOL_SOCKET, SO_REUSEADDR, &one, sizeof(one));
    if (bind(candidate.fd(), a->ai_addr, a->ai_addrlen) != 0 ||
        (type == SOCK_STREAM && listen(candidate.fd(), kListenBacklog) != 0)) {
      last_error = std::strerror(errno);
      continue;
    }
    result = std::move(candidate);
  }
  freeaddrinfo(addresses);
  if (!result.valid()) {
    *error = "cannot bind " + bind_address + ":" + service + ": " + last_error;
  }
  return result;
}

}  // namespace

StopSignal::StopSignal() : fd_(eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC)) {}
StopSignal::~StopSignal() {
  if (fd_ >= 0) close(fd_);
}

void StopSignal::Raise() {
  const std::uint64_t one = 1;
  [[maybe_unused]] const ssize_t n = write(fd_, &one, sizeof(one));
}

void StopSignal::Reset() {
  std::uint64_t value = 0;
  [[maybe_unused]] const ssize_t n = read(fd_, &value, sizeof(value));
}

bool StopSignal::raised() const {
  pollfd waiter{fd_, POLLIN, 0};
  return poll(&waiter, 1, 0) > 0;
}

Socket::~Socket() {
  if (fd_ >= 0) close(fd_);
}

Socket& Socket::operator=(Socket&& other) noexcept {
  if (this != &other) {
    if (fd_ >= 0) close(fd_);
    fd_ = other.Release();
  }
  return *this;
}

int Socket::Release() {
  const int fd = fd_;
  fd_ = -1;
  return fd;
}

IoResult WaitFor(int fd, short events, const StopSignal& stop, ServerDeadline deadline) {
  pollfd waiters[2] = {{stop.fd(), POLLIN, 0}, {fd, events, 0}};
  for (;;) {
    const int ready = poll(waiters, 2, PollTimeout(deadline));
    if (ready < 0 && errno == EINTR) continue;
    if (ready < 0) return IoResult::kClosed;
    if (waiters[0].revents != 0) return IoResult::kStopped;
    if (ready == 0) return IoResult::kTimedOut;
    return IoResult::kOk;
  }
}

IoResult ReadSome(int fd, std::span<std::byte> buffer, const StopSignal& stop,
                  ServerDeadline deadline, std::size_t* count) {
  *count = 0;
  for (;;) {
    const ssize_t n = recv(fd, buffer.data(), buffer.size(), MSG_DONTWAIT);
    if (n > 0) {
      *count = static_cast<std::size_t>(n);
      return IoResult::kOk;
    }
    if (n == 0) return IoResult::kClosed;
    if (errno == EINTR) continue;
    if (errno != EAGAIN && errno != EWOULDBLOCK) return IoResult::kClosed;
    const IoResult waited = WaitFor(fd, POLLIN, stop, deadline);
    if (waited != IoResult::kOk) return waited;
  }
}

IoResult ReadSomeBlocking(int fd, std::span<std::byte> buffer, std::size_t* count) {
  *count = 0;
  for (;;) {
    const ssize_t n = recv(fd, buffer.data(), buffer.size(), 0);
    if (n > 0) {
      *count = static_cast<std::size_t>(n);
      return IoResult::kOk;
    }
    if (n < 0 && errno == EINTR) continue;
    return IoResult::kClosed;
  }
}

bool MakeBlocking(int fd) {
  const int flags = fcntl(fd, F_GETFL);
  return flags >= 0 && fcntl(fd, F_SETFL, flags & ~O_NONBLOCK) == 0;
}

IoResult ReadExact(int fd, std::span<std::byte> buffer, const StopSignal& stop,
                   ServerDeadline deadline) {
  std::size_t done = 0;
  while (done < buffer.size()) {
    std::size_t count = 0;
    const IoResult result = ReadSome(fd, buffer.subspan(done), stop, deadline, &count);
    if (result != IoResult::kOk) return result;
    done += count;
  }
  return IoResult::kOk;
}

IoResult WriteAll(int fd, std::span<const std::byte> data, const StopSignal& stop,
                  ServerDeadline deadline) {
  std::size_t done = 0;
  while (done < data.size()) {
    const ssize_t n = send(fd, data.data() + done, data.size() - done, MSG_NOSIGNAL | MSG_DONTWAIT);
    if (n > 0) {
      done += static_cast<std::size_t>(n);
      continue;
    }
    if (n < 0 && errno == EINTR) continue;
    if (n < 0 && (errno == EAGAIN || errno == EWOULDBLOCK)) {
      const IoResult waited = WaitFor(fd, POLLOUT, stop, deadline);
      if (waited != IoResult::kOk) return waited;
      continue;
    }
    return IoResult::kClosed;
  }
  return IoResult::kOk;
}

IoResult WriteAllParts(int fd, std::span<const std::span<const std::byte>> parts,
                       const StopSignal& stop, ServerDeadline deadline) {
  constexpr std::size_t kMaxParts = 8;
  std::size_t part = 0;
  std::size_t offset = 0;  // into parts[part]
  while (part < parts.size()) {
    iovec vectors[kMaxParts];
    std::size_t used = 0;
    for (std::size_t i = part; i < parts.size() && used < kMaxParts; ++i) {
      const std::size_t skip = i == part ? offset : 0;
      vectors[used].iov_base = const_cast<std::byte*>(parts[i].data() + skip);
      vectors[used].iov_len = parts[i].size() - skip;
      ++used;
    }
    msghdr message{};
    message.msg_iov = vectors;
    message.msg_iovlen = used;
    const ssize_t n = sendmsg(fd, &message, MSG_NOSIGNAL | MSG_DONTWAIT);
    if (n < 0 && errno == EINTR) continue;
    if (n < 0 && (errno == EAGAIN || errno == EWOULDBLOCK)) {
      const IoResult waited = WaitFor(fd, POLLOUT, stop, deadline);
      if (waited != IoResult::kOk) return waited;
      continue;
    }
    if (n < 0) return IoResult::kClosed;
    std::size_t sent = static_cast<std::size_t>(n);
    while (part < parts.size() && sent >= parts[part].size() - offset) {
      sent -= parts[part].size() - offset;
      offset = 0;
      ++part;
    }
    offset += sent;
  }
  return IoResult::kOk;
}

Socket OpenTcpListener(const std::string& bind_address, std::uint16_t port, std::string* error) {
  return OpenBound(bind_address, port, SOCK_STREAM, error);
}

Socket OpenUdpSocket(const std::string& bind_address, std::uint16_t port, std::string* error) {
  return OpenBound(bind_address, port, SOCK_DGRAM, error);
}

std::uint16_t LocalPort(int fd) {
  sockaddr_storage address{};
  socklen_t length = sizeof(address);
  if (getsockname(fd, reinterpret_cast<sockaddr*>(&address), &length) != 0) return 0;
  if (address.ss_family == AF_INET) {
    return ntohs(reinterpret_cast<const sockaddr_in*>(&address)->sin_port);
  }
  if (address.ss_family == AF_INET6) {
    return ntohs(reinterpret_cast<const sockaddr_in6*>(&address)->sin6_port);
  }
  return 0;
}

Socket Accept(int listener, const StopSignal& stop, ServerDeadline deadline) {
  for (;;) {
    if (WaitFor(listener, POLLIN, stop, deadline) != IoResult::kOk) return Socket();
    Socket connection(accept4(listener, nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC));
    if (!connection.valid()) {
      if (errno == EINTR || errno == EAGAIN || errno == ECONNABORTED) continue;
      return Socket();
    }
    const int one = 1;
    setsockopt(connection.fd(), IPPROTO_TCP, TCP_NODELAY, &one, sizeof(one));
    return connection;
  }
}

}  // namespace quarvelo::sim
