// ONC RPC version 2 (RFC 5531) messages as VXI-11 and the portmapper use them over TCP:
// call and reply headers with AUTH_NONE, and the record marking that frames each message.
#ifndef QUARVELO_PLATFORM_VISA_VXI11_RPC_H_
#define QUARVELO_PLATFORM_VISA_VXI11_RPC_H_

#include <cstddef>
#include <cstdint>
#include <deque>
#include <span>

#include "platform/visa/vxi11/xdr.h"

namespace quarvelo::visa::rpc {

inline constexpr std::uint32_t kRpcVersion = 2;

enum class AcceptStat : std::uint32_t {
  kSuccess = 0,
  kProgUnavail = 1,
  kProgMismatch = 2,
  kProcUnavail = 3,
  kGarbageArgs = 4,
  kSystemErr = 5,
};

struct CallHeader {
  std::uint32_t xid = 0;
  std::uint32_t program = 0;
  std::uint32_t version = 0;
  std::uint32_t procedure = 0;
};

struct ReplyHeader {
  std::uint32_t xid = 0;
  bool accepted = false;  // MSG_ACCEPTED; a denied reply carries no results
  AcceptStat stat = AcceptStat::kSuccess;
  std::uint32_t mismatch_low = 0;  // with kProgMismatch: the versions the server supports
  std::uint32_t mismatch_high = 0;
};

// Starts a call message; the procedure's arguments follow in the same writer.
void PutCallHeader(xdr::Writer& out, const CallHeader& header);
// Reads and validates a call header (CALL, RPC version 2), skipping credential and verifier.
// `rpc_version_ok` is false for a well-formed call of another RPC version.
bool GetCallHeader(xdr::Reader& in, CallHeader* header, bool* rpc_version_ok);

// Starts an accepted reply; with kSuccess the results follow in the same writer.
void PutAcceptedReply(xdr::Writer& out, std::uint32_t xid, AcceptStat stat,
                      std::uint32_t mismatch_low = 0, std::uint32_t mismatch_high = 0);
// A denied reply for a call of the wrong RPC version.
void PutRpcMismatchReply(xdr::Writer& out, std::uint32_t xid);
// Reads a reply header; on success with kSuccess the reader stands at the results.
bool GetReplyHeader(xdr::Reader& in, ReplyHeader* header);

// Record marking over a byte stream: each fragment starts with a 4-byte word whose top bit
// marks the record's last fragment and whose low 31 bits give the fragment's length.
inline constexpr std::uint32_t kLastFragment = 0x80000000u;
inline constexpr std::size_t kMaxFragment = 0x7FFFFFFFu;

// Appends `record` framed as fragments of at most `max_fragment` bytes.
void AppendRecord(std::span<const std::byte> record, xdr::Bytes* out,
                  std::size_t max_fragment = kMaxFragment);

// Reassembles records from stream bytes fed in pieces of any size. A record longer than the
// limit poisons the assembler (the peer is talking nonsense and the stream cannot be resynced).
class RecordAssembler {
 public:
  explicit RecordAssembler(std::size_t max_record) : max_record_(max_record) {}

  // Consumes all of `data`; returns false once the stream is unusable.
  bool Feed(std::span<const std::byte> data);
  bool failed() const { return failed_; }
  void set_max_record(std::size_t max_record) { max_record_ = max_record; }
  bool HasRecord() const { return !records_.empty(); }
  // Takes every fragment as a whole record: some instruments' portmappers omit the
  // last-fragment bit on their one-fragment replies.
  void set_every_fragment_ends_record(bool value) { every_fragment_ends_record_ = value; }
  xdr::Bytes PopRecord();
  // Inside a fragment's data, how much of it is still to come (0 elsewhere), and room for up
  // to `max` of those bytes at the end of the record, so that a large fragment can be
  // received in place instead of through Feed. CommitFragment tells how much arrived there.
  std::size_t FragmentLeft() const { return in_fragment_ ? fragment_left_ : 0; }
  std::span<std::byte> FragmentSpace(std::size_t max);
  void CommitFragment(std::size_t count);
  // True while a record is partly received (the stream is between records otherwise).
  bool InsideRecord() const { return header_filled_ != 0 || !current_.empty() || in_fragment_; }

 private:
  std::size_t max_record_;
  std::deque<xdr::Bytes> records_;
  xdr::Bytes current_;
  std::byte header_[4] = {};
  std::size_t header_filled_ = 0;
  bool in_fragment_ = false;
  bool last_fragment_ = false;
  std::size_t fragment_left_ = 0;
  bool failed_ = false;
  bool every_fragment_ends_record_ = false;
  std::size_t space_offset_ = 0;  // where FragmentSpace's room starts in current_

  void EndFragmentIfComplete();
};

}  // namespace quarvelo::visa::rpc

#endif  // QUARVELO_PLATFORM_VISA_VXI11_RPC_H_
