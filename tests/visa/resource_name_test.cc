#include "platform/visa/resource_name.h"

#include <gtest/gtest.h>

namespace quarvelo::visa {
namespace {

TEST(ResourceName, GoodNamesParseToTheirCanonicalForm) {
  const struct {
    const char* name;
    const char* canonical;
  } cases[] = {
      {"TCPIP::1.2.3.4", "TCPIP0::1.2.3.4::inst0::INSTR"},
      {"TCPIP::1.2.3.4::INSTR", "TCPIP0::1.2.3.4::inst0::INSTR"},
      {"tcpip3::scope.lab::gpib0,7::instr", "TCPIP3::scope.lab::gpib0,7::INSTR"},
      {"TCPIP0::127.0.0.1:40111::inst0::INSTR", "TCPIP0::127.0.0.1:40111::inst0::INSTR"},
      {"TCPIP::[fe80::1]::INSTR", "TCPIP0::[fe80::1]::inst0::INSTR"},
      {"TCPIP0::10.0.0.5::5025::SOCKET", "TCPIP0::10.0.0.5::5025::SOCKET"},
      {"tcpip::MyScope::5025::socket", "TCPIP0::MyScope::5025::SOCKET"},
      {"TCPIP::[::1]::5025::SOCKET", "TCPIP0::[::1]::5025::SOCKET"},
      {"TCPIP::host::hislip0", "TCPIP0::host::hislip0::INSTR"},
      {"TCPIP::host::HiSLIP0,4881::INSTR", "TCPIP0::host::HiSLIP0,4881::INSTR"},
      {"USB::0x1234::125::A22-5::INSTR", "USB0::0x1234::125::A22-5::0::INSTR"},
      {"USB0::0x0957::0x1797::MY57233636::0::INSTR", "USB0::0x0957::0x1797::MY57233636::0::INSTR"},
      {"usb1::2391::6039::abc::2", "USB1::2391::6039::abc::2::INSTR"},
  };
  for (const auto& c : cases) {
    ResourceAddress address;
    ASSERT_EQ(ParseResourceName(c.name, &address), VI_SUCCESS) << c.name;
    EXPECT_EQ(CanonicalResourceName(address), c.canonical);
  }
}

// What the canonical forms above do not show: HiSLIP's default port and USB ids as numbers.
TEST(ResourceName, FieldsKeepTheirMeaning) {
  ResourceAddress address;
  ASSERT_EQ(ParseResourceName("TCPIP::h::hislip0", &address), VI_SUCCESS);
  EXPECT_EQ(std::get<HislipAddress>(address).port, 4880);

  ASSERT_EQ(ParseResourceName("USB::0x2A8D::2391::Ser::INSTR", &address), VI_SUCCESS);
  const auto& usb = std::get<UsbAddress>(address);
  EXPECT_EQ(usb.vendor_id, 0x2A8D);
  EXPECT_EQ(usb.product_id, 0x0957);  // decimal 2391 and hex 0x0957 are the same number
  EXPECT_EQ(usb.serial, "Ser");
}

class BadResourceName : public ::testing::TestWithParam<const char*> {};

TEST_P(BadResourceName, IsRejectedAsParsingError) {
  ResourceAddress address;
  EXPECT_EQ(ParseResourceName(GetParam(), &address), VI_ERROR_INV_RSRC_NAME) << GetParam();
}

INSTANTIATE_TEST_SUITE_P(
    Table, BadResourceName,
    ::testing::Values("", "TCPIP", "TCPIP::", "::1.2.3.4", "TCPIPx::host", "TCPIP::host::::INSTR",
                      "TCPIP::host::inst0::INSTR::x", "TCPIP::host::SOCKET",
                      "TCPIP::host::0::SOCKET", "TCPIP::host::70000::SOCKET",
                      "TCPIP::host::50x::SOCKET", "TCPIP::host::hislip0,::INSTR",
                      "TCPIP::host::hislip0,99999", "TCPIP::[fe80::1::INSTR", "USB::0x0957::0x1797",
                      "USB::0x0957::0x1797::S::0::1::INSTR", "USB::0x10000::1::S", "USB::0x::1::S",
                      "USB::12ab::1::S", "USB::1::2::S::x", "GPIB0::7::INSTR", "ASRL1::INSTR",
                      "FOO::bar"));

}  // namespace
}  // namespace quarvelo::visa
