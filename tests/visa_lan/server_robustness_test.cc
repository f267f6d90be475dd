// Bad bytes in both directions: the servers keep serving after any client input, and the
// clients return an error within their deadline whatever a server sends.
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "platform/visa/hislip/message.h"
#include "platform/visa/resource_name.h"
#include "platform/visa/tcp_connection.h"
#include "platform/visa/transport_open.h"
#include "platform/visa/visa.h"
#include "platform/visa/vxi11/core_channel.h"
#include "platform/visa/vxi11/portmapper.h"
#include "platform/visa/vxi11/rpc.h"
#include "sim/server/hislip_server.h"
#include "sim/server/portmapper_server.h"
#include "sim/server/socket_server.h"
#include "sim/server/tcp_listener.h"
#include "sim/server/vxi11_server.h"
#include "tests/visa/test_instrument.h"

namespace quarvelo::testing {
namespace {

namespace hislip = visa::hislip;
namespace rpc = visa::rpc;
namespace vxi11 = visa::vxi11;
namespace xdr = visa::xdr;
using visa::Clock;

std::string Str(std::span<const std::byte> bytes) {
  return std::string(reinterpret_cast<const char*>(bytes.data()), bytes.size());
}

std::string RandomBytes(unsigned seed, std::size_t size) {
  std::mt19937 generator(seed);
  std::string bytes(size, '\0');
  for (char& c : bytes) c = static_cast<char>(generator());
  return bytes;
}

enum class Lan { kSocket, kVxi11, kHislip };

// VXI-11 straight to the core channel.
std::string Resource(Lan lan, std::uint16_t port) {
  const std::string at = "TCPIP0::127.0.0.1:" + std::string(lan == Lan::kVxi11 ? "core:" : ":");
  return lan == Lan::kSocket  ? at + std::to_string(port) + "::SOCKET"
         : lan == Lan::kVxi11 ? at + std::to_string(port) + "::INSTR"
                              : at + "hislip0," + std::to_string(port) + "::INSTR";
}

ViStatus Open(const std::string& resource, int timeout_ms,
              std::unique_ptr<visa::Transport>* transport) {
  visa::ResourceAddress address;
  const ViStatus parsed = visa::ParseResourceName(resource, &address);
  return parsed != VI_SUCCESS ? parsed : visa::OpenTransport(address, In(timeout_ms), transport);
}

std::string Framed(const xdr::Writer& record) {
  xdr::Bytes framed;
  rpc::AppendRecord(record.bytes(), &framed);
  return Str(framed);
}

std::string Call(std::uint32_t program, std::uint32_t version, std::uint32_t procedure,
                 const std::string& arguments = {}) {
  xdr::Writer call;
  rpc::PutCallHeader(call, {0xABCD, program, version, procedure});
  call.PutRaw(xdr::AsBytes(arguments));
  return Framed(call);
}

std::string Header(hislip::MessageType type, std::uint64_t length, std::uint8_t control = 0,
                   std::uint32_t parameter = 0) {
  return Str(hislip::EncodeHeader({type, control, parameter, length}));
}

// Sends raw bytes and collects whatever comes back until the server goes quiet or closes.
std::string Exchange(std::uint16_t port, const std::string& bytes, int quiet_ms = 150) {
  std::unique_ptr<visa::TcpConnection> stream;
  EXPECT_EQ(visa::TcpConnection::Connect("127.0.0.1", port, In(1000), &stream), VI_SUCCESS);
  if (!stream) return {};
  stream->SendAll(xdr::AsBytes(bytes), In(1000));
  std::string received;
  std::vector<std::byte> buffer(64 * 1024);
  for (;;) {
    std::size_t count = 0;
    if (stream->ReceiveSome(buffer, In(quiet_ms), &count) != VI_SUCCESS) break;
    received += Str(std::span(buffer).first(count));
  }
  return received;
}

// The accept status of the one RPC reply in `received` and the first word of its results
// (a VXI-11 error), each -1 when absent.
std::pair<int, int> ReplyOf(const std::string& received) {
  rpc::RecordAssembler assembler(1 << 20);
  assembler.Feed(xdr::AsBytes(received));
  if (!assembler.HasRecord()) return {-1, -1};
  const xdr::Bytes record = assembler.PopRecord();
  xdr::Reader reader(record);
  rpc::ReplyHeader header;
  if (!rpc::GetReplyHeader(reader, &header) || !header.accepted) return {-1, -1};
  std::uint32_t error = 0;
  return {static_cast<int>(header.stat), reader.GetUint32(&error) ? static_cast<int>(error) : -1};
}

// Each server answers bad calls as RPC says (the accept status and the first result word, -1
// when absent) and survives garbage; then both clients still get their answers.
TEST(ServerRobustnessTest, ServersAnswerBadCallsAndSurviveGarbage) {
  CannedHandler handler;
  sim::Vxi11Server core(handler, "127.0.0.1", 0);
  sim::HislipServer hislip_server(handler, "127.0.0.1", 0);
  std::string error;
  ASSERT_TRUE(core.Start(&error) && hislip_server.Start(&error)) << error;
  sim::PortmapperServer portmapper("127.0.0.1", 0, core.port());
  ASSERT_TRUE(portmapper.Start(&error)) << error;
  using enum hislip::MessageType;
  enum Server { kCore, kPortmapper, kHislip };
  constexpr std::pair<int, int> kNoReply{-1, -1}, kUnchecked{-2, -2};
  const auto core_call = [](std::uint32_t procedure, const std::string& arguments) {
    return Call(vxi11::kCoreProgram, 1, procedure, arguments);
  };
  xdr::Writer read, reply, random_record;
  vxi11::Put(read, vxi11::DeviceReadParms{12345, 100, 100, 0, 0, 0});
  rpc::PutAcceptedReply(reply, 1, rpc::AcceptStat::kSuccess);
  random_record.PutRaw(xdr::AsBytes(RandomBytes(2, 400)));
  const std::string initialize = Header(kInitialize, 7) + "hislip0", huge("\xff\xff\xff\xff", 4);
  const std::string link_1("\0\0\0\1", 4), no_link = Str(read.bytes());
  const std::string lying_write = link_1 + std::string(11, '\0') + "\x08\x7f\xff\xff\xff";
  const int invalid_link = static_cast<int>(vxi11::kInvalidLinkIdentifier);
  const struct {
    const char* what;
    Server server;
    std::string bytes;
    std::pair<int, int> reply;
  } cases[] = {
      {"another program", kCore, Call(0x0607B0, 1, 1), {1, -1}},
      {"another version", kCore, Call(vxi11::kCoreProgram, 7, vxi11::kCreateLink), {2, -1}},
      {"unknown procedure", kCore, core_call(99, ""), {3, -1}},
      {"create_link cut short", kCore, core_call(vxi11::kCreateLink, "\0\0"), {4, -1}},
      {"unlock of a link id alone", kCore, core_call(vxi11::kDeviceUnlock, link_1), {0, 4}},
      {"write lying about its data", kCore, core_call(vxi11::kDeviceWrite, lying_write), {4, -1}},
      {"read on no link", kCore, core_call(vxi11::kDeviceRead, no_link), {0, invalid_link}},
      {"a reply instead of a call", kCore, Framed(reply), kNoReply},
      {"huge fragment", kCore, huge + "abc", kNoReply},
      {"text", kCore, "GET / HTTP/1.0\r\n\r\n", kNoReply},
      {"random", kCore, RandomBytes(1, 3000), kNoReply},
      {"random records", kCore, Framed(random_record), kNoReply},
      {"random", kPortmapper, RandomBytes(3, 5000), kNoReply},
      {"huge fragment", kPortmapper, huge, kNoReply},
      {"unknown procedure", kPortmapper, Call(100000, 2, 77), {3, -1}},
      {"getport cut short", kPortmapper, Call(100000, 2, visa::portmapper::kProcGetPort), {4, -1}},
      {"random", kHislip, RandomBytes(4, 5000), kUnchecked},
      {"short prologue", kHislip, "HS", kUnchecked},
      {"huge initialize", kHislip, Header(kInitialize, ~0ull), kUnchecked},
      {"async initialize of no session", kHislip, Header(kAsyncInitialize, 0, 0, 1), kUnchecked},
      {"huge data", kHislip, initialize + Header(kDataEnd, 1ull << 40) + "x", kUnchecked},
      {"random after initialize", kHislip, initialize + RandomBytes(5, 100), kUnchecked},
  };
  const std::uint16_t ports[] = {core.port(), portmapper.port(), hislip_server.port()};
  for (const auto& c : cases) {
    const std::string received = Exchange(ports[c.server], c.bytes);
    EXPECT_EQ(c.reply == kUnchecked ? kUnchecked : ReplyOf(received), c.reply) << c.what;
  }
  for (const std::string& resource :
       {"TCPIP0::127.0.0.1:" + std::to_string(portmapper.port()) + "::inst0::INSTR",
        Resource(Lan::kHislip, hislip_server.port())}) {
    std::unique_ptr<visa::Transport> transport;
    std::string answer;
    ASSERT_EQ(Open(resource, 2000, &transport), VI_SUCCESS) << resource;
    ASSERT_EQ(Query(*transport, "*IDN?", &answer), VI_SUCCESS);
    EXPECT_EQ(answer, kIdn);
  }
}

// A server that answers each message a client sends on each connection from a script, to
// feed the clients what no instrument should send. A talker, its script done, sends a few
// bytes every few milliseconds until the client goes away.
class ScriptedServer {
 public:
  using Step = std::function<std::string(const std::string& received)>;

