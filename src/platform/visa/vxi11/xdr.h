// External Data Representation (RFC 4506) for the few types ONC RPC and VXI-11 use: every
// item is a multiple of four bytes, big-endian, variable-length data padded with zeros.
#ifndef QUARVELO_PLATFORM_VISA_VXI11_XDR_H_
#define QUARVELO_PLATFORM_VISA_VXI11_XDR_H_

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace quarvelo::visa::xdr {

using Bytes = std::vector<std::byte>;

class Writer {
 public:
  void PutUint32(std::uint32_t value);
  void PutInt32(std::int32_t value) { PutUint32(static_cast<std::uint32_t>(value)); }
  void PutBool(bool value) { PutUint32(value ? 1 : 0); }
  // Variable-length opaque data: length, bytes, zero padding to a multiple of four.
  void PutOpaque(std::span<const std::byte> data);
  void PutString(std::string_view text);
  // Appends items already in XDR form (e.g. results encoded by another writer).
  void PutRaw(std::span<const std::byte> encoded) {
    bytes_.insert(bytes_.end(), encoded.begin(), encoded.end());
  }

  const Bytes& bytes() const { return bytes_; }
  Bytes Take() { return std::move(bytes_); }

 private:
  Bytes bytes_;
};

// Reads from a borrowed buffer. Every getter returns false, and the reader stays failed, when
// the data runs out or a length is impossible, so a decoder can check once at the end.
class Reader {
 public:
  explicit Reader(std::span<const std::byte> data) : data_(data) {}

  bool GetUint32(std::uint32_t* value);
  bool GetInt32(std::int32_t* value);
  bool GetBool(bool* value);
  // The view points into the reader's buffer. `max_length` guards against lengths that
  // no peer would send.
  bool GetOpaque(std::span<const std::byte>* data, std::size_t max_length = SIZE_MAX);
  bool GetString(std::string* text, std::size_t max_length = SIZE_MAX);
  bool Skip(std::size_t count);

  bool ok() const { return ok_; }
  std::size_t remaining() const { return data_.size() - offset_; }
  std::span<const std::byte> rest() const { return data_.subspan(offset_); }

 private:
  bool Fail() {
    ok_ = false;
    return false;
  }

  std::span<const std::byte> data_;
  std::size_t offset_ = 0;
  bool ok_ = true;
};

inline std::span<const std::byte> AsBytes(std::string_view text) {
  return std::as_bytes(std::span<const char>(text.data(), text.size()));
}

}  // namespace quarvelo::visa::xdr

#endif  // QUARVELO_PLATFORM_VISA_VXI11_XDR_H_
