// One VISA session scenario over every transport against the same test instrument: the raw
// socket, VXI-11 (through the portmapper and straight to the core channel) and HiSLIP served by
// the simulator's servers on loopback TCP, and USB-TMC through the simulated device in several
// packet and transfer sizes.
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdarg>
#include <memory>
#include <string>
#include <vector>

#include "platform/visa/session.h"
#include "platform/visa/usbtmc/usbtmc_protocol.h"
#include "platform/visa/usbtmc/usbtmc_transport.h"
#include "platform/visa/visa.h"
#include "sim/server/hislip_server.h"
#include "sim/server/portmapper_server.h"
#include "sim/server/socket_server.h"
#include "sim/server/usbtmc_device.h"
#include "sim/server/vxi11_server.h"
#include "tests/visa/test_instrument.h"

namespace quarvelo::testing {
namespace {

// Generous for exchanges that should succeed: large blocks in small USB packets under the
// sanitizers on a loaded machine take seconds, and a passing test never waits it out.
constexpr ViUInt32 kExchangeTimeoutMs = 10000;

using sim::UsbDeviceOptions;
using std::chrono::milliseconds;

enum class Kind { kSocket, kVxi11, kVxi11Core, kHislip, kUsbtmc };

struct Link {
  const char* name;
  Kind kind;
  UsbDeviceOptions usb = {};
};

class TransportTest : public ::testing::TestWithParam<Link> {
 protected:
  void SetUp() override {
    std::string error;
    std::string resource;
    switch (GetParam().kind) {
      case Kind::kSocket:
        socket_ = std::make_unique<sim::SocketServer>(instrument_, "127.0.0.1", 0);
        ASSERT_TRUE(socket_->Start(&error)) << error;
        resource = "TCPIP0::127.0.0.1::" + std::to_string(socket_->port()) + "::SOCKET";
        break;
      case Kind::kVxi11:
      case Kind::kVxi11Core:
        vxi11_ = std::make_unique<sim::Vxi11Server>(instrument_, "127.0.0.1", 0);
        ASSERT_TRUE(vxi11_->Start(&error)) << error;
        portmapper_ = std::make_unique<sim::PortmapperServer>("127.0.0.1", 0, vxi11_->port());
        ASSERT_TRUE(portmapper_->Start(&error)) << error;
        resource =
            GetParam().kind == Kind::kVxi11
                ? "TCPIP0::127.0.0.1:" + std::to_string(portmapper_->port()) + "::inst0::INSTR"
                : "TCPIP::127.0.0.1:core:" + std::to_string(vxi11_->port()) + "::INSTR";
        break;
      case Kind::kHislip:
        hislip_ = std::make_unique<sim::HislipServer>(instrument_, "127.0.0.1", 0);
        ASSERT_TRUE(hislip_->Start(&error)) << error;
        resource = "TCPIP0::127.0.0.1::hislip0," + std::to_string(hislip_->port()) + "::INSTR";
        break;
      case Kind::kUsbtmc: {
        auto device = std::make_unique<sim::UsbtmcDevice>(&instrument_, GetParam().usb, &usb_log_);
        usb_device_ = device.get();
        auto transport = std::make_unique<visa::UsbtmcTransport>(std::move(device));
        ASSERT_EQ(transport->Start(), VI_SUCCESS);
        usb_log_.control_requests.clear();
        usb_ = std::make_unique<visa::Session>(std::move(transport));
        usb_->SetTimeout(kExchangeTimeoutMs);
        return;
      }
    }
    ASSERT_EQ(viOpenDefaultRM(&rm_), VI_SUCCESS);
    resource_ = resource;
    ASSERT_EQ(viOpen(rm_, resource.c_str(), VI_NO_LOCK, 2000, &vi_), VI_SUCCESS) << resource;
    SetTimeout(kExchangeTimeoutMs);
  }
  void TearDown() override {
    if (rm_ != VI_NULL) viClose(rm_);
  }

