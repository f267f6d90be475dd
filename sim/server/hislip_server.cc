#include "sim/server/hislip_server.h"

#include <poll.h>

#include <algorithm>
#include <vector>

#include "platform/visa/hislip/message.h"

namespace quarvelo::sim {
namespace {

namespace hislip = visa::hislip;
using hislip::Header;
using hislip::MessageType;

// A client has this long to complete a message once its header has arrived, and to open its
// asynchronous channel after Initialize.
constexpr auto kFrameTimeout = std::chrono::seconds(5);
constexpr auto kWriteTimeout = std::chrono::seconds(10);
// Payloads are streamed, but a single program message is held whole: beyond this the
// client is not sending SCPI.
constexpr std::uint64_t kMaxProgramMessage = 64 * 1024 * 1024;
constexpr std::uint64_t kMaxControlPayload = 4096;
constexpr std::size_t kDiscardChunk = 64 * 1024;

enum class FrameResult { kOk, kClosed, kStopped, kBadHeader };

FrameResult ToFrameResult(IoResult result) {
  switch (result) {
    case IoResult::kOk:
      return FrameResult::kOk;
    case IoResult::kStopped:
      return FrameResult::kStopped;
    case IoResult::kClosed:
    case IoResult::kTimedOut:
      return FrameResult::kClosed;
  }
  return FrameResult::kClosed;
}

FrameResult ReadHeader(int fd, const StopSignal& stop, ServerDeadline deadline, Header* header) {
  hislip::HeaderBytes bytes;
  const IoResult result = ReadExact(fd, bytes, stop, deadline);
  if (result != IoResult::kOk) return ToFrameResult(result);
  return hislip::DecodeHeader(bytes, header) ? FrameResult::kOk : FrameResult::kBadHeader;
}

FrameResult ReadPayload(int fd, std::uint64_t length, const StopSignal& stop,
                        std::string* payload) {
  const std::size_t start = payload->size();
  payload->resize(start + length);
  return ToFrameResult(ReadExact(fd, std::as_writable_bytes(std::span(*payload).subspan(start)),
                                 stop, ServerClock::now() + kFrameTimeout));
}

FrameResult DiscardPayload(int fd, std::uint64_t length, const StopSignal& stop) {
  std::vector<std::byte> scratch(kDiscardChunk);
  while (length > 0) {
    const std::size_t take =
        static_cast<std::size_t>(std::min<std::uint64_t>(length, kDiscardChunk));
    const IoResult result =
        ReadExact(fd, std::span(scratch).first(take), stop, ServerClock::now() + kFrameTimeout);
    if (result != IoResult::kOk) return ToFrameResult(result);
    length -= take;
  }
  return FrameResult::kOk;
}

bool Send(int fd, const StopSignal& stop, const Header& header,
          std::span<const std::byte> payload = {}) {
  const hislip::HeaderBytes head = hislip::EncodeHeader(header);
  // Header and payload leave in one system call without being copied together.
  const std::span<const std::byte> parts[] = {head, payload};
  return WriteAllParts(fd, parts, stop, ServerClock::now() + kWriteTimeout) == IoResult::kOk;
}

void SendFatal(int fd, const StopSignal& stop, hislip::FatalErrorCode code) {
  Send(fd, stop, {MessageType::kFatalError, static_cast<std::uint8_t>(code), 0, 0});
}

// One client: its two channels, the program message being received and the response waiting
// to go out.
class HislipSession {
 public:
  HislipSession(MessageHandler& handler, const HislipServerOptions& options, int sync_fd,
                int async_fd, const StopSignal& stop)
      : handler_(handler),
        options_(options),
        sync_(sync_fd),
        async_(async_fd),
        stop_(stop),
        overlapped_(options.overlapped) {}

  void Run();

 private:
  struct PendingReply {
    bool active = false;
    std::string data;
    std::uint32_t message_id = 0;
    ServerDeadline ready;
    bool drop = false;
  };

  bool OnSync();
  bool OnAsync();
  bool SendReply();

