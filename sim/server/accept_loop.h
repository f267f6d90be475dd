// What the simulator's TCP protocol servers share: the listening socket, the thread that
// accepts one client connection after another and hands each to the server, and the stop that
// ends it. The stop signal wakes every wait given it; a connection the server reads with plain
// blocking receives is registered with WakeOnStop and shut down at stop to wake that read.
#ifndef QUARVELO_SIM_SERVER_ACCEPT_LOOP_H_
#define QUARVELO_SIM_SERVER_ACCEPT_LOOP_H_

#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <thread>

#include "sim/server/tcp_listener.h"

namespace quarvelo::sim {

class AcceptLoop {
 public:
  using ServeFunction = std::function<void(Socket connection)>;

  AcceptLoop() = default;
  ~AcceptLoop() { Stop(); }
  AcceptLoop(const AcceptLoop&) = delete;
  AcceptLoop& operator=(const AcceptLoop&) = delete;

  // Binds and starts serving on a thread of its own; true at once when already running, false
  // with `error` filled when the port cannot be bound.
  bool Start(const std::string& bind_address, std::uint16_t port, ServeFunction serve,
             std::string* error);
  // Ends the connection being served and the thread; safe to call more than once.
  void Stop();

  // The bound port (the ephemeral one when started with 0), 0 before Start.
  std::uint16_t port() const { return port_; }
  int listener() const { return listener_.fd(); }
  const StopSignal& stop() const { return stop_; }

  // Lets the serving thread block in plain receives on `fd`: Stop shuts it down. False once
  // stopping, when the caller must end at once. Forget it before the descriptor closes, so
  // that Stop never shuts down a reused number.
  bool WakeOnStop(int fd);
  void Forget(int fd);

 private:
  void Run();

  ServeFunction serve_;
  std::uint16_t port_ = 0;
  Socket listener_;
  StopSignal stop_;
  std::mutex mutex_;
  int blocking_fd_ = -1;
  bool stopping_ = false;
  std::thread thread_;
};

}  // namespace quarvelo::sim

#endif  // QUARVELO_SIM_SERVER_ACCEPT_LOOP_H_
