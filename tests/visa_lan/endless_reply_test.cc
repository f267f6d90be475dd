// An instrument that never stops talking: a text reply without its end, or an endless
// indefinite block, sent a few bytes at a time. Every read and every discard before the next
// message must still end at its time-out, over a raw socket and over HiSLIP alike.
#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "platform/visa/hislip/message.h"
#include "platform/visa/transport.h"
#include "platform/visa/visa.h"
#include "sim/server/tcp_listener.h"

namespace quarvelo::testing {
namespace {

namespace hislip = visa::hislip;
using std::chrono::milliseconds;

class EndlessServer {
 public:
  EndlessServer(bool hislip, std::string start) : hislip_(hislip), start_(std::move(start)) {
    std::string error;
    listener_ = sim::OpenTcpListener("127.0.0.1", 0, &error);
    thread_ = std::thread([this] { Run(); });
  }
  ~EndlessServer() {
    stop_.Raise();
    thread_.join();
    for (std::thread& talker : talkers_) talker.join();
  }
  std::uint16_t port() const { return sim::LocalPort(listener_.fd()); }

 private:
  bool Receive(int fd, std::span<std::byte> bytes) {
    return sim::ReadExact(fd, bytes, stop_, sim::ServerClock::now() + std::chrono::seconds(5)) ==
           sim::IoResult::kOk;
  }
  bool ReceiveHislip(int fd, hislip::Header* header) {
    hislip::HeaderBytes bytes;
    if (!Receive(fd, bytes) || !hislip::DecodeHeader(bytes, header)) return false;
    std::vector<std::byte> payload(header->payload_length);
    return Receive(fd, payload);
  }
  bool SendHislip(int fd, const hislip::Header& header, std::string_view payload = {}) {
    const hislip::HeaderBytes bytes = hislip::EncodeHeader(header);
    const auto deadline = sim::ServerClock::now() + std::chrono::seconds(5);
    return sim::WriteAll(fd, bytes, stop_, deadline) == sim::IoResult::kOk &&
           sim::WriteAll(fd, std::as_bytes(std::span(payload)), stop_, deadline) ==
               sim::IoResult::kOk;
  }

  void Run() {
    while (!stop_.raised()) {
      sim::Socket connection = sim::Accept(listener_.fd(), stop_, sim::ServerDeadline::max());
      if (!connection.valid()) continue;
      if (!hislip_) {
        talkers_.emplace_back([this, c = std::move(connection)]() mutable {
          std::vector<std::byte> query(256);
          std::size_t count = 0;
          if (sim::ReadSome(c.fd(), query, stop_, sim::ServerDeadline::max(), &count) ==
              sim::IoResult::kOk) {
            Talk(c.fd());
          }
        });
        continue;
      }
      hislip::Header header;
      if (!ReceiveHislip(connection.fd(), &header) ||
          !SendHislip(connection.fd(), {hislip::MessageType::kInitializeResponse, 0,
                                        hislip::InitializeResponseParameter(0x0100, 1), 0})) {
        continue;
      }
      sim::Socket async =
          sim::Accept(listener_.fd(), stop_, sim::ServerClock::now() + std::chrono::seconds(5));
      const auto size = hislip::EncodeUint64(1 << 20);
      if (!async.valid() || !ReceiveHislip(async.fd(), &header) ||
          !SendHislip(async.fd(), {hislip::MessageType::kAsyncInitializeResponse, 0, 0, 0}) ||
          !ReceiveHislip(async.fd(), &header) ||
          !SendHislip(async.fd(), {hislip::MessageType::kAsyncMaxMsgSizeResponse, 0, 0, 8},
                      std::string_view(reinterpret_cast<const char*>(size.data()), 8))) {
        continue;
      }
      talkers_.emplace_back([this, c = std::move(connection), a = std::move(async)]() mutable {
        hislip::Header query;
        if (ReceiveHislip(c.fd(), &query) &&
            SendHislip(c.fd(), {hislip::MessageType::kDataEnd, 0, query.parameter, 1ull << 40})) {
          Talk(c.fd());
        }
      });
    }
  }

  // The start of the reply, then bytes every few milliseconds until the client gives up.
  void Talk(int fd) {
    std::string bytes = start_;
    while (!stop_.raised()) {
      bytes += "xxxxxxxx";
      if (sim::WriteAll(fd, std::as_bytes(std::span(bytes)), stop_,
                        sim::ServerClock::now() + milliseconds(100)) != sim::IoResult::kOk) {
        return;
      }
      bytes.clear();
      sim::WaitFor(fd, 0, stop_, sim::ServerClock::now() + milliseconds(5));
    }
  }

  bool hislip_;
  std::string start_;
  sim::Socket listener_;
  sim::StopSignal stop_;
  std::thread thread_;
  std::vector<std::thread> talkers_;
};

TEST(EndlessReplyTest, ReadsAndDiscardsEndAtTheirTimeOut) {
  constexpr ViUInt32 kTimeoutMs = 300;
  for (const bool hislip : {false, true}) {
    for (const bool block : {false, true}) {
      SCOPED_TRACE(std::string(hislip ? "HiSLIP" : "socket") + (block ? ", #0 block" : ", text"));
      EndlessServer server(hislip, block ? "#0" : "");
      ViSession rm = VI_NULL;
      ViSession vi = VI_NULL;
      ASSERT_EQ(viOpenDefaultRM(&rm), VI_SUCCESS);
      const std::string port = std::to_string(server.port());
      const std::string resource = hislip ? "TCPIP0::127.0.0.1::hislip0," + port + "::INSTR"
                                          : "TCPIP0::127.0.0.1::" + port + "::SOCKET";
      ASSERT_EQ(viOpen(rm, resource.c_str(), VI_NO_LOCK, 2000, &vi), VI_SUCCESS);
      ASSERT_EQ(viSetAttribute(vi, VI_ATTR_TMO_VALUE, kTimeoutMs), VI_SUCCESS);
      ASSERT_EQ(viPrintf(vi, "QUERY?\n"), VI_SUCCESS);
      std::vector<char> area(1 << 20);
      ViInt32 count = static_cast<ViInt32>(area.size());
      auto start = visa::Clock::now();
      const ViStatus read =
          block ? viScanf(vi, "%#b", &count, area.data()) : viScanf(vi, "%#t", &count, area.data());
      EXPECT_EQ(read, VI_ERROR_TMO);
      EXPECT_LT(visa::Clock::now() - start, milliseconds(kTimeoutMs + 400));
      // The next message first discards the rest of the reply, which never ends either.
      start = visa::Clock::now();
      viPrintf(vi, "NEXT\n");
      EXPECT_LT(visa::Clock::now() - start, milliseconds(kTimeoutMs + 400));
      viClose(rm);
    }
  }
}

}  // namespace
}  // namespace quarvelo::testing
