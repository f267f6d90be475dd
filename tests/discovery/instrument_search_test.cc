#include "platform/discovery/instrument_search.h"

#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <utility>

#include "sim/server/portmapper_server.h"

namespace quarvelo::discovery {
namespace {

class FakeLister : public UsbLister {
 public:
  explicit FakeLister(std::vector<UsbListedDevice> devices) : devices_(std::move(devices)) {}
  std::vector<UsbListedDevice> List(std::span<const std::uint16_t> vendor_ids) override {
    asked_vendors.assign(vendor_ids.begin(), vendor_ids.end());
    return devices_;
  }
  std::vector<std::uint16_t> asked_vendors;

 private:
  std::vector<UsbListedDevice> devices_;
};

visa::UsbInterfaceInfo Interface(std::uint8_t number, std::uint8_t subclass = 3) {
  return {number, 0xFE, subclass, 0x81, 0x02};  // application class; subclass 3 is USB-TMC
}

UsbListedDevice Device(std::uint16_t vendor, std::uint16_t product, std::string serial,
                       std::vector<visa::UsbInterfaceInfo> interfaces, bool accessible = true) {
  return {{vendor, product, std::move(serial), std::move(interfaces)},
          "Keysight Technologies",
          "DSO-X 3034A",
          accessible};
}

std::vector<FoundInstrument> RunToEnd(InstrumentSearch& search) {
  while (search.Step(20)) {
  }
  return search.found();
}

TEST(InstrumentSearchTest, UsbListsTheMakersUsbtmcDevicesFromTheirDescriptors) {
  FakeLister lister({
      Device(0x2a8d, 0x1797, "MY1", {Interface(0)}),
      Device(0x0957, 0x17a6, "MY2", {Interface(0, 1), Interface(2)}),  // DFU first, TMC on 2
      Device(0x0957, 0x17a6, "", {Interface(0)}, /*accessible=*/false),
      Device(0x1234, 0x0001, "OTHER", {Interface(0)}),     // another maker
      Device(0x0957, 0x1799, "NOTMC", {Interface(0, 1)}),  // no USB-TMC interface
  });
  SearchOptions options;
  options.lan_addresses = {"not an address"};  // no LAN: the search ends after USB
  InstrumentSearch search(options, &lister);
  const std::vector<FoundInstrument> expected = {
      {"USB0::0x2A8D::0x1797::MY1::INSTR", "Keysight Technologies DSO-X 3034A"},
      {"USB0::0x0957::0x17A6::MY2::2::INSTR", "Keysight Technologies DSO-X 3034A"},
      {"USB0::0x0957::0x17A6::::INSTR",
       "Keysight Technologies DSO-X 3034A (no access: install the udev rules)"},
  };
  EXPECT_EQ(RunToEnd(search), expected);
  EXPECT_EQ(lister.asked_vendors, (std::vector<std::uint16_t>{0x0957, 0x2a8d}));
  EXPECT_FALSE(search.lan_problem().empty());
}

TEST(InstrumentSearchTest, AnnouncedServicesBecomeResourceStrings) {
  const struct {
    const char* type;
    std::uint16_t port;
    const char* resource;
  } cases[] = {
      {"_vxi-11._tcp", 111, "TCPIP0::10.0.0.7::inst0::INSTR"},
      {"_hislip._tcp", 4880, "TCPIP0::10.0.0.7::hislip0::INSTR"},
      {"_hislip._tcp", 4881, "TCPIP0::10.0.0.7::hislip0,4881::INSTR"},
      {"_scpi-raw._tcp", 5025, "TCPIP0::10.0.0.7::5025::SOCKET"},
      {"_http._tcp", 80, ""},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(MdnsResource(c.type, "10.0.0.7", c.port), c.resource) << c.type << c.port;
  }
}

// 192.0.2.0/24 is reserved for documentation: nothing there answers. A cancelled search is the
// settings dialog's find test (its second press).
TEST(InstrumentSearchTest, UnreachableSearchEndsWithinItsTimeLimit) {
  SearchOptions options;
  options.lan_addresses = {"192.0.2.1", "192.0.2.255"};
  options.answer_window_ms = 5000;
  options.time_limit_ms = 300;
  const auto start = std::chrono::steady_clock::now();
  InstrumentSearch search(options, nullptr);
  EXPECT_TRUE(RunToEnd(search).empty());
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(1500));
}

// A host whose portmapper answers the UDP call but whose TCP side never replies: it is listed
// without identity, and asking it costs its time-out, not more.
TEST(InstrumentSearchTest, SilentInstrumentIsListedUnidentifiedWithinItsTimeOut) {
  int udp = -1;
  int tcp = -1;
  sockaddr_in address{};
  socklen_t size = sizeof address;
  // A free UDP port whose TCP twin is free too: other tests hold TCP ports of their own, so
  // the pair is tried again when the TCP side is taken.
  for (int attempt = 0; attempt < 20 && tcp < 0; ++attempt) {
    if (udp >= 0) close(udp);
    udp = socket(AF_INET, SOCK_DGRAM | SOCK_NONBLOCK, 0);
    address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    size = sizeof address;
    ASSERT_EQ(bind(udp, reinterpret_cast<sockaddr*>(&address), size), 0);
    getsockname(udp, reinterpret_cast<sockaddr*>(&address), &size);
    // The same port over TCP accepts connections (backlog) and never reads them.
    tcp = socket(AF_INET, SOCK_STREAM, 0);
    if (bind(tcp, reinterpret_cast<sockaddr*>(&address), size) != 0) {
      close(tcp);
      tcp = -1;
    }
  }
  ASSERT_GE(tcp, 0);
  ASSERT_EQ(listen(tcp, 4), 0);
  const std::uint16_t port = ntohs(address.sin_port);

  SearchOptions options;
  options.portmapper_port = port;
  options.lan_addresses = {"127.0.0.1"};
  options.answer_window_ms = 100;
  options.idn_timeout_ms = 300;
  const auto start = std::chrono::steady_clock::now();
  InstrumentSearch search(options, nullptr);
  while (search.Step(20)) {
    std::byte call[512];
    sockaddr_in from{};
    socklen_t from_size = sizeof from;
    const ssize_t count =
        recvfrom(udp, call, sizeof call, 0, reinterpret_cast<sockaddr*>(&from), &from_size);
    visa::xdr::Writer reply;
    if (count > 0 &&
        sim::AnswerPortmapperCall(std::span(call, static_cast<std::size_t>(count)), 9999, &reply)) {
      sendto(udp, reply.bytes().data(), reply.bytes().size(), 0, reinterpret_cast<sockaddr*>(&from),
             from_size);
    }
  }
  const auto elapsed = std::chrono::steady_clock::now() - start;
  close(udp);
  close(tcp);
  const std::vector<FoundInstrument> expected = {
      {"TCPIP0::127.0.0.1:" + std::to_string(port) + "::inst0::INSTR", "no answer to *IDN?"}};
  EXPECT_EQ(search.found(), expected);
  EXPECT_LT(elapsed, std::chrono::milliseconds(1500));
}

}  // namespace
}  // namespace quarvelo::discovery
