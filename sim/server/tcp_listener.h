// Small TCP (and UDP) plumbing for the simulator's protocol servers: a listening socket on an
// address and port (0 = ephemeral), a stop signal that wakes every wait, and connected-socket
// I/O that ends at a deadline or when the server stops.
#ifndef QUARVELO_SIM_SERVER_TCP_LISTENER_H_
#define QUARVELO_SIM_SERVER_TCP_LISTENER_H_

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace quarvelo::sim {

using ServerClock = std::chrono::steady_clock;
using ServerDeadline = ServerClock::time_point;

// An eventfd that, once raised, makes every wait given it return.
class StopSignal {
 public:
  StopSignal();
  ~StopSignal();
  StopSignal(const StopSignal&) = delete;
  StopSignal& operator=(const StopSignal&) = delete;

  void Raise();
  void Reset();
  bool raised() const;
  int fd() const { return fd_; }

 private:
  int fd_;
};

// An owned file descriptor.
class Socket {
 public:
  Socket() = default;
  explicit Socket(int fd) : fd_(fd) {}
  ~Socket();
  Socket(Socket&& other) noexcept : fd_(other.Release()) {}
  Socket& operator=(Socket&& other) noexcept;

  int fd() const { return fd_; }
  bool valid() const { return fd_ >= 0; }
  int Release();

 private:
  int fd_ = -1;
};

enum class IoResult { kOk, kClosed, kStopped, kTimedOut };

// Waits until `fd` is ready for `events` (POLLIN/POLLOUT). kClosed is never returned here.
IoResult WaitFor(int fd, short events, const StopSignal& stop, ServerDeadline deadline);

// Connected-socket I/O with a stop signal; blocking or not, no call here waits past it.
IoResult ReadSome(int fd, std::span<std::byte> buffer, const StopSignal& stop,
                  ServerDeadline deadline, std::size_t* count);
// Reads what has arrived, waiting in the kernel until something has, with neither deadline nor
// stop signal: for a blocking socket whose server wakes the read at stop by shutting the
// connection down. One system call when a message is on its way.
IoResult ReadSomeBlocking(int fd, std::span<std::byte> buffer, std::size_t* count);
// Makes a connected socket blocking; every send here still says MSG_DONTWAIT itself.
bool MakeBlocking(int fd);
IoResult ReadExact(int fd, std::span<std::byte> buffer, const StopSignal& stop,
                   ServerDeadline deadline);
IoResult WriteAll(int fd, std::span<const std::byte> data, const StopSignal& stop,
                  ServerDeadline deadline);
// Writes several buffers as one stream with as few system calls as possible (a header and a
// large payload go out without first being copied together).
IoResult WriteAllParts(int fd, std::span<const std::span<const std::byte>> parts,
                       const StopSignal& stop, ServerDeadline deadline);

// Binds and listens (TCP) or binds (UDP) on `bind_address`:`port`; port 0 picks a free one.
// Returns an invalid socket and fills `error` on failure.
Socket OpenTcpListener(const std::string& bind_address, std::uint16_t port, std::string* error);
Socket OpenUdpSocket(const std::string& bind_address, std::uint16_t port, std::string* error);
std::uint16_t LocalPort(int fd);

// Accepts one connection (non-blocking, TCP_NODELAY) or returns an invalid socket when the
// deadline passes or the server stops.
Socket Accept(int listener, const StopSignal& stop, ServerDeadline deadline);

}  // namespace quarvelo::sim

#endif  // QUARVELO_SIM_SERVER_TCP_LISTENER_H_
