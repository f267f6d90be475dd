// The simulated instrument's VXI-11 core channel: ONC RPC over TCP serving create_link,
// device_write, device_read, device_clear, destroy_link and the other core procedures, one
// client connection after another, on its own thread. The portmapper is a separate server
// (portmapper_server.h) that points clients here.
#ifndef QUARVELO_SIM_SERVER_VXI11_SERVER_H_
#define QUARVELO_SIM_SERVER_VXI11_SERVER_H_

#include <atomic>
#include <chrono>
#include <cstdint>
#include <string>

#include "sim/server/accept_loop.h"
#include "sim/server/message_handler.h"

namespace quarvelo::sim {

struct Vxi11ServerOptions {
  // The maxRecvSize announced by create_link: the largest device_write the server takes.
  std::uint32_t max_recv_size = 64 * 1024;
  // The most bytes one device_read returns, whatever the client asks (0 = as asked).
  std::uint32_t max_read_size = 0;
  // Links open at once, over all connections; create_link beyond answers error 9. A link
  // ends only with destroy_link, as on instruments that never notice a client gone.
  int max_links = 16;
  // A device_read that runs out of io_timeout is answered (error 15) this much later, as
  // real instruments answer a little after io_timeout.
  std::chrono::milliseconds late_timeout_reply{0};
};

class Vxi11Server {
 public:
  Vxi11Server(MessageHandler& handler, std::string bind_address, std::uint16_t core_port,
              Vxi11ServerOptions options = {});
  ~Vxi11Server();
  Vxi11Server(const Vxi11Server&) = delete;
  Vxi11Server& operator=(const Vxi11Server&) = delete;

  // Binds and starts serving; false with `error` filled when the port cannot be bound.
  bool Start(std::string* error);
  // The bound port (the ephemeral one when constructed with 0), 0 before Start.
  std::uint16_t port() const { return loop_.port(); }
  int live_links() const { return live_links_.load(); }
  // Ends the current connection and the thread; safe to call more than once.
  void Stop();

 private:
  void Serve(Socket connection);
  void Refuse(Socket connection);

  MessageHandler& handler_;
  std::string bind_address_;
  std::uint16_t requested_port_;
  Vxi11ServerOptions options_;
  std::atomic<std::int32_t> next_lid_{1};
  std::atomic<int> live_links_{0};
  AcceptLoop loop_;
};

}  // namespace quarvelo::sim

#endif  // QUARVELO_SIM_SERVER_VXI11_SERVER_H_
