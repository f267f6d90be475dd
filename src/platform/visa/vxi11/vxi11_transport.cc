#include "platform/visa/vxi11/vxi11_transport.h"

#include <algorithm>
#include <charconv>
#include <cstring>

#include "platform/visa/deadline.h"
#include "platform/visa/transport_factory.h"
#include "platform/visa/vxi11/core_channel.h"
#include "platform/visa/vxi11/portmapper.h"

namespace quarvelo::visa {
namespace {

constexpr std::size_t kSmallReply = 1024;
// A read asks for at least this much so that a caller reading in small pieces does not pay a
// round trip per piece, and at most this much so that one reply record stays bounded.
constexpr std::size_t kMinReadRequest = 64 * 1024;
constexpr std::size_t kMaxReadRequest = 8 * 1024 * 1024;
// Servers report maxRecvSize; the standard's minimum is 1024.
constexpr std::uint32_t kMinRecvSize = 1024;
// destroy_link may queue behind a device_read the instrument is still timing out.
constexpr auto kCloseTimeout = std::chrono::milliseconds(1000);
// The instrument answers a call that ran out of io_timeout with error 15, a little after
// io_timeout; the reply is waited for this much longer so that it is received rather than
// left to delay the next call.
constexpr auto kReplyGrace = std::chrono::milliseconds(1000);

Deadline ReplyDeadline(Deadline io_deadline) {
  return io_deadline == Deadline::max() ? io_deadline : io_deadline + kReplyGrace;
}

std::optional<std::uint16_t> ParsePort(std::string_view text) {
  unsigned value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size() || value == 0 || value > 65535) {
    return std::nullopt;
  }
  return static_cast<std::uint16_t>(value);
}

ViStatus LookUpCorePort(const Vxi11Endpoint& endpoint, Deadline deadline, std::uint16_t* port) {
  std::unique_ptr<TcpConnection> stream;
  if (TcpConnection::Connect(endpoint.host, endpoint.port, deadline, &stream) != VI_SUCCESS) {
    return VI_ERROR_RSRC_NFOUND;
  }
  RpcClient portmapper(std::move(stream), portmapper::kProgram, portmapper::kVersion, kSmallReply);
  portmapper.set_every_fragment_ends_record(true);
  xdr::Writer arguments;
  portmapper::PutMapping(arguments,
                         {vxi11::kCoreProgram, vxi11::kCoreVersion, portmapper::kProtocolTcp, 0});
  xdr::Bytes results;
  std::size_t offset = 0;
  if (portmapper.Call(portmapper::kProcGetPort, arguments.bytes(), deadline, &results, &offset) !=
      VI_SUCCESS) {
    return VI_ERROR_RSRC_NFOUND;
  }
  xdr::Reader reader(std::span<const std::byte>(results).subspan(offset));
  if (!portmapper::GetPort(reader, port) || *port == 0) return VI_ERROR_RSRC_NFOUND;
  return VI_SUCCESS;
}

}  // namespace

std::optional<Vxi11Endpoint> ParseVxi11Host(const std::string& host_field) {
  Vxi11Endpoint endpoint;
  std::string_view rest;
  if (!host_field.empty() && host_field.front() == '[') {
    const std::size_t close = host_field.find(']');
    if (close == std::string::npos) return std::nullopt;
    endpoint.host = host_field.substr(0, close + 1);
    rest = std::string_view(host_field).substr(close + 1);
    if (!rest.empty() && rest.front() != ':') return std::nullopt;
  } else {
    const std::size_t colon = host_field.find(':');
    endpoint.host = host_field.substr(0, colon);
    if (colon != std::string::npos) rest = std::string_view(host_field).substr(colon);
  }
  if (endpoint.host.empty() || endpoint.host == "[]") return std::nullopt;
  if (rest.empty()) return endpoint;
  rest.remove_prefix(1);
  constexpr std::string_view kCore = "core:";
  if (rest.size() > kCore.size() && rest.substr(0, kCore.size()) == kCore) {
    endpoint.port_is_core = true;
    rest.remove_prefix(kCore.size());
  }
  const auto port = ParsePort(rest);
  if (!port) return std::nullopt;
  endpoint.port = *port;
  return endpoint;
}

