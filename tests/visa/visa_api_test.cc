// The handle model, attributes, masks and status texts of the VISA API.
#include <gtest/gtest.h>

#include <string>

#include "platform/visa/visa.h"
#include "sim/server/socket_server.h"
#include "tests/visa/test_instrument.h"

namespace quarvelo::visa {
namespace {

// The test instrument behind the simulator's raw socket server on a loopback port.
struct SocketInstrument {
  SocketInstrument() { EXPECT_TRUE(server.Start(&error)) << error; }
  std::string Resource() const {
    return "TCPIP0::127.0.0.1::" + std::to_string(server.port()) + "::SOCKET";
  }
  std::string error;
  quarvelo::testing::CannedHandler instrument;
  sim::SocketServer server{instrument, "127.0.0.1", 0};
};

TEST(VisaApi, ClosingTheManagerClosesWhatItOpened) {
  SocketInstrument server;
  ViSession rm = VI_NULL;
  ViSession other_rm = VI_NULL;
  ASSERT_EQ(viOpenDefaultRM(&rm), VI_SUCCESS);
  ASSERT_EQ(viOpenDefaultRM(&other_rm), VI_SUCCESS);
  EXPECT_NE(rm, other_rm);
  ViSession first = VI_NULL, second = VI_NULL, kept = VI_NULL;
  const std::string name = server.Resource();
  ASSERT_EQ(viOpen(rm, name.c_str(), VI_NO_LOCK, 2000, &first), VI_SUCCESS);
  ASSERT_EQ(viOpen(rm, name.c_str(), VI_NO_LOCK, 2000, &second), VI_SUCCESS);
  ASSERT_EQ(viOpen(other_rm, name.c_str(), VI_NO_LOCK, 2000, &kept), VI_SUCCESS);
  ASSERT_EQ(viClose(first), VI_SUCCESS);
  EXPECT_EQ(viClose(first), VI_ERROR_INV_OBJECT);
  ASSERT_EQ(viClose(rm), VI_SUCCESS);
  EXPECT_EQ(viPrintf(second, "X\n"), VI_ERROR_INV_OBJECT);
  EXPECT_EQ(viClose(second), VI_ERROR_INV_OBJECT);
  EXPECT_EQ(viPrintf(kept, "X\n"), VI_SUCCESS);
  EXPECT_EQ(viOpen(rm, name.c_str(), VI_NO_LOCK, 2000, &first), VI_ERROR_INV_OBJECT);
  EXPECT_EQ(viClose(other_rm), VI_SUCCESS);
  EXPECT_EQ(viClose(VI_NULL), VI_WARN_NULL_OBJECT);
}

TEST(VisaApi, OpenArgumentErrors) {
  ViSession rm = VI_NULL;
  ASSERT_EQ(viOpenDefaultRM(&rm), VI_SUCCESS);
  ViSession vi = VI_NULL;
  EXPECT_EQ(viOpen(rm, "NOT A RESOURCE", VI_NO_LOCK, 100, &vi), VI_ERROR_INV_RSRC_NAME);
  EXPECT_EQ(viOpen(rm, nullptr, VI_NO_LOCK, 100, &vi), VI_ERROR_INV_RSRC_NAME);
  EXPECT_EQ(viOpen(rm, "TCPIP::h::1::SOCKET", 0x100, 100, &vi), VI_ERROR_INV_ACC_MODE);
  EXPECT_EQ(viOpen(rm + 1000, "TCPIP::h::1::SOCKET", VI_NO_LOCK, 100, &vi), VI_ERROR_INV_OBJECT);
  // Port 1 on loopback refuses connections; a host that does not resolve.
  vi = 123;
  EXPECT_EQ(viOpen(rm, "TCPIP0::127.0.0.1::1::SOCKET", VI_NO_LOCK, 2000, &vi),
            VI_ERROR_RSRC_NFOUND);
  EXPECT_EQ(vi, VI_NULL);
  EXPECT_EQ(viOpen(rm, "TCPIP0::no-such-host.invalid::5025::SOCKET", VI_NO_LOCK, 2000, &vi),
            VI_ERROR_RSRC_NFOUND);
  // Enumerates the USB bus for real; no instrument has this serial number.
  EXPECT_EQ(viOpen(rm, "USB0::0x0957::0x1797::NO-SUCH-SERIAL::0::INSTR", VI_NO_LOCK, 100, &vi),
            VI_ERROR_RSRC_NFOUND);
  viClose(rm);
}

TEST(VisaApi, TimeoutAttributeAndMasks) {
  SocketInstrument server;
  ViSession rm = VI_NULL, vi = VI_NULL;
  ASSERT_EQ(viOpenDefaultRM(&rm), VI_SUCCESS);
  ASSERT_EQ(viOpen(rm, server.Resource().c_str(), VI_NO_LOCK, 2000, &vi), VI_SUCCESS);
  ViUInt32 opened = 0;
  ASSERT_EQ(viGetAttribute(vi, VI_ATTR_TMO_VALUE, &opened), VI_SUCCESS);
  EXPECT_EQ(opened, 2000u);
  EXPECT_EQ(viSetAttribute(vi, VI_ATTR_TMO_VALUE, 0x1'0000'0000ull), VI_ERROR_NSUP_ATTR_STATE);
  EXPECT_EQ(viSetAttribute(vi, 0x3FFF0018, 10), VI_ERROR_NSUP_ATTR);
  EXPECT_EQ(viSetAttribute(rm, VI_ATTR_TMO_VALUE, 10), VI_ERROR_NSUP_ATTR);

  EXPECT_EQ(viFlush(vi, VI_READ_BUF | VI_READ_BUF_DISCARD), VI_ERROR_INV_MASK);
  EXPECT_EQ(viFlush(vi, VI_WRITE_BUF | VI_WRITE_BUF_DISCARD), VI_ERROR_INV_MASK);
  EXPECT_EQ(viFlush(vi, 0), VI_ERROR_INV_MASK);
  EXPECT_EQ(viFlush(vi, VI_READ_BUF | VI_WRITE_BUF), VI_SUCCESS);
  EXPECT_EQ(viFlush(rm, VI_READ_BUF), VI_ERROR_NSUP_OPER);
  EXPECT_EQ(viFlush(0xFFFF, VI_READ_BUF), VI_ERROR_INV_OBJECT);
  viClose(rm);
}

TEST(VisaApi, StatusTextsAndUnknownStatus) {
  char text[256];
  ASSERT_EQ(viStatusDesc(VI_NULL, VI_ERROR_TMO, text), VI_SUCCESS);
  EXPECT_STREQ(text, "VI_ERROR_TMO: Timeout expired before operation completed.");
  EXPECT_EQ(viStatusDesc(VI_NULL, 0x12345, text), VI_WARN_UNKNOWN_STATUS);
  EXPECT_EQ(std::string(text).rfind("VI_WARN_UNKNOWN_STATUS", 0), 0u);
}

}  // namespace
}  // namespace quarvelo::visa
