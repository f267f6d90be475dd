// The VISA API over the raw socket transport against a scripted instrument on loopback TCP.
#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <vector>

#include "platform/visa/visa.h"
#include "tests/visa/loopback_server.h"

namespace quarvelo::visa {
namespace {

using sim::HandlerResponse;
using std::chrono::milliseconds;
using testing::LoopbackServer;

constexpr const char* kIdn = "KEYSIGHT TECHNOLOGIES,DSO-X 3034T,MY12345678,07.50.2021102830\n";

std::string BlockData(std::size_t size) {
  std::string data(size, '\0');
  for (std::size_t k = 0; k < size; ++k) data[k] = static_cast<char>((k * 131 + 10) & 0xFF);
  return data;
}

std::string Block(const std::string& data) {
  const std::string length = std::to_string(data.size());
  std::string block(1, '#');  // appended piecewise: GCC 12 misreads "#" + string at -O3
  block.append(std::to_string(length.size())).append(length).append(data);
  return block + "\n";
}

HandlerResponse Instrument(std::string_view message) {
  if (message == "*IDN?") return {kIdn};
  if (message == ":WAVeform:DATA?") return {Block(BlockData(524288))};
  if (message == "LONG?") return {std::string(1000, 'L') + "\n"};
  if (message == "SLOW?") return {"LATE\n", milliseconds(250)};
  if (message == "SILENT?") return {};
  if (message == "CUT?") return {Block(BlockData(100000)).substr(0, 5000), {}, true};
  if (message == "BYE?") return {"", {}, true};
  if (message == ":WAVeform:PREamble?") {
    return {
        "+0,+0,+62500,+1,+3.20000000E-08,-1.00000000E-03,+0,+4.15800000E-03,"
        "+1.00000000E-01,+128\n"};
  }
  return {};
}

class SocketLoopbackTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(viOpenDefaultRM(&rm_), VI_SUCCESS);
    ASSERT_EQ(viOpen(rm_, server_.SocketResource().c_str(), VI_NO_LOCK, 2000, &vi_), VI_SUCCESS);
    ASSERT_EQ(viSetAttribute(vi_, VI_ATTR_TMO_VALUE, 2000), VI_SUCCESS);
  }
  void TearDown() override { viClose(rm_); }

  std::string Query(const char* query) {
    char reply[512] = {};
    ViInt32 size = sizeof reply;
    last_status_ = viPrintf(vi_, "%s\n", query);
    if (last_status_ != VI_SUCCESS) return {};
    last_status_ = viScanf(vi_, "%#t", &size, reply);
    return reply;
  }

  LoopbackServer server_{Instrument};
  ViSession rm_ = VI_NULL;
  ViSession vi_ = VI_NULL;
  ViStatus last_status_ = VI_SUCCESS;
};

TEST_F(SocketLoopbackTest, QueryRoundTrip) {
  EXPECT_EQ(Query("*IDN?"), kIdn);
  EXPECT_EQ(last_status_, VI_SUCCESS);
  EXPECT_EQ(server_.Received(), std::vector<std::string>{"*IDN?"});
}

TEST_F(SocketLoopbackTest, NumberList) {
  ASSERT_EQ(viPrintf(vi_, ":WAVeform:PREamble?\n"), VI_SUCCESS);
  double values[20] = {};
  ViInt32 count = 20;
  ASSERT_EQ(viScanf(vi_, "%,#lf\n", &count, values), VI_SUCCESS);
  ASSERT_EQ(count, 10);
  EXPECT_DOUBLE_EQ(values[2], 62500);
  EXPECT_DOUBLE_EQ(values[4], 3.2e-8);
  EXPECT_DOUBLE_EQ(values[9], 128);
  EXPECT_EQ(Query("*IDN?"), kIdn);
}

