#include "platform/visa/usbtmc/usbtmc_transport.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <thread>

namespace quarvelo::visa {
namespace {

using namespace usbtmc;

constexpr std::size_t kStagingSize = 64 * 1024;

std::uint8_t StatusOf(std::span<const std::byte> reply) {
  return std::to_integer<std::uint8_t>(reply[0]);
}

}  // namespace

UsbtmcTransport::UsbtmcTransport(std::unique_ptr<UsbDevice> device, UsbtmcTimings timings)
    : device_(std::move(device)), timings_(timings), staging_(kStagingSize) {}

UsbtmcTransport::~UsbtmcTransport() {
  if (in_transfer_) RecoverIn(in_tag_);
}

ViStatus UsbtmcTransport::Start() {
  std::array<std::byte, kCapabilitiesSize> capabilities{};
  if (Control(kRequestToInterface, kGetCapabilities, 0, device_->interface_number(),
              capabilities) == VI_SUCCESS &&
      StatusOf(capabilities) == kStatusSuccess) {
    usb488_capabilities_ =
        std::to_integer<std::uint8_t>(capabilities[kUsb488InterfaceCapabilities]);
  }
  if (Clear(Deadline::max()) == VI_ERROR_CONN_LOST) return VI_ERROR_CONN_LOST;
  if ((usb488_capabilities_ & kUsb488AcceptsRenControl) != 0) {
    std::array<std::byte, 1> reply{};
    if (Control(kRequestToInterface, kRenControl, 1, device_->interface_number(), reply) ==
        VI_ERROR_CONN_LOST) {
      return VI_ERROR_CONN_LOST;
    }
  }
  return VI_SUCCESS;
}

ViStatus UsbtmcTransport::SendTransfer(std::span<const std::byte> transfer, Deadline deadline) {
  const ViStatus status = device_->BulkOut(transfer, deadline);
  if (status == VI_ERROR_TMO) RecoverOut(last_tag_);
  if (status == kUsbStall) return RecoverStall(device_->bulk_out_endpoint());
  return status;
}

ViStatus UsbtmcTransport::Write(std::span<const std::byte> data, bool end, Deadline deadline) {
  std::vector<std::byte> joined;
  std::span<const std::byte> bytes = data;
  if (held_byte_) {
    joined.reserve(data.size() + 1);
    joined.push_back(*held_byte_);
    joined.insert(joined.end(), data.begin(), data.end());
    held_byte_.reset();
    bytes = joined;
  }
  if (!end && !bytes.empty()) {
    // Keep the last byte back: if the message ends with no more bytes, EOM goes with it,
    // never in a transfer of size 0 (which the device answers by halting bulk-out).
    held_byte_ = bytes.back();
    bytes = bytes.first(bytes.size() - 1);
  }
  std::vector<std::byte> transfer;
  std::size_t offset = 0;
  while (offset < bytes.size()) {
    const std::size_t payload = std::min(kMaxOutPayload, bytes.size() - offset);
    const bool last = offset + payload == bytes.size();
    last_tag_ = NextTag(last_tag_);
    const Header header =
        DevDepMsgOutHeader(last_tag_, static_cast<std::uint32_t>(payload), end && last);
    transfer.assign(header.begin(), header.end());
    transfer.insert(transfer.end(), bytes.begin() + offset, bytes.begin() + offset + payload);
    transfer.resize(PaddedLength(transfer.size()), std::byte{0});
    const ViStatus status = SendTransfer(transfer, deadline);
    if (status < VI_SUCCESS) {
      held_byte_.reset();
      return status;
    }
    offset += payload;
  }
  return VI_SUCCESS;
}

void UsbtmcTransport::ResetIn() {
  in_transfer_ = false;
  header_received_ = 0;
  data_left_ = 0;
  padding_left_ = 0;
  end_of_message_ = false;
  staged_begin_ = staged_end_ = 0;
}

ViStatus UsbtmcTransport::ReceiveChunk(Deadline deadline) {
  std::size_t count = 0;
  bool ended_short = false;
  const ViStatus status = device_->BulkIn(staging_, deadline, &count, &ended_short);
  if (status < VI_SUCCESS) return status;
  staged_begin_ = 0;
  staged_end_ = count;
  chunk_ended_short_ = ended_short;
  return VI_SUCCESS;
}

ViStatus UsbtmcTransport::Read(std::span<std::byte> buffer, Deadline deadline, ReadResult* result) {
  *result = ReadResult{};
  std::size_t delivered = 0;
  int requests_sent = 0;
  for (;;) {
    if (!in_transfer_) {
      // A device answering every request with an empty transfer must not hold us forever.
      if (requests_sent > 0 && Clock::now() >= deadline) return VI_ERROR_TMO;
      ++requests_sent;
      last_tag_ = NextTag(last_tag_);
      const Header request = RequestDevDepMsgInHeader(last_tag_, kMaxInTransfer);
      const ViStatus status = SendTransfer(request, deadline);
      if (status < VI_SUCCESS) return status;
      in_transfer_ = true;
      in_tag_ = last_tag_;
      header_received_ = 0;
      staged_begin_ = staged_end_ = 0;
      chunk_ended_short_ = false;
    }
    const bool need_bytes = header_received_ < kHeaderSize || data_left_ > 0;
    if (need_bytes && staged_begin_ == staged_end_) {
      if (delivered > 0) break;  // hand over what has come; the transfer goes on next call
      if (chunk_ended_short_ && header_received_ > 0) {
        // The device ended the transfer before the size its header announced.
        ResetIn();
        return VI_ERROR_IO;
      }
      const ViStatus status = ReceiveChunk(deadline);
      if (status == VI_ERROR_TMO) {
        RecoverIn(in_tag_);
        return status;
      }
      if (status == kUsbStall) return RecoverStall(device_->bulk_in_endpoint());
      if (status < VI_SUCCESS) {
        ResetIn();
        return status;
      }
      // A zero-length packet left over from the last transfer ends nothing of this one.
      if (staged_end_ == 0 && header_received_ == 0) chunk_ended_short_ = false;
      continue;
    }
    if (header_received_ < kHeaderSize) {
      const std::size_t take =
          std::min(kHeaderSize - header_received_, staged_end_ - staged_begin_);
      std::memcpy(header_.data() + header_received_, staging_.data() + staged_begin_, take);
      header_received_ += take;
      staged_begin_ += take;
      if (header_received_ < kHeaderSize) continue;
      const auto header = ParseDevDepMsgInHeader(header_);
      if (!header || header->tag != in_tag_ || header->transfer_size > kMaxInTransfer) {
        // Out of step with the device: drop this transfer and make it drop it too.
        RecoverIn(in_tag_);
        return VI_ERROR_IO;
      }
      data_left_ = header->transfer_size;
      end_of_message_ = header->end_of_message;
      padding_left_ = PaddedLength(kHeaderSize + data_left_) - (kHeaderSize + data_left_);
    }
    if (data_left_ > 0) {
      const std::size_t take = std::min<std::size_t>(
          {data_left_, staged_end_ - staged_begin_, buffer.size() - delivered});
      std::memcpy(buffer.data() + delivered, staging_.data() + staged_begin_, take);
      staged_begin_ += take;
      delivered += take;
      data_left_ -= static_cast<std::uint32_t>(take);
      if (data_left_ > 0) {
        if (delivered == buffer.size()) break;
        continue;
      }
    }
    // The transfer's data is complete: its alignment bytes end it, in this chunk or (when
    // the chunk ended on a full packet) in the next one.
    const std::size_t padding_here = std::min(padding_left_, staged_end_ - staged_begin_);
    padding_left_ -= padding_here;
    if (padding_left_ > 0 && !chunk_ended_short_ &&
        ReceiveChunk(std::min(deadline, Clock::now() + timings_.drain_read)) == VI_SUCCESS) {
      padding_left_ -= std::min(padding_left_, staged_end_);
    }
    staged_begin_ = staged_end_ = 0;
    in_transfer_ = false;
    if (end_of_message_) {
      end_of_message_ = false;
      result->end = true;
      break;
    }
    if (delivered > 0) break;
  }
  result->count = delivered;
  return VI_SUCCESS;
}

ViStatus UsbtmcTransport::Control(std::uint8_t type, std::uint8_t request, std::uint16_t value,
                                  std::uint16_t index, std::span<std::byte> reply) {
  std::fill(reply.begin(), reply.end(), std::byte{0});
  std::size_t count = 0;
  const ViStatus status =
      device_->ControlIn(type, request, value, index, reply, Clock::now() + timings_.step, &count);
  if (status < VI_SUCCESS) return status;
  return count >= 1 ? VI_SUCCESS : VI_ERROR_IO;
}

void UsbtmcTransport::DrainBulkIn() {
  // Short reads until the device ends its transfer with a short packet or has nothing more.
  const Deadline give_up = Clock::now() + timings_.poll_budget;
  while (Clock::now() < give_up) {
    const ViStatus status = ReceiveChunk(Clock::now() + timings_.drain_read);
    if (status == kUsbStall) device_->ClearHalt(device_->bulk_in_endpoint());
    if (status != VI_SUCCESS || chunk_ended_short_) break;
  }
  staged_begin_ = staged_end_ = 0;
}

std::uint8_t UsbtmcTransport::InitiateAbort(std::uint8_t request, std::uint8_t tag,
                                            std::uint8_t endpoint) {
  std::array<std::byte, 2> reply{};
  for (int attempt = 0;; ++attempt) {
    if (Control(kRequestToEndpoint, request, tag, endpoint, reply) != VI_SUCCESS) return 0;
    if (StatusOf(reply) != kAbortTryLater || attempt >= timings_.abort_retries) {
      return StatusOf(reply);
    }
    std::this_thread::sleep_for(timings_.poll_interval);
  }
}

std::uint8_t UsbtmcTransport::PollCheck(std::uint8_t request, std::uint8_t type,
                                        std::uint16_t index, std::size_t length) {
  std::array<std::byte, 8> reply{};
  const Deadline give_up = Clock::now() + timings_.poll_budget;
  for (;;) {
    if (Control(type, request, 0, index, std::span(reply).first(length)) != VI_SUCCESS) return 0;
    if (StatusOf(reply) != kStatusPending) return StatusOf(reply);
    // bmAbortBulkIn / bmClear bit 0: the device holds bulk-in data the host must read first.
    if ((std::to_integer<std::uint8_t>(reply[1]) & 1) != 0) DrainBulkIn();
    if (Clock::now() >= give_up) return kStatusPending;
    std::this_thread::sleep_for(timings_.poll_interval);
  }
}

void UsbtmcTransport::RecoverIn(std::uint8_t tag) {
  ResetIn();
  const std::uint8_t answer = InitiateAbort(kInitiateAbortBulkIn, tag, device_->bulk_in_endpoint());
  if (answer == kAbortNothingToAbort) return;  // the request was simply never answered
  bool recovered = false;
  if (answer == kStatusSuccess) {
    DrainBulkIn();
    recovered = PollCheck(kCheckAbortBulkInStatus, kRequestToEndpoint, device_->bulk_in_endpoint(),
                          8) == kStatusSuccess;
  }
  if (!recovered) Clear(Deadline::max());
}

void UsbtmcTransport::RecoverOut(std::uint8_t tag) {
  const std::uint8_t answer =
      InitiateAbort(kInitiateAbortBulkOut, tag, device_->bulk_out_endpoint());
  if (answer == kAbortNothingToAbort) return;
  bool recovered = false;
  if (answer == kStatusSuccess) {
    recovered = PollCheck(kCheckAbortBulkOutStatus, kRequestToEndpoint,
                          device_->bulk_out_endpoint(), 8) == kStatusSuccess;
    // A successful abort leaves bulk-out halted by rule.
    device_->ClearHalt(device_->bulk_out_endpoint());
  }
  if (!recovered) Clear(Deadline::max());
}

ViStatus UsbtmcTransport::RecoverStall(std::uint8_t endpoint) {
  ResetIn();
  const ViStatus status = device_->ClearHalt(endpoint);
  if (status == VI_ERROR_CONN_LOST) return status;
  Clear(Deadline::max());
  return VI_ERROR_IO;
}

ViStatus UsbtmcTransport::Clear(Deadline /*deadline*/) {
  // The caller's time-out may be spent already (a clear after a time-out): every step gets
  // its own budget instead.
  ResetIn();
  held_byte_.reset();
  std::array<std::byte, 1> reply{};
  ViStatus status =
      Control(kRequestToInterface, kInitiateClear, 0, device_->interface_number(), reply);
  if (status >= VI_SUCCESS) {
    if (StatusOf(reply) != kStatusSuccess) {
      status = VI_ERROR_IO;
    } else {
      const std::uint8_t answer =
          PollCheck(kCheckClearStatus, kRequestToInterface, device_->interface_number(), 2);
      status = answer == kStatusSuccess   ? VI_SUCCESS
               : answer == kStatusPending ? VI_ERROR_TMO
                                          : VI_ERROR_IO;
    }
  }
  if (status == VI_ERROR_CONN_LOST) return status;
  // The device halts bulk-out after INITIATE_CLEAR; a halt raised earlier on either endpoint
  // would outlive the clear. Clearing a halt that is not set does no harm.
  const ViStatus out = device_->ClearHalt(device_->bulk_out_endpoint());
  const ViStatus in = device_->ClearHalt(device_->bulk_in_endpoint());
  if (status >= VI_SUCCESS) status = out < VI_SUCCESS ? out : in;
  return status;
}

ViStatus UsbtmcTransport::ReadStatusByte(Deadline deadline, ViUInt16* status_byte) {
  status_tag_ = static_cast<std::uint8_t>(status_tag_ >= 127 ? 2 : status_tag_ + 1);
  std::array<std::byte, 3> reply{};
  const ViStatus status = Control(kRequestToInterface, kReadStatusByte, status_tag_,
                                  device_->interface_number(), reply);
  if (status < VI_SUCCESS) return status;
  if (StatusOf(reply) != kStatusSuccess) return VI_ERROR_IO;
  if (!device_->has_interrupt_in()) {
    *status_byte = std::to_integer<std::uint8_t>(reply[2]);
    return VI_SUCCESS;
  }
  // The byte comes as a notification: bit 7 set and the request's bTag, then the byte.
  for (;;) {
    std::array<std::byte, 2> notification{};
    std::size_t count = 0;
    const ViStatus got = device_->InterruptIn(notification, deadline, &count);
    if (got < VI_SUCCESS) return got;
    if (count == 2 && std::to_integer<std::uint8_t>(notification[0]) == (0x80 | status_tag_)) {
      *status_byte = std::to_integer<std::uint8_t>(notification[1]);
      return VI_SUCCESS;
    }
  }
}

}  // namespace quarvelo::visa
