// A small scripted instrument on a loopback TCP port: it collects LF-terminated messages,
// asks the script what to do with each (reply, delay, drop the connection) and serves one
// connection after another until it is destroyed.
#ifndef QUARVELO_TESTS_VISA_LOOPBACK_SERVER_H_
#define QUARVELO_TESTS_VISA_LOOPBACK_SERVER_H_

#include <atomic>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "sim/server/message_handler.h"

namespace quarvelo::visa::testing {

class LoopbackServer {
 public:
  using Script = std::function<sim::HandlerResponse(std::string_view message)>;

  explicit LoopbackServer(Script script);
  ~LoopbackServer();
  LoopbackServer(const LoopbackServer&) = delete;
  LoopbackServer& operator=(const LoopbackServer&) = delete;

  std::uint16_t port() const { return port_; }
  std::string SocketResource() const;
  std::vector<std::string> Received() const;

 private:
  void Serve();
  void ServeConnection(int fd);
  bool SendAll(int fd, std::string_view data);

  Script script_;
  int listen_fd_ = -1;
  std::uint16_t port_ = 0;
  std::atomic<bool> stop_{false};
  mutable std::mutex mutex_;
  std::vector<std::string> received_;
  std::thread thread_;
};

// A port on which nothing listens (bound once, then released).
std::uint16_t UnusedPort();

}  // namespace quarvelo::visa::testing

#endif  // QUARVELO_TESTS_VISA_LOOPBACK_SERVER_H_
