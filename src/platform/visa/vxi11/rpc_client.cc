#include "platform/visa/vxi11/rpc_client.h"

#include <utility>

namespace quarvelo::visa {
namespace {

constexpr std::size_t kScratchSize = 64 * 1024;
constexpr std::size_t kRecordOverhead = 1024;

}  // namespace

RpcClient::RpcClient(std::unique_ptr<TcpConnection> stream, std::uint32_t program,
                     std::uint32_t version, std::size_t max_reply)
    : stream_(std::move(stream)),
      program_(program),
      version_(version),
      // Start xids away from zero and apart between connections; only equality matters.
      xid_(static_cast<std::uint32_t>(Clock::now().time_since_epoch().count())),
      assembler_(max_reply + kRecordOverhead),
      scratch_(kScratchSize) {}

void RpcClient::set_max_reply(std::size_t max_reply) {
  assembler_.set_max_record(max_reply + kRecordOverhead);
}

ViStatus RpcClient::Fail(ViStatus status) {
  broken_ = true;
  return status;
}

ViStatus RpcClient::Call(std::uint32_t procedure, const xdr::Bytes& arguments, Deadline deadline,
                         xdr::Bytes* results, std::size_t* results_offset) {
  if (broken_) return VI_ERROR_CONN_LOST;
  const std::uint32_t xid = ++xid_;
  xdr::Writer call;
  rpc::PutCallHeader(call, {xid, program_, version_, procedure});
  xdr::Bytes message = call.Take();
  message.insert(message.end(), arguments.begin(), arguments.end());
  xdr::Bytes framed;
  framed.reserve(message.size() + 8);
  rpc::AppendRecord(message, &framed);
  // A send cut by the deadline finishes with the next call; the reply to it then carries an
  // old xid and is dropped below.
  ViStatus status = stream_->SendAll(framed, deadline);
  if (status == VI_ERROR_TMO) return status;
  if (status != VI_SUCCESS) return Fail(status);
  for (;;) {
    while (!assembler_.HasRecord()) {
      std::size_t count = 0;
      if (assembler_.FragmentLeft() >= kScratchSize) {
        // A large fragment (a block being read) goes straight into its record.
        status = stream_->ReceiveSome(assembler_.FragmentSpace(SIZE_MAX), deadline, &count);
        assembler_.CommitFragment(count);
      } else {
        status = stream_->ReceiveSome(scratch_, deadline, &count);
        if (status == VI_SUCCESS && !assembler_.Feed(std::span(scratch_).first(count))) {
          return Fail(VI_ERROR_IO);
        }
      }
      if (status == VI_ERROR_TMO) return status;
      if (status != VI_SUCCESS) return Fail(status);
    }
    xdr::Bytes record = assembler_.PopRecord();
    xdr::Reader reader(record);
    rpc::ReplyHeader header;
    if (!rpc::GetReplyHeader(reader, &header)) return Fail(VI_ERROR_IO);
    if (header.xid != xid) {
      // The late answer to a call that timed out; a server sending nothing but those must
      // not hold this call past its deadline.
      if (deadline != Deadline::max() && Clock::now() >= deadline) return VI_ERROR_TMO;
      continue;
    }
    if (!header.accepted || header.stat != rpc::AcceptStat::kSuccess) return VI_ERROR_IO;
    *results_offset = record.size() - reader.remaining();
    *results = std::move(record);
    return VI_SUCCESS;
  }
}

}  // namespace quarvelo::visa
