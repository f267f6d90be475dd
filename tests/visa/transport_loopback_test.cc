// One VISA session scenario over every transport against the same test instrument: the LAN
// ones served by the simulator's servers on loopback TCP, USB-TMC by its in-process device in
// several packet and transfer sizes. Then the USB-TMC host against that device's faults: each
// must end as it should, leave no halted endpoint nor forbidden step, and the next query work.
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdarg>
#include <functional>
#include <memory>
#include <ostream>
#include <span>
#include <string>
#include <vector>

#include "platform/visa/resource_name.h"
#include "platform/visa/session.h"
#include "platform/visa/transport_open.h"
#include "platform/visa/usbtmc/usbtmc_protocol.h"
#include "platform/visa/usbtmc/usbtmc_transport.h"
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
using visa::Session;
namespace usbtmc = visa::usbtmc;

template <ViStatus (Session::*kFormatted)(std::string_view, visa::VaArgs*)>
ViStatus Formatted(Session& session, const char* format, ...) {
  visa::VaArgs args;
  va_start(args.list, format);
  const ViStatus status = (session.*kFormatted)(format, &args);
  va_end(args.list);
  return status;
}
constexpr auto* Printf = &Formatted<&Session::Printf>;
constexpr auto* Scanf = &Formatted<&Session::Scanf>;

enum class Kind { kSocket, kVxi11, kVxi11Core, kHislip, kUsbtmc };

struct Link {
  const char* name;
  Kind kind;
  UsbDeviceOptions usb = {};
};
void PrintTo(const Link& link, std::ostream* os) { *os << link.name; }

class TransportTest : public ::testing::TestWithParam<Link> {
 protected:
  void SetUp() override {
    std::string error;
    const Kind kind = GetParam().kind;
    if (kind == Kind::kUsbtmc) return OpenUsb(GetParam().usb);
    if (kind == Kind::kSocket) {
      socket_ = std::make_unique<sim::SocketServer>(instrument_, "127.0.0.1", 0);
      ASSERT_TRUE(socket_->Start(&error)) << error;
      resource_ = "TCPIP0::127.0.0.1::" + std::to_string(socket_->port()) + "::SOCKET";
    } else if (kind == Kind::kHislip) {
      hislip_ = std::make_unique<sim::HislipServer>(instrument_, "127.0.0.1", 0);
      ASSERT_TRUE(hislip_->Start(&error)) << error;
      resource_ = "TCPIP0::127.0.0.1::hislip0," + std::to_string(hislip_->port()) + "::INSTR";
    } else {
      vxi11_ = std::make_unique<sim::Vxi11Server>(instrument_, "127.0.0.1", 0);
      ASSERT_TRUE(vxi11_->Start(&error)) << error;
      portmapper_ = std::make_unique<sim::PortmapperServer>("127.0.0.1", 0, vxi11_->port());
      ASSERT_TRUE(portmapper_->Start(&error)) << error;
      resource_ =
          kind == Kind::kVxi11
              ? "TCPIP0::127.0.0.1:" + std::to_string(portmapper_->port()) + "::inst0::INSTR"
              : "TCPIP::127.0.0.1:core:" + std::to_string(vxi11_->port()) + "::INSTR";
    }
    Reopen();
  }

  // A new session on the LAN resource, opened as viOpen opens it.
  void Reopen() {
    session_.reset();
    visa::ResourceAddress address;
    ASSERT_EQ(visa::ParseResourceName(resource_, &address), VI_SUCCESS);
    std::unique_ptr<visa::Transport> transport;
    ASSERT_EQ(visa::OpenTransport(address, In(2000), &transport), VI_SUCCESS) << resource_;
    session_ = std::make_unique<Session>(std::move(transport));
    session_->SetTimeout(kExchangeTimeoutMs);
  }

  void OpenUsb(UsbDeviceOptions options) {
    session_.reset();
    usb_log_ = {};
    auto device = std::make_unique<sim::UsbtmcDevice>(&instrument_, options, &usb_log_);
    usb_device_ = device.get();
    auto transport = std::make_unique<visa::UsbtmcTransport>(std::move(device));
    ASSERT_EQ(transport->Start(), VI_SUCCESS);
    session_ = std::make_unique<Session>(std::move(transport));
    session_->SetTimeout(kExchangeTimeoutMs);
  }

