// The instrument's SCPI error queue: first in, first out, bounded; when full the newest entry
// becomes -350 "Queue overflow"; empty it answers +0,"No error".
#ifndef QUARVELO_SIM_STATUS_ERROR_QUEUE_H_
#define QUARVELO_SIM_STATUS_ERROR_QUEUE_H_

#include <deque>
#include <string>

namespace quarvelo::sim {

class ErrorQueue {
 public:
  static constexpr size_t kCapacity = 30;

  void Push(int number);
  void Push(int number, const std::string& text);
  // The oldest entry as the instrument replies it: -113,"Undefined header".
  std::string Pop();
  void Clear() { entries_.clear(); }
  size_t size() const { return entries_.size(); }

 private:
  struct Entry {
    int number;
    std::string text;
  };
  std::deque<Entry> entries_;
};

// The standard text of an SCPI error number ("" for an unknown one).
const char* ErrorText(int number);

}  // namespace quarvelo::sim

#endif  // QUARVELO_SIM_STATUS_ERROR_QUEUE_H_
