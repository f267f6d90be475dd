#include "platform/visa/socket_transport.h"

#include "platform/visa/tcp_connection.h"

namespace quarvelo::visa {
namespace {

class SocketTransport : public Transport {
 public:
  explicit SocketTransport(std::unique_ptr<TcpConnection> connection)
      : connection_(std::move(connection)) {}

  ViStatus Write(std::span<const std::byte> data, bool /*end*/, Deadline deadline) override {
    return connection_->SendAll(data, deadline);
  }

  ViStatus Read(std::span<std::byte> buffer, Deadline deadline, ReadResult* result) override {
    *result = ReadResult{};
    return connection_->ReceiveSome(buffer, deadline, &result->count);
  }

  bool EndsOnLineFeed() const override { return true; }

  // A raw socket has no device clear; the session discards what it has buffered itself.
  ViStatus Clear(Deadline /*deadline*/) override { return VI_SUCCESS; }

 private:
  std::unique_ptr<TcpConnection> connection_;
};

}  // namespace

ViStatus OpenSocketTransport(const std::string& host, std::uint16_t port, Deadline deadline,
                             std::unique_ptr<Transport>* out) {
  std::unique_ptr<TcpConnection> connection;
  const ViStatus status = TcpConnection::Connect(host, port, deadline, &connection);
  if (status != VI_SUCCESS) return status;
  *out = std::make_unique<SocketTransport>(std::move(connection));
  return VI_SUCCESS;
}

}  // namespace quarvelo::visa