  MessageHandler& handler_;
  const HislipServerOptions& options_;
  int sync_;
  int async_;
  const StopSignal& stop_;
  std::uint64_t client_max_message_size_ = UINT64_MAX;
  std::string input_;
  bool input_too_large_ = false;
  // A response went out whole; the client's next message says whether it read it all.
  bool sent_reply_unconfirmed_ = false;
  // Between AsyncDeviceClear and DeviceClearComplete: what arrives on the synchronous channel
  // belongs to the cleared exchange and is dropped.
  bool clearing_ = false;
  PendingReply pending_;
  bool overlapped_;
  // Overlapped, responses carry the server's own count rather than the client's ids.
  std::uint32_t response_id_ = hislip::kFirstMessageId;
};

void HislipSession::Run() {
  for (;;) {
    pollfd waiters[3] = {{stop_.fd(), POLLIN, 0}, {sync_, POLLIN, 0}, {async_, POLLIN, 0}};
    int timeout = -1;
    if (pending_.active) {
      const auto now = ServerClock::now();
      timeout =
          pending_.ready <= now
              ? 0
              : static_cast<int>(
                    std::chrono::ceil<std::chrono::milliseconds>(pending_.ready - now).count());
    }
    const int ready = poll(waiters, 3, timeout);
    if (ready < 0) continue;
    if (waiters[0].revents != 0) return;
    if (pending_.active && ServerClock::now() >= pending_.ready) {
      if (!SendReply()) return;
      continue;
    }
    // The asynchronous channel first: a device clear overtakes queued data by design.
    if (waiters[2].revents != 0 && !OnAsync()) return;
    if (waiters[1].revents != 0 && !OnSync()) return;
  }
}

bool HislipSession::SendReply() {
  PendingReply reply = std::move(pending_);
  pending_ = PendingReply{};
  std::span<const std::byte> data = std::as_bytes(std::span(reply.data));
  // The client's maximum counts the header.
  const std::uint64_t chunk = std::max<std::uint64_t>(
      client_max_message_size_ - std::min<std::uint64_t>(client_max_message_size_, 16), 1);
  // A reply cut short before a dropped connection goes out without DataEnd.
  const bool ends = !reply.drop || reply.data.back() == '\n';
  do {
    const std::size_t length =
        static_cast<std::size_t>(std::min<std::uint64_t>(chunk, data.size()));
    const bool last = length == data.size();
    const MessageType type = last && ends ? MessageType::kDataEnd : MessageType::kData;
    if (!Send(sync_, stop_, {type, 0, reply.message_id, length}, data.first(length))) return false;
    data = data.subspan(length);
  } while (!data.empty());
  sent_reply_unconfirmed_ = !reply.drop;
  if (!reply.drop && options_.service_requests &&
      !Send(async_, stop_, {MessageType::kAsyncServiceRequest, 0x50, 0, 0})) {
    return false;
  }
  return !reply.drop;
}

bool HislipSession::OnSync() {
  Header header;
  const FrameResult result = ReadHeader(sync_, stop_, ServerClock::now() + kFrameTimeout, &header);
  if (result == FrameResult::kBadHeader) {
    SendFatal(sync_, stop_, hislip::FatalErrorCode::kPoorlyFormedHeader);
    return false;
  }
  if (result != FrameResult::kOk) return false;
  switch (header.type) {
    case MessageType::kData:
    case MessageType::kDataEnd: {
      if (header.payload_length > kMaxProgramMessage) {
        // A length no client would send: the stream cannot be trusted past it.
        SendFatal(sync_, stop_, hislip::FatalErrorCode::kPoorlyFormedHeader);
        return false;
      }
      if (clearing_) return DiscardPayload(sync_, header.payload_length, stop_) == FrameResult::kOk;
      if (header.payload_length + hislip::kHeaderSize > options_.max_message_size ||
          input_.size() + header.payload_length > kMaxProgramMessage) {
        if (DiscardPayload(sync_, header.payload_length, stop_) != FrameResult::kOk) return false;
        input_.clear();
        input_too_large_ = header.type == MessageType::kData;
        return Send(sync_, stop_,
                    {MessageType::kError,
                     static_cast<std::uint8_t>(hislip::ErrorCode::kMessageTooLarge), 0, 0});
      }
      if (input_.empty() && sent_reply_unconfirmed_) {
        // The first piece of a new message without "response fully read": the client left
        // the last response (or part of it) unread, which the instrument counts as interrupted.
        sent_reply_unconfirmed_ = false;
        if ((header.control & hislip::kRmtDelivered) == 0) handler_.ReplyInterrupted();
      }
      if (ReadPayload(sync_, header.payload_length, stop_, &input_) != FrameResult::kOk) {
        return false;
      }
      if (header.type == MessageType::kData) return true;
      std::string message = std::move(input_);
      input_.clear();
      if (input_too_large_) {
        input_too_large_ = false;
        return true;  // the tail of a message already refused
      }
      // The handler gets the message without its terminator; clients send LF or CR LF.
      if (!message.empty() && message.back() == '\n') message.pop_back();
      if (!message.empty() && message.back() == '\r') message.pop_back();
      if (pending_.active) {
        pending_ = PendingReply{};
        handler_.ReplyInterrupted();
      }
      HandlerResponse answer = handler_.HandleMessage(message);
      if (!answer.reply.empty()) {
        pending_.active = true;
        pending_.data = std::move(answer.reply);
        pending_.message_id = overlapped_ ? response_id_ : header.parameter;
        if (overlapped_) response_id_ = hislip::NextMessageId(response_id_);
        pending_.ready = ServerClock::now() + answer.delay;
        pending_.drop = answer.drop_connection;
        return true;
      }
      return !answer.drop_connection;
    }
    case MessageType::kDeviceClearComplete:
      if (DiscardPayload(sync_, header.payload_length, stop_) != FrameResult::kOk) return false;
      clearing_ = false;
      input_.clear();
      input_too_large_ = false;
      // The client asks for features; the server grants what it can.
      overlapped_ = (header.control & hislip::kOverlapMode) != 0 || !options_.grant_synchronized;
      response_id_ = hislip::kFirstMessageId;
      return Send(sync_, stop_,
                  {MessageType::kDeviceClearAcknowledge,
                   static_cast<std::uint8_t>(overlapped_ ? hislip::kOverlapMode : 0), 0, 0});
    case MessageType::kTrigger:
      return DiscardPayload(sync_, header.payload_length, stop_) == FrameResult::kOk;
    default:
      if (header.payload_length > kMaxProgramMessage ||
          DiscardPayload(sync_, header.payload_length, stop_) != FrameResult::kOk) {
        return false;
      }
      return Send(sync_, stop_,
                  {MessageType::kError,
                   static_cast<std::uint8_t>(hislip::ErrorCode::kUnrecognizedMessageType), 0, 0});
  }
}

bool HislipSession::OnAsync() {
  Header header;
  const FrameResult result = ReadHeader(async_, stop_, ServerClock::now() + kFrameTimeout, &header);
  if (result == FrameResult::kBadHeader) {
    SendFatal(async_, stop_, hislip::FatalErrorCode::kPoorlyFormedHeader);
    return false;
  }
  if (result != FrameResult::kOk) return false;
  if (header.payload_length > kMaxControlPayload) {
    SendFatal(async_, stop_, hislip::FatalErrorCode::kPoorlyFormedHeader);
    return false;
  }
  std::string payload;
  if (ReadPayload(async_, header.payload_length, stop_, &payload) != FrameResult::kOk) {
    return false;
  }
  switch (header.type) {
    case MessageType::kAsyncMaxMsgSize: {
      if (payload.size() != 8) {
        return Send(async_, stop_,
                    {MessageType::kError,
                     static_cast<std::uint8_t>(hislip::ErrorCode::kUnidentified), 0, 0});
      }
      client_max_message_size_ = hislip::DecodeUint64(std::as_bytes(std::span(payload)).first<8>());
      const auto size = hislip::EncodeUint64(options_.max_message_size);
      return Send(async_, stop_, {MessageType::kAsyncMaxMsgSizeResponse, 0, 0, size.size()}, size);
    }
    case MessageType::kAsyncDeviceClear:
      input_.clear();
      input_too_large_ = false;
      sent_reply_unconfirmed_ = false;
      clearing_ = true;
      pending_ = PendingReply{};
      handler_.DeviceClear();
      // Its control code: the features the server prefers.
      return Send(
          async_, stop_,
          {MessageType::kAsyncDeviceClearAcknowledge,
           static_cast<std::uint8_t>(options_.prefer_overlapped ? hislip::kOverlapMode : 0), 0, 0});
    case MessageType::kAsyncLock:
      // One client at a time: every lock request succeeds (1), every release too.
      return Send(async_, stop_, {MessageType::kAsyncLockResponse, 1, 0, 0});
    case MessageType::kAsyncLockInfo:
      return Send(async_, stop_, {MessageType::kAsyncLockInfoResponse, 0, 0, 0});
    case MessageType::kAsyncRemoteLocalControl:
      return Send(async_, stop_, {MessageType::kAsyncRemoteLocalResponse, 0, 0, 0});
    case MessageType::kAsyncStatusQuery: {
      // Message available (bit 4) while a response is ready to go.
      const std::uint8_t status_byte =
          pending_.active && ServerClock::now() >= pending_.ready ? 0x10 : 0;
      return Send(async_, stop_, {MessageType::kAsyncStatusResponse, status_byte, 0, 0});
    }
    default:
      return Send(async_, stop_,
                  {MessageType::kError,
                   static_cast<std::uint8_t>(hislip::ErrorCode::kUnrecognizedMessageType), 0, 0});
  }
}

}  // namespace

HislipServer::HislipServer(MessageHandler& handler, std::string bind_address, std::uint16_t port,
                           HislipServerOptions options)
    : handler_(handler),
      bind_address_(std::move(bind_address)),
      requested_port_(port),
      options_(options) {}

HislipServer::~HislipServer() { Stop(); }

bool HislipServer::Start(std::string* error) {
  return loop_.Start(
      bind_address_, requested_port_, [this](Socket connection) { Serve(std::move(connection)); },
      error,
      [this](Socket connection) {
        SendFatal(connection.fd(), loop_.stop(), hislip::FatalErrorCode::kTooManyClients);
      });
}

void HislipServer::Stop() { loop_.Stop(); }

void HislipServer::Serve(Socket sync) {
  Header header;
  std::string payload;
  FrameResult result =
      ReadHeader(sync.fd(), loop_.stop(), ServerClock::now() + kFrameTimeout, &header);
  if (result != FrameResult::kOk || header.type != MessageType::kInitialize ||
      header.payload_length > kMaxControlPayload) {
    if (result != FrameResult::kStopped && result != FrameResult::kClosed) {
      SendFatal(sync.fd(), loop_.stop(), hislip::FatalErrorCode::kInvalidInitialization);
    }
    return;
  }
  if (ReadPayload(sync.fd(), header.payload_length, loop_.stop(), &payload) != FrameResult::kOk)
    return;
  const std::uint16_t session_id = next_session_id_++;
  if (next_session_id_ == 0) next_session_id_ = 1;
  // Control code bit 0: the mode the session starts in.
  if (!Send(sync.fd(), loop_.stop(),
            {MessageType::kInitializeResponse,
             static_cast<std::uint8_t>(options_.overlapped ? hislip::kOverlapMode : 0),
             hislip::InitializeResponseParameter(hislip::kProtocolVersion, session_id), 0})) {
    return;
  }
  Socket async = loop_.NextConnection(ServerClock::now() + kFrameTimeout);
  if (!async.valid()) return;
  result = ReadHeader(async.fd(), loop_.stop(), ServerClock::now() + kFrameTimeout, &header);
  if (result != FrameResult::kOk || header.type != MessageType::kAsyncInitialize ||
      hislip::SessionIdOf(header.parameter) != session_id || header.payload_length != 0) {
    if (result != FrameResult::kStopped && result != FrameResult::kClosed) {
      SendFatal(async.fd(), loop_.stop(), hislip::FatalErrorCode::kInvalidInitialization);
      SendFatal(sync.fd(), loop_.stop(), hislip::FatalErrorCode::kInvalidInitialization);
    }
    return;
  }
  if (!Send(async.fd(), loop_.stop(),
            {MessageType::kAsyncInitializeResponse, 0, hislip::kVendorId, 0})) {
    return;
  }
  HislipSession session(handler_, options_, sync.fd(), async.fd(), loop_.stop());
  session.Run();
}

}  // namespace quarvelo::sim
