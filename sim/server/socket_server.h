// Raw SCPI over TCP (the instrument's port 5025): one client connection after another on its
// own thread; each LF-terminated line is one program message, each reply goes back as is.
#ifndef QUARVELO_SIM_SERVER_SOCKET_SERVER_H_
#define QUARVELO_SIM_SERVER_SOCKET_SERVER_H_

#include <cstdint>
#include <string>

#include "sim/server/accept_loop.h"
#include "sim/server/message_handler.h"

namespace quarvelo::sim {

class SocketServer {
 public:
  SocketServer(MessageHandler& handler, std::string bind_address, std::uint16_t port);
  ~SocketServer();
  SocketServer(const SocketServer&) = delete;
  SocketServer& operator=(const SocketServer&) = delete;

  // Binds and starts serving; false with `error` filled when the port cannot be bound.
  bool Start(std::string* error);
  std::uint16_t port() const { return loop_.port(); }
  // Ends the current connection and the thread; safe to call more than once.
  void Stop();

 private:
  void Serve(Socket connection);

  MessageHandler& handler_;
  std::string bind_address_;
  std::uint16_t requested_port_;
  AcceptLoop loop_;
};

}  // namespace quarvelo::sim

#endif  // QUARVELO_SIM_SERVER_SOCKET_SERVER_H_
