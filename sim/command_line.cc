#include "sim/command_line.h"

#include <algorithm>
#include <cstdlib>

#include "sim/model/signal_presets.h"

namespace quarvelo::sim {
namespace {

bool ParsePort(const std::string& text, int* port) {
  char* end = nullptr;
  long value = std::strtol(text.c_str(), &end, 10);
  if (text.empty() || *end != '\0' || value < -1 || value > 65535) return false;
  *port = static_cast<int>(value);
  return true;
}

}  // namespace

const char* Usage() {
  return "usage: quarvelo-scope-sim [--bind ADDR] [--socket-port N] [--vxi11-port N]\n"
         "         [--portmapper-port N] [--hislip-port N] [--model 2000X|3000X]\n"
         "         [--channels 2|4] [--options wgen,dvm,memup|none] [--signals probes|flat]\n"
         "         [--latency MS] [--dvm-settle MS] [--identity TEXT] [--log FILE]\n"
         "         [--announce]\n"
         "A port of 0 takes a free one, -1 leaves that transport off. The first line printed\n"
         "lists the ports bound. --log - logs the traffic on standard output.\n"
         "--latency 1 answers at the pace of an instrument on a LAN (1 ms per exchange).\n"
         "--announce announces the services by mDNS through the Avahi daemon (with --bind\n"
         "0.0.0.0, so that the announced addresses reach it).\n";
}

CommandLine ParseCommandLine(const std::vector<std::string>& arguments) {
  CommandLine result;
  SimulatorOptions& options = result.options;
  options.socket_port = 5025;
  options.vxi11_port = 0;
  options.portmapper_port = 111;
  options.hislip_port = 4880;
  options.dvm_settle_ms = 250;
  for (size_t i = 0; i < arguments.size(); ++i) {
    const std::string& name = arguments[i];
    if (name == "--help" || name == "-h") {
      result.help = true;
      continue;
    }
    if (name == "--announce") {
      result.announce = true;
      continue;
    }
    if (i + 1 >= arguments.size()) {
      result.error = "missing value after " + name;
      return result;
    }
    const std::string& value = arguments[++i];
    bool ok = true;
    if (name == "--bind") {
      options.bind_address = value;
    } else if (name == "--socket-port") {
      ok = ParsePort(value, &options.socket_port);
    } else if (name == "--vxi11-port") {
      ok = ParsePort(value, &options.vxi11_port);
    } else if (name == "--portmapper-port") {
      ok = ParsePort(value, &options.portmapper_port);
    } else if (name == "--hislip-port") {
      ok = ParsePort(value, &options.hislip_port);
    } else if (name == "--model") {
      ok = value == "2000X" || value == "3000X";
      options.model = value;
    } else if (name == "--channels") {
      ok = value == "2" || value == "4";
      options.channels = std::atoi(value.c_str());
    } else if (name == "--options") {
      options.has_wgen = value.find("wgen") != std::string::npos;
      options.has_dvm = value.find("dvm") != std::string::npos;
      options.has_memory_upgrade = value.find("memup") != std::string::npos;
      ok = value == "none" || options.has_wgen || options.has_dvm || options.has_memory_upgrade;
    } else if (name == "--signals") {
      ok = SignalPresetNamed(value).has_value();
      options.signal_preset = value;
    } else if (name == "--latency") {
      char* end = nullptr;
      options.latency_ms = std::strtod(value.c_str(), &end);
      ok = !value.empty() && *end == '\0' && options.latency_ms >= 0 && options.latency_ms <= 1e4;
    } else if (name == "--dvm-settle") {
      char* end = nullptr;
      options.dvm_settle_ms = std::strtod(value.c_str(), &end);
      ok = !value.empty() && *end == '\0' && options.dvm_settle_ms >= 0;
    } else if (name == "--identity") {
      options.identity = value;
      ok = std::count(value.begin(), value.end(), ',') == 3;
    } else if (name == "--log") {
      options.log_file = value;
    } else {
      result.error = "unknown option " + name;
      return result;
    }
    if (!ok) {
      result.error = "bad value for ";
      result.error += name;
      result.error += ": ";
      result.error += value;
      return result;
    }
  }
  return result;
}

}  // namespace quarvelo::sim