ViStatus Vxi11Transport::Open(const Vxi11Endpoint& endpoint, const std::string& device_name,
                              Deadline deadline, std::unique_ptr<Vxi11Transport>* out) {
  std::uint16_t core_port = endpoint.port;
  if (!endpoint.port_is_core) {
    const ViStatus status = LookUpCorePort(endpoint, deadline, &core_port);
    if (status != VI_SUCCESS) return status;
  }
  std::unique_ptr<TcpConnection> stream;
  if (TcpConnection::Connect(endpoint.host, core_port, deadline, &stream) != VI_SUCCESS) {
    return VI_ERROR_RSRC_NFOUND;
  }
  auto rpc = std::make_unique<RpcClient>(std::move(stream), vxi11::kCoreProgram,
                                         vxi11::kCoreVersion, kSmallReply);
  vxi11::CreateLinkParms parms;
  parms.client_id = static_cast<std::int32_t>(Clock::now().time_since_epoch().count() & 0x7FFF);
  parms.lock_device = false;
  parms.lock_timeout = 0;
  parms.device = device_name.empty() ? "inst0" : device_name;
  xdr::Writer arguments;
  vxi11::Put(arguments, parms);
  xdr::Bytes results;
  std::size_t offset = 0;
  if (rpc->Call(vxi11::kCreateLink, arguments.bytes(), deadline, &results, &offset) != VI_SUCCESS) {
    return VI_ERROR_RSRC_NFOUND;
  }
  xdr::Reader reader(std::span<const std::byte>(results).subspan(offset));
  vxi11::CreateLinkResp response;
  if (!vxi11::Get(reader, &response)) return VI_ERROR_RSRC_NFOUND;
  if (response.error == vxi11::kOutOfResources || response.error == vxi11::kAbort) {
    return vxi11::StatusFromDeviceError(response.error);
  }
  if (response.error != vxi11::kNoError) return VI_ERROR_RSRC_NFOUND;
  rpc->set_max_reply(kMaxReadRequest);
  out->reset(new Vxi11Transport(std::move(rpc), response.lid,
                                std::max(response.max_recv_size, kMinRecvSize)));
  return VI_SUCCESS;
}

Vxi11Transport::~Vxi11Transport() {
  xdr::Writer arguments;
  arguments.PutInt32(lid_);
  xdr::Bytes results;
  std::size_t offset = 0;
  rpc_->Call(vxi11::kDestroyLink, arguments.bytes(), Clock::now() + kCloseTimeout, &results,
             &offset);
}

ViStatus Vxi11Transport::Write(std::span<const std::byte> data, bool end, Deadline deadline) {
  if (write_timed_out_) {
    // The device may hold the start of the timed-out message: clear it rather than let this
    // message be appended to it.
    const ViStatus status = Clear(deadline);
    if (status != VI_SUCCESS) return status;
    write_timed_out_ = false;
  }
  std::size_t offset = 0;
  for (;;) {
    const std::size_t length = std::min<std::size_t>(max_recv_size_, data.size() - offset);
    const bool last = offset + length == data.size();
    if (length == 0 && !end) return VI_SUCCESS;
    vxi11::DeviceWriteParms parms;
    parms.lid = lid_;
    parms.io_timeout = MillisecondsUntil(deadline);
    parms.flags = last && end ? vxi11::kFlagEnd : 0;
    parms.data = data.subspan(offset, length);
    xdr::Writer arguments;
    vxi11::Put(arguments, parms);
    xdr::Bytes results;
    std::size_t results_offset = 0;
    const ViStatus status = rpc_->Call(vxi11::kDeviceWrite, arguments.bytes(),
                                       ReplyDeadline(deadline), &results, &results_offset);
    if (status != VI_SUCCESS) {
      write_timed_out_ = status == VI_ERROR_TMO;
      return status;
    }
    xdr::Reader reader(std::span<const std::byte>(results).subspan(results_offset));
    vxi11::DeviceWriteResp response;
    if (!vxi11::Get(reader, &response)) return VI_ERROR_IO;
    if (response.error != vxi11::kNoError) {
      write_timed_out_ = response.error == vxi11::kIoTimeout;
      return vxi11::StatusFromDeviceError(response.error);
    }
    // A device may take less than offered; the rest goes in the next call. Taking nothing
    // of a non-empty piece would loop for ever.
    if (response.size > length || (response.size == 0 && length != 0)) return VI_ERROR_IO;
    offset += response.size;
    if (last && response.size == length) return VI_SUCCESS;
  }
}