TEST_F(SocketLoopbackTest, HalfMegabyteBlock) {
  std::vector<char> area(5000001, 'X');
  ViInt32 count = 5000000;
  ASSERT_EQ(viPrintf(vi_, ":WAVeform:DATA?\n"), VI_SUCCESS);
  ASSERT_EQ(viScanf(vi_, "%#b\n", &count, area.data()), VI_SUCCESS);
  ASSERT_EQ(count, 524288);
  EXPECT_EQ(std::string(area.data(), 524288), BlockData(524288));
  EXPECT_EQ(area[524288], 'X');
  ASSERT_EQ(viFlush(vi_, VI_READ_BUF), VI_SUCCESS);
  ASSERT_EQ(viFlush(vi_, VI_WRITE_BUF), VI_SUCCESS);
  EXPECT_EQ(Query("*IDN?"), kIdn);
}

TEST_F(SocketLoopbackTest, BlockLargerThanTheAreaThenFlush) {
  std::vector<char> area(1000);
  ViInt32 count = 1000;
  ASSERT_EQ(viPrintf(vi_, ":WAVeform:DATA?\n"), VI_SUCCESS);
  ASSERT_EQ(viScanf(vi_, "%#b", &count, area.data()), VI_SUCCESS);
  EXPECT_EQ(count, 1000);
  EXPECT_EQ(std::string(area.data(), 1000), BlockData(1000));
  ASSERT_EQ(viFlush(vi_, VI_READ_BUF), VI_SUCCESS);
  EXPECT_EQ(Query("*IDN?"), kIdn);
}

TEST_F(SocketLoopbackTest, ReplyLongerThanTheCallersBuffer) {
  char reply[257];
  std::fill(std::begin(reply), std::end(reply), '#');
  ViInt32 size = 256;
  ASSERT_EQ(viPrintf(vi_, "LONG?\n"), VI_SUCCESS);
  ASSERT_EQ(viScanf(vi_, "%#t", &size, reply), VI_SUCCESS);
  EXPECT_EQ(size, 255);
  EXPECT_EQ(std::string(reply), std::string(255, 'L'));
  EXPECT_EQ(reply[256], '#');
  EXPECT_EQ(Query("*IDN?"), kIdn);
}

TEST_F(SocketLoopbackTest, TimeoutThenAGoodExchange) {
  ASSERT_EQ(viSetAttribute(vi_, VI_ATTR_TMO_VALUE, 150), VI_SUCCESS);
  EXPECT_EQ(Query("SLOW?"), "");
  EXPECT_EQ(last_status_, VI_ERROR_TMO);
  // The late "LATE" reply must not be taken for the answer to the next query.
  EXPECT_EQ(Query("*IDN?"), kIdn);
  EXPECT_EQ(last_status_, VI_SUCCESS);
}

TEST_F(SocketLoopbackTest, UnansweredQueryThenAGoodExchange) {
  ASSERT_EQ(viSetAttribute(vi_, VI_ATTR_TMO_VALUE, 100), VI_SUCCESS);
  Query("SILENT?");
  EXPECT_EQ(last_status_, VI_ERROR_TMO);
  EXPECT_EQ(viFlush(vi_, VI_READ_BUF), VI_SUCCESS);
  EXPECT_EQ(Query("*IDN?"), kIdn);
}

TEST_F(SocketLoopbackTest, ServerClosingMidBlock) {
  std::vector<char> area(200000);
  ViInt32 count = 200000;
  ASSERT_EQ(viPrintf(vi_, "CUT?\n"), VI_SUCCESS);
  const ViStatus status = viScanf(vi_, "%#b", &count, area.data());
  EXPECT_TRUE(status == VI_ERROR_CONN_LOST || status == VI_ERROR_IO) << std::hex << status;
  EXPECT_LT(count, 100000);
  // The session stays a session: every later call reports the lost link, none hangs.
  EXPECT_NE(viPrintf(vi_, "*IDN?\n"), VI_SUCCESS);
  char reply[16];
  EXPECT_LT(viScanf(vi_, "%t", reply), VI_SUCCESS);
  EXPECT_EQ(viClose(vi_), VI_SUCCESS);
}

