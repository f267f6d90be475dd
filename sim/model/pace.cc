#include "sim/model/pace.h"

#include <algorithm>
#include <cmath>

namespace quarvelo::sim {

void ChargeSlowCommand(InstrumentState& state, SlowCommand command) {
  double latency = state.config.latency_ms / 1e3;
  if (latency <= 0) return;
  switch (command) {
    case SlowCommand::kDigitize: {
      // One screen's time (the record as it is acquired) after the trigger, and the transfer
      // of the record into the waveform memory.
      double screen = 10 * state.settings.Number(":TIMebase:SCALe");
      state.charged_seconds += std::min(screen, 10.0) + kDigitizeExchanges * latency;
      break;
    }
    case SlowCommand::kAutoscale:
      state.charged_seconds += kAutoscaleExchanges * latency;
      break;
    case SlowCommand::kScreenImage:
      state.charged_seconds += kScreenImageExchanges * latency;
      break;
  }
}

std::chrono::microseconds TakeMessageTime(InstrumentState& state) {
  double seconds = state.config.latency_ms > 0 ? state.config.latency_ms / 1e3 : 0;
  seconds += state.charged_seconds;
  state.charged_seconds = 0;
  return std::chrono::microseconds(std::llround(seconds * 1e6));
}

}  // namespace quarvelo::sim
