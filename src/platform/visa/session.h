// One open instrument session: the transport, the formatted read buffer and write buffer,
// and the session's I/O time-out. Operations on one session are serialised by its own mutex,
// so a session may be used from several threads even though the program uses one.
#ifndef QUARVELO_PLATFORM_VISA_SESSION_H_
#define QUARVELO_PLATFORM_VISA_SESSION_H_

#include <memory>
#include <mutex>
#include <span>
#include <string>
#include <string_view>

#include "platform/visa/format_print.h"
#include "platform/visa/message_reader.h"
#include "platform/visa/transport.h"
#include "platform/visa/va_args.h"
#include "platform/visa/visa.h"

namespace quarvelo::visa {

class Session {
 public:
  static constexpr ViUInt32 kDefaultTimeoutMs = 2000;
  static constexpr std::size_t kWriteBufferSize = 4096;

  explicit Session(std::unique_ptr<Transport> transport);
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  void SetTimeout(ViUInt32 timeout_ms);
  ViUInt32 timeout() const;

  ViStatus Write(std::span<const std::byte> data, ViUInt32* written);
  ViStatus Read(std::span<std::byte> buffer, ViUInt32* count);
  ViStatus Flush(ViUInt16 mask);
  ViStatus Printf(std::string_view format, VaArgs* args);
  ViStatus Scanf(std::string_view format, VaArgs* args);
  // Device clear; whatever the session buffered in either direction goes too.
  ViStatus Clear();
  ViStatus ReadStatusByte(ViUInt16* status_byte);

 private:
  class WriteBuffer;

  // Sends bytes of the current outgoing message; the first bytes of a new message first drop
  // whatever is left of the previous response, as the instrument itself does, so that a late
  // or over-long reply cannot be taken for the answer to this message.
  ViStatus Send(std::span<const std::byte> data, bool end);
  ViStatus SendPending(bool end);

  mutable std::mutex mutex_;
  std::unique_ptr<Transport> transport_;
  MessageReader reader_;
  std::string pending_output_;
  bool message_open_ = false;  // part of an outgoing message was sent without END
  ViUInt32 timeout_ms_ = kDefaultTimeoutMs;
};

}  // namespace quarvelo::visa

#endif  // QUARVELO_PLATFORM_VISA_SESSION_H_
