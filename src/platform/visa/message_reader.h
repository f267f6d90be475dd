// The read side of one session: a single buffer filled from the transport, and the knowledge
// of where a response message ends. A message ends only at the END indicator the transport
// reports, at LF when the transport has no END of its own (raw socket), or where a binary
// block's length says; running out of time is always an error, never a short message.
#ifndef QUARVELO_PLATFORM_VISA_MESSAGE_READER_H_
#define QUARVELO_PLATFORM_VISA_MESSAGE_READER_H_

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "platform/visa/transport.h"
#include "platform/visa/visa.h"

namespace quarvelo::visa {

class MessageReader {
 public:
  static constexpr std::size_t kDefaultBufferSize = 64 * 1024;

  // `transport` must outlive the reader.
  explicit MessageReader(Transport* transport, std::size_t buffer_size = kDefaultBufferSize);

  // Each blocking transport read may take this long (VI_ATTR_TMO_VALUE).
  void set_timeout(ViUInt32 timeout_ms) { timeout_ms_ = timeout_ms; }

  // Starts one formatted or raw read: the scan may run up to the next END, and the whole
  // operation ends at one time-out from now, however long the instrument keeps talking.
  void BeginScan();

  // The next byte of the current message, waiting for it when none is buffered. *byte is -1
  // when the scan has already consumed the message's END (nothing is read then).
  ViStatus Peek(int* byte);
  // Consumes the byte Peek returned.
  void Consume();
  // True once the scan consumed the byte that carried END.
  bool scan_hit_end() const { return scan_hit_end_; }

  // Copies up to out.size() bytes of binary data, in which LF is data, large parts straight
  // from the transport into `out`. Stops early (with *count short) only when END arrives.
  ViStatus ReadBinary(std::span<std::byte> out, std::size_t* count);

  // The rest of a binary block that the caller's area could not hold (or that had not come
  // when a read timed out); discarded by length by the next DiscardResponse. Ignored once the
  // message has ended, since nothing of it can follow.
  void DeferBlockBytes(std::uint64_t count) {
    if (!at_boundary_) deferred_block_bytes_ += count;
  }

  // Raw read (viRead): what is buffered first, then the transport; stops at END, at LF when
  // the transport has no END, or when `out` is full.
  ViStatus ReadRaw(std::span<std::byte> out, std::size_t* count, bool* ended);

  // Discards the buffer and, when the current response's END has not arrived yet (or a read
  // timed out while waiting for one), reads and discards until it does, for at most one
  // time-out. When nothing at all arrives after a time-out the response is taken never to
  // come, which is not an error; an instrument still talking at the time-out is.
  ViStatus DiscardResponse();

  // Drops what is buffered without any I/O.
  void DropBuffered();

  // Forgets everything, as after a device clear: nothing of any response can follow.
  void Reset();

  // True when bytes of a response are buffered or still in flight.
  bool HasUnreadResponse() const;

 private:
  // Reads one chunk from the transport into the (empty) buffer.
  ViStatus Fill();
  bool CarriesEnd(std::size_t position) const;
  void NoteRemoved(bool end);
  ViStatus HandleReadError(ViStatus status);

  Transport* transport_;
  const bool ends_on_line_feed_;
  std::vector<std::byte> buffer_;
  std::size_t head_ = 0;
  std::size_t tail_ = 0;
  bool chunk_ended_ = false;  // the byte at tail_ - 1 carried END
  ViUInt32 timeout_ms_ = 2000;
  // Where the current read or discard operation gives up.
  Deadline deadline_ = Deadline::max();
  bool operation_read_ = false;  // the current operation has read from the transport

  bool scan_hit_end_ = false;
  // The last byte removed from the stream (consumed or discarded) carried END, i.e. no
  // response is part-way through.
  bool at_boundary_ = true;
  // A read timed out while a response was awaited: it may still come.
  bool awaiting_late_response_ = false;
  std::uint64_t deferred_block_bytes_ = 0;
};

}  // namespace quarvelo::visa

#endif  // QUARVELO_PLATFORM_VISA_MESSAGE_READER_H_
