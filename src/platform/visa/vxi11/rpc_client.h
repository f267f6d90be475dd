// One ONC RPC conversation over a TCP stream: calls go out one at a time and each waits for
// the reply with its own xid. A reply that arrives after its call timed out is recognised by
// its old xid and dropped, so a late answer never passes for the next one.
#ifndef QUARVELO_PLATFORM_VISA_VXI11_RPC_CLIENT_H_
#define QUARVELO_PLATFORM_VISA_VXI11_RPC_CLIENT_H_

#include <cstdint>
#include <memory>
#include <vector>

#include "platform/visa/tcp_connection.h"
#include "platform/visa/transport.h"
#include "platform/visa/visa.h"
#include "platform/visa/vxi11/rpc.h"
#include "platform/visa/vxi11/xdr.h"

namespace quarvelo::visa {

class RpcClient {
 public:
  // `max_reply` bounds one reply record; a larger one means the peer is not a sane server.
  RpcClient(std::unique_ptr<TcpConnection> stream, std::uint32_t program, std::uint32_t version,
            std::size_t max_reply);

  // Sends the call and waits for its reply. On success `results` holds the reply record and
  // `*results_offset` where the procedure's results start in it. A reply that is not an
  // accepted success is VI_ERROR_IO; a time-out leaves the conversation usable; a stream
  // broken mid-record is VI_ERROR_CONN_LOST from then on.
  ViStatus Call(std::uint32_t procedure, const xdr::Bytes& arguments, Deadline deadline,
                xdr::Bytes* results, std::size_t* results_offset);

  void set_max_reply(std::size_t max_reply);
  void set_every_fragment_ends_record(bool value) {
    assembler_.set_every_fragment_ends_record(value);
  }
  bool broken() const { return broken_; }

 private:
  ViStatus Fail(ViStatus status);

  std::unique_ptr<TcpConnection> stream_;
  std::uint32_t program_;
  std::uint32_t version_;
  std::uint32_t xid_;
  rpc::RecordAssembler assembler_;
  std::vector<std::byte> scratch_;
  bool broken_ = false;
};

}  // namespace quarvelo::visa

#endif  // QUARVELO_PLATFORM_VISA_VXI11_RPC_CLIENT_H_
