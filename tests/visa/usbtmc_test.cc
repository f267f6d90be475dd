// USB-TMC: header encoding, interface matching, and what only this transport does (tags, EOM,
// aborts, device clear) against a simulated device; the exchanges every transport shares are in
// transport_loopback_test.cc.
#include <gtest/gtest.h>

#include <cstdarg>
#include <memory>
#include <string>

#include "platform/visa/session.h"
#include "platform/visa/usbtmc/usb_backend.h"
#include "platform/visa/usbtmc/usbtmc_protocol.h"
#include "platform/visa/usbtmc/usbtmc_transport.h"
#include "tests/visa/simulated_usbtmc_device.h"
#include "tests/visa/test_instrument.h"

namespace quarvelo::visa {
namespace {

using quarvelo::testing::CannedHandler;
using quarvelo::testing::kIdn;
using testing::UsbDeviceLog;
using testing::UsbDeviceOptions;

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

ViStatus Printf(Session* session, const char* format, ...) {
  VaArgs args;
  va_start(args.list, format);
  const ViStatus status = session->Printf(format, &args);
  va_end(args.list);
  return status;
}

ViStatus Scanf(Session* session, const char* format, ...) {
  VaArgs args;
  va_start(args.list, format);
  const ViStatus status = session->Scanf(format, &args);
  va_end(args.list);
  return status;
}

class UsbtmcSessionTest : public ::testing::TestWithParam<UsbDeviceOptions> {
 protected:
  void SetUp() override {
    auto device = std::make_unique<testing::SimulatedUsbtmcDevice>(&instrument_, GetParam(), &log_);
    device_ = device.get();
    session_ = std::make_unique<Session>(std::make_unique<UsbtmcTransport>(std::move(device)));
    session_->SetTimeout(2000);
  }

  std::string Query(const char* query) {
    char reply[256] = {};
    ViInt32 size = sizeof reply;
    status_ = Printf(session_.get(), "%s\n", query);
    if (status_ == VI_SUCCESS) status_ = Scanf(session_.get(), "%#t", &size, reply);
    return reply;
  }

  void ExpectHostFollowedTheProtocol() const {
    EXPECT_EQ(log_.misaligned_transfers, 0);
    EXPECT_EQ(log_.bad_headers, 0);
    for (std::size_t k = 1; k < log_.tags.size(); ++k) {
      EXPECT_EQ(log_.tags[k], usbtmc::NextTag(log_.tags[k - 1])) << k;
    }
  }

  CannedHandler instrument_;
  UsbDeviceLog log_;
  testing::SimulatedUsbtmcDevice* device_ = nullptr;
  std::unique_ptr<Session> session_;
  ViStatus status_ = VI_SUCCESS;
};

INSTANTIATE_TEST_SUITE_P(
    Devices, UsbtmcSessionTest,
    ::testing::Values(UsbDeviceOptions{512, 1000, 1 << 20, false},  // high speed
                      UsbDeviceOptions{64, 1000, 1 << 20, false},   // full speed
                      UsbDeviceOptions{8, 1, 1 << 20, false},       // header across calls
                      UsbDeviceOptions{64, 1000, 10, false},        // many transfers per reply
                      UsbDeviceOptions{8, 1, 7, false}));

TEST_P(UsbtmcSessionTest, LongMessageGoesOutInTransfersWithEomOnlyOnTheLast) {
  const std::string command = ":DISPlay:ANNotation:TEXT \"" + std::string(150000, 'a') + "\"";
  ASSERT_EQ(Printf(session_.get(), "%s\n", command.c_str()), VI_SUCCESS);
  ASSERT_GE(log_.out_end_of_message.size(), 3u);
  EXPECT_TRUE(log_.out_end_of_message.back());
  EXPECT_EQ(std::count(log_.out_end_of_message.begin(), log_.out_end_of_message.end(), true), 1);
  EXPECT_EQ(instrument_.messages().back(), command);
  ExpectHostFollowedTheProtocol();
  EXPECT_EQ(Query("*IDN?"), kIdn);
}

TEST_P(UsbtmcSessionTest, TagsWrapAfter255Transfers) {
  for (int k = 0; k < 140; ++k) ASSERT_EQ(Query("*IDN?"), kIdn) << k;
  EXPECT_GT(log_.tags.size(), 255u);
  EXPECT_EQ(std::count(log_.tags.begin(), log_.tags.end(), 0), 0);
  ExpectHostFollowedTheProtocol();
}

TEST_P(UsbtmcSessionTest, WrongTagInTheResponseIsAnErrorNotData) {
  device_->options().corrupt_next_tag = true;
  Query("*IDN?");
  EXPECT_EQ(status_, VI_ERROR_IO);
  EXPECT_EQ(Query("*IDN?"), kIdn);
}

TEST_P(UsbtmcSessionTest, EndlessEmptyTransfersEndInATimeout) {
  device_->options().empty_transfers_only = true;
  session_->SetTimeout(50);
  Query("*IDN?");
  EXPECT_EQ(status_, VI_ERROR_TMO);
}

TEST_P(UsbtmcSessionTest, DeviceClear) {
  UsbtmcTransport transport(
      std::make_unique<testing::SimulatedUsbtmcDevice>(&instrument_, GetParam(), &log_));
  EXPECT_EQ(transport.Clear(Clock::now() + std::chrono::seconds(1)), VI_SUCCESS);
  EXPECT_EQ(instrument_.cleared.load(), 1);
  EXPECT_EQ(log_.control_requests,
            (std::vector<std::uint8_t>{usbtmc::kInitiateClear, usbtmc::kCheckClearStatus}));
}

}  // namespace
}  // namespace quarvelo::visa