  bool usb() const { return GetParam().kind == Kind::kUsbtmc; }

  // The reply read with "%#t" into 256 bytes, checking the count and that nothing is written
  // past them.
  std::string Query(const char* query) {
    char reply[257];
    std::fill(std::begin(reply), std::end(reply), '#');
    ViInt32 size = 256;
    status_ = Printf(*session_, "%s\n", query);
    if (status_ == VI_SUCCESS) status_ = Scanf(*session_, "%#t", &size, reply);
    EXPECT_EQ(reply[256], '#');
    if (status_ != VI_SUCCESS) return {};
    EXPECT_EQ(static_cast<std::size_t>(size), std::string(reply).size());
    return reply;
  }

  // Every transfer aligned and well formed, every bTag the one after the last.
  void ExpectHostFollowedTheUsbtmcProtocol() const {
    if (!usb()) return;
    EXPECT_EQ(usb_log_.misaligned_transfers, 0);
    EXPECT_EQ(usb_log_.bad_headers, 0);
    EXPECT_EQ(usb_log_.violations, std::vector<std::string>{});
    for (std::size_t k = 1; k < usb_log_.tags.size(); ++k) {
      EXPECT_EQ(usb_log_.tags[k], usbtmc::NextTag(usb_log_.tags[k - 1])) << k;
    }
  }

