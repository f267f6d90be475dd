#include "sim/traffic_log.h"

#include <unistd.h>

#include <cctype>
#include <ctime>

namespace quarvelo::sim {

bool TrafficLog::Open(const std::string& path, std::string* error) {
  if (path.empty()) return true;
  // "-" is standard output: the log then follows the port line of the program.
  std::FILE* file = path == "-" ? fdopen(dup(fileno(stdout)), "a") : std::fopen(path.c_str(), "a");
  if (file == nullptr) {
    *error = "cannot open log file " + path;
    return false;
  }
  file_.reset(file);
  return true;
}

std::string TrafficLog::Summarise(std::string_view reply) {
  if (!reply.empty() && reply.back() == '\n') reply.remove_suffix(1);
  if (reply.size() >= 2 && reply[0] == '#' && std::isdigit(static_cast<unsigned char>(reply[1]))) {
    size_t digits = static_cast<size_t>(reply[1] - '0');
    std::string header(reply.substr(0, std::min(reply.size(), 2 + digits)));
    return header + " (" + std::to_string(reply.size() - header.size()) + " bytes)";
  }
  std::string text;
  text.reserve(reply.size());
  for (char c : reply) {
    text.push_back(std::isprint(static_cast<unsigned char>(c)) ? c : '.');
  }
  return text;
}

void TrafficLog::Add(TrafficEntry::Direction direction, std::string_view text) {
  std::lock_guard lock(mutex_);
  double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start_).count();
  entries_.push_back(TrafficEntry{direction, std::string(text), seconds});
  if (file_) {
    std::time_t now = std::time(nullptr);
    std::tm utc{};
    gmtime_r(&now, &utc);
    char stamp[32];
    std::strftime(stamp, sizeof stamp, "%Y-%m-%dT%H:%M:%SZ", &utc);
    std::fprintf(file_.get(), "%s %10.6f %s %s\n", stamp, seconds,
                 direction == TrafficEntry::Direction::kReceived ? "<<" : ">>",
                 entries_.back().text.c_str());
    std::fflush(file_.get());
  }
}

std::vector<TrafficEntry> TrafficLog::Entries() const {
  std::lock_guard lock(mutex_);
  return entries_;
}

void TrafficLog::Clear() {
  std::lock_guard lock(mutex_);
  entries_.clear();
}

HandlerResponse LoggingHandler::HandleMessage(std::string_view message) {
  log_.Add(TrafficEntry::Direction::kReceived, message);
  HandlerResponse response = inner_.HandleMessage(message);
  if (!response.reply.empty()) {
    log_.Add(TrafficEntry::Direction::kSent, TrafficLog::Summarise(response.reply));
  }
  return response;
}

}  // namespace quarvelo::sim
