#include "platform/visa/vxi11/rpc.h"

#include <algorithm>

namespace quarvelo::visa::rpc {
namespace {

constexpr std::uint32_t kCall = 0;
constexpr std::uint32_t kReply = 1;
constexpr std::uint32_t kMsgAccepted = 0;
constexpr std::uint32_t kMsgDenied = 1;
constexpr std::uint32_t kRpcMismatch = 0;
constexpr std::uint32_t kAuthNone = 0;
// RFC 5531 caps the body of a credential or verifier at 400 bytes.
constexpr std::size_t kMaxAuthBody = 400;

void PutNullAuth(xdr::Writer& out) {
  out.PutUint32(kAuthNone);
  out.PutUint32(0);
}

bool SkipAuth(xdr::Reader& in) {
  std::uint32_t flavor = 0;
  std::span<const std::byte> body;
  return in.GetUint32(&flavor) && in.GetOpaque(&body, kMaxAuthBody);
}

}  // namespace

void PutCallHeader(xdr::Writer& out, const CallHeader& header) {
  out.PutUint32(header.xid);
  out.PutUint32(kCall);
  out.PutUint32(kRpcVersion);
  out.PutUint32(header.program);
  out.PutUint32(header.version);
  out.PutUint32(header.procedure);
  PutNullAuth(out);
  PutNullAuth(out);
}

bool GetCallHeader(xdr::Reader& in, CallHeader* header, bool* rpc_version_ok) {
  std::uint32_t type = 0;
  std::uint32_t rpc_version = 0;
  if (!in.GetUint32(&header->xid) || !in.GetUint32(&type) || type != kCall ||
      !in.GetUint32(&rpc_version)) {
    return false;
  }
  *rpc_version_ok = rpc_version == kRpcVersion;
  if (!*rpc_version_ok) return true;
  return in.GetUint32(&header->program) && in.GetUint32(&header->version) &&
         in.GetUint32(&header->procedure) && SkipAuth(in) && SkipAuth(in);
}

void PutAcceptedReply(xdr::Writer& out, std::uint32_t xid, AcceptStat stat,
                      std::uint32_t mismatch_low, std::uint32_t mismatch_high) {
  out.PutUint32(xid);
  out.PutUint32(kReply);
  out.PutUint32(kMsgAccepted);
  PutNullAuth(out);
  out.PutUint32(static_cast<std::uint32_t>(stat));
  if (stat == AcceptStat::kProgMismatch) {
    out.PutUint32(mismatch_low);
    out.PutUint32(mismatch_high);
  }
}

void PutRpcMismatchReply(xdr::Writer& out, std::uint32_t xid) {
  out.PutUint32(xid);
  out.PutUint32(kReply);
  out.PutUint32(kMsgDenied);
  out.PutUint32(kRpcMismatch);
  out.PutUint32(kRpcVersion);
  out.PutUint32(kRpcVersion);
}

bool GetReplyHeader(xdr::Reader& in, ReplyHeader* header) {
  std::uint32_t type = 0;
  std::uint32_t reply_stat = 0;
  if (!in.GetUint32(&header->xid) || !in.GetUint32(&type) || type != kReply ||
      !in.GetUint32(&reply_stat)) {
    return false;
  }
  if (reply_stat == kMsgDenied) {
    header->accepted = false;
    return true;
  }
  if (reply_stat != kMsgAccepted || !SkipAuth(in)) return false;
  std::uint32_t stat = 0;
  if (!in.GetUint32(&stat) || stat > static_cast<std::uint32_t>(AcceptStat::kSystemErr)) {
    return false;
  }
  header->accepted = true;
  header->stat = static_cast<AcceptStat>(stat);
  if (header->stat == AcceptStat::kProgMismatch) {
    return in.GetUint32(&header->mismatch_low) && in.GetUint32(&header->mismatch_high);
  }
  return true;
}

void AppendRecord(std::span<const std::byte> record, xdr::Bytes* out, std::size_t max_fragment) {
  max_fragment = std::clamp<std::size_t>(max_fragment, 1, kMaxFragment);
  std::size_t offset = 0;
  do {
    const std::size_t length = std::min(max_fragment, record.size() - offset);
    const bool last = offset + length == record.size();
    const std::uint32_t word = static_cast<std::uint32_t>(length) | (last ? kLastFragment : 0);
    out->push_back(static_cast<std::byte>(word >> 24));
    out->push_back(static_cast<std::byte>(word >> 16));
    out->push_back(static_cast<std::byte>(word >> 8));
    out->push_back(static_cast<std::byte>(word));
    out->insert(out->end(), record.begin() + offset, record.begin() + offset + length);
    offset += length;
  } while (offset < record.size());
}

bool RecordAssembler::Feed(std::span<const std::byte> data) {
  while (!failed_ && !data.empty()) {
    if (!in_fragment_) {
      const std::size_t take = std::min(data.size(), 4 - header_filled_);
      std::copy_n(data.begin(), take, header_ + header_filled_);
      header_filled_ += take;
      data = data.subspan(take);
      if (header_filled_ < 4) break;
      header_filled_ = 0;
      const std::uint32_t word = (std::to_integer<std::uint32_t>(header_[0]) << 24) |
                                 (std::to_integer<std::uint32_t>(header_[1]) << 16) |
                                 (std::to_integer<std::uint32_t>(header_[2]) << 8) |
                                 std::to_integer<std::uint32_t>(header_[3]);
      last_fragment_ = (word & kLastFragment) != 0;
      fragment_left_ = word & ~kLastFragment;
      if (fragment_left_ > max_record_ - std::min(max_record_, current_.size())) {
        failed_ = true;
        break;
      }
      in_fragment_ = true;
      // Announced lengths are bounded above, so reserving spares the growth copies of a
      // large record.
      current_.reserve(current_.size() + fragment_left_);
    }
    const std::size_t take = std::min(data.size(), fragment_left_);
    current_.insert(current_.end(), data.begin(), data.begin() + take);
    fragment_left_ -= take;
    data = data.subspan(take);
    EndFragmentIfComplete();
  }
  return !failed_;
}

void RecordAssembler::EndFragmentIfComplete() {
  if (!in_fragment_ || fragment_left_ != 0) return;
  in_fragment_ = false;
  if (last_fragment_ || every_fragment_ends_record_) {
    records_.push_back(std::move(current_));
    current_.clear();
  }
}

std::span<std::byte> RecordAssembler::FragmentSpace(std::size_t max) {
  const std::size_t size = std::min(max, FragmentLeft());
  space_offset_ = current_.size();
  current_.resize(space_offset_ + size);
  return std::span(current_).subspan(space_offset_);
}

void RecordAssembler::CommitFragment(std::size_t count) {
  count = std::min(count, current_.size() - space_offset_);
  current_.resize(space_offset_ + count);
  fragment_left_ -= count;
  EndFragmentIfComplete();
}

xdr::Bytes RecordAssembler::PopRecord() {
  xdr::Bytes record = std::move(records_.front());
  records_.pop_front();
  return record;
}

}  // namespace quarvelo::visa::rpc