  void ExpectBlockThenAQuery(std::size_t area_size, const char* format) {
    std::vector<char> area(area_size + 1, 'X');
    ViInt32 count = static_cast<ViInt32>(area_size);
    ASSERT_EQ(Printf(*session_, "BLOCK?\n"), VI_SUCCESS);
    ASSERT_EQ(Scanf(*session_, format, &count, area.data()), VI_SUCCESS);
    const std::size_t expected = std::min(area_size, kBlockSize);
    ASSERT_EQ(count, static_cast<ViInt32>(expected));
    EXPECT_TRUE(std::equal(area.begin(), area.begin() + expected, BlockReply().begin() + 8));
    EXPECT_EQ(area[expected], 'X');
    EXPECT_EQ(session_->Flush(VI_READ_BUF), VI_SUCCESS);
    EXPECT_EQ(session_->Flush(VI_WRITE_BUF), VI_SUCCESS);
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
  std::string resource_;
  std::unique_ptr<Session> session_;
  ViStatus status_ = VI_SUCCESS;
};

// The LAN transports, then USB-TMC at high and full speed, with headers split across bulk-in
// calls, and with replies in many small transfers.
const Link kLinks[] = {
    {"Socket", Kind::kSocket},
    {"Vxi11", Kind::kVxi11},
    {"Vxi11Core", Kind::kVxi11Core},
    {"Hislip", Kind::kHislip},
    {"UsbHighSpeed", Kind::kUsbtmc, {512, 1000, 1 << 20}},
    {"UsbFullSpeed", Kind::kUsbtmc, {64, 1000, 1 << 20}},
    {"UsbTinyPackets", Kind::kUsbtmc, {8, 1, 1 << 20}},
    {"UsbShortTransfers", Kind::kUsbtmc, {64, 1000, 10}},
    {"UsbTinyEverything", Kind::kUsbtmc, {8, 1, 7}},
};

const std::span<const Link> kUsbLinks = std::span(kLinks).subspan(4);

std::string LinkName(const ::testing::TestParamInfo<Link>& info) { return info.param.name; }

INSTANTIATE_TEST_SUITE_P(Transports, TransportTest, ::testing::ValuesIn(kLinks), LinkName);

// A half-megabyte block whole, a block larger than the area and a reply longer than the
// caller's buffer: what does not fit is flushed and the next query gets its own reply.
TEST_P(TransportTest, RepliesOfAnySizeThenAQuery) {
  ExpectBlockThenAQuery(5000000, "%#b\n");
  ExpectBlockThenAQuery(4096, "%#b");
  EXPECT_EQ(Query("LONG?"), std::string(255, 'L'));
  EXPECT_EQ(Query("*IDN?"), kIdn);
}

// A reply later than the time-out, or none at all (then a flush), never answers the next query.
TEST_P(TransportTest, TimeoutThenAGoodExchange) {
  for (const bool silent : {false, true}) {
    session_->SetTimeout(silent ? 100 : 150);
    Query(silent ? "SILENT?" : "SLOW?");
    EXPECT_EQ(status_, VI_ERROR_TMO);
    // Over USB the late reply is aborted; the silent one is flushed.
    EXPECT_TRUE(!usb() || silent ||
                std::ranges::count(usb_log_.control_requests, usbtmc::kInitiateAbortBulkIn) > 0);
    EXPECT_EQ(silent ? session_->Flush(VI_READ_BUF) : VI_SUCCESS, VI_SUCCESS);
    session_->SetTimeout(kExchangeTimeoutMs);
    EXPECT_EQ(Query("*IDN?"), kIdn);
  }
}

TEST_P(TransportTest, StatusByteAndDeviceClear) {
  const Kind kind = GetParam().kind;
  ASSERT_EQ(Printf(*session_, "*IDN?\n"), VI_SUCCESS);
  ViUInt16 status_byte = 0;
  const ViStatus read = session_->ReadStatusByte(&status_byte);
  EXPECT_EQ(read, kind == Kind::kSocket ? VI_ERROR_NSUP_OPER : VI_SUCCESS);
  const int cleared = instrument_.cleared.load();
  usb_log_.control_requests.clear();
  EXPECT_EQ(session_->Clear(), VI_SUCCESS);
  EXPECT_EQ(instrument_.cleared.load(), cleared + (kind == Kind::kSocket ? 0 : 1));
  if (usb()) {
    EXPECT_EQ(usb_log_.control_requests,
              (std::vector<std::uint8_t>{usbtmc::kInitiateClear, usbtmc::kCheckClearStatus}));
  }
  EXPECT_EQ(Query("ECHO after"), "after\n");
}

TEST_P(TransportTest, InstrumentGoingAwayBeforeTheReplyOrMidBlock) {
  Query("BYE");
  EXPECT_EQ(status_, VI_ERROR_CONN_LOST) << std::hex << status_;
  ASSERT_NO_FATAL_FAILURE(usb() ? OpenUsb(GetParam().usb) : Reopen());
  std::vector<char> area(600000);
  ViInt32 count = 600000;
  ASSERT_EQ(Printf(*session_, "DROP?\n"), VI_SUCCESS);
  const ViStatus status = Scanf(*session_, "%#b", &count, area.data());
  EXPECT_TRUE(status == VI_ERROR_CONN_LOST || (!usb() && status == VI_ERROR_IO))
      << std::hex << status;
  // What came before the drop is kept: the block's first 100,000 bytes, its header included.
  EXPECT_EQ(count, 100000 - 8);
  EXPECT_TRUE(std::equal(area.begin(), area.begin() + count, BlockReply().begin() + 8));
  // The session stays a session: every later call reports the lost link, none hangs.
  EXPECT_LT(Printf(*session_, "*IDN?\n"), VI_SUCCESS);
  char reply[16];
  EXPECT_LT(Scanf(*session_, "%15t", reply), VI_SUCCESS);
  if (usb()) return;
  // The server serves the next client.
  Reopen();
  EXPECT_EQ(Query("*IDN?"), kIdn);
}

// What only USB-TMC does: transfers with EOM, bTags and empty transfers.
class UsbtmcSessionTest : public TransportTest {};

INSTANTIATE_TEST_SUITE_P(Devices, UsbtmcSessionTest,
                         ::testing::ValuesIn(kUsbLinks.begin(), kUsbLinks.end()), LinkName);

// bTags wrap after 255 transfers and are never 0.
TEST_P(UsbtmcSessionTest, LongMessageHasEomOnlyOnItsLastTransferAndTagsWrap) {
  const std::string command = ":DISPlay:ANNotation:TEXT \"" + std::string(150000, 'a') + "\"";
  ASSERT_EQ(Printf(*session_, "%s\n", command.c_str()), VI_SUCCESS);
  const std::vector<bool>& eom = usb_log_.out_end_of_message;
  ASSERT_GE(eom.size(), 3u);
  EXPECT_TRUE(eom.back());
  EXPECT_EQ(std::count(eom.begin(), eom.end(), true), 1);
  EXPECT_EQ(instrument_.messages().back(), command);
  for (int k = 0; k < 140; ++k) ASSERT_EQ(Query("*IDN?"), kIdn) << k;
  EXPECT_GT(usb_log_.tags.size(), 255u);
  EXPECT_EQ(std::count(usb_log_.tags.begin(), usb_log_.tags.end(), 0), 0);
  ExpectHostFollowedTheUsbtmcProtocol();
}

TEST_P(UsbtmcSessionTest, EndlessEmptyTransfersEndInATimeout) {
  usb_device_->options().empty_transfers_only = true;
  session_->SetTimeout(50);
  Query("*IDN?");
  EXPECT_EQ(status_, VI_ERROR_TMO);
}

class UsbtmcRecoveryTest : public TransportTest {};

INSTANTIATE_TEST_SUITE_P(Device, UsbtmcRecoveryTest, ::testing::Values(Link{"Usb", Kind::kUsbtmc}),
                         LinkName);

TEST_P(UsbtmcRecoveryTest, DeviceFaultsAndQuirks) {
  constexpr ViUInt32 kTimeoutMs = 150;
  const auto ask = [](const char* query) {  // a raw write of the query and LF, one raw read
    return [query](Session& session) {
      const std::string message = std::string(query) + "\n";
      ViUInt32 count = 0;
      std::vector<std::byte> reply(256);
      const ViStatus status = session.Write(std::as_bytes(std::span(message)), &count);
      return status < VI_SUCCESS ? status : session.Read(reply, &count);
    };
  };
  const auto slow = ask("SLOW?"), idn = ask("*IDN?");
  constexpr ViStatus kTmo = VI_ERROR_TMO;
  const UsbDeviceOptions kSplit{
      .packet_size = 8, .packets_per_bulk_in = 1, .corrupt_next_tag = true};
  const auto empty_write = [](Session& session) {
    ViUInt32 count = 0;
    return session.Write({}, &count);
  };
  const auto fill_write_buffer = [](Session& session) {  // the LF lands on its boundary
    return Printf(session, "%s\n", std::string(Session::kWriteBufferSize - 1, 't').c_str());
  };
  const struct {
    const char* name;
    UsbDeviceOptions options;
    std::function<ViStatus(Session&)> exchange;
    ViStatus expected;
  } cases[] = {
      {"abort answered 'try later' twice", {.abort_busy_answers = 2}, slow, VI_ERROR_TMO},
      {"abort never possible: a clear", {.abort_busy_answers = 50}, slow, VI_ERROR_TMO},
      // The rest is flushed in full packets and a zero-length one.
      {"abort pending", {.pending_answers = 3, .abort_flush_packets = 2}, slow, VI_ERROR_TMO},
      {"bulk-in stalls", {.stall_bulk_in_next = true}, idn, VI_ERROR_IO},
      {"wrong bTag", {.corrupt_next_tag = true}, idn, VI_ERROR_IO},
      {"wrong bTag, split headers", kSplit, idn, VI_ERROR_IO},
      {"transfer cut by a short packet", {.short_transfer_next = true}, idn, VI_ERROR_IO},
      {"bulk-out time-out", {.pending_answers = 2, .bulk_out_timeout_next = true}, idn, kTmo},
      // Half a message and a halted bulk-out left by an earlier session.
      {"stale session", {.stale_session = true}, idn, VI_SUCCESS},
      {"message filling the write buffer", {}, fill_write_buffer, VI_SUCCESS},
      {"empty write", {}, empty_write, VI_SUCCESS},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    ASSERT_NO_FATAL_FAILURE(OpenUsb(c.options));
    session_->SetTimeout(kTimeoutMs);
    const auto start = visa::Clock::now();
    EXPECT_EQ(c.exchange(*session_), c.expected);
    // Recovery takes a few polls, never the seconds of its budgets.
    EXPECT_LT(visa::Clock::now() - start, milliseconds(kTimeoutMs + 700));
    session_->SetTimeout(1000);
    EXPECT_EQ(Query("*IDN?"), kIdn);
    EXPECT_EQ(usb_log_.violations, std::vector<std::string>{});
    EXPECT_FALSE(usb_device_->bulk_out_halted());
    EXPECT_EQ(std::count(usb_log_.out_sizes.begin(), usb_log_.out_sizes.end(), 0u), 0);
  }
}

TEST_P(UsbtmcRecoveryTest, ClosingInMidReadAbortsTheTransfer) {
  ASSERT_NO_FATAL_FAILURE(OpenUsb({.packet_size = 8, .packets_per_bulk_in = 1}));
  ASSERT_EQ(Printf(*session_, "*IDN?\n"), VI_SUCCESS);
  std::vector<std::byte> part(8);
  ViUInt32 count = 0;
  ASSERT_EQ(session_->Read(part, &count), VI_SUCCESS_MAX_CNT);
  usb_log_.control_requests.clear();
  session_.reset();
  EXPECT_EQ(
      usb_log_.control_requests,
      (std::vector<std::uint8_t>{usbtmc::kInitiateAbortBulkIn, usbtmc::kCheckAbortBulkInStatus}));
  EXPECT_EQ(usb_log_.violations, std::vector<std::string>{});
}

// REN_CONTROL at open only to a device that has it; the status byte by interrupt-in or not.
TEST_P(UsbtmcRecoveryTest, Usb488RemoteEnableAndStatusByte) {
  for (const std::uint8_t capabilities : {0x06, 0x00}) {
    ASSERT_NO_FATAL_FAILURE(OpenUsb({.usb488_capabilities = capabilities,
                                     .interrupt_in = capabilities == 0,
                                     .status_byte = 0x51}));
    const auto& requests = usb_log_.control_requests;
    EXPECT_EQ(requests.front(), usbtmc::kGetCapabilities);
    EXPECT_EQ(std::count(requests.begin(), requests.end(), usbtmc::kRenControl),
              capabilities ? 1 : 0);
    ViUInt16 status_byte = 0;
    EXPECT_EQ(session_->ReadStatusByte(&status_byte), VI_SUCCESS);
    EXPECT_EQ(status_byte, 0x51);
  }
}

class SocketTimeoutTest : public TransportTest {};

INSTANTIATE_TEST_SUITE_P(Socket, SocketTimeoutTest,
                         ::testing::Values(Link{"Socket", Kind::kSocket}), LinkName);

// Short time-outs wait with poll(), longer ones under the socket's own receive time-out, which
// follows the session's: a read without answer ends at its time-out, also after reads that
// waited longer. Nothing on a raw socket tells a late reply from the next one: a reply later
// than the wait before the next message must not answer that message.
TEST_P(SocketTimeoutTest, UnansweredQueryEndsAtItsTimeoutAndALateReplyAnswersNothing) {
  const struct {
    ViUInt32 earlier_ms;  // time-out of a good exchange just before
    ViUInt32 timeout_ms;
  } cases[] = {{2000, 60}, {2000, 150}, {2000, 400}, {60, 400}, {400, 120}};
  for (const auto& c : cases) {
    // A new session each time: the last one's unanswered query would hold up the next.
    ASSERT_NO_FATAL_FAILURE(Reopen());
    session_->SetTimeout(c.earlier_ms);
    ASSERT_EQ(Query("*IDN?"), kIdn);
    session_->SetTimeout(c.timeout_ms);
    const auto start = std::chrono::steady_clock::now();
    Query("SILENT?");
    const auto elapsed =
        std::chrono::duration_cast<milliseconds>(std::chrono::steady_clock::now() - start);
    EXPECT_EQ(status_, VI_ERROR_TMO);
    EXPECT_GE(elapsed.count(), c.timeout_ms) << c.earlier_ms << " then " << c.timeout_ms;
    // Generous for a loaded machine, yet far below any stale longer time-out.
    EXPECT_LT(elapsed.count(), c.timeout_ms + 250) << c.earlier_ms << " then " << c.timeout_ms;
  }
  ASSERT_NO_FATAL_FAILURE(Reopen());
  session_->SetTimeout(150);
  Query("SLOW?");
  EXPECT_EQ(status_, VI_ERROR_TMO);
  ASSERT_EQ(Printf(*session_, "*IDN?\n"), VI_SUCCESS);  // waits 150 ms for the late reply, in vain
  session_->SetTimeout(2000);
  char reply[64] = {};
  ASSERT_EQ(Scanf(*session_, "%t", reply), VI_SUCCESS);
  EXPECT_STREQ(reply, kIdn);
}

}  // namespace
}  // namespace quarvelo::testing
