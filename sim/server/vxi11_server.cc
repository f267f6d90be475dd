#include "sim/server/vxi11_server.h"

#include <poll.h>

#include <algorithm>
#include <cctype>
#include <cstring>
#include <set>
#include <vector>

#include "platform/visa/vxi11/core_channel.h"
#include "platform/visa/vxi11/rpc.h"
#include "platform/visa/vxi11/xdr.h"

namespace quarvelo::sim {
namespace {

namespace rpc = visa::rpc;
namespace vxi11 = visa::vxi11;
namespace xdr = visa::xdr;

constexpr std::size_t kScratchSize = 64 * 1024;
constexpr std::size_t kRecordOverhead = 4096;
// A program message longer than this without END is not something a client means.
constexpr std::size_t kMaxMessage = 64 * 1024 * 1024;
// A client that stops reading its replies must not hold the server for ever.
constexpr auto kWriteTimeout = std::chrono::seconds(10);

bool IsDeviceName(const std::string& name) {
  if (name.size() < 5) return false;
  std::string lower(name);
  std::transform(lower.begin(), lower.end(), lower.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return lower.compare(0, 4, "inst") == 0 &&
         std::all_of(lower.begin() + 4, lower.end(),
                     [](unsigned char c) { return std::isdigit(c); });
}

ServerDeadline After(std::uint32_t milliseconds) {
  return ServerClock::now() + std::chrono::milliseconds(milliseconds);
}

// One client connection: the links it opened, the program message being received and the
// response waiting to be read.
class Vxi11Session {
 public:
  Vxi11Session(MessageHandler& handler, const Vxi11ServerOptions& options, int fd,
               const StopSignal& stop, std::atomic<std::int32_t>& next_lid,
               std::atomic<int>& live_links)
      : handler_(handler),
        options_(options),
        fd_(fd),
        stop_(stop),
        next_lid_(next_lid),
        live_links_(live_links) {}

  // Answers one record: the reply's RPC header and, for a successful call, the procedure's
  // results. Returns false when the connection must close (after the reply).
  bool HandleRecord(std::span<const std::byte> record, xdr::Writer* reply, xdr::Writer* results,
                    bool* has_reply);
  // Response bytes that follow the results on the wire, written from where they lie instead
  // of being copied into the results (device_read's data, then its XDR padding). Valid until
  // the next HandleRecord.
  std::span<const std::byte> tail() const { return tail_; }
  std::size_t tail_padding() const { return tail_padding_; }

 private:
  struct PendingReply {
    bool active = false;
    std::string data;
    std::size_t offset = 0;
    ServerDeadline ready;
    bool drop = false;
  };

  bool Dispatch(std::uint32_t procedure, xdr::Reader& in, xdr::Writer& out);
  void CreateLink(const vxi11::CreateLinkParms& parms, xdr::Writer& out);
  bool DeviceWrite(const vxi11::DeviceWriteParms& parms, xdr::Writer& out);
  bool DeviceRead(const vxi11::DeviceReadParms& parms, xdr::Writer& out);
  bool LinkKnown(std::int32_t lid) const { return links_.count(lid) != 0; }
  // Waits for the pending reply's delay or the end of io_timeout, whichever comes first.
  // Returns false when the server stops.
  bool WaitForReply(std::uint32_t io_timeout, bool* ready);

  MessageHandler& handler_;
  const Vxi11ServerOptions& options_;
  int fd_;
  const StopSignal& stop_;
  std::atomic<std::int32_t>& next_lid_;
  std::atomic<int>& live_links_;
  std::set<std::int32_t> links_;
  std::string input_;
  PendingReply pending_;
  std::string retired_reply_;  // a reply fully handed to the last device_read
  std::span<const std::byte> tail_;
  std::size_t tail_padding_ = 0;
  bool drop_after_reply_ = false;
};

bool Vxi11Session::HandleRecord(std::span<const std::byte> record, xdr::Writer* reply,
                                xdr::Writer* results, bool* has_reply) {
  *has_reply = false;
  tail_ = {};
  tail_padding_ = 0;
  xdr::Reader in(record);
  rpc::CallHeader call;
  bool rpc_version_ok = true;
  if (!rpc::GetCallHeader(in, &call, &rpc_version_ok)) return true;  // not a call: ignore it
  *has_reply = true;
  if (!rpc_version_ok) {
    rpc::PutRpcMismatchReply(*reply, call.xid);
    return true;
  }
  if (call.program != vxi11::kCoreProgram) {
    rpc::PutAcceptedReply(*reply, call.xid, rpc::AcceptStat::kProgUnavail);
    return true;
  }
  if (call.version != vxi11::kCoreVersion) {
    rpc::PutAcceptedReply(*reply, call.xid, rpc::AcceptStat::kProgMismatch, vxi11::kCoreVersion,
                          vxi11::kCoreVersion);
    return true;
  }
  xdr::Writer outcome;
  bool known_procedure = true;
  bool garbage = false;
  switch (call.procedure) {
    case vxi11::kCreateLink:
    case vxi11::kDeviceWrite:
    case vxi11::kDeviceRead:
    case vxi11::kDeviceReadStb:
    case vxi11::kDeviceTrigger:
    case vxi11::kDeviceClear:
    case vxi11::kDeviceRemote:
    case vxi11::kDeviceLocal:
    case vxi11::kDeviceLock:
    case vxi11::kDeviceUnlock:
    case vxi11::kDeviceEnableSrq:
    case vxi11::kDeviceDocmd:
    case vxi11::kDestroyLink:
    case vxi11::kCreateIntrChan:
    case vxi11::kDestroyIntrChan:
      garbage = !Dispatch(call.procedure, in, outcome);
      break;
    default:
      known_procedure = false;
  }
  if (stop_.raised()) return false;
  if (!known_procedure) {
    rpc::PutAcceptedReply(*reply, call.xid, rpc::AcceptStat::kProcUnavail);
  } else if (garbage) {
    rpc::PutAcceptedReply(*reply, call.xid, rpc::AcceptStat::kGarbageArgs);
  } else {
    rpc::PutAcceptedReply(*reply, call.xid, rpc::AcceptStat::kSuccess);
    *results = std::move(outcome);
  }
  const bool keep_open = !drop_after_reply_;
  drop_after_reply_ = false;
  return keep_open;
}

bool Vxi11Session::Dispatch(std::uint32_t procedure, xdr::Reader& in, xdr::Writer& out) {
  switch (procedure) {
    case vxi11::kCreateLink: {
      vxi11::CreateLinkParms parms;
      if (!vxi11::Get(in, &parms)) return false;
      CreateLink(parms, out);
      return true;
    }
    case vxi11::kDeviceWrite: {
      vxi11::DeviceWriteParms parms;
      if (!vxi11::Get(in, &parms)) return false;
      return DeviceWrite(parms, out);
    }
    case vxi11::kDeviceRead: {
      vxi11::DeviceReadParms parms;
      if (!vxi11::Get(in, &parms)) return false;
      return DeviceRead(parms, out);
    }
    case vxi11::kDeviceReadStb: {
      vxi11::DeviceGenericParms parms;
      if (!vxi11::Get(in, &parms)) return false;
      vxi11::DeviceReadStbResp response;
      response.error = LinkKnown(parms.lid) ? vxi11::kNoError : vxi11::kInvalidLinkIdentifier;
      // Message available (bit 4) while a response waits to be read.
      response.stb = pending_.active && ServerClock::now() >= pending_.ready ? 0x10 : 0;
      vxi11::Put(out, response);
      return true;
    }
    case vxi11::kDeviceClear: {
      vxi11::DeviceGenericParms parms;
      if (!vxi11::Get(in, &parms)) return false;
      if (!LinkKnown(parms.lid)) {
        out.PutInt32(vxi11::kInvalidLinkIdentifier);
        return true;
      }
      input_.clear();
      pending_ = PendingReply{};
      handler_.DeviceClear();
      out.PutInt32(vxi11::kNoError);
      return true;
    }
    case vxi11::kDeviceUnlock: {
      // Device_Link: the link id alone.
      std::int32_t lid = 0;
      if (!in.GetInt32(&lid)) return false;
      out.PutInt32(LinkKnown(lid) ? vxi11::kNoError : vxi11::kInvalidLinkIdentifier);
      return true;
    }
    case vxi11::kDeviceTrigger:
    case vxi11::kDeviceRemote:
    case vxi11::kDeviceLocal: {
      vxi11::DeviceGenericParms parms;
      if (!vxi11::Get(in, &parms)) return false;
      out.PutInt32(LinkKnown(parms.lid) ? vxi11::kNoError : vxi11::kInvalidLinkIdentifier);
      return true;
    }
    case vxi11::kDeviceLock: {
      // Device_LockParms: lid, flags, lock_timeout. One client at a time: a lock always holds.
      std::int32_t lid = 0;
      std::uint32_t flags = 0;
      std::uint32_t lock_timeout = 0;
      if (!(in.GetInt32(&lid) && in.GetUint32(&flags) && in.GetUint32(&lock_timeout))) {
        return false;
      }
      out.PutInt32(LinkKnown(lid) ? vxi11::kNoError : vxi11::kInvalidLinkIdentifier);
      return true;
    }
    case vxi11::kDeviceEnableSrq: {
      std::int32_t lid = 0;
      bool enable = false;
      std::span<const std::byte> handle;
      if (!(in.GetInt32(&lid) && in.GetBool(&enable) && in.GetOpaque(&handle, 40))) return false;
      out.PutInt32(LinkKnown(lid) ? vxi11::kNoError : vxi11::kInvalidLinkIdentifier);
      return true;
    }
    case vxi11::kDeviceDocmd:
    case vxi11::kCreateIntrChan:
      // No GPIB bus behind us and no service requests to deliver.
      out.PutInt32(vxi11::kOperationNotSupported);
      if (procedure == vxi11::kDeviceDocmd) out.PutOpaque({});
      return true;
    case vxi11::kDestroyIntrChan:
      out.PutInt32(vxi11::kNoError);
      return true;
    case vxi11::kDestroyLink: {
      std::int32_t lid = 0;
      if (!in.GetInt32(&lid)) return false;
      const bool known = links_.erase(lid) != 0;
      if (known) --live_links_;
      out.PutInt32(known ? vxi11::kNoError : vxi11::kInvalidLinkIdentifier);
      return true;
    }
    default:
      return false;
  }
}

void Vxi11Session::CreateLink(const vxi11::CreateLinkParms& parms, xdr::Writer& out) {
  vxi11::CreateLinkResp response;
  if (!IsDeviceName(parms.device)) {
    response.error = vxi11::kDeviceNotAccessible;
  } else if (++live_links_ > options_.max_links) {
    --live_links_;
    response.error = vxi11::kOutOfResources;
  } else {
    response.lid = next_lid_++;
    links_.insert(response.lid);
    response.max_recv_size = options_.max_recv_size;
    // No abort channel: 0 tells the client there is none to connect to.
    response.abort_port = 0;
  }
  vxi11::Put(out, response);
}

bool Vxi11Session::DeviceWrite(const vxi11::DeviceWriteParms& parms, xdr::Writer& out) {
  vxi11::DeviceWriteResp response;
  if (!LinkKnown(parms.lid)) {
    response.error = vxi11::kInvalidLinkIdentifier;
    vxi11::Put(out, response);
    return true;
  }
  if (parms.data.size() > options_.max_recv_size ||
      input_.size() + parms.data.size() > kMaxMessage) {
    input_.clear();
    response.error = vxi11::kParameterError;
    vxi11::Put(out, response);
    return true;
  }
  input_.append(reinterpret_cast<const char*>(parms.data.data()), parms.data.size());
  response.size = static_cast<std::uint32_t>(parms.data.size());
  if ((parms.flags & vxi11::kFlagEnd) != 0) {
    std::string message = std::move(input_);
    input_.clear();
    // The handler gets the message without its terminator; clients send LF or CR LF.
    if (!message.empty() && message.back() == '\n') message.pop_back();
    if (!message.empty() && message.back() == '\r') message.pop_back();
    if (pending_.active) {
      pending_ = PendingReply{};
      handler_.ReplyInterrupted();
    }
    HandlerResponse answer = handler_.HandleMessage(message);
    if (!answer.reply.empty()) {
      pending_.active = true;
      pending_.data = std::move(answer.reply);
      pending_.ready = ServerClock::now() + answer.delay;
      pending_.drop = answer.drop_connection;
    } else if (answer.drop_connection) {
      drop_after_reply_ = true;
    }
  }
  vxi11::Put(out, response);
  return true;
}

bool Vxi11Session::WaitForReply(std::uint32_t io_timeout, bool* ready) {
  const ServerDeadline give_up =
      io_timeout == 0xFFFFFFFFu ? ServerDeadline::max() : After(io_timeout);
  const ServerDeadline until = pending_.active ? std::min(pending_.ready, give_up) : give_up;
  if (ServerClock::now() < until) {
    // Wakes early when the client hangs up or the server stops.
    const IoResult waited = WaitFor(fd_, POLLIN, stop_, until);
    if (waited == IoResult::kStopped) return false;
  }
  *ready = pending_.active && ServerClock::now() >= pending_.ready;
  return true;
}

bool Vxi11Session::DeviceRead(const vxi11::DeviceReadParms& parms, xdr::Writer& out) {
  vxi11::DeviceReadResp response;
  if (!LinkKnown(parms.lid)) {
    response.error = vxi11::kInvalidLinkIdentifier;
    vxi11::Put(out, response);
    return true;
  }
  bool ready = false;
  if (!WaitForReply(parms.io_timeout, &ready)) return true;  // stopping; reply is dropped
  if (!ready) {
    if (options_.late_timeout_reply.count() > 0 &&
        WaitFor(fd_, 0, stop_, ServerClock::now() + options_.late_timeout_reply) ==
            IoResult::kStopped) {
      return true;
    }
    response.error = vxi11::kIoTimeout;
    vxi11::Put(out, response);
    return true;
  }
  std::size_t count =
      std::min<std::size_t>(parms.request_size, pending_.data.size() - pending_.offset);
  if (options_.max_read_size != 0) count = std::min<std::size_t>(count, options_.max_read_size);
  const char* start = pending_.data.data() + pending_.offset;
  bool term_char_seen = false;
  if ((parms.flags & vxi11::kFlagTermCharSet) != 0) {
    const void* found = std::memchr(start, parms.term_char, count);
    if (found != nullptr) {
      count = static_cast<const char*>(found) - start + 1;
      term_char_seen = true;
    }
  }
  const std::size_t offset = pending_.offset;
  pending_.offset += count;
  const bool all_sent = pending_.offset == pending_.data.size();
  // A reply cut short before a dropped connection carries no END unless it is complete.
  const bool end = all_sent && (!pending_.drop || pending_.data.back() == '\n');
  response.reason = (end ? vxi11::kReasonEnd : 0) | (term_char_seen ? vxi11::kReasonChr : 0);
  if (response.reason == 0) response.reason = vxi11::kReasonRequestCount;
  // Device_ReadResp with the data's length only; the data itself goes out as the tail.
  out.PutInt32(response.error);
  out.PutUint32(response.reason);
  out.PutUint32(static_cast<std::uint32_t>(count));
  const std::string* source = &pending_.data;
  if (all_sent) {
    drop_after_reply_ = pending_.drop;
    retired_reply_ = std::move(pending_.data);
    source = &retired_reply_;
    pending_ = PendingReply{};
  }
  tail_ = std::as_bytes(std::span(source->data() + offset, count));
  tail_padding_ = (4 - count % 4) % 4;
  return true;
}

}  // namespace

Vxi11Server::Vxi11Server(MessageHandler& handler, std::string bind_address, std::uint16_t core_port,
                         Vxi11ServerOptions options)
    : handler_(handler),
      bind_address_(std::move(bind_address)),
      requested_port_(core_port),
      options_(options) {}

Vxi11Server::~Vxi11Server() { Stop(); }

bool Vxi11Server::Start(std::string* error) {
  return loop_.Start(
      bind_address_, requested_port_, [this](Socket connection) { Serve(std::move(connection)); },
      error, [this](Socket connection) { Refuse(std::move(connection)); });
}

void Vxi11Server::Refuse(Socket connection) {
  // A client beyond the limit gets its create_link answered with "out of resources".
  rpc::RecordAssembler assembler(kScratchSize);
  std::vector<std::byte> scratch(kScratchSize);
  const ServerDeadline deadline = ServerClock::now() + std::chrono::milliseconds(500);
  while (!assembler.HasRecord()) {
    std::size_t count = 0;
    if (ReadSome(connection.fd(), scratch, loop_.stop(), deadline, &count) != IoResult::kOk ||
        !assembler.Feed(std::span(scratch).first(count))) {
      return;
    }
  }
  const xdr::Bytes record = assembler.PopRecord();
  xdr::Reader in(record);
  rpc::CallHeader call;
  bool rpc_version_ok = true;
  if (!rpc::GetCallHeader(in, &call, &rpc_version_ok) || call.procedure != vxi11::kCreateLink) {
    return;
  }
  xdr::Writer reply;
  rpc::PutAcceptedReply(reply, call.xid, rpc::AcceptStat::kSuccess);
  vxi11::CreateLinkResp response;
  response.error = vxi11::kOutOfResources;
  vxi11::Put(reply, response);
  xdr::Bytes framed;
  rpc::AppendRecord(reply.bytes(), &framed);
  WriteAll(connection.fd(), framed, loop_.stop(), deadline);
}

void Vxi11Server::Stop() { loop_.Stop(); }

void Vxi11Server::Serve(Socket connection) {
  const std::size_t max_record =
      std::max<std::size_t>(options_.max_recv_size, kScratchSize) + kRecordOverhead;
  rpc::RecordAssembler assembler(max_record);
  std::vector<std::byte> scratch(kScratchSize);
  Vxi11Session session(handler_, options_, connection.fd(), loop_.stop(), next_lid_, live_links_);
  for (;;) {
    while (!assembler.HasRecord()) {
      std::size_t count = 0;
      if (ReadSome(connection.fd(), scratch, loop_.stop(), ServerDeadline::max(), &count) !=
          IoResult::kOk) {
        return;
      }
      // A record past the limit cannot be skipped reliably: the client is not speaking RPC.
      if (!assembler.Feed(std::span(scratch).first(count))) return;
    }
    const xdr::Bytes record = assembler.PopRecord();
    xdr::Writer reply;
    xdr::Writer results;
    bool has_reply = false;
    const bool keep_open = session.HandleRecord(record, &reply, &results, &has_reply);
    if (has_reply) {
      // One fragment: the record mark, the RPC header, then the results straight from
      // where they were encoded.
      static constexpr std::byte kPadding[4] = {};
      const std::size_t length = reply.bytes().size() + results.bytes().size() +
                                 session.tail().size() + session.tail_padding();
      xdr::Writer mark;
      mark.PutUint32(rpc::kLastFragment | static_cast<std::uint32_t>(length));
      mark.PutRaw(reply.bytes());
      const std::span<const std::byte> parts[] = {
          mark.bytes(), results.bytes(), session.tail(),
          std::span(kPadding).first(session.tail_padding())};
      if (WriteAllParts(connection.fd(), parts, loop_.stop(), ServerClock::now() + kWriteTimeout) !=
          IoResult::kOk) {
        return;
      }
    }
    if (!keep_open) return;
  }
}

}  // namespace quarvelo::sim
