#include "platform/visa/message_reader.h"

#include <algorithm>
#include <cstring>

#include "platform/visa/deadline.h"

namespace quarvelo::visa {

MessageReader::MessageReader(Transport* transport, std::size_t buffer_size)
    : transport_(transport),
      ends_on_line_feed_(transport->EndsOnLineFeed()),
      buffer_(std::max<std::size_t>(buffer_size, 16)) {}

bool MessageReader::CarriesEnd(std::size_t position) const {
  if (ends_on_line_feed_) return buffer_[position] == std::byte{'\n'};
  return chunk_ended_ && position + 1 == tail_;
}

void MessageReader::NoteRemoved(bool end) {
  at_boundary_ = end;
  if (end) awaiting_late_response_ = false;
}

ViStatus MessageReader::HandleReadError(ViStatus status) {
  if (status == VI_ERROR_TMO) {
    if (transport_->DropsLateReplies()) {
      // The transport made the instrument drop the reply; what came of it is worthless too.
      head_ = tail_ = 0;
      chunk_ended_ = false;
      deferred_block_bytes_ = 0;
      at_boundary_ = true;
      awaiting_late_response_ = false;
    } else {
      // Whatever was awaited may still arrive; it belongs to this exchange, not the next one.
      at_boundary_ = false;
      awaiting_late_response_ = true;
    }
  }
  return status;
}

void MessageReader::BeginScan() {
  scan_hit_end_ = false;
  deadline_ = DeadlineAfter(timeout_ms_);
  operation_read_ = false;
}

ViStatus MessageReader::Fill() {
  head_ = 0;
  tail_ = 0;
  chunk_ended_ = false;
  ReadResult result;
  const Deadline deadline = deadline_;
  // An instrument that never stops sending must not keep the read past its time-out; the
  // first read of an operation still runs, so that an immediate time-out polls once.
  if (operation_read_ && Clock::now() >= deadline && deadline != Deadline::max()) {
    return HandleReadError(VI_ERROR_TMO);
  }
  operation_read_ = true;
  for (;;) {
    const ViStatus status = transport_->Read(buffer_, deadline, &result);
    if (status < VI_SUCCESS) return HandleReadError(status);
    if (result.count > 0 || result.end) break;
    // A transport that keeps returning nothing must not keep the caller past the time-out.
    if (Clock::now() >= deadline) return HandleReadError(VI_ERROR_TMO);
  }
  tail_ = std::min(result.count, buffer_.size());
  chunk_ended_ = result.end && tail_ > 0;
  if (tail_ == 0 && result.end) {
    // END on an empty read ends the message with no bytes: nobody may wait for more.
    scan_hit_end_ = true;
    NoteRemoved(true);
  }
  return VI_SUCCESS;
}

ViStatus MessageReader::Peek(int* byte) {
  *byte = -1;
  if (scan_hit_end_) return VI_SUCCESS;
  while (head_ == tail_) {
    const ViStatus status = Fill();
    if (status < VI_SUCCESS) return status;
    if (scan_hit_end_) return VI_SUCCESS;
  }
  *byte = static_cast<int>(buffer_[head_]);
  return VI_SUCCESS;
}

void MessageReader::Consume() {
  if (head_ == tail_) return;
  const bool end = CarriesEnd(head_);
  ++head_;
  NoteRemoved(end);
  if (end) scan_hit_end_ = true;
}

ViStatus MessageReader::ReadBinary(std::span<std::byte> out, std::size_t* count) {
  *count = 0;
  const Deadline deadline = deadline_;
  while (*count < out.size()) {
    const std::size_t wanted = out.size() - *count;
    if (head_ == tail_ && wanted >= buffer_.size() / 2) {
      // Large parts bypass the buffer: one copy from the kernel into the caller's area.
      ReadResult result;
      const ViStatus status = transport_->Read(out.subspan(*count), deadline, &result);
      if (status < VI_SUCCESS) return HandleReadError(status);
      const std::size_t got = std::min(result.count, wanted);
      *count += got;
      const bool end_now = result.end && !ends_on_line_feed_;
      if (!end_now && *count < out.size() && Clock::now() >= deadline &&
          deadline != Deadline::max()) {
        // Nothing, or not all, by the time-out: bytes still arriving do not extend it.
        if (got > 0) NoteRemoved(false);
        return HandleReadError(VI_ERROR_TMO);
      }
      const bool end = result.end && !ends_on_line_feed_;
      if (got > 0 || end) NoteRemoved(end);
      if (end) {
        scan_hit_end_ = true;
        return VI_SUCCESS;
      }
      continue;
    }
    if (head_ == tail_) {
      const ViStatus status = Fill();
      if (status < VI_SUCCESS) return status;
      if (scan_hit_end_) return VI_SUCCESS;
      continue;
    }
    const std::size_t take = std::min(wanted, tail_ - head_);
    std::memcpy(out.data() + *count, buffer_.data() + head_, take);
    head_ += take;
    *count += take;
    const bool end = !ends_on_line_feed_ && chunk_ended_ && head_ == tail_;
    NoteRemoved(end);
    if (end) {
      scan_hit_end_ = true;
      return VI_SUCCESS;
    }
  }
  return VI_SUCCESS;
}

ViStatus MessageReader::ReadRaw(std::span<std::byte> out, std::size_t* count, bool* ended) {
  *count = 0;
  *ended = false;
  while (*count < out.size()) {
    if (head_ == tail_) {
      const ViStatus status = Fill();
      if (status < VI_SUCCESS) return status;
      if (head_ == tail_) {
        if (scan_hit_end_) {
          *ended = true;
          return VI_SUCCESS;
        }
        continue;
      }
    }
    std::size_t take = std::min(out.size() - *count, tail_ - head_);
    if (ends_on_line_feed_) {
      const void* line_feed = std::memchr(buffer_.data() + head_, '\n', take);
      if (line_feed != nullptr) {
        take = static_cast<const std::byte*>(line_feed) - (buffer_.data() + head_) + 1;
      }
    }
    std::memcpy(out.data() + *count, buffer_.data() + head_, take);
    const bool end = CarriesEnd(head_ + take - 1);
    head_ += take;
    *count += take;
    NoteRemoved(end);
    if (end) {
      *ended = true;
      return VI_SUCCESS;
    }
  }
  return VI_SUCCESS;
}

ViStatus MessageReader::DiscardResponse() {
  deadline_ = DeadlineAfter(timeout_ms_);
  operation_read_ = false;
  std::uint64_t discarded = 0;
  ViStatus status = VI_SUCCESS;
  // The rest of a block the caller could not hold: LF inside it is data, so skip it by length.
  while (deferred_block_bytes_ > 0 && status >= VI_SUCCESS) {
    if (head_ == tail_) {
      status = Fill();
      if (status < VI_SUCCESS || scan_hit_end_) break;
      continue;
    }
    const std::size_t take =
        static_cast<std::size_t>(std::min<std::uint64_t>(deferred_block_bytes_, tail_ - head_));
    head_ += take;
    deferred_block_bytes_ -= take;
    discarded += take;
    NoteRemoved(!ends_on_line_feed_ && chunk_ended_ && head_ == tail_);
    if (at_boundary_) break;  // END came before the length the header announced
  }
  deferred_block_bytes_ = 0;
  if (status >= VI_SUCCESS && head_ < tail_) {
    discarded += tail_ - head_;
    NoteRemoved(CarriesEnd(tail_ - 1));
    head_ = tail_;
  }
  while (status >= VI_SUCCESS && !at_boundary_) {
    status = Fill();
    if (status < VI_SUCCESS) break;
    if (head_ == tail_) continue;
    discarded += tail_ - head_;
    if (ends_on_line_feed_) {
      // Whatever follows the LF in this chunk goes too: it can only be more of what is
      // being thrown away.
      const void* line_feed = std::memchr(buffer_.data() + head_, '\n', tail_ - head_);
      NoteRemoved(line_feed != nullptr);
    } else {
      NoteRemoved(chunk_ended_);
    }
    head_ = tail_;
  }
  const bool nothing_came = discarded == 0 && awaiting_late_response_;
  head_ = tail_ = 0;
  chunk_ended_ = false;
  at_boundary_ = true;
  awaiting_late_response_ = false;
  scan_hit_end_ = false;
  if (status == VI_ERROR_TMO) {
    // Whatever is still to come of this response must never answer a later message.
    const ViStatus abandoned = transport_->AbandonResponse(DeadlineAfter(timeout_ms_));
    if (abandoned < VI_SUCCESS) return abandoned;
    if (nothing_came) return VI_SUCCESS;
  }
  return status < VI_SUCCESS ? status : VI_SUCCESS;
}

void MessageReader::Reset() {
  head_ = tail_ = 0;
  chunk_ended_ = false;
  scan_hit_end_ = false;
  at_boundary_ = true;
  awaiting_late_response_ = false;
  deferred_block_bytes_ = 0;
}

void MessageReader::DropBuffered() {
  if (head_ < tail_) NoteRemoved(CarriesEnd(tail_ - 1));
  head_ = tail_ = 0;
  chunk_ended_ = false;
}

bool MessageReader::HasUnreadResponse() const {
  return head_ < tail_ || !at_boundary_ || deferred_block_bytes_ > 0;
}

}  // namespace quarvelo::visa
