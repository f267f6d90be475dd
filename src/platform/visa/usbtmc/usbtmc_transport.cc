#include "platform/visa/usbtmc/usbtmc_transport.h"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <thread>

namespace quarvelo::visa {
namespace {

using namespace usbtmc;

constexpr std::size_t kStagingSize = 64 * 1024;
// Recovery after a time-out has its own short budget: the caller's time is already spent.
constexpr std::chrono::milliseconds kRecoveryBudget{1000};

}  // namespace

UsbtmcTransport::UsbtmcTransport(std::unique_ptr<UsbDevice> device)
    : device_(std::move(device)), staging_(kStagingSize) {}

ViStatus UsbtmcTransport::Write(std::span<const std::byte> data, bool end, Deadline deadline) {
  std::vector<std::byte> transfer;
  std::size_t offset = 0;
  do {
    const std::size_t payload = std::min(kMaxOutPayload, data.size() - offset);
    const bool last = offset + payload == data.size();
    last_tag_ = NextTag(last_tag_);
    const Header header =
        DevDepMsgOutHeader(last_tag_, static_cast<std::uint32_t>(payload), end && last);
    transfer.assign(header.begin(), header.end());
    transfer.insert(transfer.end(), data.begin() + offset, data.begin() + offset + payload);
    transfer.resize(PaddedLength(transfer.size()), std::byte{0});
    const ViStatus status = device_->BulkOut(transfer, deadline);
    if (status == VI_ERROR_TMO) RecoverOut(last_tag_);
    if (status < VI_SUCCESS) return status;
    offset += payload;
  } while (offset < data.size());
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
  const ViStatus status = device_->BulkIn(staging_, deadline, &count);
  if (status < VI_SUCCESS) return status;
  staged_begin_ = 0;
  staged_end_ = count;
  const std::size_t packet = std::max<std::size_t>(device_->bulk_in_packet_size(), 1);
  last_chunk_short_ = count < staging_.size() && count % packet != 0;
  if (count == 0) last_chunk_short_ = true;
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
      const ViStatus status = device_->BulkOut(request, deadline);
      if (status == VI_ERROR_TMO) RecoverOut(last_tag_);
      if (status < VI_SUCCESS) return status;
      in_transfer_ = true;
      in_tag_ = last_tag_;
      header_received_ = 0;
    }
    const bool need_bytes = header_received_ < kHeaderSize || data_left_ > 0;
    if (need_bytes && staged_begin_ == staged_end_) {
      if (delivered > 0) break;  // hand over what has come; the transfer goes on next call
      const ViStatus status = ReceiveChunk(deadline);
      if (status == VI_ERROR_TMO) {
        RecoverIn();
        return status;
      }
      if (status < VI_SUCCESS) {
        ResetIn();
        return status;
      }
      if (staged_end_ == 0 && header_received_ < kHeaderSize) continue;
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
        RecoverIn();
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
    if (padding_left_ > 0 && !last_chunk_short_) {
      if (ReceiveChunk(deadline) == VI_SUCCESS) {
        padding_left_ -= std::min(padding_left_, staged_end_);
      }
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
                                  std::uint16_t index, std::size_t length, Deadline deadline,
                                  std::array<std::byte, 8>* reply) {
  reply->fill(std::byte{0});
  std::size_t count = 0;
  const ViStatus status = device_->ControlIn(type, request, value, index,
                                             std::span(reply->data(), length), deadline, &count);
  if (status < VI_SUCCESS) return status;
  return count >= 1 ? VI_SUCCESS : VI_ERROR_IO;
}

void UsbtmcTransport::DrainBulkIn(Deadline deadline) {
  for (int k = 0; k < 1024; ++k) {
    if (ReceiveChunk(deadline) != VI_SUCCESS || last_chunk_short_) break;
  }
  staged_begin_ = staged_end_ = 0;
}

void UsbtmcTransport::RecoverIn() {
  const Deadline deadline = Clock::now() + kRecoveryBudget;
  const std::uint8_t tag = in_tag_;
  const bool had_transfer = in_transfer_;
  ResetIn();
  if (!had_transfer) return;
  std::array<std::byte, 8> reply;
  bool recovered = false;
  if (Control(kRequestToEndpoint, kInitiateAbortBulkIn, tag, device_->bulk_in_endpoint(), 2,
              deadline, &reply) == VI_SUCCESS) {
    const auto status = std::to_integer<std::uint8_t>(reply[0]);
    if (status == kStatusTransferNotInProgress) {
      recovered = true;  // nothing was being sent: the request was simply never answered
    } else if (status == kStatusSuccess) {
      DrainBulkIn(deadline);
      while (Clock::now() < deadline &&
             Control(kRequestToEndpoint, kCheckAbortBulkInStatus, 0, device_->bulk_in_endpoint(), 8,
                     deadline, &reply) == VI_SUCCESS) {
        if (std::to_integer<std::uint8_t>(reply[0]) != kStatusPending) {
          recovered = std::to_integer<std::uint8_t>(reply[0]) == kStatusSuccess;
          break;
        }
        if ((std::to_integer<std::uint8_t>(reply[1]) & 1) != 0) DrainBulkIn(deadline);
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
      }
    }
  }
  if (!recovered) Clear(deadline);
}

void UsbtmcTransport::RecoverOut(std::uint8_t tag) {
  const Deadline deadline = Clock::now() + kRecoveryBudget;
  std::array<std::byte, 8> reply;
  bool recovered = false;
  if (Control(kRequestToEndpoint, kInitiateAbortBulkOut, tag, device_->bulk_out_endpoint(), 2,
              deadline, &reply) == VI_SUCCESS &&
      std::to_integer<std::uint8_t>(reply[0]) == kStatusSuccess) {
    while (Clock::now() < deadline &&
           Control(kRequestToEndpoint, kCheckAbortBulkOutStatus, 0, device_->bulk_out_endpoint(), 8,
                   deadline, &reply) == VI_SUCCESS) {
      if (std::to_integer<std::uint8_t>(reply[0]) != kStatusPending) {
        recovered = std::to_integer<std::uint8_t>(reply[0]) == kStatusSuccess;
        break;
      }
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    if (recovered) device_->ClearHalt(device_->bulk_out_endpoint());
  }
  if (!recovered) Clear(deadline);
}

ViStatus UsbtmcTransport::Clear(Deadline deadline) {
  ResetIn();
  std::array<std::byte, 8> reply;
  ViStatus status = Control(kRequestToInterface, kInitiateClear, 0, device_->interface_number(), 1,
                            deadline, &reply);
  if (status < VI_SUCCESS) return status;
  if (std::to_integer<std::uint8_t>(reply[0]) != kStatusSuccess) return VI_ERROR_IO;
  for (;;) {
    status = Control(kRequestToInterface, kCheckClearStatus, 0, device_->interface_number(), 2,
                     deadline, &reply);
    if (status < VI_SUCCESS) return status;
    const auto clear_status = std::to_integer<std::uint8_t>(reply[0]);
    if (clear_status == kStatusSuccess) break;
    if (clear_status != kStatusPending) return VI_ERROR_IO;
    if ((std::to_integer<std::uint8_t>(reply[1]) & 1) != 0) DrainBulkIn(deadline);
    if (Clock::now() >= deadline) return VI_ERROR_TMO;
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  return device_->ClearHalt(device_->bulk_out_endpoint());
}

}  // namespace quarvelo::visa
