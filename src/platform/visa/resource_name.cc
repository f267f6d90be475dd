#include "platform/visa/resource_name.h"

#include <charconv>
#include <initializer_list>
#include <optional>
#include <vector>

namespace quarvelo::visa {
namespace {

bool EqualsIgnoreCase(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  for (std::size_t i = 0; i < a.size(); ++i) {
    const auto lower = [](char c) { return (c >= 'A' && c <= 'Z') ? char(c - 'A' + 'a') : c; };
    if (lower(a[i]) != lower(b[i])) return false;
  }
  return true;
}

bool StartsWithIgnoreCase(std::string_view text, std::string_view prefix) {
  return text.size() >= prefix.size() && EqualsIgnoreCase(text.substr(0, prefix.size()), prefix);
}

// Splits at "::" except inside brackets, so that an IPv6 host such as "[fe80::1]" stays whole.
std::optional<std::vector<std::string_view>> SplitFields(std::string_view name) {
  std::vector<std::string_view> fields;
  std::size_t start = 0;
  int depth = 0;
  for (std::size_t i = 0; i < name.size(); ++i) {
    if (name[i] == '[') {
      ++depth;
    } else if (name[i] == ']') {
      if (--depth < 0) return std::nullopt;
    } else if (depth == 0 && name[i] == ':' && i + 1 < name.size() && name[i + 1] == ':') {
      fields.push_back(name.substr(start, i - start));
      start = i + 2;
      ++i;
    }
  }
  if (depth != 0) return std::nullopt;
  fields.push_back(name.substr(start));
  return fields;
}

std::optional<unsigned long> ParseDecimal(std::string_view text, unsigned long max) {
  if (text.empty()) return std::nullopt;
  unsigned long value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, 10);
  if (error != std::errc() || end != text.data() + text.size() || value > max) {
    return std::nullopt;
  }
  return value;
}

// Vendor and product ids: "0x0957" in hex or "2391" in decimal.
std::optional<std::uint16_t> ParseUsbId(std::string_view text) {
  if (StartsWithIgnoreCase(text, "0x")) {
    const std::string_view digits = text.substr(2);
    if (digits.empty()) return std::nullopt;
    unsigned long value = 0;
    const auto [end, error] =
        std::from_chars(digits.data(), digits.data() + digits.size(), value, 16);
    if (error != std::errc() || end != digits.data() + digits.size() || value > 0xFFFF) {
      return std::nullopt;
    }
    return static_cast<std::uint16_t>(value);
  }
  const auto value = ParseDecimal(text, 0xFFFF);
  if (!value) return std::nullopt;
  return static_cast<std::uint16_t>(*value);
}

// "TCPIP", "TCPIP0", "usb3" ...: the board number after the interface keyword.
std::optional<unsigned> ParseBoard(std::string_view field, std::string_view keyword) {
  if (!StartsWithIgnoreCase(field, keyword)) return std::nullopt;
  const std::string_view digits = field.substr(keyword.size());
  if (digits.empty()) return 0u;
  const auto board = ParseDecimal(digits, 9999);
  if (!board) return std::nullopt;
  return static_cast<unsigned>(*board);
}

ViStatus ParseTcpip(unsigned board, std::vector<std::string_view> fields, ResourceAddress* out) {
  if (fields.size() == 3 && EqualsIgnoreCase(fields[2], "SOCKET")) {
    const auto port = ParseDecimal(fields[1], 65535);
    if (!port || *port == 0) return VI_ERROR_INV_RSRC_NAME;
    *out = SocketAddress{board, std::string(fields[0]), static_cast<std::uint16_t>(*port)};
    return VI_SUCCESS;
  }
  if (!fields.empty() && EqualsIgnoreCase(fields.back(), "INSTR")) fields.pop_back();
  if (fields.empty() || fields.size() > 2) return VI_ERROR_INV_RSRC_NAME;
  const std::string host(fields[0]);
  if (fields.size() == 1) {
    *out = Vxi11Address{board, host, "inst0"};
    return VI_SUCCESS;
  }
  const std::string_view device = fields[1];
  if (EqualsIgnoreCase(device, "SOCKET")) return VI_ERROR_INV_RSRC_NAME;
  if (!StartsWithIgnoreCase(device, "hislip")) {
    *out = Vxi11Address{board, host, std::string(device)};
    return VI_SUCCESS;
  }
  HislipAddress hislip{board, host, std::string(device), 4880, false};
  if (const std::size_t comma = device.find(','); comma != std::string_view::npos) {
    const auto port = ParseDecimal(device.substr(comma + 1), 65535);
    if (!port || *port == 0) return VI_ERROR_INV_RSRC_NAME;
    hislip.sub_address = std::string(device.substr(0, comma));
    hislip.port = static_cast<std::uint16_t>(*port);
    hislip.port_given = true;
  }
  *out = hislip;
  return VI_SUCCESS;
}

ViStatus ParseUsb(unsigned board, std::vector<std::string_view> fields, ResourceAddress* out) {
  if (!fields.empty() && EqualsIgnoreCase(fields.back(), "INSTR")) fields.pop_back();
  if (fields.size() != 3 && fields.size() != 4) return VI_ERROR_INV_RSRC_NAME;
  const auto vendor = ParseUsbId(fields[0]);
  const auto product = ParseUsbId(fields[1]);
  if (!vendor || !product) return VI_ERROR_INV_RSRC_NAME;
  UsbAddress usb{board,
                 *vendor,
                 *product,
                 std::string(fields[0]),
                 std::string(fields[1]),
                 std::string(fields[2]),
                 0};
  if (fields.size() == 4) {
    const auto interface_number = ParseDecimal(fields[3], 255);
    if (!interface_number) return VI_ERROR_INV_RSRC_NAME;
    usb.interface_number = static_cast<unsigned>(*interface_number);
  }
  *out = usb;
  return VI_SUCCESS;
}

}  // namespace