ViStatus Vxi11Transport::Read(std::span<std::byte> buffer, Deadline deadline, ReadResult* result) {
  *result = ReadResult{};
  while (pending_.empty() && !pending_end_) {
    vxi11::DeviceReadParms parms;
    parms.lid = lid_;
    parms.request_size =
        static_cast<std::uint32_t>(std::clamp(buffer.size(), kMinReadRequest, kMaxReadRequest));
    parms.io_timeout = MillisecondsUntil(deadline);
    parms.flags = 0;  // no termination character: only END ends a message
    xdr::Writer arguments;
    vxi11::Put(arguments, parms);
    xdr::Bytes results;
    std::size_t results_offset = 0;
    const ViStatus status = rpc_->Call(vxi11::kDeviceRead, arguments.bytes(),
                                       ReplyDeadline(deadline), &results, &results_offset);
    if (status != VI_SUCCESS) return status;
    xdr::Reader reader(std::span<const std::byte>(results).subspan(results_offset));
    vxi11::DeviceReadResp response;
    if (!vxi11::Get(reader, &response)) return VI_ERROR_IO;
    if (response.error != vxi11::kNoError) return vxi11::StatusFromDeviceError(response.error);
    pending_end_ = (response.reason & vxi11::kReasonEnd) != 0;
    pending_ = response.data;  // a view into `results`, which moves without reallocating
    pending_record_ = std::move(results);
  }
  const std::size_t count = std::min(buffer.size(), pending_.size());
  std::memcpy(buffer.data(), pending_.data(), count);
  pending_ = pending_.subspan(count);
  result->count = count;
  if (pending_.empty() && pending_end_) {
    result->end = true;
    pending_end_ = false;
  }
  return VI_SUCCESS;
}

ViStatus Vxi11Transport::Clear(Deadline deadline) {
  pending_ = {};
  pending_end_ = false;
  vxi11::DeviceGenericParms parms;
  parms.lid = lid_;
  parms.io_timeout = MillisecondsUntil(deadline);
  xdr::Writer arguments;
  vxi11::Put(arguments, parms);
  xdr::Bytes results;
  std::size_t offset = 0;
  const ViStatus status = rpc_->Call(vxi11::kDeviceClear, arguments.bytes(),
                                     ReplyDeadline(deadline), &results, &offset);
  if (status != VI_SUCCESS) return status;
  xdr::Reader reader(std::span<const std::byte>(results).subspan(offset));
  std::int32_t error = 0;
  if (!reader.GetInt32(&error)) return VI_ERROR_IO;
  return vxi11::StatusFromDeviceError(error);
}

ViStatus Vxi11Transport::ReadStatusByte(Deadline deadline, ViUInt16* status_byte) {
  vxi11::DeviceGenericParms parms;
  parms.lid = lid_;
  parms.io_timeout = MillisecondsUntil(deadline);
  xdr::Writer arguments;
  vxi11::Put(arguments, parms);
  xdr::Bytes results;
  std::size_t offset = 0;
  const ViStatus status = rpc_->Call(vxi11::kDeviceReadStb, arguments.bytes(),
                                     ReplyDeadline(deadline), &results, &offset);
  if (status != VI_SUCCESS) return status;
  xdr::Reader reader(std::span<const std::byte>(results).subspan(offset));
  vxi11::DeviceReadStbResp response;
  if (!vxi11::Get(reader, &response)) return VI_ERROR_IO;
  if (response.error != vxi11::kNoError) return vxi11::StatusFromDeviceError(response.error);
  *status_byte = response.stb;
  return VI_SUCCESS;
}

ViStatus OpenVxi11Transport(const std::string& host, const std::string& device_name,
                            Deadline deadline, std::unique_ptr<Transport>* out) {
  const auto endpoint = ParseVxi11Host(host);
  if (!endpoint) return VI_ERROR_INV_RSRC_NAME;
  std::unique_ptr<Vxi11Transport> transport;
  const ViStatus status = Vxi11Transport::Open(*endpoint, device_name, deadline, &transport);
  if (status == VI_SUCCESS) *out = std::move(transport);
  return status;
}

}  // namespace quarvelo::visa
