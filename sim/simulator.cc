#include "sim/simulator.h"

#include <memory>
#include <utility>

#include "sim/model/instrument.h"
#include "sim/model/signal_presets.h"
#include "sim/server/portmapper_server.h"
#include "sim/server/socket_server.h"
#include "sim/server/vxi11_server.h"
#include "sim/traffic_log.h"
#if __has_include("sim/server/hislip_server.h")
#include "sim/server/hislip_server.h"
#define QUARVELO_SIM_HAS_HISLIP 1
#endif

namespace quarvelo::sim {
namespace {

InstrumentConfig ConfigFrom(const SimulatorOptions& options) {
  InstrumentConfig config;
  config.is_3000x = options.model != "2000X";
  config.channels = options.channels == 2 ? 2 : 4;
  config.has_wgen = options.has_wgen;
  config.has_dvm = options.has_dvm;
  config.signal_preset = SignalPresetNamed(options.signal_preset).value_or(SignalPreset::kProbes);
  config.latency_ms = options.latency_ms;
  config.has_memory_upgrade = options.has_memory_upgrade && config.is_3000x;
  config.identity = options.identity;
  config.dvm_settle_ms = options.dvm_settle_ms;
  return config;
}

class SimulatorImpl : public Simulator {
 public:
  explicit SimulatorImpl(const SimulatorOptions& options)
      : options_(options), instrument_(ConfigFrom(options)), logging_(instrument_, log_) {}
  ~SimulatorImpl() override { Stop(); }

  bool StartServers(std::string* error) {
    if (!log_.Open(options_.log_file, error)) return false;
    const std::string& address = options_.bind_address;
    if (options_.socket_port >= 0) {
      socket_ = std::make_unique<SocketServer>(logging_, address,
                                               static_cast<std::uint16_t>(options_.socket_port));
      if (!socket_->Start(error)) return false;
    }
    if (options_.vxi11_port >= 0) {
      vxi11_ = std::make_unique<Vxi11Server>(logging_, address,
                                             static_cast<std::uint16_t>(options_.vxi11_port));
      if (!vxi11_->Start(error)) return false;
      if (options_.portmapper_port >= 0) {
        portmapper_ = std::make_unique<PortmapperServer>(
            address, static_cast<std::uint16_t>(options_.portmapper_port), vxi11_->port());
        if (!portmapper_->Start(error)) return false;
      }
    }
#ifdef QUARVELO_SIM_HAS_HISLIP
    if (options_.hislip_port >= 0) {
      hislip_ = std::make_unique<HislipServer>(logging_, address,
                                               static_cast<std::uint16_t>(options_.hislip_port));
      if (!hislip_->Start(error)) return false;
    }
#endif
    return true;
  }

  std::uint16_t socket_port() const override { return socket_ ? socket_->port() : 0; }
  std::uint16_t vxi11_port() const override { return vxi11_ ? vxi11_->port() : 0; }
  std::uint16_t portmapper_port() const override { return portmapper_ ? portmapper_->port() : 0; }
  std::uint16_t hislip_port() const override {
#ifdef QUARVELO_SIM_HAS_HISLIP
    return hislip_ ? hislip_->port() : 0;
#else
    return 0;
#endif
  }

  std::string SocketResource() const override {
    return "TCPIP0::" + options_.bind_address + "::" + std::to_string(socket_port()) + "::SOCKET";
  }
  std::string HislipResource() const override {
    std::uint16_t port = hislip_port();
    std::string device = port == 4880 ? "hislip0" : "hislip0," + std::to_string(port);
    return "TCPIP0::" + options_.bind_address + "::" + device + "::INSTR";
  }

  std::string Execute(std::string_view message) override { return instrument_.Execute(message); }

  std::vector<TrafficEntry> Traffic() const override { return log_.Entries(); }
  std::vector<std::string> ReceivedMessages() const override {
    std::vector<std::string> messages;
    for (const TrafficEntry& entry : log_.Entries()) {
      if (entry.direction == TrafficEntry::Direction::kReceived) messages.push_back(entry.text);
    }
    return messages;
  }
  void ClearTraffic() override { log_.Clear(); }

  void Stop() override {
    if (socket_) socket_->Stop();
    if (portmapper_) portmapper_->Stop();
    if (vxi11_) vxi11_->Stop();
#ifdef QUARVELO_SIM_HAS_HISLIP
    if (hislip_) hislip_->Stop();
#endif
  }

 private:
  SimulatorOptions options_;
  Instrument instrument_;
  TrafficLog log_;
  LoggingHandler logging_;
  std::unique_ptr<SocketServer> socket_;
  std::unique_ptr<Vxi11Server> vxi11_;
  std::unique_ptr<PortmapperServer> portmapper_;
#ifdef QUARVELO_SIM_HAS_HISLIP
  std::unique_ptr<HislipServer> hislip_;
#endif
};

}  // namespace

std::unique_ptr<Simulator> Simulator::Start(const SimulatorOptions& options, std::string* error) {
  std::string ignored;
  std::string& message = error != nullptr ? *error : ignored;
  if (!SignalPresetNamed(options.signal_preset)) {
    message = "unknown signal preset " + options.signal_preset;
    return nullptr;
  }
  auto simulator = std::make_unique<SimulatorImpl>(options);
  if (!simulator->StartServers(&message)) return nullptr;
  return simulator;
}

}  // namespace quarvelo::sim
