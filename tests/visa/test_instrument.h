// A small instrument for the transport tests of both test folders: fixed replies, an echo, a
// 524,288-byte block, a reply slower than the tests' time-outs and replies that end the
// connection; and client helpers that read whole messages over any transport.
#ifndef QUARVELO_TESTS_VISA_TEST_INSTRUMENT_H_
#define QUARVELO_TESTS_VISA_TEST_INSTRUMENT_H_

#include <atomic>
#include <mutex>
#include <string>
#include <vector>

#include "platform/visa/transport.h"
#include "sim/server/message_handler.h"

namespace quarvelo::testing {

inline constexpr char kIdn[] = "QUARVELO,LAN-TEST,0001,1.0\n";
inline constexpr std::size_t kBlockSize = 524288;

// "*IDN?" -> kIdn; "ECHO <text>" -> "<text>\n"; "BLOCK?" -> BlockReply(); "LONG?" -> 1000 'L'
// and LF; "SLOW?" -> "SLOW\n" after 600 ms; "DROP?" -> the block's first 100,000 bytes, then
// the connection closes; "BYE" -> the connection closes; "STALL" -> busy 500 ms; else nothing.
class CannedHandler : public sim::MessageHandler {
 public:
  sim::HandlerResponse HandleMessage(std::string_view message) override;
  void ReplyInterrupted() override { ++interrupted; }
  void DeviceClear() override { ++cleared; }

  std::vector<std::string> messages() const;

  std::atomic<int> interrupted{0};
  std::atomic<int> cleared{0};

 private:
  mutable std::mutex mutex_;
  std::vector<std::string> messages_;
};

// "#6524288", kBlockSize bytes of every value (LF included) and LF.
const std::string& BlockReply();

// Client helpers over any transport: the whole message up to END.
visa::Deadline In(int milliseconds);
ViStatus WriteMessage(visa::Transport& transport, std::string_view message,
                      visa::Deadline deadline);
ViStatus ReadMessage(visa::Transport& transport, visa::Deadline deadline, std::string* message,
                     std::size_t chunk = 64 * 1024);
ViStatus Query(visa::Transport& transport, std::string_view message, std::string* reply,
               int timeout_ms = 2000);

}  // namespace quarvelo::testing

#endif  // QUARVELO_TESTS_VISA_TEST_INSTRUMENT_H_
