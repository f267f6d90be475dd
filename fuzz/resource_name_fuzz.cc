// Resource strings as a user types them into the settings: the parser, the canonical name of
// what it accepted, and the VXI-11 host field (with its ":port" and ":core:port" forms) that
// the transport takes apart next.
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <variant>

#include "fuzz/fuzz_input.h"
#include "platform/visa/resource_name.h"
#include "platform/visa/vxi11/vxi11_transport.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace quarvelo::visa;
  const std::string_view name(reinterpret_cast<const char*>(data), size);
  ResourceAddress address;
  if (ParseResourceName(name, &address) != VI_SUCCESS) return 0;
  const std::string canonical = CanonicalResourceName(address);
  QUARVELO_FUZZ_CHECK(!canonical.empty());
  if (const auto* vxi11 = std::get_if<Vxi11Address>(&address)) {
    QUARVELO_FUZZ_CHECK(!vxi11->host.empty());
    if (const auto endpoint = ParseVxi11Host(vxi11->host)) {
      QUARVELO_FUZZ_CHECK(!endpoint->host.empty());
    }
  }
  return 0;
}
