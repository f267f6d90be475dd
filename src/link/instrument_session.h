// The one VISA session to the oscilloscope and the areas its replies land in. The main window
// owns one instance for the whole run; the link operations fill it, callers read the areas.
#ifndef QUARVELO_LINK_INSTRUMENT_SESSION_H_
#define QUARVELO_LINK_INSTRUMENT_SESSION_H_

#include <array>
#include <cstdint>
#include <memory>
#include <string>

#include "platform/visa/visa.h"

namespace quarvelo::link {

inline constexpr int kNumberListCapacity = 20;
inline constexpr int kBinaryBlockCapacity = 5'000'000;

struct InstrumentSession {
  InstrumentSession() : binary_block(std::make_unique<std::uint8_t[]>(kBinaryBlockCapacity + 1)) {}

  ViSession ResourceManager = VI_NULL;
  ViSession Instrument = VI_NULL;
  ViStatus LastStatus = VI_SUCCESS;
  bool RemoteOn = false;
  std::string Address;
  bool TolerateTimeout = false;
  bool TimedOut = false;
  std::int32_t TransferCount = 0;

  // Allocated once for the largest reply and reused by every query; a block is read straight
  // into it. Valid up to the count the last query returned.
  std::array<double, kNumberListCapacity> number_list{};
  std::unique_ptr<std::uint8_t[]> binary_block;  // indexes 0 .. kBinaryBlockCapacity
};

}  // namespace quarvelo::link

#endif  // QUARVELO_LINK_INSTRUMENT_SESSION_H_
