// A connected TCP stream whose every blocking step ends at a deadline, shared by the raw
// socket, VXI-11 and HiSLIP clients: connect with a time-out, TCP_NODELAY, sends that keep an
// unsent rest, and receives that cost one system call when the reply is on its way.
#ifndef QUARVELO_PLATFORM_VISA_TCP_CONNECTION_H_
#define QUARVELO_PLATFORM_VISA_TCP_CONNECTION_H_

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "platform/visa/transport.h"
#include "platform/visa/visa.h"

namespace quarvelo::visa {

class TcpConnection {
 public:
  // Resolves `host` (a name, an IPv4 address, or an IPv6 address with or without brackets)
  // and connects before the deadline. VI_ERROR_RSRC_NFOUND when the name does not resolve,
  // every address refuses, or the deadline passes.
  static ViStatus Connect(const std::string& host, std::uint16_t port, Deadline deadline,
                          std::unique_ptr<TcpConnection>* out);

  ~TcpConnection();
  TcpConnection(const TcpConnection&) = delete;
  TcpConnection& operator=(const TcpConnection&) = delete;

  // Sends everything before the deadline: VI_ERROR_TMO, or VI_ERROR_CONN_LOST when the peer is
  // gone. When the deadline cuts a send short, the unsent rest is kept and goes out first with
  // the next send: a message (an RPC record, a HiSLIP message, a program message) is never left
  // half written, so a write time-out leaves the stream usable.
  ViStatus SendAll(std::span<const std::byte> data, Deadline deadline);
  // Waits for at least one byte, then returns what one receive gives, up to buffer.size().
  // VI_ERROR_TMO at the deadline; VI_ERROR_CONN_LOST when the peer closed the connection.
  ViStatus ReceiveSome(std::span<std::byte> buffer, Deadline deadline, std::size_t* count);

 private:
  explicit TcpConnection(int fd) : fd_(fd) {}

  ViStatus SendNow(std::span<const std::byte> data, Deadline deadline, std::size_t* sent);
  // True when a blocking receive is sure to return before the deadline, after giving the
  // socket a receive time-out that fits (changed only when the deadlines change scale).
  bool ReceiveMayBlock(Deadline deadline);
  ViStatus Lost(ViStatus status);

  int fd_;
  // Once the peer has gone, every later call says so (a send into a half-closed connection
  // would otherwise still succeed once).
  ViStatus lost_ = VI_SUCCESS;
  std::vector<std::byte> unsent_;
  // The socket's receive time-out: negative while none is set, zero for none at all.
  std::chrono::milliseconds receive_timeout_{-1};
};

}  // namespace quarvelo::visa

#endif  // QUARVELO_PLATFORM_VISA_TCP_CONNECTION_H_