  explicit ScriptedServer(std::vector<std::vector<Step>> connections, bool talker = false)
      : connections_(std::move(connections)), talker_(talker) {
    std::string error;
    listener_ = sim::OpenTcpListener("127.0.0.1", 0, &error);
    thread_ = std::thread([this] { Run(); });
  }
  ~ScriptedServer() {
    stop_.Raise();
    thread_.join();
  }
  std::uint16_t port() const { return sim::LocalPort(listener_.fd()); }

 private:
  // Each connection is served on its own thread: a client opens the next one (HiSLIP's
  // asynchronous channel) while the first waits for its next message.
  void Run() {
    std::vector<std::thread> workers;
    for (auto& steps : connections_) {
      sim::Socket connection = sim::Accept(listener_.fd(), stop_, sim::ServerDeadline::max());
      if (!connection.valid()) break;
      workers.emplace_back(
          [this, &steps, c = std::move(connection)]() mutable { Serve(std::move(c), steps); });
    }
    for (auto& worker : workers) worker.join();
  }

  void Serve(sim::Socket connection, std::vector<Step>& steps) {
    for (auto& step : steps) {
      std::vector<std::byte> buffer(64 * 1024);
      std::size_t count = 0;
      if (sim::ReadSome(connection.fd(), buffer, stop_, sim::ServerDeadline::max(), &count) !=
          sim::IoResult::kOk) {
        return;
      }
      const std::string reply = step(Str(std::span(buffer).first(count)));
      sim::WriteAll(connection.fd(), xdr::AsBytes(reply), stop_,
                    sim::ServerClock::now() + std::chrono::seconds(1));
    }
    // Kept open so that only the script ends an exchange.
    while (talker_ &&
           sim::WriteAll(connection.fd(), xdr::AsBytes(std::string_view("xxxxxxxx")), stop_,
                         sim::ServerClock::now() + std::chrono::milliseconds(100)) ==
               sim::IoResult::kOk) {
      sim::WaitFor(connection.fd(), 0, stop_,
                   sim::ServerClock::now() + std::chrono::milliseconds(5));
    }
    sim::WaitFor(connection.fd(), 0, stop_, sim::ServerDeadline::max());
  }

