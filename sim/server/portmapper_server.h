// A portmapper (program 100000, version 2) that knows one registration: the VXI-11 core
// channel on its TCP port. Answers GETPORT, DUMP and NULL over TCP and, when the port can be
// bound for it too, over UDP (discovery broadcasts ask there). Calls for versions 3 and 4
// get a version mismatch naming 2, which makes rpcbind-style clients fall back.
#ifndef QUARVELO_SIM_SERVER_PORTMAPPER_SERVER_H_
#define QUARVELO_SIM_SERVER_PORTMAPPER_SERVER_H_

#include <cstdint>
#include <span>
#include <string>
#include <thread>

#include "platform/visa/vxi11/xdr.h"
#include "sim/server/tcp_listener.h"

namespace quarvelo::sim {

class PortmapperServer {
 public:
  PortmapperServer(std::string bind_address, std::uint16_t port, std::uint16_t vxi11_core_port);
  ~PortmapperServer();
  PortmapperServer(const PortmapperServer&) = delete;
  PortmapperServer& operator=(const PortmapperServer&) = delete;

  // Some instruments' portmappers omit the last-fragment bit of their replies; call before
  // Start to do the same over TCP.
  void set_omit_last_fragment_bit(bool omit) { omit_last_fragment_bit_ = omit; }

  bool Start(std::string* error);
  std::uint16_t port() const { return port_; }
  bool serves_udp() const { return udp_.valid(); }
  void Stop();

 private:
  void Run();

  std::string bind_address_;
  std::uint16_t requested_port_;
  std::uint16_t core_port_;
  std::uint16_t port_ = 0;
  bool omit_last_fragment_bit_ = false;
  Socket listener_;
  Socket udp_;
  StopSignal stop_;
  std::thread thread_;
};

// The reply to one portmapper call record (without record marking); false when the record
// is not a call and deserves no answer.
bool AnswerPortmapperCall(std::span<const std::byte> call, std::uint16_t vxi11_core_port,
                          visa::xdr::Writer* reply);

}  // namespace quarvelo::sim

#endif  // QUARVELO_SIM_SERVER_PORTMAPPER_SERVER_H_
