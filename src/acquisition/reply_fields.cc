#include "acquisition/reply_fields.h"

#include <algorithm>
#include <limits>

#include "acquisition/scope_state.h"
#include "platform/text/number_parse.h"

namespace quarvelo::acquisition {

std::string FirstChars(std::string_view text, std::size_t count) {
  return std::string(text.substr(0, count));
}

std::string WithoutQuotes(std::string_view text) {
  if (text.size() < 2) return {};
  return std::string(text.substr(1, text.size() - 2));
}

int DigitAt(std::string_view text, std::size_t position) {
  if (position >= text.size()) return 0;
  const char c = text[position];
  return c >= '0' && c <= '9' ? c - '0' : 0;
}

std::int16_t WholeNumber16(std::string_view text) {
  const int value = text::LeadingInteger(text);
  return static_cast<std::int16_t>(std::clamp<int>(value, std::numeric_limits<std::int16_t>::min(),
                                                   std::numeric_limits<std::int16_t>::max()));
}

bool IsOneOf(std::string_view text, std::initializer_list<std::string_view> known) {
  return std::find(known.begin(), known.end(), text) != known.end();
}

TriggerSourceReading TriggerSourceFromReply(std::string_view reply) {
  const std::string head = FirstChars(reply, 3);
  if (head == "CHA") {
    const int n = DigitAt(reply, 4);
    return {FirstChars(reply, 5), static_cast<std::int16_t>(n >= 1 && n <= kMaxChannels ? n : 1)};
  }
  if (IsOneOf(head, {"DIG", "EXT", "WMO"})) return {head};
  if (head == "LIN") return {"LINE"};
  if (head == "WGE") return {"WGEN"};
  return {"CHA"};
}

}  // namespace quarvelo::acquisition