TEST_F(SocketLoopbackTest, ServerClosingBeforeTheReply) {
  Query("BYE?");
  EXPECT_EQ(last_status_, VI_ERROR_CONN_LOST);
}

TEST_F(SocketLoopbackTest, RawWriteAndRead) {
  const char query[] = "*IDN?\n";
  ViUInt32 written = 0;
  ASSERT_EQ(viWrite(vi_, reinterpret_cast<ViConstBuf>(query), 6, &written), VI_SUCCESS);
  EXPECT_EQ(written, 6u);
  unsigned char reply[16];
  ViUInt32 got = 0;
  EXPECT_EQ(viRead(vi_, reply, sizeof reply, &got), VI_SUCCESS_MAX_CNT);
  EXPECT_EQ(got, sizeof reply);
  EXPECT_EQ(std::string(reinterpret_cast<char*>(reply), got), std::string(kIdn).substr(0, 16));
  std::vector<unsigned char> rest(256);
  ASSERT_EQ(viRead(vi_, rest.data(), 256, &got), VI_SUCCESS);
  EXPECT_EQ(std::string(reinterpret_cast<char*>(rest.data()), got), std::string(kIdn).substr(16));
}

// Short time-outs wait with poll(); longer ones block in the receive under the socket's own
// time-out, fitted to the session's time-out when that changes. Whichever way, a read that
// gets no answer ends at its time-out, also right after reads that waited much longer.
struct TimeoutCase {
  ViUInt32 earlier_ms;  // time-out of a good exchange just before
  ViUInt32 timeout_ms;
};

class SocketTimeoutTest : public SocketLoopbackTest,
                          public ::testing::WithParamInterface<TimeoutCase> {};

TEST_P(SocketTimeoutTest, UnansweredQueryEndsAtItsTimeout) {
  ASSERT_EQ(viSetAttribute(vi_, VI_ATTR_TMO_VALUE, GetParam().earlier_ms), VI_SUCCESS);
  ASSERT_EQ(Query("*IDN?"), kIdn);
  ASSERT_EQ(viSetAttribute(vi_, VI_ATTR_TMO_VALUE, GetParam().timeout_ms), VI_SUCCESS);
  const auto start = std::chrono::steady_clock::now();
  Query("SILENT?");
  const auto elapsed =
      std::chrono::duration_cast<milliseconds>(std::chrono::steady_clock::now() - start);
  EXPECT_EQ(last_status_, VI_ERROR_TMO);
  EXPECT_GE(elapsed.count(), GetParam().timeout_ms);
  // Generous for a loaded machine, yet far below any stale longer time-out.
  EXPECT_LT(elapsed.count(), GetParam().timeout_ms + 250);
}

INSTANTIATE_TEST_SUITE_P(Timeouts, SocketTimeoutTest,
                         ::testing::Values(TimeoutCase{2000, 60}, TimeoutCase{2000, 150},
                                           TimeoutCase{2000, 400}, TimeoutCase{60, 400},
                                           TimeoutCase{400, 120}));

TEST(SocketOpen, RefusedPortIsNotFound) {
  ViSession rm = VI_NULL;
  ASSERT_EQ(viOpenDefaultRM(&rm), VI_SUCCESS);
  const std::string name =
      "TCPIP0::127.0.0.1::" + std::to_string(testing::UnusedPort()) + "::SOCKET";
  ViSession vi = 123;
  EXPECT_EQ(viOpen(rm, name.c_str(), VI_NO_LOCK, 2000, &vi), VI_ERROR_RSRC_NFOUND);
  EXPECT_EQ(vi, VI_NULL);
  EXPECT_EQ(viOpen(rm, "TCPIP0::no-such-host.invalid::5025::SOCKET", VI_NO_LOCK, 2000, &vi),
            VI_ERROR_RSRC_NFOUND);
  viClose(rm);
}

}  // namespace
}  // namespace quarvelo::visa
