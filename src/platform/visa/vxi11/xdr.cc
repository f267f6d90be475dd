#include "platform/visa/vxi11/xdr.h"

namespace quarvelo::visa::xdr {
namespace {

std::size_t PaddedLength(std::size_t length) { return (length + 3) & ~std::size_t{3}; }

}  // namespace

void Writer::PutUint32(std::uint32_t value) {
  bytes_.push_back(static_cast<std::byte>(value >> 24));
  bytes_.push_back(static_cast<std::byte>(value >> 16));
  bytes_.push_back(static_cast<std::byte>(value >> 8));
  bytes_.push_back(static_cast<std::byte>(value));
}

void Writer::PutOpaque(std::span<const std::byte> data) {
  PutUint32(static_cast<std::uint32_t>(data.size()));
  bytes_.insert(bytes_.end(), data.begin(), data.end());
  bytes_.resize(bytes_.size() + PaddedLength(data.size()) - data.size(), std::byte{0});
}

void Writer::PutString(std::string_view text) { PutOpaque(AsBytes(text)); }

bool Reader::GetUint32(std::uint32_t* value) {
  if (!ok_ || remaining() < 4) return Fail();
  const std::byte* p = data_.data() + offset_;
  *value = (std::to_integer<std::uint32_t>(p[0]) << 24) |
           (std::to_integer<std::uint32_t>(p[1]) << 16) |
           (std::to_integer<std::uint32_t>(p[2]) << 8) | std::to_integer<std::uint32_t>(p[3]);
  offset_ += 4;
  return true;
}

bool Reader::GetInt32(std::int32_t* value) {
  std::uint32_t raw = 0;
  if (!GetUint32(&raw)) return false;
  *value = static_cast<std::int32_t>(raw);
  return true;
}

bool Reader::GetBool(bool* value) {
  std::uint32_t raw = 0;
  if (!GetUint32(&raw)) return false;
  if (raw > 1) return Fail();
  *value = raw == 1;
  return true;
}

bool Reader::GetOpaque(std::span<const std::byte>* data, std::size_t max_length) {
  std::uint32_t length = 0;
  if (!GetUint32(&length)) return false;
  if (length > max_length || PaddedLength(length) > remaining()) return Fail();
  *data = data_.subspan(offset_, length);
  offset_ += PaddedLength(length);
  return true;
}

bool Reader::GetString(std::string* text, std::size_t max_length) {
  std::span<const std::byte> data;
  if (!GetOpaque(&data, max_length)) return false;
  text->assign(reinterpret_cast<const char*>(data.data()), data.size());
  return true;
}

bool Reader::Skip(std::size_t count) {
  if (!ok_ || count > remaining()) return Fail();
  offset_ += count;
  return true;
}

}  // namespace quarvelo::visa::xdr
