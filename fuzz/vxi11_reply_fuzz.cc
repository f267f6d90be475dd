// What a VXI-11 server (or anything answering on its port) sends back: record-marked ONC RPC
// replies received in pieces of any size, large fragments received in place as the client
// does, then the reply header and the result the client expects from the call it made.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>

#include "fuzz/fuzz_input.h"
#include "platform/visa/vxi11/core_channel.h"
#include "platform/visa/vxi11/portmapper.h"
#include "platform/visa/vxi11/rpc.h"
#include "platform/visa/vxi11/xdr.h"

namespace quarvelo::visa {
namespace {

bool Within(std::span<const std::byte> part, std::span<const std::byte> whole) {
  return part.empty() ||
         (part.data() >= whole.data() && part.data() + part.size() <= whole.data() + whole.size());
}

// Decodes the results of the procedure `selector` picks, as the client would after a call.
void DecodeResults(std::uint8_t selector, const xdr::Bytes& record, std::size_t offset) {
  xdr::Reader in(std::span<const std::byte>(record).subspan(offset));
  switch (selector % 6) {
    case 0: {
      vxi11::CreateLinkResp response;
      vxi11::Get(in, &response);
      break;
    }
    case 1: {
      vxi11::DeviceWriteResp response;
      vxi11::Get(in, &response);
      break;
    }
    case 2: {
      vxi11::DeviceReadResp response;
      if (!vxi11::Get(in, &response)) break;
      QUARVELO_FUZZ_CHECK(Within(response.data, record));
      // What decoded encodes back to the same result.
      xdr::Writer out;
      vxi11::Put(out, response);
      xdr::Reader again(out.bytes());
      vxi11::DeviceReadResp copy;
      QUARVELO_FUZZ_CHECK(vxi11::Get(again, &copy) && again.remaining() == 0);
      QUARVELO_FUZZ_CHECK(copy.error == response.error && copy.reason == response.reason &&
                          std::ranges::equal(copy.data, response.data));
      break;
    }
    case 3: {
      vxi11::DeviceReadStbResp response;
      vxi11::Get(in, &response);
      break;
    }
    case 4: {
      // Whatever the server claims, only "no error" may pass for success.
      std::int32_t error = 0;
      if (in.GetInt32(&error)) {
        QUARVELO_FUZZ_CHECK((vxi11::StatusFromDeviceError(error) >= VI_SUCCESS) == (error == 0));
      }
      break;
    }
    case 5: {
      std::uint16_t port = 0;
      portmapper::GetPort(in, &port);
      break;
    }
  }
}

}  // namespace
}  // namespace quarvelo::visa

// Input: procedure selector, record limit selector, piece size, then the stream.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace quarvelo::visa;
  quarvelo::fuzz::FuzzInput input(data, size);
  const std::uint8_t procedure = input.Byte();
  // Up to the client's record limit for small replies; larger limits take the same paths.
  constexpr std::size_t kLimits[] = {0, 8, 64, 1024, 64 * 1024};
  const std::size_t max_record = kLimits[input.Byte() % std::size(kLimits)];
  const std::size_t piece = 1 + input.Byte() % 64;
  constexpr std::size_t kInPlace = 16;  // the client's threshold, scaled to fuzz inputs

  rpc::RecordAssembler assembler(max_record);
  std::span<const std::byte> stream = input.Rest();
  while (!stream.empty() && !assembler.failed()) {
    if (assembler.FragmentLeft() >= kInPlace) {
      const std::span<std::byte> space = assembler.FragmentSpace(piece);
      const std::size_t count = std::min(space.size(), stream.size());
      std::copy_n(stream.begin(), count, space.begin());
      assembler.CommitFragment(count);
      stream = stream.subspan(count);
    } else {
      const std::size_t count = std::min(piece, stream.size());
      assembler.Feed(stream.first(count));
      stream = stream.subspan(count);
    }
    while (assembler.HasRecord()) {
      const xdr::Bytes record = assembler.PopRecord();
      QUARVELO_FUZZ_CHECK(record.size() <= max_record);
      xdr::Reader reader(record);
      rpc::ReplyHeader header;
      if (!rpc::GetReplyHeader(reader, &header)) continue;
      if (!header.accepted || header.stat != rpc::AcceptStat::kSuccess) continue;
      DecodeResults(procedure, record, record.size() - reader.remaining());
    }
  }
  return 0;
}
