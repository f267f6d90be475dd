// How long the instrument takes over a message when it is told to keep a real instrument's
// pace: a latency per exchange, and for the slow commands (a digitize, an autoscale, a screen
// image) a model built on it. With no latency set everything answers at once, as tests want.
#ifndef QUARVELO_SIM_MODEL_PACE_H_
#define QUARVELO_SIM_MODEL_PACE_H_

#include <chrono>

#include "sim/model/instrument_state.h"

namespace quarvelo::sim {

enum class SlowCommand { kDigitize, kAutoscale, kScreenImage };

// Multiples of the per-exchange latency each slow command adds (a digitize also waits for its
// acquisition): about 20 ms, 0.8 s and 0.3 s at a latency of 1 ms.
inline constexpr double kDigitizeExchanges = 20;
inline constexpr double kAutoscaleExchanges = 800;
inline constexpr double kScreenImageExchanges = 300;

// Records the extra time a slow command of the current message takes.
void ChargeSlowCommand(InstrumentState& state, SlowCommand command);

// The time the message just run takes in all (nothing without a latency); clears the charges.
std::chrono::microseconds TakeMessageTime(InstrumentState& state);

}  // namespace quarvelo::sim

#endif  // QUARVELO_SIM_MODEL_PACE_H_
