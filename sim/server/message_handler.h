// The seam between the simulated instrument and the transport servers that carry its
// messages (raw socket, VXI-11, HiSLIP, simulated USB-TMC). A server collects one complete
// program message (up to END, or up to LF on a raw socket), hands it to the handler, and sends
// back whatever the handler answers, honouring the fault directives that come with it.
#ifndef QUARVELO_SIM_SERVER_MESSAGE_HANDLER_H_
#define QUARVELO_SIM_SERVER_MESSAGE_HANDLER_H_

#include <chrono>
#include <string>
#include <string_view>

namespace quarvelo::sim {

struct HandlerResponse {
  // The response message, LF included; empty when the message asked nothing (or the
  // instrument was told never to answer). May be deliberately cut short or garbled.
  std::string reply;
  // Wait this long before making the reply available.
  std::chrono::milliseconds delay{0};
  // Close the connection (after sending `reply`, if any) instead of carrying on.
  bool drop_connection = false;
};

class MessageHandler {
 public:
  virtual ~MessageHandler() = default;

  // One complete program message, without its terminating LF. Called from server threads;
  // implementations serialise access themselves.
  virtual HandlerResponse HandleMessage(std::string_view message) = 0;

  // A new message arrived while the previous reply was still unread (VXI-11, HiSLIP,
  // USB-TMC); the instrument discards that reply and queues -410 "Query INTERRUPTED".
  virtual void ReplyInterrupted() = 0;

  // Device clear from the transport: discard pending input and output.
  virtual void DeviceClear() = 0;
};

}  // namespace quarvelo::sim

#endif  // QUARVELO_SIM_SERVER_MESSAGE_HANDLER_H_
