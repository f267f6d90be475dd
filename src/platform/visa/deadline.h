// Turning the session's time-out attribute into deadlines and poll() time-outs.
#ifndef QUARVELO_PLATFORM_VISA_DEADLINE_H_
#define QUARVELO_PLATFORM_VISA_DEADLINE_H_

#include "platform/visa/transport.h"
#include "platform/visa/visa.h"

namespace quarvelo::visa {

// VI_TMO_INFINITE never expires; VI_TMO_IMMEDIATE expires at once (a poll still runs once).
Deadline DeadlineAfter(ViUInt32 timeout_ms);

// Milliseconds left until the deadline, rounded up, for poll(): -1 for a deadline that never
// expires, 0 once it has passed.
int PollMillisecondsUntil(Deadline deadline);

}  // namespace quarvelo::visa

#endif  // QUARVELO_PLATFORM_VISA_DEADLINE_H_
