// The simulated oscilloscope as a library: the instrument model served over every transport
// on loopback. Tests, benchmarks and the demo start one in-process on ephemeral ports.
#ifndef QUARVELO_SIM_SIMULATOR_H_
#define QUARVELO_SIM_SIMULATOR_H_

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace quarvelo::sim {

struct SimulatorOptions {
  std::string model = "3000X";  // "2000X" or "3000X"
  int channels = 4;             // 2 or 4
  bool has_wgen = true;
  bool has_dvm = true;
  // The inputs' signals at start-up: "probes" (a scope with its probes connected) or "flat"
  // (nothing at all, not even noise, for tests that need silence).
  std::string signal_preset = "probes";
  // A real instrument's pace: milliseconds each exchange takes, and the slow commands'
  // time built on it (sim/model/pace.h); 0 answers at once.
  double latency_ms = 0;
  bool has_memory_upgrade = false;  // 3000X: the 4 Mpts option
  std::string identity;             // "*IDN?" reply; empty: the family's own
  // Milliseconds after ":DVM:ENABle 1" during which ":DVM:CURRent?" has no value yet.
  double dvm_settle_ms = 0;
  std::string bind_address = "127.0.0.1";
  // 0 picks an ephemeral port; -1 leaves that transport off.
  int socket_port = 0;
  int vxi11_port = 0;
  int portmapper_port = 0;
  int hislip_port = 0;
  std::string log_file;  // empty: no log file (the in-memory traffic log is always kept)
};

// One entry of the traffic log: a message received or a reply sent.
struct TrafficEntry {
  enum class Direction { kReceived, kSent };
  Direction direction;
  std::string text;  // the message without its LF; binary replies summarised
  double seconds;    // since the simulator started
};

class Simulator {
 public:
  virtual ~Simulator() = default;

  // Starts the servers; nullptr with *error set when a port cannot be bound.
  static std::unique_ptr<Simulator> Start(const SimulatorOptions& options, std::string* error);

  // The ports actually bound (0 when that transport is off).
  virtual std::uint16_t socket_port() const = 0;
  virtual std::uint16_t vxi11_port() const = 0;
  virtual std::uint16_t portmapper_port() const = 0;
  virtual std::uint16_t hislip_port() const = 0;

  // VISA resource strings that reach this simulator, e.g. "TCPIP0::127.0.0.1::5025::SOCKET".
  virtual std::string SocketResource() const = 0;
  virtual std::string HislipResource() const = 0;

  // Runs one program message against the model directly (no transport), as a test's set-up
  // step; returns the reply without its LF ("" when none).
  virtual std::string Execute(std::string_view message) = 0;

  virtual std::vector<TrafficEntry> Traffic() const = 0;
  // Only the messages received, in order (the SCPI lines the program sent).
  virtual std::vector<std::string> ReceivedMessages() const = 0;
  virtual void ClearTraffic() = 0;

  // Closes every connection and stops serving; later connections are refused.
  virtual void Stop() = 0;
};

}  // namespace quarvelo::sim

#endif  // QUARVELO_SIM_SIMULATOR_H_
