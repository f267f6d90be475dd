// A client TCP connection whose every blocking step ends at a deadline, shared by the VXI-11
// and HiSLIP transports. Non-blocking socket, poll() waits, TCP_NODELAY (a query is a small
// write followed by a read; Nagle plus delayed ACKs would stall each one by tens of ms).
#ifndef QUARVELO_PLATFORM_VISA_VXI11_TCP_STREAM_H_
#define QUARVELO_PLATFORM_VISA_VXI11_TCP_STREAM_H_

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "platform/visa/transport.h"
#include "platform/visa/visa.h"

namespace quarvelo::visa {

class TcpStream {
 public:
  // `host` is a name or an address; an IPv6 address may be bracketed. A refused connection,
  // an unknown host or a deadline passing gives VI_ERROR_RSRC_NFOUND.
  static ViStatus Connect(const std::string& host, std::uint16_t port, Deadline deadline,
                          std::unique_ptr<TcpStream>* out);

  ~TcpStream();
  TcpStream(const TcpStream&) = delete;
  TcpStream& operator=(const TcpStream&) = delete;

  // Sends everything before the deadline. When the deadline cuts a send short, the unsent rest
  // is kept and goes out first with the next send: a framed message (an RPC record, a HiSLIP
  // message) is never left half written, so a write time-out leaves the stream usable. The
  // peer then receives the timed-out message late, which is what a time-out allows.
  ViStatus SendAll(std::span<const std::byte> data, Deadline deadline);
  // Waits for data, then returns what one receive gives (at least one byte).
  ViStatus ReceiveSome(std::span<std::byte> buffer, Deadline deadline, std::size_t* count);

 private:
  explicit TcpStream(int fd) : fd_(fd) {}
  ViStatus Wait(short events, Deadline deadline);
  ViStatus SendNow(std::span<const std::byte> data, Deadline deadline, std::size_t* sent);

  int fd_;
  std::vector<std::byte> unsent_;
};

// Milliseconds from now to the deadline, at least 0, at most `cap`; for a deadline at
// Deadline::max() (an infinite time-out) the cap itself.
std::uint32_t MillisecondsUntil(Deadline deadline, std::uint32_t cap = 0xFFFFFFFFu);

}  // namespace quarvelo::visa

#endif  // QUARVELO_PLATFORM_VISA_VXI11_TCP_STREAM_H_
