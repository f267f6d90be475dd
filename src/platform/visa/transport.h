// What the formatted-I/O layer needs from a connection to one instrument. Each transport
// (raw socket, VXI-11, HiSLIP, USB-TMC) implements this; the formatted I/O on top decides
// message boundaries from the evidence each read reports.
#ifndef QUARVELO_PLATFORM_VISA_TRANSPORT_H_
#define QUARVELO_PLATFORM_VISA_TRANSPORT_H_

#include <chrono>
#include <cstddef>
#include <span>

#include "platform/visa/visa.h"

namespace quarvelo::visa {

using Clock = std::chrono::steady_clock;
using Deadline = Clock::time_point;

// Why a read stopped, as the transport's own protocol tells it.
struct ReadResult {
  std::size_t count = 0;  // bytes placed in the caller's buffer
  bool end = false;       // the message ended with these bytes (END / EOM / DataEND)
};

class Transport {
 public:
  virtual ~Transport() = default;

  // Sends data; when `end` is true the last byte carries the END indicator (VXI-11 end flag,
  // HiSLIP DataEND, USB-TMC EOM; a raw socket has none and relies on the caller's LF).
  virtual ViStatus Write(std::span<const std::byte> data, bool end, Deadline deadline) = 0;

  // Blocks until at least one byte is available or the deadline passes, then returns what is
  // available up to buffer.size(). Returns VI_ERROR_TMO at the deadline, VI_ERROR_CONN_LOST or
  // VI_ERROR_IO when the connection is gone.
  virtual ViStatus Read(std::span<std::byte> buffer, Deadline deadline, ReadResult* result) = 0;

  // True when the transport has no END indicator of its own (raw socket): the formatted I/O
  // then treats LF outside a binary block as the end of a message.
  virtual bool EndsOnLineFeed() const = 0;

  // True when a read that timed out has already made the instrument drop the rest of that
  // reply (USB-TMC aborts the bulk-in transfer), so nothing late can arrive and the formatted
  // I/O need not wait for it before the next message.
  virtual bool DropsLateReplies() const { return false; }

  // Device clear (VXI-11 device_clear, HiSLIP device clear, USB-TMC INITIATE_CLEAR); a raw
  // socket has none and only discards what it has buffered.
  virtual ViStatus Clear(Deadline deadline) = 0;

  // The response awaited after a time-out did not come, or did not end, within the time the
  // session waits for it: make sure no part of it can later be read as the answer to another
  // message. Transports whose responses carry an id (VXI-11 xid, HiSLIP message id) or that
  // abort the transfer (USB-TMC) have nothing to do; a raw socket reconnects.
  virtual ViStatus AbandonResponse(Deadline /*deadline*/) { return VI_SUCCESS; }

  // The instrument's status byte (VXI-11 device_readstb, HiSLIP AsyncStatusQuery, USB488
  // READ_STATUS_BYTE); a raw socket has none.
  virtual ViStatus ReadStatusByte(Deadline /*deadline*/, ViUInt16* /*status_byte*/) {
    return VI_ERROR_NSUP_OPER;
  }
};

}  // namespace quarvelo::visa

#endif  // QUARVELO_PLATFORM_VISA_TRANSPORT_H_
