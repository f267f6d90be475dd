// Serves the LAN test instrument (test_handler.h) over VXI-11 (with its portmapper) and
// HiSLIP on the ports given, for trying peer clients by hand:
//   quarvelo_lan_test_server <portmapper port> <core port> <hislip port>   (0 = any)
// Prints the bound ports, then serves until its standard input closes.
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <string>

#include "sim/server/hislip_server.h"
#include "sim/server/portmapper_server.h"
#include "sim/server/vxi11_server.h"
#include "tests/visa/test_instrument.h"

int main(int argc, char** argv) {
  if (argc != 4) {
    std::cerr << "usage: " << argv[0] << " <portmapper port> <core port> <hislip port>\n";
    return 2;
  }
  const auto port = [&](int i) { return static_cast<std::uint16_t>(std::atoi(argv[i])); };
  quarvelo::testing::CannedHandler handler;
  quarvelo::sim::Vxi11Server core(handler, "127.0.0.1", port(2));
  std::string error;
  if (!core.Start(&error)) {
    std::cerr << error << "\n";
    return 1;
  }
  quarvelo::sim::PortmapperServer portmapper("127.0.0.1", port(1), core.port());
  quarvelo::sim::HislipServer hislip(handler, "127.0.0.1", port(3));
  if (!portmapper.Start(&error) || !hislip.Start(&error)) {
    std::cerr << error << "\n";
    return 1;
  }
  std::cout << "portmapper " << portmapper.port() << " core " << core.port() << " hislip "
            << hislip.port() << std::endl;
  while (std::getchar() != EOF) {
  }
  return 0;
}