  void SetTimeout(ViUInt32 timeout_ms) {
    if (usb_) {
      usb_->SetTimeout(timeout_ms);
    } else {
      ASSERT_EQ(viSetAttribute(vi_, VI_ATTR_TMO_VALUE, timeout_ms), VI_SUCCESS);
    }
  }
  ViStatus Printf(const char* format, ...) {
    visa::VaArgs args;
    va_start(args.list, format);
    const ViStatus status = usb_ ? usb_->Printf(format, &args) : viVPrintf(vi_, format, args.list);
    va_end(args.list);
    return status;
  }
  ViStatus Scanf(const char* format, ...) {
    visa::VaArgs args;
    va_start(args.list, format);
    const ViStatus status = usb_ ? usb_->Scanf(format, &args) : viVScanf(vi_, format, args.list);
    va_end(args.list);
    return status;
  }
  ViStatus Flush(ViUInt16 mask) { return usb_ ? usb_->Flush(mask) : viFlush(vi_, mask); }

  // The reply read with "%#t" into 256 bytes, checking the count and that nothing is written
  // past them.
  std::string Query(const char* query) {
    char reply[257];
    std::fill(std::begin(reply), std::end(reply), '#');
    ViInt32 size = 256;
    status_ = Printf("%s\n", query);
    if (status_ == VI_SUCCESS) status_ = Scanf("%#t", &size, reply);
    EXPECT_EQ(reply[256], '#');
    if (status_ != VI_SUCCESS) return {};
    EXPECT_EQ(static_cast<std::size_t>(size), std::string(reply).size());
    return reply;
  }

  // Every transfer aligned and well formed, every bTag the one after the last.
  void ExpectHostFollowedTheUsbtmcProtocol() const {
    if (!usb_) return;
    EXPECT_EQ(usb_log_.misaligned_transfers, 0);
    EXPECT_EQ(usb_log_.bad_headers, 0);
    EXPECT_EQ(usb_log_.violations, std::vector<std::string>{});
    for (std::size_t k = 1; k < usb_log_.tags.size(); ++k) {
      EXPECT_EQ(usb_log_.tags[k], visa::usbtmc::NextTag(usb_log_.tags[k - 1])) << k;
    }
  }

  void ExpectBlockThenAQuery(std::size_t area_size, const char* format) {
    std::vector<char> area(area_size + 1, 'X');
    ViInt32 count = static_cast<ViInt32>(area_size);
    ASSERT_EQ(Printf("BLOCK?\n"), VI_SUCCESS);
    ASSERT_EQ(Scanf(format, &count, area.data()), VI_SUCCESS);
    const std::size_t expected = std::min(area_size, kBlockSize);
    ASSERT_EQ(count, static_cast<ViInt32>(expected));
    EXPECT_TRUE(std::equal(area.begin(), area.begin() + expected, BlockReply().begin() + 8));
    EXPECT_EQ(area[expected], 'X');
    EXPECT_EQ(Flush(VI_READ_BUF), VI_SUCCESS);
    EXPECT_EQ(Flush(VI_WRITE_BUF), VI_SUCCESS);
    EXPECT_EQ(Query("*IDN?"), kIdn);
    ExpectHostFollowedTheUsbtmcProtocol();
  }

