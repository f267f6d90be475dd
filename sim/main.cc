// quarvelo-scope-sim: the simulated oscilloscope as a program. Serves until SIGINT/SIGTERM.
#include <csignal>
#include <cstdio>
#include <string>
#include <vector>

#include "sim/command_line.h"
#include "sim/server/mdns_announcer.h"
#include "sim/simulator.h"

int main(int argc, char** argv) {
  using quarvelo::sim::CommandLine;
  using quarvelo::sim::Simulator;
  CommandLine command_line =
      quarvelo::sim::ParseCommandLine(std::vector<std::string>(argv + 1, argv + argc));
  if (!command_line.error.empty() || command_line.help) {
    if (!command_line.error.empty()) std::fprintf(stderr, "%s\n", command_line.error.c_str());
    std::fputs(quarvelo::sim::Usage(), command_line.help ? stdout : stderr);
    return command_line.help ? 0 : 2;
  }
  // Block the stop signals before any server thread starts, so that only sigwait sees them.
  sigset_t stop_signals;
  sigemptyset(&stop_signals);
  sigaddset(&stop_signals, SIGINT);
  sigaddset(&stop_signals, SIGTERM);
  pthread_sigmask(SIG_BLOCK, &stop_signals, nullptr);
  std::signal(SIGPIPE, SIG_IGN);

  quarvelo::sim::SimulatorOptions options = command_line.options;
  std::string error;
  std::unique_ptr<Simulator> simulator = Simulator::Start(options, &error);
  std::string notice;
  if (!simulator && options.portmapper_port > 0 && options.vxi11_port >= 0) {
    // Port 111 needs privileges (or is taken by the system's rpcbind): serve without our own
    // portmapper and say where the VXI-11 core channel is.
    notice = "portmapper not started (" + error + ")";
    options.portmapper_port = -1;
    error.clear();
    simulator = Simulator::Start(options, &error);
  }
  if (!simulator) {
    std::fprintf(stderr, "quarvelo-scope-sim: %s\n", error.c_str());
    return 1;
  }
  std::printf("quarvelo-scope-sim ports: socket=%u vxi11=%u portmapper=%u hislip=%u\n",
              simulator->socket_port(), simulator->vxi11_port(), simulator->portmapper_port(),
              simulator->hislip_port());
  if (!notice.empty()) {
    std::printf("%s; VXI-11 clients must be given the core channel port %u\n", notice.c_str(),
                simulator->vxi11_port());
  }
  std::printf("model %s, %d channels, %s\n", options.model.c_str(), options.channels,
              options.has_wgen && options.has_dvm ? "WGEN and DVM"
              : options.has_wgen                  ? "WGEN"
              : options.has_dvm                   ? "DVM"
                                                  : "no options");
  std::printf("signals %s, latency %g ms per exchange\n", options.signal_preset.c_str(),
              options.latency_ms);
  quarvelo::sim::MdnsAnnouncer announcer;
  if (command_line.announce) {
    std::string why;
    const quarvelo::sim::AnnouncedPorts ports{simulator->portmapper_port(),
                                              simulator->hislip_port(), simulator->socket_port()};
    if (announcer.Start("QUARVELO simulated oscilloscope", ports, &why)) {
      std::printf("announced by mDNS\n");
    } else {
      std::printf("mDNS announcement not made (%s)\n", why.c_str());
    }
  }
  std::fflush(stdout);
  int received = 0;
  sigwait(&stop_signals, &received);
  simulator->Stop();
  return 0;
}
