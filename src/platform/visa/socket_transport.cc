#include "platform/visa/socket_transport.h"

#include "platform/visa/tcp_connection.h"

namespace quarvelo::visa {
namespace {

class SocketTransport : public Transport {
 public:
  SocketTransport(std::unique_ptr<TcpConnection> connection, std::string host, std::uint16_t port)
      : connection_(std::move(connection)), host_(std::move(host)), port_(port) {}

  ViStatus Write(std::span<const std::byte> data, bool /*end*/, Deadline deadline) override {
    if (connection_ == nullptr) return VI_ERROR_CONN_LOST;
    return connection_->SendAll(data, deadline);
  }

  ViStatus Read(std::span<std::byte> buffer, Deadline deadline, ReadResult* result) override {
    *result = ReadResult{};
    if (connection_ == nullptr) return VI_ERROR_CONN_LOST;
    return connection_->ReceiveSome(buffer, deadline, &result->count);
  }

  // Nothing on a raw socket tells a late reply from the next one: a reply that has not come
  // (or not ended) by now goes to a connection that is closed, and the session goes on over a
  // new one, so every later query and answer stay paired.
  ViStatus AbandonResponse(Deadline deadline) override {
    connection_.reset();
    const ViStatus status = TcpConnection::Connect(host_, port_, deadline, &connection_);
    return status == VI_SUCCESS ? VI_SUCCESS : VI_ERROR_CONN_LOST;
  }

  bool EndsOnLineFeed() const override { return true; }

  // A raw socket has no device clear: a new connection is the nearest thing, since nothing
  // the instrument still sends on the old one can reach the session then.
  ViStatus Clear(Deadline deadline) override { return AbandonResponse(deadline); }

 private:
  std::unique_ptr<TcpConnection> connection_;
  std::string host_;
  std::uint16_t port_;
};

}  // namespace

ViStatus OpenSocketTransport(const std::string& host, std::uint16_t port, Deadline deadline,
                             std::unique_ptr<Transport>* out) {
  std::unique_ptr<TcpConnection> connection;
  const ViStatus status = TcpConnection::Connect(host, port, deadline, &connection);
  if (status != VI_SUCCESS) return status;
  *out = std::make_unique<SocketTransport>(std::move(connection), host, port);
  return VI_SUCCESS;
}

}  // namespace quarvelo::visa
