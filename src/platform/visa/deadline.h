// Turning the session's time-out attribute into deadlines and poll() time-outs.
#ifndef QUARVELO_PLATFORM_VISA_DEADLINE_H_
#define QUARVELO_PLATFORM_VISA_DEADLINE_H_

#include <cstdint>

#include "platform/visa/transport.h"
#include "platform/visa/visa.h"

namespace quarvelo::visa {

// VI_TMO_INFINITE never expires; VI_TMO_IMMEDIATE expires at once (a poll still runs once).
Deadline DeadlineAfter(ViUInt32 timeout_ms);

// Milliseconds left until the deadline, rounded up, for poll(): -1 for a deadline that never
// expires, 0 once it has passed.
int PollMillisecondsUntil(Deadline deadline);

// Milliseconds from now to the deadline, rounded up, at least 0, at most `cap`; for a deadline
// at Deadline::max() (an infinite time-out) the cap itself.
std::uint32_t MillisecondsUntil(Deadline deadline, std::uint32_t cap = 0xFFFFFFFFu);

}  // namespace quarvelo::visa

#endif  // QUARVELO_PLATFORM_VISA_DEADLINE_H_
