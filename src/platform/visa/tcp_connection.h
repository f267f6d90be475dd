// A connected TCP stream with deadlines on every step: non-blocking connect, TCP_NODELAY,
// poll()-based receive into the caller's buffer, MSG_NOSIGNAL sends. Owns its descriptor.
#ifndef QUARVELO_PLATFORM_VISA_TCP_CONNECTION_H_
#define QUARVELO_PLATFORM_VISA_TCP_CONNECTION_H_

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>

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

  // Sends every byte before the deadline: VI_ERROR_TMO, or VI_ERROR_CONN_LOST when the peer is
  // gone.
  ViStatus Send(std::span<const std::byte> data, Deadline deadline);
  // Waits for at least one byte, then returns what is there up to buffer.size().
  // VI_ERROR_CONN_LOST when the peer closed the connection.
  ViStatus Receive(std::span<std::byte> buffer, Deadline deadline, std::size_t* count);

 private:
  explicit TcpConnection(int fd) : fd_(fd) {}

  ViStatus Lost(ViStatus status);

  int fd_;
  // Once the peer has gone, every later call says so (a send into a half-closed connection
  // would otherwise still succeed once).
  ViStatus lost_ = VI_SUCCESS;
  // The last receive filled the whole buffer, so more is probably waiting: try to receive
  // before polling.
  bool expect_more_ = false;
};

}  // namespace quarvelo::visa

#endif  // QUARVELO_PLATFORM_VISA_TCP_CONNECTION_H_
