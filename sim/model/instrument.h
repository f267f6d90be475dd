// The simulated oscilloscope behind every transport: parses each program message, runs its
// commands against the settings table and the behaviour commands, queues errors, and applies
// the faults it was told to commit to the replies.
#ifndef QUARVELO_SIM_MODEL_INSTRUMENT_H_
#define QUARVELO_SIM_MODEL_INSTRUMENT_H_

#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "sim/model/command_table.h"
#include "sim/model/instrument_config.h"
#include "sim/model/instrument_state.h"
#include "sim/server/message_handler.h"

namespace quarvelo::sim {

class Instrument : public MessageHandler {
 public:
  explicit Instrument(const InstrumentConfig& config);

  HandlerResponse HandleMessage(std::string_view message) override;
  void ReplyInterrupted() override;
  void DeviceClear() override;

  // Runs a message without the faults (a test's set-up step); the reply without its LF.
  std::string Execute(std::string_view message);

  // Lets a test or benchmark look at or steer the model directly.
  template <typename Function>
  auto WithState(Function function) {
    std::lock_guard lock(mutex_);
    return function(state_);
  }

 private:
  // The replies of the message's queries joined by ";", without LF ("" when none).
  std::string Run(std::string_view message);
  // The response to a message with the faults applied; called under the lock.
  HandlerResponse Respond(std::string_view message);
  int RunCommand(const ScpiCommand& command, std::string* reply);
  void QueueError(int number);

  std::mutex mutex_;
  InstrumentState state_;
  std::vector<CommandEntry> commands_;
};

}  // namespace quarvelo::sim

#endif  // QUARVELO_SIM_MODEL_INSTRUMENT_H_
