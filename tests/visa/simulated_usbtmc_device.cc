#include "tests/visa/simulated_usbtmc_device.h"

#include <algorithm>
#include <cstring>
#include <thread>

#include "platform/visa/usbtmc/usbtmc_protocol.h"

namespace quarvelo::visa::testing {

using namespace usbtmc;

SimulatedUsbtmcDevice::SimulatedUsbtmcDevice(sim::MessageHandler* handler, UsbDeviceOptions options,
                                             UsbDeviceLog* log)
    : handler_(handler), options_(options), log_(log) {}

ViStatus SimulatedUsbtmcDevice::BulkOut(std::span<const std::byte> data, Deadline) {
  if (gone_) return VI_ERROR_CONN_LOST;
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
    log_->out_end_of_message.push_back(header->end_of_message);
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

void SimulatedUsbtmcDevice::MessageComplete() {
  std::string message = std::move(incoming_);
  incoming_.clear();
  if (!message.empty() && message.back() == '\n') message.pop_back();
  if (response_pending_ || !wire_.empty()) {
    handler_->ReplyInterrupted();
    response_.clear();
    wire_.clear();
    response_pending_ = false;
  }
  const sim::HandlerResponse response = handler_->HandleMessage(message);
  if (response.reply.empty() && !response.drop_connection) return;
  response_ = response.reply;
  response_pending_ = true;
  response_ready_ = Clock::now() + response.delay;
  drop_after_response_ = response.drop_connection;
}

void SimulatedUsbtmcDevice::StartTransfer() {
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
  wire_.assign(header.begin(), header.end());
  for (std::size_t k = 0; k < payload; ++k) wire_.push_back(static_cast<std::byte>(response_[k]));
  while (wire_.size() % 4 != 0) wire_.push_back(std::byte{0});
  response_.erase(0, payload);
  if (last) response_pending_ = false;
  request_pending_ = false;
}

ViStatus SimulatedUsbtmcDevice::BulkIn(std::span<std::byte> buffer, Deadline deadline,
                                       std::size_t* count) {
  *count = 0;
  if (gone_) return VI_ERROR_CONN_LOST;
  if (wire_.empty() && request_pending_ && options_.empty_transfers_only) {
    const Header header = DevDepMsgInHeader(request_tag_, 0, false);
    std::memcpy(buffer.data(), header.data(), header.size());
    *count = header.size();
    request_pending_ = false;
    return VI_SUCCESS;
  }
  if (wire_.empty() && short_packet_owed_) {
    short_packet_owed_ = false;
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
    if (take < packet) break;  // a short packet ends the transfer
  }
  if (drop_after_response_ && wire_.empty() && !response_pending_) gone_ = true;
  return VI_SUCCESS;
}

ViStatus SimulatedUsbtmcDevice::ControlIn(std::uint8_t, std::uint8_t request, std::uint16_t,
                                          std::uint16_t, std::span<std::byte> data, Deadline,
                                          std::size_t* count) {
  if (gone_) return VI_ERROR_CONN_LOST;
  log_->control_requests.push_back(request);
  std::fill(data.begin(), data.end(), std::byte{0});
  data[0] = std::byte{kStatusSuccess};
  switch (request) {
    case kInitiateAbortBulkIn:
      if (!request_pending_ && wire_.empty()) {
        data[0] = std::byte{kStatusTransferNotInProgress};
      } else {
        short_packet_owed_ = true;
      }
      wire_.clear();
      request_pending_ = false;
      response_.clear();
      response_pending_ = false;
      break;
    case kInitiateClear:
      handler_->DeviceClear();
      short_packet_owed_ = false;
      wire_.clear();
      incoming_.clear();
      response_.clear();
      response_pending_ = false;
      request_pending_ = false;
      break;
    default:
      break;
  }
  *count = data.size();
  return VI_SUCCESS;
}

}  // namespace quarvelo::visa::testing
