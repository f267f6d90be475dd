#include "platform/visa/tcp_connection.h"

#include <fcntl.h>
#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <cerrno>
#include <condition_variable>
#include <mutex>
#include <thread>

#include "platform/visa/deadline.h"

namespace quarvelo::visa {
namespace {

// Owns an addrinfo list.
struct AddressList {
  addrinfo* head = nullptr;
  AddressList() = default;
  AddressList(const AddressList&) = delete;
  AddressList& operator=(const AddressList&) = delete;
  ~AddressList() {
    if (head != nullptr) freeaddrinfo(head);
  }
};

int Lookup(const std::string& host, std::uint16_t port, int flags, addrinfo** result) {
  addrinfo hints{};
  hints.ai_family = AF_UNSPEC;
  hints.ai_socktype = SOCK_STREAM;
  hints.ai_flags = flags;
  return getaddrinfo(host.c_str(), std::to_string(port).c_str(), &hints, result);
}

// Name lookup has no time-out of its own, so a name is looked up on a helper thread that is
// abandoned (and cleans up after itself) when the deadline passes first.
bool Resolve(const std::string& host, std::uint16_t port, Deadline deadline, AddressList* out) {
  if (Lookup(host, port, AI_NUMERICHOST, &out->head) == 0) return true;
  struct Shared {
    std::mutex mutex;
    std::condition_variable done;
    bool finished = false;
    bool abandoned = false;
    addrinfo* result = nullptr;
  };
  auto shared = std::make_shared<Shared>();
  std::thread([shared, host, port] {
    addrinfo* result = nullptr;
    if (Lookup(host, port, 0, &result) != 0) result = nullptr;
    std::lock_guard lock(shared->mutex);
    if (shared->abandoned) {
      if (result != nullptr) freeaddrinfo(result);
      return;
    }
    shared->result = result;
    shared->finished = true;
    shared->done.notify_all();
  }).detach();
  std::unique_lock lock(shared->mutex);
  if (!shared->done.wait_until(lock, deadline, [&] { return shared->finished; })) {
    shared->abandoned = true;
    return false;
  }
  out->head = shared->result;
  return out->head != nullptr;
}

// Waits for `events` on fd until the deadline; true when they came.
ViStatus WaitFor(int fd, short events, Deadline deadline) {
  for (;;) {
    pollfd entry{fd, events, 0};
    const int ready = poll(&entry, 1, PollMillisecondsUntil(deadline));
    if (ready > 0) return VI_SUCCESS;
    if (ready == 0) {
      if (Clock::now() >= deadline) return VI_ERROR_TMO;
      continue;  // poll rounds to milliseconds; go round until the deadline really passed
    }
    if (errno != EINTR) return VI_ERROR_IO;
  }
}

int ConnectOne(const addrinfo& address, Deadline deadline) {
  const int fd = socket(address.ai_family, address.ai_socktype | SOCK_NONBLOCK | SOCK_CLOEXEC,
                        address.ai_protocol);
  if (fd < 0) return -1;
  if (connect(fd, address.ai_addr, address.ai_addrlen) != 0) {
    if (errno != EINPROGRESS || WaitFor(fd, POLLOUT, deadline) != VI_SUCCESS) {
      close(fd);
      return -1;
    }
    int error = 0;
    socklen_t length = sizeof error;
    if (getsockopt(fd, SOL_SOCKET, SO_ERROR, &error, &length) != 0 || error != 0) {
      close(fd);
      return -1;
    }
  }
  // A query is a small write followed by a read: without this, Nagle's algorithm and delayed
  // ACKs can stall each exchange for tens of milliseconds.
  const int on = 1;
  setsockopt(fd, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
  setsockopt(fd, SOL_SOCKET, SO_KEEPALIVE, &on, sizeof on);
  // Receives block (bounded by the socket's receive time-out), so that a reply on its way
  // costs one system call; sends and short waits say MSG_DONTWAIT themselves.
  const int flags = fcntl(fd, F_GETFL);
  if (flags < 0 || fcntl(fd, F_SETFL, flags & ~O_NONBLOCK) != 0) {
    close(fd);
    return -1;
  }
  return fd;
}

ViStatus StatusOfErrno(int error) {
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

}  // namespace

ViStatus TcpConnection::Connect(const std::string& host, std::uint16_t port, Deadline deadline,
                                std::unique_ptr<TcpConnection>* out) {
  std::string name = host;
  if (name.size() >= 2 && name.front() == '[' && name.back() == ']') {
    name = name.substr(1, name.size() - 2);
  }
  if (name.empty()) return VI_ERROR_RSRC_NFOUND;
  AddressList addresses;
  if (!Resolve(name, port, deadline, &addresses)) return VI_ERROR_RSRC_NFOUND;
  for (const addrinfo* address = addresses.head; address != nullptr; address = address->ai_next) {
    const int fd = ConnectOne(*address, deadline);
    if (fd >= 0) {
      out->reset(new TcpConnection(fd));
      return VI_SUCCESS;
    }
    if (Clock::now() >= deadline) break;
  }
  return VI_ERROR_RSRC_NFOUND;
}

TcpConnection::~TcpConnection() { close(fd_); }

ViStatus TcpConnection::Lost(ViStatus status) {
  if (status == VI_ERROR_CONN_LOST || status == VI_ERROR_IO) lost_ = status;
  return status;
}

ViStatus TcpConnection::SendAll(std::span<const std::byte> data, Deadline deadline) {
  if (lost_ != VI_SUCCESS) return lost_;
  std::size_t sent = 0;
  if (!unsent_.empty()) {
    const ViStatus status = SendNow(unsent_, deadline, &sent);
    unsent_.erase(unsent_.begin(), unsent_.begin() + static_cast<std::ptrdiff_t>(sent));
    if (status != VI_SUCCESS) return Lost(status);
  }
  const ViStatus status = SendNow(data, deadline, &sent);
  if (status == VI_ERROR_TMO && sent != 0) unsent_.assign(data.begin() + sent, data.end());
  return Lost(status);
}

ViStatus TcpConnection::SendNow(std::span<const std::byte> data, Deadline deadline,
                                std::size_t* sent) {
  std::size_t done = 0;
  ViStatus status = VI_SUCCESS;
  while (done < data.size()) {
    // The socket blocks (for the receive side); each send must not.
    const ssize_t n =
        send(fd_, data.data() + done, data.size() - done, MSG_NOSIGNAL | MSG_DONTWAIT);
    if (n > 0) {
      done += static_cast<std::size_t>(n);
      continue;
    }
    if (n < 0 && errno == EINTR) continue;
    if (n < 0 && (errno == EAGAIN || errno == EWOULDBLOCK)) {
      status = WaitFor(fd_, POLLOUT, deadline);
      if (status != VI_SUCCESS) break;
      continue;
    }
    status = StatusOfErrno(errno);
    break;
  }
  *sent = done;
  return status;
}

bool TcpConnection::ReceiveMayBlock(Deadline deadline) {
  using std::chrono::milliseconds;
  // The socket's time-out runs on the scheduler tick and may end a tick or two late, so it is
  // set this much short of the deadline, and the last stretch is waited for with poll().
  constexpr milliseconds kTickSlack{30};
  milliseconds wanted{0};  // no time-out: the deadline never comes
  if (deadline != Deadline::max()) {
    const auto left = std::chrono::duration_cast<milliseconds>(deadline - Clock::now());
    if (left < 3 * kTickSlack) return false;
    // A time-out already set serves every deadline of about its size: a session's reads all
    // wait about as long, so the socket option is set once, not per message.
    if (receive_timeout_ > milliseconds::zero() && receive_timeout_ + kTickSlack <= left &&
        2 * receive_timeout_ >= left) {
      return true;
    }
    wanted = std::chrono::floor<std::chrono::duration<long long, std::centi>>(left - kTickSlack);
  }
  if (wanted == receive_timeout_) return true;
  timeval value{};
  value.tv_sec = static_cast<time_t>(wanted.count() / 1000);
  value.tv_usec = static_cast<suseconds_t>(wanted.count() % 1000 * 1000);
  if (setsockopt(fd_, SOL_SOCKET, SO_RCVTIMEO, &value, sizeof value) != 0) {
    receive_timeout_ = milliseconds{-1};
    return false;
  }
  receive_timeout_ = wanted;
  return true;
}

ViStatus TcpConnection::ReceiveSome(std::span<std::byte> buffer, Deadline deadline,
                                    std::size_t* count) {
  *count = 0;
  if (lost_ != VI_SUCCESS) return lost_;
  if (buffer.empty()) return VI_SUCCESS;
  for (;;) {
    // One blocking receive when the deadline is far enough for the socket's own time-out;
    // otherwise a receive that does not wait, and poll() when nothing is there.
    const bool block = ReceiveMayBlock(deadline);
    const ssize_t n = recv(fd_, buffer.data(), buffer.size(), block ? 0 : MSG_DONTWAIT);
    if (n > 0) {
      *count = static_cast<std::size_t>(n);
      return VI_SUCCESS;
    }
    if (n == 0) return Lost(VI_ERROR_CONN_LOST);
    if (errno == EINTR) continue;
    if (errno != EAGAIN && errno != EWOULDBLOCK) return Lost(StatusOfErrno(errno));
    if (block) continue;  // the socket's time-out ran out, short of the deadline
    const ViStatus status = WaitFor(fd_, POLLIN, deadline);
    if (status != VI_SUCCESS) return Lost(status);
  }
}

}  // namespace quarvelo::visa
