// HiSLIP client: a synchronous channel for Data/DataEnd messages and an asynchronous channel
// for the maximum message size exchange and device clear. Every message carries an id; a
// response whose id is not that of the last message we ended (a late answer to a query that
// timed out) is read and thrown away, so it never passes for the answer to the next one.
#ifndef QUARVELO_PLATFORM_VISA_HISLIP_HISLIP_TRANSPORT_H_
#define QUARVELO_PLATFORM_VISA_HISLIP_HISLIP_TRANSPORT_H_

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "platform/visa/hislip/message.h"
#include "platform/visa/tcp_connection.h"
#include "platform/visa/transport.h"
#include "platform/visa/visa.h"

namespace quarvelo::visa {

// One channel's byte stream, read through a buffer so that headers cost no extra system calls
// while large payloads still go straight to the caller.
class HislipChannel {
 public:
  explicit HislipChannel(std::unique_ptr<TcpConnection> stream);

  ViStatus Send(const hislip::Header& header, std::span<const std::byte> payload,
                Deadline deadline);
  // Waits for a whole header. Bytes of a header cut by the deadline stay buffered.
  ViStatus ReceiveHeader(Deadline deadline, hislip::Header* header);
  // At least one and at most buffer.size() payload bytes.
  ViStatus ReceiveSome(std::span<std::byte> buffer, Deadline deadline, std::size_t* count);
  // Reads and drops `*left` bytes, counting down as it goes (so a time-out can resume).
  ViStatus Discard(std::uint64_t* left, Deadline deadline);
  bool broken() const { return broken_; }
  // True when a header could be read without waiting.
  bool HasBufferedOrReadable();

 private:
  ViStatus Fill(Deadline deadline);

  std::unique_ptr<TcpConnection> stream_;
  std::vector<std::byte> buffer_;
  std::size_t begin_ = 0;
  std::size_t end_ = 0;
  bool broken_ = false;
};

struct HislipOptions {
  // The largest message we accept, told to the server with AsyncMaxMsgSize.
  std::uint64_t max_message_size = std::uint64_t{1} << 30;
};

class HislipTransport final : public Transport {
 public:
  static ViStatus Open(const std::string& host, const std::string& sub_address, std::uint16_t port,
                       Deadline deadline, const HislipOptions& options,
                       std::unique_ptr<HislipTransport>* out);

  ViStatus Write(std::span<const std::byte> data, bool end, Deadline deadline) override;
  ViStatus Read(std::span<std::byte> buffer, Deadline deadline, ReadResult* result) override;
  bool EndsOnLineFeed() const override { return false; }
  ViStatus Clear(Deadline deadline) override;
  ViStatus ReadStatusByte(Deadline deadline, ViUInt16* status_byte) override;

  std::uint64_t server_max_message_size() const { return server_max_message_size_; }
  std::uint16_t session_id() const { return session_id_; }
  // The id the next Data/DataEnd will carry.
  std::uint32_t next_message_id() const { return message_id_; }
  // Overlapped mode: the server numbers its responses itself.
  bool overlapped() const { return overlapped_; }

 private:
  HislipTransport(std::unique_ptr<HislipChannel> sync, std::unique_ptr<HislipChannel> async,
                  std::uint16_t session_id, std::uint64_t server_max_message_size)
      : sync_(std::move(sync)),
        async_(std::move(async)),
        session_id_(session_id),
        server_max_message_size_(server_max_message_size) {}

  ViStatus ReadMessage(std::span<std::byte> buffer, Deadline deadline, ReadResult* result);
  void SkipAsyncNotices();

  std::unique_ptr<HislipChannel> sync_;
  std::unique_ptr<HislipChannel> async_;
  std::uint16_t session_id_;
  std::uint64_t server_max_message_size_;
  std::uint32_t message_id_ = hislip::kFirstMessageId;
  // The id of the last DataEnd sent: responses carrying another id are stale.
  std::uint32_t awaited_id_ = hislip::kFirstMessageId - 2;
  bool response_read_ = false;    // a whole response arrived since our last message
  bool write_timed_out_ = false;  // clear before the next message
  bool overlapped_ = false;
  // The message whose payload is being handed out.
  bool in_message_ = false;
  bool message_is_end_ = false;
  bool message_is_stale_ = false;
  std::uint64_t payload_left_ = 0;
};

}  // namespace quarvelo::visa

#endif  // QUARVELO_PLATFORM_VISA_HISLIP_HISLIP_TRANSPORT_H_
