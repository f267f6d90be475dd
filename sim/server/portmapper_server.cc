#include "sim/server/portmapper_server.h"

#include <poll.h>
#include <sys/socket.h>

#include <memory>
#include <vector>

#include "platform/visa/vxi11/core_channel.h"
#include "platform/visa/vxi11/portmapper.h"
#include "platform/visa/vxi11/rpc.h"

namespace quarvelo::sim {
namespace {

namespace portmapper = visa::portmapper;
namespace rpc = visa::rpc;
namespace xdr = visa::xdr;

constexpr std::size_t kMaxCall = 4096;
constexpr std::size_t kMaxConnections = 8;
constexpr std::uint32_t kProcDump = 4;
constexpr auto kWriteTimeout = std::chrono::seconds(2);

struct Connection {
  Socket socket;
  rpc::RecordAssembler assembler{kMaxCall};
};

}  // namespace

bool AnswerPortmapperCall(std::span<const std::byte> call_record, std::uint16_t vxi11_core_port,
                          xdr::Writer* reply) {
  xdr::Reader in(call_record);
  rpc::CallHeader call;
  bool rpc_version_ok = true;
  if (!rpc::GetCallHeader(in, &call, &rpc_version_ok)) return false;
  if (!rpc_version_ok) {
    rpc::PutRpcMismatchReply(*reply, call.xid);
    return true;
  }
  if (call.program != portmapper::kProgram) {
    rpc::PutAcceptedReply(*reply, call.xid, rpc::AcceptStat::kProgUnavail);
    return true;
  }
  if (call.version != portmapper::kVersion) {
    rpc::PutAcceptedReply(*reply, call.xid, rpc::AcceptStat::kProgMismatch, portmapper::kVersion,
                          portmapper::kVersion);
    return true;
  }
  const portmapper::Mapping core{visa::vxi11::kCoreProgram, visa::vxi11::kCoreVersion,
                                 portmapper::kProtocolTcp, vxi11_core_port};
  switch (call.procedure) {
    case portmapper::kProcNull:
      rpc::PutAcceptedReply(*reply, call.xid, rpc::AcceptStat::kSuccess);
      return true;
    case portmapper::kProcGetPort: {
      portmapper::Mapping asked;
      if (!portmapper::GetMapping(in, &asked)) {
        rpc::PutAcceptedReply(*reply, call.xid, rpc::AcceptStat::kGarbageArgs);
        return true;
      }
      const bool known = asked.program == core.program && asked.version == core.version &&
                         asked.protocol == core.protocol;
      rpc::PutAcceptedReply(*reply, call.xid, rpc::AcceptStat::kSuccess);
      portmapper::PutPort(*reply, known ? vxi11_core_port : 0);
      return true;
    }
    case kProcDump:
      // An XDR optional list: "value follows", the mapping, then "no more".
      rpc::PutAcceptedReply(*reply, call.xid, rpc::AcceptStat::kSuccess);
      reply->PutBool(true);
      portmapper::PutMapping(*reply, core);
      reply->PutBool(false);
      return true;
    default:
      rpc::PutAcceptedReply(*reply, call.xid, rpc::AcceptStat::kProcUnavail);
      return true;
  }
}

PortmapperServer::PortmapperServer(std::string bind_address, std::uint16_t port,
                                   std::uint16_t vxi11_core_port)
    : bind_address_(std::move(bind_address)), requested_port_(port), core_port_(vxi11_core_port) {}

PortmapperServer::~PortmapperServer() { Stop(); }

bool PortmapperServer::Start(std::string* error) {
  if (thread_.joinable()) return true;
  listener_ = OpenTcpListener(bind_address_, requested_port_, error);
  if (!listener_.valid()) return false;
  port_ = LocalPort(listener_.fd());
  std::string udp_error;
  udp_ = OpenUdpSocket(bind_address_, port_, &udp_error);  // optional: TCP is what matters
  stop_.Reset();
  thread_ = std::thread([this] { Run(); });
  return true;
}

void PortmapperServer::Stop() {
  if (!thread_.joinable()) return;
  stop_.Raise();
  thread_.join();
  listener_ = Socket();
  udp_ = Socket();
}

void PortmapperServer::Run() {
  std::vector<std::unique_ptr<Connection>> connections;
  std::vector<std::byte> scratch(kMaxCall);
  for (;;) {
    std::vector<pollfd> waiters = {{stop_.fd(), POLLIN, 0}, {listener_.fd(), POLLIN, 0}};
    if (udp_.valid()) waiters.push_back({udp_.fd(), POLLIN, 0});
    const std::size_t first_connection = waiters.size();
    for (const auto& connection : connections) {
      waiters.push_back({connection->socket.fd(), POLLIN, 0});
    }
    if (poll(waiters.data(), waiters.size(), -1) < 0) continue;
    if (waiters[0].revents != 0) return;
    if (waiters[1].revents != 0) {
      // Past the limit the newcomer is accepted and closed at once rather than left to spin.
      Socket accepted = Accept(listener_.fd(), stop_, ServerClock::now());
      if (accepted.valid() && connections.size() < kMaxConnections) {
        auto connection = std::make_unique<Connection>();
        connection->socket = std::move(accepted);
        connections.push_back(std::move(connection));
      }
    }
    if (udp_.valid() && waiters[2].revents != 0) {
      sockaddr_storage from{};
      socklen_t from_length = sizeof(from);
      const ssize_t n = recvfrom(udp_.fd(), scratch.data(), scratch.size(), 0,
                                 reinterpret_cast<sockaddr*>(&from), &from_length);
      xdr::Writer reply;
      if (n > 0 && AnswerPortmapperCall(std::span(scratch).first(n), core_port_, &reply)) {
        sendto(udp_.fd(), reply.bytes().data(), reply.bytes().size(), MSG_NOSIGNAL,
               reinterpret_cast<sockaddr*>(&from), from_length);
      }
    }
    for (std::size_t i = first_connection; i < waiters.size(); ++i) {
      if (waiters[i].revents == 0) continue;
      Connection& connection = *connections[i - first_connection];
      std::size_t count = 0;
      bool keep = ReadSome(connection.socket.fd(), scratch, stop_, ServerClock::now(), &count) ==
                      IoResult::kOk &&
                  connection.assembler.Feed(std::span(scratch).first(count));
      while (keep && connection.assembler.HasRecord()) {
        const xdr::Bytes call = connection.assembler.PopRecord();
        xdr::Writer reply;
        if (!AnswerPortmapperCall(call, core_port_, &reply)) continue;
        xdr::Bytes framed;
        rpc::AppendRecord(reply.bytes(), &framed);
        if (omit_last_fragment_bit_) framed[0] &= std::byte{0x7F};
        keep = WriteAll(connection.socket.fd(), framed, stop_,
                        ServerClock::now() + kWriteTimeout) == IoResult::kOk;
      }
      if (!keep) connection.socket = Socket();
    }
    std::erase_if(connections, [](const auto& c) { return !c->socket.valid(); });
  }
}

}  // namespace quarvelo::sim
