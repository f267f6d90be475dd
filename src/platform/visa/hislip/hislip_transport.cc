#include "platform/visa/hislip/hislip_transport.h"

#include <algorithm>
#include <cstring>

#include "platform/visa/transport_factory.h"

namespace quarvelo::visa {
namespace {

constexpr std::size_t kChannelBuffer = 64 * 1024;
// Handshake replies carry tiny payloads; anything bigger is not a HiSLIP server.
constexpr std::uint64_t kMaxControlPayload = 4096;
// Feature bits we ask for in DeviceClearComplete: synchronised mode (overlap bit clear).
constexpr std::uint8_t kRequestedFeatures = 0;

using hislip::Header;
using hislip::MessageType;

// Receives the next header on `channel` and its (small) payload.
ViStatus ReceiveControl(HislipChannel& channel, Deadline deadline, Header* header,
                        std::vector<std::byte>* payload) {
  ViStatus status = channel.ReceiveHeader(deadline, header);
  if (status != VI_SUCCESS) return status;
  if (header->payload_length > kMaxControlPayload) return VI_ERROR_IO;
  payload->resize(header->payload_length);
  std::size_t done = 0;
  while (done < payload->size()) {
    std::size_t count = 0;
    status = channel.ReceiveSome(std::span(*payload).subspan(done), deadline, &count);
    if (status != VI_SUCCESS) return status;
    done += count;
  }
  return VI_SUCCESS;
}

}  // namespace

HislipChannel::HislipChannel(std::unique_ptr<TcpConnection> stream)
    : stream_(std::move(stream)), buffer_(kChannelBuffer) {}

ViStatus HislipChannel::Send(const Header& header, std::span<const std::byte> payload,
                             Deadline deadline) {
  if (broken_) return VI_ERROR_CONN_LOST;
  const hislip::HeaderBytes head = hislip::EncodeHeader(header);
  std::vector<std::byte> frame;
  // One send per message: a small header sent apart would meet delayed ACKs.
  frame.reserve(head.size() + payload.size());
  frame.insert(frame.end(), head.begin(), head.end());
  frame.insert(frame.end(), payload.begin(), payload.end());
  // A message cut by the deadline is finished by the next send (see TcpConnection::SendAll); the
  // response to it then carries an old message id and is dropped.
  const ViStatus status = stream_->SendAll(frame, deadline);
  if (status != VI_SUCCESS && status != VI_ERROR_TMO) broken_ = true;
  return status;
}

ViStatus HislipChannel::Fill(Deadline deadline) {
  if (broken_) return VI_ERROR_CONN_LOST;
  if (begin_ == end_) begin_ = end_ = 0;
  if (end_ == buffer_.size()) {
    std::memmove(buffer_.data(), buffer_.data() + begin_, end_ - begin_);
    end_ -= begin_;
    begin_ = 0;
  }
  std::size_t count = 0;
  const ViStatus status = stream_->ReceiveSome(std::span(buffer_).subspan(end_), deadline, &count);
  if (status != VI_SUCCESS) {
    if (status != VI_ERROR_TMO) broken_ = true;
    return status;
  }
  end_ += count;
  return VI_SUCCESS;
}

ViStatus HislipChannel::ReceiveHeader(Deadline deadline, Header* header) {
  while (end_ - begin_ < hislip::kHeaderSize) {
    const ViStatus status = Fill(deadline);
    if (status != VI_SUCCESS) return status;
  }
  const auto bytes = std::span(buffer_).subspan(begin_).first<hislip::kHeaderSize>();
  if (!hislip::DecodeHeader(bytes, header)) {
    broken_ = true;
    return VI_ERROR_IO;
  }
  begin_ += hislip::kHeaderSize;
  return VI_SUCCESS;
}

ViStatus HislipChannel::ReceiveSome(std::span<std::byte> buffer, Deadline deadline,
                                    std::size_t* count) {
  *count = 0;
  if (buffer.empty()) return VI_SUCCESS;
  if (begin_ == end_) {
    if (broken_) return VI_ERROR_CONN_LOST;
    // Large payloads skip the buffer.
    if (buffer.size() >= buffer_.size()) {
      const ViStatus status = stream_->ReceiveSome(buffer, deadline, count);
      if (status != VI_SUCCESS && status != VI_ERROR_TMO) broken_ = true;
      return status;
    }
    const ViStatus status = Fill(deadline);
    if (status != VI_SUCCESS) return status;
  }
  *count = std::min(buffer.size(), end_ - begin_);
  std::memcpy(buffer.data(), buffer_.data() + begin_, *count);
  begin_ += *count;
  return VI_SUCCESS;
}

bool HislipChannel::HasBufferedOrReadable() {
  if (begin_ != end_) return true;
  return !broken_ && Fill(Clock::now()) == VI_SUCCESS && begin_ != end_;
}

ViStatus HislipChannel::Discard(std::uint64_t* left, Deadline deadline) {
  while (*left > 0) {
    if (begin_ == end_) {
      // A server that keeps sending must not hold the discard past its deadline.
      if (deadline != Deadline::max() && Clock::now() >= deadline) return VI_ERROR_TMO;
      const ViStatus status = Fill(deadline);
      if (status != VI_SUCCESS) return status;
    }
    const std::size_t take =
        static_cast<std::size_t>(std::min<std::uint64_t>(*left, end_ - begin_));
    begin_ += take;
    *left -= take;
  }
  return VI_SUCCESS;
}

ViStatus HislipTransport::Open(const std::string& host, const std::string& sub_address,
                               std::uint16_t port, Deadline deadline, const HislipOptions& options,
                               std::unique_ptr<HislipTransport>* out) {
  if (port == 0) port = hislip::kStandardPort;
  std::unique_ptr<TcpConnection> stream;
  if (TcpConnection::Connect(host, port, deadline, &stream) != VI_SUCCESS) {
    return VI_ERROR_RSRC_NFOUND;
  }
  auto sync = std::make_unique<HislipChannel>(std::move(stream));
  const std::string name = sub_address.empty() ? "hislip0" : sub_address;
  Header header{MessageType::kInitialize, 0,
                hislip::InitializeParameter(hislip::kProtocolVersion, hislip::kVendorId),
                name.size()};
  std::vector<std::byte> payload;
  if (sync->Send(header, std::as_bytes(std::span(name.data(), name.size())), deadline) !=
          VI_SUCCESS ||
      ReceiveControl(*sync, deadline, &header, &payload) != VI_SUCCESS ||
      header.type != MessageType::kInitializeResponse) {
    return VI_ERROR_RSRC_NFOUND;
  }
  const std::uint16_t session_id = hislip::SessionIdOf(header.parameter);
  const bool starts_overlapped = (header.control & hislip::kOverlapMode) != 0;

  if (TcpConnection::Connect(host, port, deadline, &stream) != VI_SUCCESS) {
    return VI_ERROR_RSRC_NFOUND;
  }
  auto async = std::make_unique<HislipChannel>(std::move(stream));
  header = {MessageType::kAsyncInitialize, 0, session_id, 0};
  if (async->Send(header, {}, deadline) != VI_SUCCESS ||
      ReceiveControl(*async, deadline, &header, &payload) != VI_SUCCESS ||
      header.type != MessageType::kAsyncInitializeResponse) {
    return VI_ERROR_RSRC_NFOUND;
  }

  const auto size = hislip::EncodeUint64(options.max_message_size);
  header = {MessageType::kAsyncMaxMsgSize, 0, 0, size.size()};
  if (async->Send(header, size, deadline) != VI_SUCCESS ||
      ReceiveControl(*async, deadline, &header, &payload) != VI_SUCCESS ||
      header.type != MessageType::kAsyncMaxMsgSizeResponse || payload.size() != 8) {
    return VI_ERROR_RSRC_NFOUND;
  }
  std::uint64_t server_max = hislip::DecodeUint64(std::span(payload).first<8>());
  // A server that names no limit (or an absurdly small one) still takes some bytes per message.
  if (server_max == 0) server_max = UINT64_MAX;
  std::unique_ptr<HislipTransport> transport(
      new HislipTransport(std::move(sync), std::move(async), session_id, server_max));
  transport->overlapped_ = starts_overlapped;
  // We prefer synchronised mode, where a late answer is told apart by its message id; a
  // server that starts overlapped is asked to switch with a device clear. It may refuse, and
  // then the session runs overlapped.
  if (starts_overlapped && transport->Clear(deadline) != VI_SUCCESS) return VI_ERROR_RSRC_NFOUND;
  *out = std::move(transport);
  return VI_SUCCESS;
}

void HislipTransport::SkipAsyncNotices() {
  // AsyncInterrupted and AsyncServiceRequest may come at any time; nothing here waits for
  // them, so they are read off as they come rather than left to pile up.
  Header header;
  std::vector<std::byte> payload;
  // Once a notice has begun to arrive, the rest of it follows at once.
  while (async_->HasBufferedOrReadable() &&
         ReceiveControl(*async_, Clock::now() + std::chrono::milliseconds(200), &header,
                        &payload) == VI_SUCCESS) {
  }
}

ViStatus HislipTransport::Write(std::span<const std::byte> data, bool end, Deadline deadline) {
  if (write_timed_out_) {
    // The instrument may hold the start of the timed-out message (or, overlapped, may still
    // answer a query that timed out): clear it rather than let this message meet it.
    const ViStatus status = Clear(deadline);
    if (status != VI_SUCCESS) return status;
    write_timed_out_ = false;
  }
  SkipAsyncNotices();
  // The maximum message size counts the 16-byte header.
  const std::uint64_t max_payload = std::max<std::uint64_t>(
      server_max_message_size_ -
          std::min<std::uint64_t>(server_max_message_size_, hislip::kHeaderSize),
      1);
  std::size_t offset = 0;
  for (;;) {
    const std::size_t length =
        static_cast<std::size_t>(std::min<std::uint64_t>(max_payload, data.size() - offset));
    const bool last = offset + length == data.size();
    if (length == 0 && !end) return VI_SUCCESS;
    const bool ends = last && end;
    const Header header{ends ? MessageType::kDataEnd : MessageType::kData,
                        static_cast<std::uint8_t>(response_read_ ? hislip::kRmtDelivered : 0),
                        message_id_, length};
    const ViStatus status = sync_->Send(header, data.subspan(offset, length), deadline);
    const std::uint32_t used_id = message_id_;
    // An id whose message was cut by the deadline is not used again: the late response to it
    // must stay recognisably stale.
    message_id_ = hislip::NextMessageId(message_id_);
    if (status != VI_SUCCESS) {
      write_timed_out_ = status == VI_ERROR_TMO;
      return status;
    }
    response_read_ = false;
    // A response answers the most recent Data, DataEnd or Trigger.
    awaited_id_ = used_id;
    offset += length;
    if (last) return VI_SUCCESS;
  }
}

ViStatus HislipTransport::Read(std::span<std::byte> buffer, Deadline deadline, ReadResult* result) {
  *result = ReadResult{};
  const ViStatus status = ReadMessage(buffer, deadline, result);
  // Overlapped, a late answer could not be told from the next one: clear before the next
  // message instead.
  if (status == VI_ERROR_TMO && overlapped_) write_timed_out_ = true;
  return status;
}

ViStatus HislipTransport::ReadMessage(std::span<std::byte> buffer, Deadline deadline,
                                      ReadResult* result) {
  for (;;) {
    if (!in_message_) {
      Header header;
      ViStatus status = sync_->ReceiveHeader(deadline, &header);
      if (status != VI_SUCCESS) return status;
      payload_left_ = header.payload_length;
      switch (header.type) {
        case MessageType::kData:
        case MessageType::kDataEnd:
          in_message_ = true;
          message_is_end_ = header.type == MessageType::kDataEnd;
          // Overlapped, the server numbers its responses itself.
          message_is_stale_ = !overlapped_ && header.parameter != awaited_id_ &&
                              header.parameter != hislip::kAnyMessageId;
          break;
        case MessageType::kFatalError:
          // The server closes after a fatal error; nothing more will come on this session.
          return VI_ERROR_CONN_LOST;
        case MessageType::kError:
          status = sync_->Discard(&payload_left_, deadline);
          return status == VI_SUCCESS ? VI_ERROR_IO : status;
        default:
          // Interrupted and anything unexpected: skip it whole.
          in_message_ = true;
          message_is_stale_ = true;
          message_is_end_ = false;
          break;
      }
    }
    if (message_is_stale_) {
      const ViStatus status = sync_->Discard(&payload_left_, deadline);
      if (status != VI_SUCCESS) return status;
      in_message_ = false;
      // Stale messages without end must not hold the read past its deadline.
      if (deadline != Deadline::max() && Clock::now() >= deadline) return VI_ERROR_TMO;
      continue;
    }
    std::size_t count = 0;
    if (payload_left_ > 0) {
      const std::size_t want =
          static_cast<std::size_t>(std::min<std::uint64_t>(buffer.size(), payload_left_));
      const ViStatus status = sync_->ReceiveSome(buffer.first(want), deadline, &count);
      if (status != VI_SUCCESS) return status;
      payload_left_ -= count;
    }
    if (payload_left_ == 0) {
      in_message_ = false;
      if (message_is_end_) {
        result->end = true;
        response_read_ = true;
      }
    }
    result->count = count;
    if (count > 0 || result->end) return VI_SUCCESS;
  }
}

ViStatus HislipTransport::Clear(Deadline deadline) {
  Header header{MessageType::kAsyncDeviceClear, 0, 0, 0};
  std::vector<std::byte> payload;
  ViStatus status = async_->Send(header, {}, deadline);
  if (status != VI_SUCCESS) return status;
  do {
    // Service requests may come first on the asynchronous channel.
    status = ReceiveControl(*async_, deadline, &header, &payload);
    if (status != VI_SUCCESS) return status;
  } while (header.type != MessageType::kAsyncDeviceClearAcknowledge);
  // The acknowledgement carries the server's preferred features; we ask for ours
  // (synchronised mode) and then use what the server grants.
  status = sync_->Send({MessageType::kDeviceClearComplete, kRequestedFeatures, 0, 0}, {}, deadline);
  if (status != VI_SUCCESS) return status;
  // Everything before the acknowledgement belongs to the cleared exchange.
  for (;;) {
    if (in_message_) {
      status = sync_->Discard(&payload_left_, deadline);
      if (status != VI_SUCCESS) return status;
      in_message_ = false;
    }
    status = sync_->ReceiveHeader(deadline, &header);
    if (status != VI_SUCCESS) return status;
    payload_left_ = header.payload_length;
    in_message_ = true;
    if (header.type == MessageType::kDeviceClearAcknowledge) {
      status = sync_->Discard(&payload_left_, deadline);
      if (status != VI_SUCCESS) return status;
      in_message_ = false;
      overlapped_ = (header.control & hislip::kOverlapMode) != 0;
      break;
    }
  }
  message_id_ = hislip::kFirstMessageId;
  awaited_id_ = hislip::kFirstMessageId - 2;
  response_read_ = false;
  write_timed_out_ = false;
  return VI_SUCCESS;
}

ViStatus HislipTransport::ReadStatusByte(Deadline deadline, ViUInt16* status_byte) {
  SkipAsyncNotices();
  const Header query{MessageType::kAsyncStatusQuery,
                     static_cast<std::uint8_t>(response_read_ ? hislip::kRmtDelivered : 0),
                     awaited_id_, 0};
  ViStatus status = async_->Send(query, {}, deadline);
  if (status != VI_SUCCESS) return status;
  Header header;
  std::vector<std::byte> payload;
  do {
    // Service requests may come first.
    status = ReceiveControl(*async_, deadline, &header, &payload);
    if (status != VI_SUCCESS) return status;
  } while (header.type != MessageType::kAsyncStatusResponse);
  *status_byte = header.control;
  return VI_SUCCESS;
}

ViStatus OpenHislipTransport(const std::string& host, const std::string& sub_address,
                             std::uint16_t port, Deadline deadline,
                             std::unique_ptr<Transport>* out) {
  std::unique_ptr<HislipTransport> transport;
  const ViStatus status =
      HislipTransport::Open(host, sub_address, port, deadline, HislipOptions{}, &transport);
  if (status == VI_SUCCESS) *out = std::move(transport);
  return status;
}

}  // namespace quarvelo::visa
