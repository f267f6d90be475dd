#include "sim/server/usbtmc_device.h"

#include <algorithm>
#include <cstring>
#include <thread>

#include "platform/visa/usbtmc/usbtmc_protocol.h"

namespace quarvelo::sim {

using namespace visa::usbtmc;
using visa::Clock;
using visa::Deadline;
using visa::kUsbStall;

namespace {

constexpr std::uint8_t kBulkIn = 0x81;
constexpr std::uint8_t kBulkOut = 0x02;

}  // namespace

UsbtmcDevice::UsbtmcDevice(MessageHandler* handler, UsbDeviceOptions options, UsbDeviceLog* log)
    : handler_(handler), options_(options), log_(log) {
  if (options_.stale_session) {
    incoming_ = ":GARB";
    halted_out_ = true;
  }
}

void UsbtmcDevice::ResetState() {
  incoming_.clear();
  response_.clear();
  response_pending_ = false;
  request_pending_ = false;
  wire_.clear();
  short_packet_owed_ = false;
  abort_in_running_ = abort_out_running_ = abort_owed_ = false;
  out_in_progress_ = false;
}

ViStatus UsbtmcDevice::BulkOut(std::span<const std::byte> data, Deadline) {
  if (gone_) return VI_ERROR_CONN_LOST;
  if (halted_out_) {
    ++log_->stalls;
    return kUsbStall;
  }
  if (abort_in_running_ || abort_out_running_ || abort_owed_ || clear_running_) {
    Violation("bulk-out before an abort or clear finished");
  }
  if (data.size() % 4 != 0) ++log_->misaligned_transfers;
  if (data.size() < kHeaderSize) {
    ++log_->bad_headers;
    return VI_ERROR_IO;
  }
  const auto header = ParseOutHeader(data.first<kHeaderSize>());
  if (!header) {
    ++log_->bad_headers;
    return VI_ERROR_IO;
  }
  log_->tags.push_back(header->tag);
  if (header->message_id == kDevDepMsgOut) {
    if (kHeaderSize + header->transfer_size > data.size()) {
      ++log_->bad_headers;
      return VI_ERROR_IO;
    }
    log_->out_sizes.push_back(header->transfer_size);
    log_->out_end_of_message.push_back(header->end_of_message);
    if (header->transfer_size == 0) {
      Violation("DEV_DEP_MSG_OUT with TransferSize 0");
      halted_out_ = true;
      ++log_->stalls;
      return kUsbStall;
    }
    if (options_.bulk_out_timeout_next) {
      options_.bulk_out_timeout_next = false;
      out_in_progress_ = true;
      out_tag_ = header->tag;
      return VI_ERROR_TMO;
    }
    incoming_.append(reinterpret_cast<const char*>(data.data() + kHeaderSize),
                     header->transfer_size);
    if (header->end_of_message) MessageComplete();
  } else if (header->message_id == kRequestDevDepMsgIn) {
    request_pending_ = true;
    request_tag_ = header->tag;
    request_size_ = header->transfer_size;
  } else {
    ++log_->bad_headers;
  }
  return VI_SUCCESS;
}

void UsbtmcDevice::MessageComplete() {
  std::string message = std::move(incoming_);
  incoming_.clear();
  if (!message.empty() && message.back() == '\n') message.pop_back();
  // What is already on the wire stays there; only the response not yet queued is dropped.
  if (response_pending_) {
    handler_->ReplyInterrupted();
    response_.clear();
    response_pending_ = false;
  }
  const sim::HandlerResponse response = handler_->HandleMessage(message);
  if (response.reply.empty() && !response.drop_connection) return;
  response_ = response.reply;
  response_pending_ = true;
  response_ready_ = Clock::now() + response.delay;
  drop_after_response_ = response.drop_connection;
}

void UsbtmcDevice::StartTransfer() {
  const std::size_t payload =
      std::min({response_.size(), options_.max_in_payload, std::size_t{request_size_}});
  const bool last = payload == response_.size();
  // A device about to vanish never finishes its message.
  Header header = DevDepMsgInHeader(request_tag_, static_cast<std::uint32_t>(payload),
                                    last && !drop_after_response_);
  if (options_.corrupt_next_tag) {
    header[1] = static_cast<std::byte>(request_tag_ + 1);
    header[2] = static_cast<std::byte>(~(request_tag_ + 1));
    options_.corrupt_next_tag = false;
  }
  wire_tag_ = request_tag_;
  wire_.assign(header.begin(), header.end());
  for (std::size_t k = 0; k < payload; ++k) wire_.push_back(static_cast<std::byte>(response_[k]));
  while (wire_.size() % 4 != 0) wire_.push_back(std::byte{0});
  if (options_.short_transfer_next) {
    options_.short_transfer_next = false;
    wire_.resize(kHeaderSize + payload / 2);
  }
  short_packet_owed_ = options_.zero_length_packets && wire_.size() % options_.packet_size == 0;
  response_.erase(0, payload);
  if (last) response_pending_ = false;
  request_pending_ = false;
}

ViStatus UsbtmcDevice::BulkIn(std::span<std::byte> buffer, Deadline deadline, std::size_t* count,
                              bool* ended_short) {
  *count = 0;
  *ended_short = false;
  if (gone_) return VI_ERROR_CONN_LOST;
  if (options_.stall_bulk_in_next) {
    options_.stall_bulk_in_next = false;
    halted_in_ = true;
  }
  if (halted_in_) {
    ++log_->stalls;
    return kUsbStall;
  }
  if (wire_.empty() && request_pending_ && options_.empty_transfers_only) {
    const Header header = DevDepMsgInHeader(request_tag_, 0, false);
    std::memcpy(buffer.data(), header.data(), header.size());
    *count = header.size();
    *ended_short = true;
    request_pending_ = false;
    return VI_SUCCESS;
  }
  if (wire_.empty() && short_packet_owed_) {
    short_packet_owed_ = false;
    *ended_short = true;
    return VI_SUCCESS;
  }
  if (wire_.empty()) {
    if (!request_pending_ || !response_pending_ || response_ready_ > deadline) {
      // Nothing to send: the host's bulk-in request is NAKed until it gives up.
      std::this_thread::sleep_until(std::min(deadline, Clock::now() + std::chrono::seconds(5)));
      return VI_ERROR_TMO;
    }
    std::this_thread::sleep_until(response_ready_);
    if (drop_after_response_ && response_.empty()) {
      gone_ = true;
      return VI_ERROR_CONN_LOST;
    }
    StartTransfer();
  }
  const std::size_t packet = options_.packet_size;
  std::size_t packets = 0;
  while (!wire_.empty() && packets < options_.packets_per_bulk_in &&
         *count + std::min(packet, wire_.size()) <= buffer.size()) {
    const std::size_t take = std::min(packet, wire_.size());
    for (std::size_t k = 0; k < take; ++k) {
      buffer[*count + k] = wire_.front();
      wire_.pop_front();
    }
    *count += take;
    ++packets;
    if (take < packet) {
      *ended_short = true;  // a short packet ends the transfer
      break;
    }
  }
  if (wire_.empty() && short_packet_owed_ && !*ended_short &&
      packets < options_.packets_per_bulk_in && *count < buffer.size()) {
    short_packet_owed_ = false;
    *ended_short = true;  // the zero-length packet ends this same transfer
  }
  if (drop_after_response_ && wire_.empty() && !response_pending_) gone_ = true;
  return VI_SUCCESS;
}

ViStatus UsbtmcDevice::ControlIn(std::uint8_t, std::uint8_t request, std::uint16_t value,
                                 std::uint16_t, std::span<std::byte> data, Deadline,
                                 std::size_t* count) {
  if (gone_) return VI_ERROR_CONN_LOST;
  log_->control_requests.push_back(request);
  std::fill(data.begin(), data.end(), std::byte{0});
  const auto answer = [&data](std::uint8_t status) { data[0] = std::byte{status}; };
  answer(kStatusSuccess);
  const bool busy = (request == kInitiateAbortBulkIn || request == kInitiateAbortBulkOut) &&
                    options_.abort_busy_answers > 0;
  if (busy) {
    --options_.abort_busy_answers;
    abort_owed_ = true;
    answer(kAbortTryLater);
    *count = data.size();
    return VI_SUCCESS;
  }
  switch (request) {
    case kGetCapabilities:
      if (data.size() > kUsb488InterfaceCapabilities) {
        data[kUsb488InterfaceCapabilities] = std::byte{options_.usb488_capabilities};
      }
      break;
    case kInitiateAbortBulkIn:
      if ((request_pending_ && request_tag_ == value) || (!wire_.empty() && wire_tag_ == value)) {
        wire_.clear();
        request_pending_ = false;
        response_.clear();
        response_pending_ = false;
        for (int k = 0; k < options_.abort_flush_packets * static_cast<int>(options_.packet_size);
             ++k) {
          wire_.push_back(std::byte{0x55});
        }
        short_packet_owed_ = true;
        abort_in_running_ = true;
        abort_owed_ = false;
        pending_left_ = options_.pending_answers;
      } else {
        answer(wire_.empty() ? kAbortNothingToAbort : kAbortTryLater);
      }
      break;
    case kCheckAbortBulkInStatus:
      if (!abort_in_running_) {
        answer(kStatusFailed);
      } else if (pending_left_ > 0 || !wire_.empty() || short_packet_owed_) {
        if (pending_left_ > 0) --pending_left_;
        answer(kStatusPending);
        // bmAbortBulkIn: the host must read what is left first.
        if (data.size() > 1 && (!wire_.empty() || short_packet_owed_)) data[1] = std::byte{1};
      } else {
        abort_in_running_ = false;
      }
      break;
    case kInitiateAbortBulkOut:
      if (out_in_progress_ && out_tag_ == value) {
        out_in_progress_ = false;
        incoming_.clear();
        abort_out_running_ = true;
        abort_owed_ = false;
        pending_left_ = options_.pending_answers;
      } else {
        answer(kAbortNothingToAbort);
      }
      break;
    case kCheckAbortBulkOutStatus:
      if (!abort_out_running_) {
        answer(kStatusFailed);
      } else if (pending_left_ > 0) {
        --pending_left_;
        answer(kStatusPending);
      } else {
        abort_out_running_ = false;
        halted_out_ = true;  // by rule, until the host clears it
      }
      break;
    case kInitiateClear:
      handler_->DeviceClear();
      ResetState();
      clear_running_ = true;
      pending_left_ = options_.pending_answers;
      break;
    case kCheckClearStatus:
      if (clear_running_ && pending_left_ > 0) {
        --pending_left_;
        answer(kStatusPending);
      } else if (clear_running_) {
        clear_running_ = false;
        halted_out_ = true;  // by rule, until the host clears it
      }
      break;
    case kReadStatusByte:
      if (data.size() >= 3) {
        data[1] = static_cast<std::byte>(value);
        if (options_.interrupt_in) {
          pending_status_tag_ = static_cast<std::uint8_t>(value);
        } else {
          data[2] = std::byte{options_.status_byte};
        }
      }
      break;
    default:
      break;
  }
  *count = data.size();
  return VI_SUCCESS;
}

ViStatus UsbtmcDevice::InterruptIn(std::span<std::byte> buffer, Deadline deadline,
                                   std::size_t* count) {
  *count = 0;
  if (!options_.interrupt_in) return VI_ERROR_NSUP_OPER;
  if (pending_status_tag_ == 0 || buffer.size() < 2) {
    std::this_thread::sleep_until(std::min(deadline, Clock::now() + std::chrono::seconds(5)));
    return VI_ERROR_TMO;
  }
  buffer[0] = static_cast<std::byte>(0x80 | pending_status_tag_);
  buffer[1] = std::byte{options_.status_byte};
  pending_status_tag_ = 0;
  *count = 2;
  return VI_SUCCESS;
}

ViStatus UsbtmcDevice::ClearHalt(std::uint8_t endpoint) {
  if (gone_) return VI_ERROR_CONN_LOST;
  if (endpoint == kBulkOut) halted_out_ = false;
  if (endpoint == kBulkIn) halted_in_ = false;
  return VI_SUCCESS;
}

}  // namespace quarvelo::sim