  CannedHandler instrument_;
  std::unique_ptr<sim::SocketServer> socket_;
  std::unique_ptr<sim::Vxi11Server> vxi11_;
  std::unique_ptr<sim::PortmapperServer> portmapper_;
  std::unique_ptr<sim::HislipServer> hislip_;
  sim::UsbDeviceLog usb_log_;
  sim::UsbtmcDevice* usb_device_ = nullptr;
  std::unique_ptr<visa::Session> usb_;
  std::string resource_;
  ViSession rm_ = VI_NULL;
  ViSession vi_ = VI_NULL;
  ViStatus status_ = VI_SUCCESS;
};

// USB-TMC at high and full speed, with headers split across bulk-in calls, and with replies
// in many small transfers.
const Link kUsbLinks[] = {
    {"UsbHighSpeed", Kind::kUsbtmc, {512, 1000, 1 << 20}},
    {"UsbFullSpeed", Kind::kUsbtmc, {64, 1000, 1 << 20}},
    {"UsbTinyPackets", Kind::kUsbtmc, {8, 1, 1 << 20}},
    {"UsbShortTransfers", Kind::kUsbtmc, {64, 1000, 10}},
    {"UsbTinyEverything", Kind::kUsbtmc, {8, 1, 7}},
};

std::vector<Link> AllLinks() {
  std::vector<Link> links = {{"Socket", Kind::kSocket},
                             {"Vxi11", Kind::kVxi11},
                             {"Vxi11Core", Kind::kVxi11Core},
                             {"Hislip", Kind::kHislip}};
  links.insert(links.end(), std::begin(kUsbLinks), std::end(kUsbLinks));
  return links;
}

std::string LinkName(const ::testing::TestParamInfo<Link>& info) { return info.param.name; }

INSTANTIATE_TEST_SUITE_P(Transports, TransportTest, ::testing::ValuesIn(AllLinks()), LinkName);

TEST_P(TransportTest, QueryRoundTrip) {
  EXPECT_EQ(Query("*IDN?"), kIdn);
  EXPECT_EQ(status_, VI_SUCCESS);
  EXPECT_EQ(instrument_.messages(), std::vector<std::string>{"*IDN?"});
  if (usb_) {
    ASSERT_FALSE(usb_log_.out_end_of_message.empty());
    EXPECT_TRUE(usb_log_.out_end_of_message.back());
  }
  ExpectHostFollowedTheUsbtmcProtocol();
}

TEST_P(TransportTest, HalfMegabyteBlockThenAQuery) { ExpectBlockThenAQuery(5000000, "%#b\n"); }

TEST_P(TransportTest, BlockLargerThanTheAreaThenFlushAndAQuery) {
  ExpectBlockThenAQuery(4096, "%#b");
}

TEST_P(TransportTest, ReplyLongerThanTheCallersBufferThenAQuery) {
  EXPECT_EQ(Query("LONG?"), std::string(255, 'L'));
  EXPECT_EQ(Query("*IDN?"), kIdn);
}

// A reply later than the time-out, or none at all (then a flush), never answers the next query.
TEST_P(TransportTest, TimeoutThenAGoodExchange) {
  for (const bool silent : {false, true}) {
    SetTimeout(silent ? 100 : 150);
    Query(silent ? "SILENT?" : "SLOW?");
    EXPECT_EQ(status_, VI_ERROR_TMO);
    if (usb_ && !silent) {
      EXPECT_NE(std::find(usb_log_.control_requests.begin(), usb_log_.control_requests.end(),
                          visa::usbtmc::kInitiateAbortBulkIn),
                usb_log_.control_requests.end());
    }
    if (silent) {
      EXPECT_EQ(Flush(VI_READ_BUF), VI_SUCCESS);
    }
    SetTimeout(kExchangeTimeoutMs);
    EXPECT_EQ(Query("*IDN?"), kIdn);
    EXPECT_EQ(status_, VI_SUCCESS);
  }
}

TEST_P(TransportTest, StatusByteAndDeviceClearThroughTheApi) {
  const Kind kind = GetParam().kind;
  ASSERT_EQ(Printf("*IDN?\n"), VI_SUCCESS);
  ViUInt16 status_byte = 0;
  const ViStatus read = usb_ ? usb_->ReadStatusByte(&status_byte) : viReadSTB(vi_, &status_byte);
  if (kind == Kind::kSocket) {
    EXPECT_EQ(read, VI_ERROR_NSUP_OPER);
  } else {
    EXPECT_EQ(read, VI_SUCCESS);
    // Message available; HiSLIP's server may see the query after the status request.
    if (kind != Kind::kHislip) {
      EXPECT_EQ(status_byte & 0x10, 0x10);
    }
  }
  const int cleared = instrument_.cleared.load();
  usb_log_.control_requests.clear();
  EXPECT_EQ(usb_ ? usb_->Clear() : viClear(vi_), VI_SUCCESS);
  EXPECT_EQ(instrument_.cleared.load(), cleared + (kind == Kind::kSocket ? 0 : 1));
  if (usb_) {
    EXPECT_EQ(
        usb_log_.control_requests,
        (std::vector<std::uint8_t>{visa::usbtmc::kInitiateClear, visa::usbtmc::kCheckClearStatus}));
  }
  EXPECT_EQ(Query("ECHO after"), "after\n");
}

TEST_P(TransportTest, RawWriteAndReadInPieces) {
  const std::string query = "*IDN?\n";
  const std::string idn = kIdn;
  ViUInt32 written = 0;
  const auto bytes = std::as_bytes(std::span(query));
  ASSERT_EQ(usb_ ? usb_->Write(bytes, &written)
                 : viWrite(vi_, reinterpret_cast<ViConstBuf>(query.data()), 6, &written),
            VI_SUCCESS);
  EXPECT_EQ(written, 6u);
  std::vector<std::byte> reply(256);
  const auto read = [this, &reply](std::size_t size, ViUInt32* got) {
    return usb_ ? usb_->Read(std::span(reply).first(size), got)
                : viRead(vi_, reinterpret_cast<ViBuf>(reply.data()), size, got);
  };
  ViUInt32 got = 0;
  EXPECT_EQ(read(16, &got), VI_SUCCESS_MAX_CNT);
  ASSERT_EQ(got, 16u);
  EXPECT_EQ(std::string(reinterpret_cast<char*>(reply.data()), got), idn.substr(0, 16));
  ASSERT_EQ(read(256, &got), VI_SUCCESS);
  EXPECT_EQ(std::string(reinterpret_cast<char*>(reply.data()), got), idn.substr(16));
}

TEST_P(TransportTest, InstrumentGoingAwayMidBlock) {
  std::vector<char> area(600000);
  ViInt32 count = 600000;
  ASSERT_EQ(Printf("DROP?\n"), VI_SUCCESS);
  const ViStatus status = Scanf("%#b", &count, area.data());
  EXPECT_TRUE(status == VI_ERROR_CONN_LOST || (!usb_ && status == VI_ERROR_IO))
      << std::hex << status;
  // What came before the drop is kept: the block's first 100,000 bytes, its header included.
  EXPECT_EQ(count, 100000 - 8);
  EXPECT_TRUE(std::equal(area.begin(), area.begin() + count, BlockReply().begin() + 8));
  // The session stays a session: every later call reports the lost link, none hangs.
  EXPECT_LT(Printf("*IDN?\n"), VI_SUCCESS);
  char reply[16];
  EXPECT_LT(Scanf("%15t", reply), VI_SUCCESS);
  if (usb_) return;
  // The server serves the next client.
  EXPECT_EQ(viClose(vi_), VI_SUCCESS);
  ASSERT_EQ(viOpen(rm_, resource_.c_str(), VI_NO_LOCK, 2000, &vi_), VI_SUCCESS);
  EXPECT_EQ(Query("*IDN?"), kIdn);
}

TEST_P(TransportTest, InstrumentGoingAwayBeforeTheReply) {
  Query("BYE");
  EXPECT_EQ(status_, VI_ERROR_CONN_LOST) << std::hex << status_;
}

// What only USB-TMC does: transfers with EOM, bTags and empty transfers.
class UsbtmcSessionTest : public TransportTest {};

INSTANTIATE_TEST_SUITE_P(Devices, UsbtmcSessionTest, ::testing::ValuesIn(kUsbLinks), LinkName);

TEST_P(UsbtmcSessionTest, LongMessageGoesOutInTransfersWithEomOnlyOnTheLast) {
  const std::string command = ":DISPlay:ANNotation:TEXT \"" + std::string(150000, 'a') + "\"";
  ASSERT_EQ(Printf("%s\n", command.c_str()), VI_SUCCESS);
  const std::vector<bool>& eom = usb_log_.out_end_of_message;
  ASSERT_GE(eom.size(), 3u);
  EXPECT_TRUE(eom.back());
  EXPECT_EQ(std::count(eom.begin(), eom.end(), true), 1);
  EXPECT_EQ(instrument_.messages().back(), command);
  ExpectHostFollowedTheUsbtmcProtocol();
  EXPECT_EQ(Query("*IDN?"), kIdn);
}

TEST_P(UsbtmcSessionTest, TagsWrapAfter255Transfers) {
  for (int k = 0; k < 140; ++k) ASSERT_EQ(Query("*IDN?"), kIdn) << k;
  EXPECT_GT(usb_log_.tags.size(), 255u);
  EXPECT_EQ(std::count(usb_log_.tags.begin(), usb_log_.tags.end(), 0), 0);
  ExpectHostFollowedTheUsbtmcProtocol();
}

TEST_P(UsbtmcSessionTest, EndlessEmptyTransfersEndInATimeout) {
  usb_device_->options().empty_transfers_only = true;
  SetTimeout(50);
  Query("*IDN?");
  EXPECT_EQ(status_, VI_ERROR_TMO);
}

// Short time-outs wait with poll(); longer ones block in the receive under the socket's own
// time-out, fitted to the session's time-out when that changes. Whichever way, a read that
// gets no answer ends at its time-out, also right after reads that waited much longer.
class SocketTimeoutTest : public TransportTest {};

INSTANTIATE_TEST_SUITE_P(Socket, SocketTimeoutTest,
                         ::testing::Values(Link{"Socket", Kind::kSocket}), LinkName);

// Nothing on a raw socket tells a late reply from the next one: a reply later than the wait
// before the next message must not answer that message.
TEST_P(SocketTimeoutTest, ReplyLaterThanTheNextMessageDoesNotAnswerIt) {
  SetTimeout(150);
  Query("SLOW?");
  EXPECT_EQ(status_, VI_ERROR_TMO);
  ASSERT_EQ(Printf("*IDN?\n"), VI_SUCCESS);  // waits 150 ms for the late reply, in vain
  SetTimeout(2000);
  char reply[64] = {};
  ASSERT_EQ(Scanf("%t", reply), VI_SUCCESS);
  EXPECT_STREQ(reply, kIdn);
}

TEST_P(SocketTimeoutTest, UnansweredQueryEndsAtItsTimeout) {
  const struct {
    ViUInt32 earlier_ms;  // time-out of a good exchange just before
    ViUInt32 timeout_ms;
  } cases[] = {{2000, 60}, {2000, 150}, {2000, 400}, {60, 400}, {400, 120}};
  for (const auto& c : cases) {
    // A new session each time: the last one's unanswered query would hold up the next.
    ASSERT_EQ(viClose(vi_), VI_SUCCESS);
    ASSERT_EQ(viOpen(rm_, resource_.c_str(), VI_NO_LOCK, 2000, &vi_), VI_SUCCESS);
    SetTimeout(c.earlier_ms);
    ASSERT_EQ(Query("*IDN?"), kIdn);
    SetTimeout(c.timeout_ms);
    const auto start = std::chrono::steady_clock::now();
    Query("SILENT?");
    const auto elapsed =
        std::chrono::duration_cast<milliseconds>(std::chrono::steady_clock::now() - start);
    EXPECT_EQ(status_, VI_ERROR_TMO);
    EXPECT_GE(elapsed.count(), c.timeout_ms) << c.earlier_ms << " then " << c.timeout_ms;
    // Generous for a loaded machine, yet far below any stale longer time-out.
    EXPECT_LT(elapsed.count(), c.timeout_ms + 250) << c.earlier_ms << " then " << c.timeout_ms;
  }
}

}  // namespace
}  // namespace quarvelo::testing
