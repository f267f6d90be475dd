// USB-TMC headers on the wire and interface matching; the transport against the simulated
// device is in transport_loopback_test.cc.
#include <gtest/gtest.h>

#include <array>
#include <vector>

#include "platform/visa/usbtmc/usb_backend.h"
#include "platform/visa/usbtmc/usbtmc_protocol.h"

namespace quarvelo::visa {
namespace {

TEST(UsbtmcProtocol, HeadersOnTheWire) {
  const usbtmc::Header out = usbtmc::DevDepMsgOutHeader(7, 0x01020304, true);
  const std::array<int, 12> expected_out = {1, 7, 0xF8, 0, 4, 3, 2, 1, 1, 0, 0, 0};
  for (int k = 0; k < 12; ++k) EXPECT_EQ(std::to_integer<int>(out[k]), expected_out[k]) << k;
  const usbtmc::Header request = usbtmc::RequestDevDepMsgInHeader(255, 1 << 20);
  const std::array<int, 12> expected_request = {2, 255, 0, 0, 0, 0, 0x10, 0, 0, 0, 0, 0};
  for (int k = 0; k < 12; ++k) EXPECT_EQ(std::to_integer<int>(request[k]), expected_request[k]);
  EXPECT_EQ(usbtmc::PaddedLength(13), 16u);
  EXPECT_EQ(usbtmc::PaddedLength(16), 16u);
  EXPECT_EQ(usbtmc::PaddedLength(0), 0u);
}

TEST(UsbtmcProtocol, InHeaderChecks) {
  usbtmc::Header header = usbtmc::DevDepMsgInHeader(9, 5, true);
  const auto parsed = usbtmc::ParseDevDepMsgInHeader(header);
  ASSERT_TRUE(parsed);
  EXPECT_EQ(parsed->tag, 9);
  EXPECT_EQ(parsed->transfer_size, 5u);
  EXPECT_TRUE(parsed->end_of_message);
  usbtmc::Header bad_inverse = header;
  bad_inverse[2] = std::byte{0};
  EXPECT_FALSE(usbtmc::ParseDevDepMsgInHeader(bad_inverse));
  usbtmc::Header bad_id = header;
  bad_id[0] = std::byte{1};
  EXPECT_FALSE(usbtmc::ParseDevDepMsgInHeader(bad_id));
}

TEST(UsbInterfaceMatch, PicksTheNamedTestAndMeasurementInterface) {
  const UsbInterfaceInfo hid{0, 0x03, 0x00, 0x83, 0, 8};
  const UsbInterfaceInfo tmc1{1, 0xFE, 0x03, 0x81, 0x02, 512};
  const UsbInterfaceInfo tmc2{2, 0xFE, 0x03, 0x84, 0x05, 512};
  const UsbInterfaceInfo dfu{3, 0xFE, 0x01, 0x86, 0x07, 512};
  const UsbDeviceInfo device{0x0957, 0x1797, "MY57233636", {hid, tmc1, tmc2, dfu}};
  struct Case {
    UsbAddress address;
    int expected;  // interface number, -1: no match
  };
  const std::vector<Case> cases = {
      {{0, 0x0957, 0x1797, "", "", "MY57233636", 0}, 1},
      {{0, 0x0957, 0x1797, "", "", "MY57233636", 2}, 2},
      {{0, 0x0957, 0x1797, "", "", "MY57233636", 3}, 1},
      {{0, 0x0957, 0x1797, "", "", "OTHER", 0}, -1},
      {{0, 0x2A8D, 0x1797, "", "", "MY57233636", 0}, -1},
      {{0, 0x0957, 0x17A8, "", "", "MY57233636", 0}, -1},
  };
  for (const Case& c : cases) {
    const auto match = MatchUsbtmcInterface(device, c.address);
    EXPECT_EQ(match ? match->number : -1, c.expected) << c.address.serial;
  }
  const UsbDeviceInfo no_tmc{0x0957, 0x1797, "S", {hid, dfu}};
  EXPECT_FALSE(MatchUsbtmcInterface(no_tmc, {0, 0x0957, 0x1797, "", "", "S", 0}));
}

}  // namespace
}  // namespace quarvelo::visa
