// The USB-TMC host against a device that follows the USBTMC standard's state tables, one
// fault or quirk at a time: each exchange that goes wrong must end as it should, leave no
// halted endpoint and no step the tables forbid, and the next query must work.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdarg>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/visa/session.h"
#include "platform/visa/usbtmc/usbtmc_protocol.h"
#include "platform/visa/usbtmc/usbtmc_transport.h"
#include "sim/server/usbtmc_device.h"
#include "tests/visa/test_instrument.h"

namespace quarvelo::testing {
namespace {

using sim::UsbDeviceLog;
using sim::UsbDeviceOptions;
using std::chrono::milliseconds;
using visa::Session;
namespace usbtmc = visa::usbtmc;

constexpr ViUInt32 kTimeoutMs = 150;

struct UsbBench {
  explicit UsbBench(UsbDeviceOptions options) {
    auto owned = std::make_unique<sim::UsbtmcDevice>(&instrument, options, &log);
    device = owned.get();
    auto transport = std::make_unique<visa::UsbtmcTransport>(std::move(owned));
    started = transport->Start();
    session = std::make_unique<Session>(std::move(transport));
    session->SetTimeout(kTimeoutMs);
  }

  ViStatus Ask(const std::string& query, std::string* reply = nullptr) {
    const std::string message = query + "\n";
    ViUInt32 count = 0;
    ViStatus status = session->Write(std::as_bytes(std::span(message)), &count);
    if (status < VI_SUCCESS) return status;
    std::vector<std::byte> buffer(256);
    status = session->Read(buffer, &count);
    if (reply != nullptr) reply->assign(reinterpret_cast<const char*>(buffer.data()), count);
    return status;
  }

  CannedHandler instrument;
  UsbDeviceLog log;
  sim::UsbtmcDevice* device = nullptr;
  ViStatus started = VI_SUCCESS;
  std::unique_ptr<Session> session;
};

ViStatus PrintfTo(Session& session, const char* format, ...) {
  visa::VaArgs args;
  va_start(args.list, format);
  const ViStatus status = session.Printf(format, &args);
  va_end(args.list);
  return status;
}

TEST(UsbtmcRecoveryTest, DeviceFaultsAndQuirks) {
  const auto ask = [](const char* query) {
    return [query](UsbBench& bench) { return bench.Ask(query); };
  };
  const struct {
    const char* name;
    UsbDeviceOptions options;
    std::function<ViStatus(UsbBench&)> exchange;
    ViStatus expected;
  } cases[] = {
      {"abort answered 'try later' twice", {.abort_busy_answers = 2}, ask("SLOW?"), VI_ERROR_TMO},
      {"abort never possible: a clear instead",
       {.abort_busy_answers = 50},
       ask("SLOW?"),
       VI_ERROR_TMO},
      {"abort pending, rest flushed in full packets and a zero-length one",
       {.pending_answers = 3, .abort_flush_packets = 2},
       ask("SLOW?"),
       VI_ERROR_TMO},
      {"bulk-in stalls", {.stall_bulk_in_next = true}, ask("*IDN?"), VI_ERROR_IO},
      {"wrong bTag in the response", {.corrupt_next_tag = true}, ask("*IDN?"), VI_ERROR_IO},
      {"wrong bTag, headers split across calls",
       {.packet_size = 8, .packets_per_bulk_in = 1, .corrupt_next_tag = true},
       ask("*IDN?"),
       VI_ERROR_IO},
      {"transfer cut short by a short packet",
       {.short_transfer_next = true},
       ask("*IDN?"),
       VI_ERROR_IO},
      {"bulk-out times out, abort pending",
       {.pending_answers = 2, .bulk_out_timeout_next = true},
       ask("*IDN?"),
       VI_ERROR_TMO},
      {"half a message and a halted bulk-out left by an earlier session",
       {.stale_session = true},
       ask("*IDN?"),
       VI_SUCCESS},
      {"message ending on the write buffer's boundary",
       {},
       [](UsbBench& bench) {
         const std::string text(Session::kWriteBufferSize - 1, 't');
         return PrintfTo(*bench.session, "%s\n", text.c_str());
       },
       VI_SUCCESS},
      {"empty write",
       {},
       [](UsbBench& bench) {
         ViUInt32 count = 0;
         return bench.session->Write({}, &count);
       },
       VI_SUCCESS},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    UsbBench bench(c.options);
    ASSERT_EQ(bench.started, VI_SUCCESS);
    const auto start = visa::Clock::now();
    EXPECT_EQ(c.exchange(bench), c.expected);
    // Recovery takes a few polls, never the seconds of its budgets.
    EXPECT_LT(visa::Clock::now() - start, milliseconds(kTimeoutMs + 700));
    bench.session->SetTimeout(1000);
    std::string reply;
    EXPECT_EQ(bench.Ask("*IDN?", &reply), VI_SUCCESS);
    EXPECT_EQ(reply, kIdn);
    EXPECT_EQ(bench.log.violations, std::vector<std::string>{});
    EXPECT_FALSE(bench.device->bulk_out_halted());
    EXPECT_EQ(std::count(bench.log.out_sizes.begin(), bench.log.out_sizes.end(), 0u), 0);
  }
}

TEST(UsbtmcRecoveryTest, ClosingInMidReadAbortsTheTransfer) {
  CannedHandler instrument;
  UsbDeviceLog log;
  auto transport = std::make_unique<visa::UsbtmcTransport>(std::make_unique<sim::UsbtmcDevice>(
      &instrument, UsbDeviceOptions{.packet_size = 8, .packets_per_bulk_in = 1}, &log));
  ASSERT_EQ(WriteMessage(*transport, "*IDN?\n", In(500)), VI_SUCCESS);
  std::vector<std::byte> part(8);
  visa::ReadResult result;
  ASSERT_EQ(transport->Read(part, In(500), &result), VI_SUCCESS);
  ASSERT_FALSE(result.end);
  transport.reset();
  EXPECT_EQ(log.control_requests, (std::vector<std::uint8_t>{usbtmc::kInitiateAbortBulkIn,
                                                             usbtmc::kCheckAbortBulkInStatus}));
  EXPECT_EQ(log.violations, std::vector<std::string>{});
}

TEST(UsbtmcRecoveryTest, Usb488RemoteEnableAndStatusByte) {
  const struct {
    UsbDeviceOptions options;
    bool remote_enable;
  } cases[] = {
      {{.usb488_capabilities = 0x06, .interrupt_in = false, .status_byte = 0x44}, true},
      {{.usb488_capabilities = 0x00, .interrupt_in = true, .status_byte = 0x51}, false},
  };
  for (const auto& c : cases) {
    UsbBench bench(c.options);
    const auto& requests = bench.log.control_requests;
    EXPECT_EQ(requests.front(), usbtmc::kGetCapabilities);
    EXPECT_EQ(std::count(requests.begin(), requests.end(), usbtmc::kRenControl),
              c.remote_enable ? 1 : 0);
    ViUInt16 status_byte = 0;
    EXPECT_EQ(bench.session->ReadStatusByte(&status_byte), VI_SUCCESS);
    EXPECT_EQ(status_byte, c.options.status_byte);
  }
}

}  // namespace
}  // namespace quarvelo::testing
