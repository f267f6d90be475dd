#include "platform/visa/vxi11/tcp_stream.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>

namespace quarvelo::visa {
namespace {

int PollTimeout(Deadline deadline) {
  if (deadline == Deadline::max()) return -1;
  const auto now = Clock::now();
  if (deadline <= now) return 0;
  const auto ms = std::chrono::ceil<std::chrono::milliseconds>(deadline - now).count();
  return static_cast<int>(std::min<long long>(ms, INT_MAX));
}

ViStatus StatusFromErrno(int error) {
  switch (error) {
    case ECONNRESET:
    case EPIPE:
    case ENOTCONN:
    case ECONNABORTED:
    case ETIMEDOUT:
    case EHOSTUNREACH:
    case ENETUNREACH:
      return VI_ERROR_CONN_LOST;
    default:
      return VI_ERROR_IO;
  }
}

std::string StripBrackets(const std::string& host) {
  if (host.size() >= 2 && host.front() == '[' && host.back() == ']') {
    return host.substr(1, host.size() - 2);
  }
  return host;
}

// Connects one address before the deadline; returns the socket or -1.
int ConnectOne(const addrinfo& address, Deadline deadline) {
  const int fd = socket(address.ai_family, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
  if (fd < 0) return -1;
  if (connect(fd, address.ai_addr, address.ai_addrlen) != 0) {
    if (errno != EINPROGRESS) {
      close(fd);
      return -1;
    }
    pollfd waiter{fd, POLLOUT, 0};
    int ready = 0;
    do {
      ready = poll(&waiter, 1, PollTimeout(deadline));
    } while (ready < 0 && errno == EINTR);
    int error = 0;
    socklen_t length = sizeof(error);
    if (ready <= 0 || getsockopt(fd, SOL_SOCKET, SO_ERROR, &error, &length) != 0 || error != 0) {
      close(fd);
      return -1;
    }
  }
  const int one = 1;
  setsockopt(fd, IPPROTO_TCP, TCP_NODELAY, &one, sizeof(one));
  return fd;
}

}  // namespace

std::uint32_t MillisecondsUntil(Deadline deadline, std::uint32_t cap) {
  if (deadline == Deadline::max()) return cap;
  const auto now = Clock::now();
  if (deadline <= now) return 0;
  const auto ms = std::chrono::ceil<std::chrono::milliseconds>(deadline - now).count();
  return static_cast<std::uint32_t>(std::min<long long>(ms, cap));
}

ViStatus TcpStream::Connect(const std::string& host, std::uint16_t port, Deadline deadline,
                            std::unique_ptr<TcpStream>* out) {
  addrinfo hints{};
  hints.ai_family = AF_UNSPEC;
  hints.ai_socktype = SOCK_STREAM;
  addrinfo* addresses = nullptr;
  const std::string service = std::to_string(port);
  if (getaddrinfo(StripBrackets(host).c_str(), service.c_str(), &hints, &addresses) != 0) {
    return VI_ERROR_RSRC_NFOUND;
  }
  int fd = -1;
  for (const addrinfo* a = addresses; a != nullptr && fd < 0; a = a->ai_next) {
    if (Clock::now() >= deadline) break;
    fd = ConnectOne(*a, deadline);
  }
  freeaddrinfo(addresses);
  if (fd < 0) return VI_ERROR_RSRC_NFOUND;
  out->reset(new TcpStream(fd));
  return VI_SUCCESS;
}

TcpStream::~TcpStream() { close(fd_); }

ViStatus TcpStream::Wait(short events, Deadline deadline) {
  pollfd waiter{fd_, events, 0};
  for (;;) {
    const int ready = poll(&waiter, 1, PollTimeout(deadline));
    if (ready > 0) return VI_SUCCESS;
    if (ready == 0) return VI_ERROR_TMO;
    if (errno != EINTR) return VI_ERROR_IO;
  }
}

ViStatus TcpStream::SendAll(std::span<const std::byte> data, Deadline deadline) {
  std::size_t sent = 0;
  if (!unsent_.empty()) {
    const ViStatus status = SendNow(unsent_, deadline, &sent);
    unsent_.erase(unsent_.begin(), unsent_.begin() + static_cast<std::ptrdiff_t>(sent));
    if (status != VI_SUCCESS) return status;
  }
  const ViStatus status = SendNow(data, deadline, &sent);
  if (status == VI_ERROR_TMO && sent != 0) unsent_.assign(data.begin() + sent, data.end());
  return status;
}

ViStatus TcpStream::SendNow(std::span<const std::byte> data, Deadline deadline, std::size_t* sent) {
  std::size_t done = 0;
  ViStatus status = VI_SUCCESS;
  while (done < data.size()) {
    const ssize_t n = send(fd_, data.data() + done, data.size() - done, MSG_NOSIGNAL);
    if (n > 0) {
      done += static_cast<std::size_t>(n);
      continue;
    }
    if (n < 0 && errno == EINTR) continue;
    if (n < 0 && (errno == EAGAIN || errno == EWOULDBLOCK)) {
      status = Wait(POLLOUT, deadline);
      if (status != VI_SUCCESS) break;
      continue;
    }
    status = StatusFromErrno(errno);
    break;
  }
  *sent = done;
  return status;
}

ViStatus TcpStream::ReceiveSome(std::span<std::byte> buffer, Deadline deadline,
                                std::size_t* count) {
  *count = 0;
  for (;;) {
    const ssize_t n = recv(fd_, buffer.data(), buffer.size(), 0);
    if (n > 0) {
      *count = static_cast<std::size_t>(n);
      return VI_SUCCESS;
    }
    if (n == 0) return VI_ERROR_CONN_LOST;
    if (errno == EINTR) continue;
    if (errno != EAGAIN && errno != EWOULDBLOCK) return StatusFromErrno(errno);
    const ViStatus status = Wait(POLLIN, deadline);
    if (status != VI_SUCCESS) return status;
  }
}

}  // namespace quarvelo::visa
