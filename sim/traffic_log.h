// The simulator's traffic log: one entry per message received and per reply sent, with the
// time since start, kept in memory for the tests and optionally written to a file.
#ifndef QUARVELO_SIM_TRAFFIC_LOG_H_
#define QUARVELO_SIM_TRAFFIC_LOG_H_

#include <chrono>
#include <cstdio>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "sim/server/message_handler.h"
#include "sim/simulator.h"

namespace quarvelo::sim {

class TrafficLog {
 public:
  // `path` empty: memory only; "-": standard output. False when the file cannot be created.
  bool Open(const std::string& path, std::string* error);

  void Add(TrafficEntry::Direction direction, std::string_view text);
  std::vector<TrafficEntry> Entries() const;
  void Clear();

  // A reply as the log shows it: text without its LF, a block as "#8... (<n> bytes)".
  static std::string Summarise(std::string_view reply);

 private:
  struct FileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
  };
  mutable std::mutex mutex_;
  std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
  std::vector<TrafficEntry> entries_;
  std::unique_ptr<std::FILE, FileCloser> file_;
};

// Logs every message and reply that passes between a transport server and the instrument.
class LoggingHandler : public MessageHandler {
 public:
  LoggingHandler(MessageHandler& inner, TrafficLog& log) : inner_(inner), log_(log) {}

  HandlerResponse HandleMessage(std::string_view message) override;
  void ReplyInterrupted() override { inner_.ReplyInterrupted(); }
  void DeviceClear() override { inner_.DeviceClear(); }

 private:
  MessageHandler& inner_;
  TrafficLog& log_;
};

}  // namespace quarvelo::sim

#endif  // QUARVELO_SIM_TRAFFIC_LOG_H_
