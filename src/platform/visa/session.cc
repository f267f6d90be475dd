#include "platform/visa/session.h"

#include "platform/visa/deadline.h"
#include "platform/visa/format_scan.h"

namespace quarvelo::visa {

class Session::WriteBuffer : public FormattedOutput {
 public:
  explicit WriteBuffer(Session* session) : session_(session) {}

  ViStatus Append(std::string_view data) override {
    session_->pending_output_.append(data);
    if (session_->pending_output_.size() < kWriteBufferSize) return VI_SUCCESS;
    return session_->SendPending(/*end=*/false);
  }
  ViStatus EndMessage() override { return session_->SendPending(/*end=*/true); }

 private:
  Session* session_;
};

Session::Session(std::unique_ptr<Transport> transport)
    : transport_(std::move(transport)), reader_(transport_.get()) {
  reader_.set_timeout(timeout_ms_);
}

void Session::SetTimeout(ViUInt32 timeout_ms) {
  std::lock_guard lock(mutex_);
  timeout_ms_ = timeout_ms;
  reader_.set_timeout(timeout_ms);
}

ViUInt32 Session::timeout() const {
  std::lock_guard lock(mutex_);
  return timeout_ms_;
}

ViStatus Session::Send(std::span<const std::byte> data, bool end) {
  if (!message_open_ && reader_.HasUnreadResponse()) {
    // The discard's own outcome does not matter here: a dead link shows in the write below.
    reader_.DiscardResponse();
  }
  const ViStatus status = transport_->Write(data, end, DeadlineAfter(timeout_ms_));
  message_open_ = status >= VI_SUCCESS && !end;
  return status;
}

ViStatus Session::SendPending(bool end) {
  if (pending_output_.empty() && !(end && message_open_)) return VI_SUCCESS;
  const auto bytes = std::as_bytes(std::span(pending_output_.data(), pending_output_.size()));
  const ViStatus status = Send(bytes, end);
  pending_output_.clear();
  return status;
}

ViStatus Session::Write(std::span<const std::byte> data, ViUInt32* written) {
  std::lock_guard lock(mutex_);
  if (written != nullptr) *written = 0;
  const ViStatus status = Send(data, /*end=*/true);
  if (status >= VI_SUCCESS && written != nullptr) *written = static_cast<ViUInt32>(data.size());
  return status;
}

ViStatus Session::Read(std::span<std::byte> buffer, ViUInt32* count) {
  std::lock_guard lock(mutex_);
  std::size_t got = 0;
  bool ended = false;
  reader_.BeginScan();
  const ViStatus status = reader_.ReadRaw(buffer, &got, &ended);
  if (count != nullptr) *count = static_cast<ViUInt32>(got);
  if (status < VI_SUCCESS) return status;
  return ended ? VI_SUCCESS : VI_SUCCESS_MAX_CNT;
}

ViStatus Session::Flush(ViUInt16 mask) {
  constexpr ViUInt16 kKnown = VI_READ_BUF | VI_WRITE_BUF | VI_READ_BUF_DISCARD |
                              VI_WRITE_BUF_DISCARD | VI_IO_IN_BUF | VI_IO_OUT_BUF |
                              VI_IO_IN_BUF_DISCARD | VI_IO_OUT_BUF_DISCARD;
  const auto both = [mask](ViUInt16 a, ViUInt16 b) { return (mask & a) && (mask & b); };
  if (mask == 0 || (mask & ~kKnown) || both(VI_READ_BUF, VI_READ_BUF_DISCARD) ||
      both(VI_WRITE_BUF, VI_WRITE_BUF_DISCARD) || both(VI_IO_IN_BUF, VI_IO_IN_BUF_DISCARD) ||
      both(VI_IO_OUT_BUF, VI_IO_OUT_BUF_DISCARD)) {
    return VI_ERROR_INV_MASK;
  }
  std::lock_guard lock(mutex_);
  ViStatus result = VI_SUCCESS;
  const auto note = [&result](ViStatus status) {
    if (status < VI_SUCCESS && result >= VI_SUCCESS) result = status;
  };
  if (mask & VI_WRITE_BUF_DISCARD) pending_output_.clear();
  if (mask & VI_WRITE_BUF) note(SendPending(/*end=*/true));
  if (mask & VI_READ_BUF) note(reader_.DiscardResponse());
  // Without I/O: what is buffered goes, but a response still in flight is dropped only
  // before the next message is sent.
  if (mask & (VI_READ_BUF_DISCARD | VI_IO_IN_BUF | VI_IO_IN_BUF_DISCARD)) reader_.DropBuffered();
  return result;
}

ViStatus Session::Clear() {
  std::lock_guard lock(mutex_);
  pending_output_.clear();
  message_open_ = false;
  const ViStatus status = transport_->Clear(DeadlineAfter(timeout_ms_));
  reader_.Reset();
  return status;
}

ViStatus Session::ReadStatusByte(ViUInt16* status_byte) {
  std::lock_guard lock(mutex_);
  return transport_->ReadStatusByte(DeadlineAfter(timeout_ms_), status_byte);
}

ViStatus Session::Printf(std::string_view format, VaArgs* args) {
  std::lock_guard lock(mutex_);
  WriteBuffer output(this);
  return PrintFormatted(format, args, &output);
}

ViStatus Session::Scanf(std::string_view format, VaArgs* args) {
  std::lock_guard lock(mutex_);
  return ScanFormatted(&reader_, format, args);
}

}  // namespace quarvelo::visa
