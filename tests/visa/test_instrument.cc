#include "tests/visa/test_instrument.h"

#include <thread>

namespace quarvelo::testing {

const std::string& BlockReply() {
  static const std::string reply = [] {
    std::string block = "#6524288";
    for (std::size_t i = 0; i < kBlockSize; ++i) block.push_back(static_cast<char>((i * 7) % 256));
    return block + "\n";
  }();
  return reply;
}

sim::HandlerResponse CannedHandler::HandleMessage(std::string_view message) {
  {
    std::lock_guard lock(mutex_);
    messages_.emplace_back(message);
  }
  sim::HandlerResponse response;
  if (message == "*IDN?") {
    response.reply = kIdn;
  } else if (message.starts_with("ECHO ")) {
    response.reply = std::string(message.substr(5)) + "\n";
  } else if (message == "LONG?") {
    response.reply = std::string(1000, 'L') + "\n";
  } else if (message == "BLOCK?") {
    response.reply = BlockReply();
  } else if (message == "SLOW?") {
    response.reply = "SLOW\n";
    response.delay = std::chrono::milliseconds(600);
  } else if (message == "DROP?") {
    response.reply = BlockReply().substr(0, 100000);
    response.drop_connection = true;
  } else if (message == "STALL") {
    std::this_thread::sleep_for(std::chrono::milliseconds(500));
  } else if (message == "BYE") {
    response.drop_connection = true;
  }
  return response;
}

std::vector<std::string> CannedHandler::messages() const {
  std::lock_guard lock(mutex_);
  return messages_;
}

visa::Deadline In(int milliseconds) {
  return visa::Clock::now() + std::chrono::milliseconds(milliseconds);
}

ViStatus WriteMessage(visa::Transport& transport, std::string_view message,
                      visa::Deadline deadline) {
  return transport.Write(std::as_bytes(std::span(message.data(), message.size())), true, deadline);
}

ViStatus ReadMessage(visa::Transport& transport, visa::Deadline deadline, std::string* message,
                     std::size_t chunk) {
  message->clear();
  std::vector<std::byte> buffer(chunk);
  for (;;) {
    visa::ReadResult result;
    const ViStatus status = transport.Read(buffer, deadline, &result);
    message->append(reinterpret_cast<const char*>(buffer.data()), result.count);
    if (status != VI_SUCCESS) return status;
    if (result.end) return VI_SUCCESS;
  }
}

ViStatus Query(visa::Transport& transport, std::string_view message, std::string* reply,
               int timeout_ms) {
  const ViStatus status = WriteMessage(transport, std::string(message) + "\n", In(timeout_ms));
  if (status != VI_SUCCESS) return status;
  return ReadMessage(transport, In(timeout_ms), reply);
}

}  // namespace quarvelo::testing
