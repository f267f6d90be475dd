// VXI-11 client: finds the core channel through the portmapper, opens a link to the device
// and carries messages with device_write (split to the link's maxRecvSize, END on the last
// piece) and device_read (no termination character: a message ends only at END). The
// remaining time-out travels to the instrument as io_timeout as well.
#ifndef QUARVELO_PLATFORM_VISA_VXI11_VXI11_TRANSPORT_H_
#define QUARVELO_PLATFORM_VISA_VXI11_VXI11_TRANSPORT_H_

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/visa/transport.h"
#include "platform/visa/visa.h"
#include "platform/visa/vxi11/rpc_client.h"

namespace quarvelo::visa {

// Where the core channel is found. The resource string's host field may carry a suffix:
//   "host"            portmapper on port 111 (the standard form)
//   "host:N"          portmapper on port N
//   "host:core:N"     the core channel itself on port N, no portmapper
// IPv6 addresses keep their brackets: "[::1]:4111".
struct Vxi11Endpoint {
  std::string host;
  std::uint16_t port = 111;
  bool port_is_core = false;
};

std::optional<Vxi11Endpoint> ParseVxi11Host(const std::string& host_field);

class Vxi11Transport final : public Transport {
 public:
  static ViStatus Open(const Vxi11Endpoint& endpoint, const std::string& device_name,
                       Deadline deadline, std::unique_ptr<Vxi11Transport>* out);
  ~Vxi11Transport() override;

  ViStatus Write(std::span<const std::byte> data, bool end, Deadline deadline) override;
  ViStatus Read(std::span<std::byte> buffer, Deadline deadline, ReadResult* result) override;
  bool EndsOnLineFeed() const override { return false; }
  ViStatus Clear(Deadline deadline) override;
  ViStatus ReadStatusByte(Deadline deadline, ViUInt16* status_byte) override;

  std::uint32_t max_recv_size() const { return max_recv_size_; }

 private:
  Vxi11Transport(std::unique_ptr<RpcClient> rpc, std::int32_t lid, std::uint32_t max_recv_size)
      : rpc_(std::move(rpc)), lid_(lid), max_recv_size_(max_recv_size) {}

  std::unique_ptr<RpcClient> rpc_;
  std::int32_t lid_;
  std::uint32_t max_recv_size_;
  // The last device_read's reply record, the bytes of its data not yet handed to the caller,
  // and whether END came with them.
  std::vector<std::byte> pending_record_;
  std::span<const std::byte> pending_;
  bool pending_end_ = false;
  bool write_timed_out_ = false;  // the device may hold part of a message
};

}  // namespace quarvelo::visa

#endif  // QUARVELO_PLATFORM_VISA_VXI11_VXI11_TRANSPORT_H_
