// A plain blocking POSIX TCP client for the tests: lines and exact byte counts with a time-out.
#ifndef QUARVELO_TESTS_SIM_LOOPBACK_CLIENT_H_
#define QUARVELO_TESTS_SIM_LOOPBACK_CLIENT_H_

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace quarvelo::sim {

class LoopbackClient {
 public:
  using Clock = std::chrono::steady_clock;

  explicit LoopbackClient(std::uint16_t port)
      : fd_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    int one = 1;
    if (connect(fd_, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0) {
      setsockopt(fd_, IPPROTO_TCP, TCP_NODELAY, &one, sizeof one);
    } else {
      close(fd_);
      fd_ = -1;
    }
  }
  ~LoopbackClient() {
    if (fd_ >= 0) close(fd_);
  }
  LoopbackClient(const LoopbackClient&) = delete;
  LoopbackClient& operator=(const LoopbackClient&) = delete;

  bool connected() const { return fd_ >= 0; }

  bool Send(std::string_view text) {
    for (ssize_t n; !text.empty(); text.remove_prefix(static_cast<size_t>(n))) {
      if ((n = send(fd_, text.data(), text.size(), MSG_NOSIGNAL)) <= 0) return false;
    }
    return true;
  }

  // Up to and including LF; nullopt on time-out or when the peer closes first.
  std::optional<std::string> ReadLine(std::chrono::milliseconds timeout) {
    const Clock::time_point deadline = Clock::now() + timeout;
    while (buffer_.find('\n') == std::string::npos) {
      if (!Fill(deadline)) return std::nullopt;
    }
    return Take(buffer_.find('\n') + 1);
  }

  std::optional<std::string> ReadExact(size_t count, std::chrono::milliseconds timeout) {
    const Clock::time_point deadline = Clock::now() + timeout;
    while (buffer_.size() < count) {
      if (!Fill(deadline)) return std::nullopt;
    }
    return Take(count);
  }

  // A definite-length block and its LF: the data, or nullopt when it does not all arrive.
  std::optional<std::string> ReadBlock(std::chrono::milliseconds timeout) {
    std::optional<std::string> header = ReadExact(2, timeout);
    if (!header || (*header)[0] != '#') return std::nullopt;
    std::optional<std::string> digits = ReadExact((*header)[1] - '0', timeout);
    std::optional<std::string> data = digits ? ReadExact(std::stoul(*digits), timeout) : digits;
    return data && ReadExact(1, timeout) == "\n" ? data : std::nullopt;
  }

 private:
  std::string Take(size_t count) {
    std::string bytes = buffer_.substr(0, count);
    buffer_.erase(0, count);
    return bytes;
  }

  bool Fill(Clock::time_point deadline) {
    const auto left =
        std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
    pollfd waiter{fd_, POLLIN, 0};
    if (left <= 0 || poll(&waiter, 1, static_cast<int>(left)) <= 0) return false;
    char chunk[1 << 16];
    const ssize_t n = recv(fd_, chunk, sizeof chunk, 0);
    if (n > 0) buffer_.append(chunk, static_cast<size_t>(n));
    return n > 0;
  }

  int fd_;
  std::string buffer_;
};

}  // namespace quarvelo::sim

#endif  // QUARVELO_TESTS_SIM_LOOPBACK_CLIENT_H_
