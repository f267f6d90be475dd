// What the simulator's TCP protocol servers share: the listening socket, a thread that serves
// one client connection after another, a thread that accepts connections meanwhile, keeps a
// few waiting for their turn and refuses the rest at once, and the stop that ends both. The
// stop signal wakes every wait given it; a connection the server reads with plain blocking
// receives is registered with WakeOnStop and shut down at stop to wake that read.
#ifndef QUARVELO_SIM_SERVER_ACCEPT_LOOP_H_
#define QUARVELO_SIM_SERVER_ACCEPT_LOOP_H_

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <mutex>
#include <string>
#include <thread>

#include "sim/server/tcp_listener.h"

namespace quarvelo::sim {

class AcceptLoop {
 public:
  using ServeFunction = std::function<void(Socket connection)>;
  // Tells a client beyond the limit that it is refused (in its protocol's words) before the
  // connection closes.
  using RefuseFunction = std::function<void(Socket connection)>;

  // Connections held at once, those being served and those waiting their turn; one more is
  // refused.
  static constexpr std::size_t kMaxConnections = 10;

  AcceptLoop() = default;
  ~AcceptLoop() { Stop(); }
  AcceptLoop(const AcceptLoop&) = delete;
  AcceptLoop& operator=(const AcceptLoop&) = delete;

  // Binds and starts serving on threads of its own; true at once when already running, false
  // with `error` filled when the port cannot be bound.
  bool Start(const std::string& bind_address, std::uint16_t port, ServeFunction serve,
             std::string* error, RefuseFunction refuse = {});
  // Ends the connection being served and the threads; safe to call more than once.
  void Stop();

  // The bound port (the ephemeral one when started with 0), 0 before Start.
  std::uint16_t port() const { return port_; }
  const StopSignal& stop() const { return stop_; }

  // The next connection in turn (a HiSLIP client's second channel, for one), or an invalid
  // socket at the deadline or stop.
  Socket NextConnection(ServerDeadline deadline);

  // Lets the serving thread block in plain receives on `fd`: Stop shuts it down. False once
  // stopping, when the caller must end at once. Forget it before the descriptor closes, so
  // that Stop never shuts down a reused number.
  bool WakeOnStop(int fd);
  void Forget(int fd);

 private:
  void Run();
  void AcceptClients();

  ServeFunction serve_;
  RefuseFunction refuse_;
  std::uint16_t port_ = 0;
  Socket listener_;
  StopSignal stop_;
  std::mutex mutex_;
  std::condition_variable arrived_;
  std::deque<Socket> waiting_;
  std::size_t serving_ = 0;  // connections handed to the client being served
  int blocking_fd_ = -1;
  bool stopping_ = false;
  std::thread thread_;
  std::thread acceptor_;
};

}  // namespace quarvelo::sim

#endif  // QUARVELO_SIM_SERVER_ACCEPT_LOOP_H_
