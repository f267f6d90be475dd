#include "platform/visa/deadline.h"

#include <algorithm>
#include <limits>

namespace quarvelo::visa {

Deadline DeadlineAfter(ViUInt32 timeout_ms) {
  if (timeout_ms == VI_TMO_INFINITE) return Deadline::max();
  return Clock::now() + std::chrono::milliseconds(timeout_ms);
}

int PollMillisecondsUntil(Deadline deadline) {
  if (deadline == Deadline::max()) return -1;
  const auto left = deadline - Clock::now();
  if (left <= Clock::duration::zero()) return 0;
  const auto ms = std::chrono::ceil<std::chrono::milliseconds>(left).count();
  return static_cast<int>(std::min<long long>(ms, std::numeric_limits<int>::max()));
}

std::uint32_t MillisecondsUntil(Deadline deadline, std::uint32_t cap) {
  if (deadline == Deadline::max()) return cap;
  const auto left = deadline - Clock::now();
  if (left <= Clock::duration::zero()) return 0;
  const auto ms = std::chrono::ceil<std::chrono::milliseconds>(left).count();
  return static_cast<std::uint32_t>(std::min<long long>(ms, cap));
}

}  // namespace quarvelo::visa
