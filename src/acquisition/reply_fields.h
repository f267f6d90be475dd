// Small readings of reply texts shared by the readbacks.
#ifndef QUARVELO_ACQUISITION_REPLY_FIELDS_H_
#define QUARVELO_ACQUISITION_REPLY_FIELDS_H_

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>

namespace quarvelo::acquisition {

// The first `count` characters (all of a shorter text).
std::string FirstChars(std::string_view text, std::size_t count);

// The text without its first and its last character (the quotes of a quoted reply); empty
// when the text has fewer than two characters.
std::string WithoutQuotes(std::string_view text);

// The number of the character at `position` (0-based), e.g. 2 for "CHAN2" at 4; 0 when the
// text is shorter or the character is not a digit.
int DigitAt(std::string_view text, std::size_t position);

// Whole number of a reply, clamped to int16.
std::int16_t WholeNumber16(std::string_view text);

// The trigger source of a ":TRIGger:EDGE:SOURce?" reply, by its first three characters:
// "CHAN3" gives "CHAN3" and channel 3 (channel 1 when the reply names none of 1..4); "DIG",
// "EXT" and "WMO" stay as they are; "LIN" gives "LINE", "WGE" "WGEN"; anything else "CHA" on
// channel 1, so that indexing by the channel stays valid.
struct TriggerSourceReading {
  std::string source;
  std::int16_t channel = 1;
};
TriggerSourceReading TriggerSourceFromReply(std::string_view reply);

// True when `text` is one of `known`.
bool IsOneOf(std::string_view text, std::initializer_list<std::string_view> known);

}  // namespace quarvelo::acquisition

#endif  // QUARVELO_ACQUISITION_REPLY_FIELDS_H_
