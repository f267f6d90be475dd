// Cleaning of text replies before anyone reads them.
#ifndef QUARVELO_LINK_REPLY_TEXT_H_
#define QUARVELO_LINK_REPLY_TEXT_H_

#include <string>
#include <string_view>

namespace quarvelo::link {

// Longest text reply QueryString hands back.
inline constexpr std::size_t kReplyTextLimit = 256;

// Removes every character with code 0 to 31 wherever it stands.
std::string StripControlChars(std::string_view text);

// Removes leading and trailing blanks.
std::string_view TrimBlanks(std::string_view text);

// What QueryString returns for a raw reply: control characters removed, cut to 256
// characters, blanks trimmed.
std::string CleanReply(std::string_view raw);

}  // namespace quarvelo::link

#endif  // QUARVELO_LINK_REPLY_TEXT_H_
