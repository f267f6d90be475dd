// The simulated instrument's HiSLIP server: Initialize on the synchronous channel,
// AsyncInitialize on the asynchronous one, then Data/DataEnd messages answered with the id of
// the message they answer, AsyncMaxMsgSize, device clear, status query and lock requests.
// Serves one client (its two connections) after another on its own thread, in synchronised
// mode or, as some instruments do, starting overlapped.
#ifndef QUARVELO_SIM_SERVER_HISLIP_SERVER_H_
#define QUARVELO_SIM_SERVER_HISLIP_SERVER_H_

#include <cstdint>
#include <string>

#include "sim/server/accept_loop.h"
#include "sim/server/message_handler.h"

namespace quarvelo::sim {

struct HislipServerOptions {
  // The largest message the server takes, its 16-byte header included, announced in
  // AsyncMaxMsgSizeResponse.
  std::uint64_t max_message_size = 1024 * 1024;
  // Starts in overlapped mode (InitializeResponse control bit 0) and numbers its responses
  // with its own counter; prefers overlapped mode in AsyncDeviceClearAcknowledge.
  bool overlapped = false;
  bool prefer_overlapped = false;
  // Grants synchronised mode when DeviceClearComplete asks for it.
  bool grant_synchronized = true;
  // Sends AsyncServiceRequest on the asynchronous channel after every response.
  bool service_requests = false;
};

class HislipServer {
 public:
  HislipServer(MessageHandler& handler, std::string bind_address, std::uint16_t port,
               HislipServerOptions options = {});
  ~HislipServer();
  HislipServer(const HislipServer&) = delete;
  HislipServer& operator=(const HislipServer&) = delete;

  bool Start(std::string* error);
  std::uint16_t port() const { return loop_.port(); }
  void Stop();

 private:
  void Serve(Socket sync);

  MessageHandler& handler_;
  std::string bind_address_;
  std::uint16_t requested_port_;
  HislipServerOptions options_;
  std::uint16_t next_session_id_ = 1;
  AcceptLoop loop_;
};

}  // namespace quarvelo::sim

#endif  // QUARVELO_SIM_SERVER_HISLIP_SERVER_H_
