#include "link/reply_text.h"

namespace quarvelo::link {

std::string StripControlChars(std::string_view text) {
  std::string out;
  out.reserve(text.size());
  for (const char c : text) {
    if (static_cast<unsigned char>(c) >= 32) out.push_back(c);
  }
  return out;
}

std::string_view TrimBlanks(std::string_view text) {
  const auto first = text.find_first_not_of(' ');
  if (first == std::string_view::npos) return {};
  const auto last = text.find_last_not_of(' ');
  return text.substr(first, last - first + 1);
}

std::string CleanReply(std::string_view raw) {
  std::string stripped = StripControlChars(raw);
  if (stripped.size() > kReplyTextLimit) stripped.resize(kReplyTextLimit);
  return std::string(TrimBlanks(stripped));
}

}  // namespace quarvelo::link