ViStatus ParseResourceName(std::string_view name, ResourceAddress* out) {
  const auto split = SplitFields(name);
  if (!split || split->size() < 2) return VI_ERROR_INV_RSRC_NAME;
  for (const std::string_view field : *split) {
    if (field.empty()) return VI_ERROR_INV_RSRC_NAME;
  }
  const std::vector<std::string_view> rest(split->begin() + 1, split->end());
  if (const auto board = ParseBoard(split->front(), "TCPIP")) return ParseTcpip(*board, rest, out);
  if (const auto board = ParseBoard(split->front(), "USB")) return ParseUsb(*board, rest, out);
  return VI_ERROR_INV_RSRC_NAME;
}

std::string CanonicalResourceName(const ResourceAddress& address) {
  // Appends only: "literal" + std::string trips a false -Wrestrict in GCC 12 at -O3.
  const auto concat = [](std::initializer_list<std::string_view> parts) {
    std::string text;
    for (const std::string_view part : parts) text.append(part);
    return text;
  };
  struct Visitor {
    decltype(concat)& join;
    std::string operator()(const Vxi11Address& a) const {
      return join({"TCPIP", std::to_string(a.board), "::", a.host, "::", a.device_name, "::INSTR"});
    }
    std::string operator()(const HislipAddress& a) const {
      const std::string port = a.port_given ? join({",", std::to_string(a.port)}) : std::string();
      return join(
          {"TCPIP", std::to_string(a.board), "::", a.host, "::", a.sub_address, port, "::INSTR"});
    }
    std::string operator()(const SocketAddress& a) const {
      return join({"TCPIP", std::to_string(a.board), "::", a.host, "::", std::to_string(a.port),
                   "::SOCKET"});
    }
    std::string operator()(const UsbAddress& a) const {
      return join({"USB", std::to_string(a.board), "::", a.vendor_text, "::", a.product_text,
                   "::", a.serial, "::", std::to_string(a.interface_number), "::INSTR"});
    }
  };
  return std::visit(Visitor{concat}, address);
}

}  // namespace quarvelo::visa