  std::vector<std::vector<Step>> connections_;
  bool talker_;
  sim::Socket listener_;
  sim::StopSignal stop_;
  std::thread thread_;
};

ScriptedServer::Step Reply(std::string bytes) {
  return [bytes](const std::string&) { return bytes; };
}

// Answers the RPC call it receives (with its xid) with `results`.
ScriptedServer::Step ReplyWithResults(std::string results) {
  return [results](const std::string& received) {
    std::uint32_t xid = 0;
    if (received.size() >= 8) xdr::Reader(xdr::AsBytes(received).subspan(4)).GetUint32(&xid);
    xdr::Writer reply;
    rpc::PutAcceptedReply(reply, xid, rpc::AcceptStat::kSuccess);
    reply.PutRaw(xdr::AsBytes(results));
    return Framed(reply);
  };
}

ScriptedServer::Step HislipReply(hislip::MessageType type, std::uint32_t parameter = 0,
                                 std::string payload = {}) {
  return Reply(Header(type, payload.size(), 0, parameter) + payload);
}

// The asynchronous channel's opening, answered as it should be.
std::vector<ScriptedServer::Step> GoodHislipAsync() {
  using enum hislip::MessageType;
  return {HislipReply(kAsyncInitializeResponse),
          HislipReply(kAsyncMaxMsgSizeResponse, 0, Str(hislip::EncodeUint64(1 << 20)))};
}

// Answers with the first message id a client uses.
ScriptedServer::Step AnswerFirst(hislip::MessageType type, std::uint64_t length,
                                 std::string payload) {
  return Reply(Header(type, length, 0, hislip::kFirstMessageId) + payload);
}

// A client against a server playing a script: the open fails or succeeds as `opens` says, a
// query on an opened link fails without taking a stale answer, and all of it ends well within
// the time-outs (a VXI-11 read waits a second past io_timeout for the instrument's own
// time-out reply, and closing waits as long for destroy_link).
TEST(ClientRobustnessTest, ClientsFailCleanlyOnAnyServerBytes) {
  using enum hislip::MessageType;
  const std::string write_ok("\0\0\0\0\0\0\0\6", 8);  // no error, 6 bytes taken
  // Error 0, link 1, abort port 0, maxRecvSize 1024.
  const auto create_link = ReplyWithResults(std::string("\0\0\0\0\0\0\0\1\0\0\0\0\0\0\4\0", 16));
  const auto initialized = HislipReply(kInitializeResponse, 1);
  const std::string zeros(12, '\0');
  const std::string read_cut("\0\0\0\0\0\0\0\4\0\0\0P", 12);  // END, 80 bytes never sent
  const auto read_answer = [&](std::string results) {         // the link opened, the query written
    return std::vector{create_link, ReplyWithResults(write_ok), ReplyWithResults(results)};
  };
  const struct {
    const char* what;
    bool hislip;
    std::vector<ScriptedServer::Step> script;  // on the core or the synchronous channel
    bool opens;
  } cases[] = {
      {"text instead of RPC", false, {Reply("HTTP/1.0 400 Bad\r\n\r\n")}, false},
      {"random bytes", false, {Reply(RandomBytes(6, 1000))}, false},
      {"huge fragment", false, {Reply(std::string("\x7f\xff\xff\xff", 4) + "abcd")}, false},
      {"create_link cut short", false, {ReplyWithResults(std::string(8, '\0'))}, false},
      {"create_link error", false, {ReplyWithResults(std::string("\0\0\0\3", 4) + zeros)}, false},
      {"read reply cut short", false, read_answer(read_cut), true},
      {"read reply of random words", false, read_answer(RandomBytes(7, 64)), true},
      {"read reply with an unknown error", false, read_answer(std::string("\0\0\0c", 4)), true},
      {"silence after the write", false, {create_link, ReplyWithResults(write_ok)}, true},
      {"no HS prologue", true, {Reply(std::string(16, 'x'))}, false},
      {"fatal error", true, {HislipReply(kFatalError)}, false},
      {"huge payload on the response", true, {Reply(Header(kInitializeResponse, ~0ull))}, false},
      {"random", true, {Reply(RandomBytes(8, 500))}, false},
      {"lying data length", true, {initialized, AnswerFirst(kDataEnd, 1ull << 62, "a")}, true},
      {"bad header mid-session", true, {initialized, Reply(RandomBytes(9, 64))}, true},
      {"error message", true, {initialized, HislipReply(kError, 0, "no")}, true},
      {"fatal error mid-session", true, {initialized, HislipReply(kFatalError)}, true},
      {"stale answers only", true, {initialized, HislipReply(kDataEnd, 12345, "old\n")}, true},
  };
  for (const auto& c : cases) {
    std::vector<std::vector<ScriptedServer::Step>> connections = {c.script};
    if (c.hislip && c.opens) connections.push_back(GoodHislipAsync());
    ScriptedServer server(std::move(connections));
    std::unique_ptr<visa::Transport> transport;
    const auto start = Clock::now();
    const ViStatus opened =
        Open(Resource(c.hislip ? Lan::kHislip : Lan::kVxi11, server.port()), 300, &transport);
    ASSERT_EQ(opened == VI_SUCCESS, c.opens) << c.what << " " << std::hex << opened;
    if (c.opens) {
      std::string reply;
      EXPECT_NE(Query(*transport, "*IDN?", &reply, 300), VI_SUCCESS) << c.what;
      EXPECT_EQ(reply.find("old"), std::string::npos) << c.what;
      transport.reset();
    }
    EXPECT_LT(Clock::now() - start, std::chrono::milliseconds(c.hislip ? 1500 : 2800)) << c.what;
  }
}

// An instrument that never stops talking (a text reply without its end, or an endless
// indefinite block): every read, and the discard before the next message, still ends at its
// time-out.
TEST(ClientRobustnessTest, ReadsAndDiscardsEndAtTheirTimeOutAgainstAnEndlessTalker) {
  using enum hislip::MessageType;
  constexpr ViUInt32 kTimeoutMs = 300;
  for (const bool hislip : {false, true}) {
    for (const std::string start : {"", "#0"}) {
      SCOPED_TRACE(std::string(hislip ? "HiSLIP" : "socket") + " '" + start + "'");
      std::vector<std::vector<ScriptedServer::Step>> script = {{Reply(start)}};
      if (hislip) {
        script = {{HislipReply(kInitializeResponse, 1), AnswerFirst(kDataEnd, 1ull << 40, start)},
                  GoodHislipAsync()};
      }
      ScriptedServer server(script, /*talker=*/true);
      ViSession rm = VI_NULL, vi = VI_NULL;
      ASSERT_EQ(viOpenDefaultRM(&rm), VI_SUCCESS);
      const std::string resource = Resource(hislip ? Lan::kHislip : Lan::kSocket, server.port());
      ASSERT_EQ(viOpen(rm, resource.c_str(), VI_NO_LOCK, 2000, &vi), VI_SUCCESS);
      ASSERT_EQ(viSetAttribute(vi, VI_ATTR_TMO_VALUE, kTimeoutMs), VI_SUCCESS);
      ASSERT_EQ(viPrintf(vi, "QUERY?\n"), VI_SUCCESS);
      std::vector<char> area(1 << 20);
      ViInt32 count = static_cast<ViInt32>(area.size());
      auto begin = Clock::now();
      EXPECT_EQ(viScanf(vi, start.empty() ? "%#t" : "%#b", &count, area.data()), VI_ERROR_TMO);
      EXPECT_LT(Clock::now() - begin, std::chrono::milliseconds(kTimeoutMs + 400));
      EXPECT_GT(count, 0) << "the talker talked";
      begin = Clock::now();
      viPrintf(vi, "NEXT\n");
      EXPECT_LT(Clock::now() - begin, std::chrono::milliseconds(kTimeoutMs + 400));
      viClose(rm);
    }
  }
}

// Ten connections are held (one served, nine waiting their turn); the eleventh is refused at
// once, in its protocol's words (the socket server closes it), instead of left waiting in silence.
TEST(ConnectionLimitTest, EleventhClientIsRefusedClearly) {
  CannedHandler handler;
  sim::SocketServer socket(handler, "127.0.0.1", 0);
  sim::Vxi11Server core(handler, "127.0.0.1", 0);
  sim::HislipServer hislip(handler, "127.0.0.1", 0);
  std::string error;
  ASSERT_TRUE(socket.Start(&error) && core.Start(&error) && hislip.Start(&error)) << error;
  const struct {
    Lan lan;
    std::uint16_t port;
    ViStatus status;  // of the open, or of the first read when the open succeeds
  } cases[] = {{Lan::kSocket, socket.port(), VI_ERROR_CONN_LOST},
               {Lan::kVxi11, core.port(), VI_ERROR_RSRC_BUSY},
               {Lan::kHislip, hislip.port(), VI_ERROR_RSRC_NFOUND}};
  for (const auto& c : cases) {
    std::vector<std::unique_ptr<visa::TcpConnection>> held(10);
    for (auto& connection : held) {
      ASSERT_EQ(visa::TcpConnection::Connect("127.0.0.1", c.port, In(1000), &connection),
                VI_SUCCESS);
    }
    const auto start = Clock::now();
    std::unique_ptr<visa::Transport> extra;
    std::string reply;
    ViStatus status = Open(Resource(c.lan, c.port), 1000, &extra);
    if (status == VI_SUCCESS) status = ReadMessage(*extra, In(1000), &reply);
    EXPECT_EQ(status, c.status) << static_cast<int>(c.lan);
    EXPECT_LT(Clock::now() - start, std::chrono::milliseconds(600)) << static_cast<int>(c.lan);
  }
}

}  // namespace
}  // namespace quarvelo::testing
