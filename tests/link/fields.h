#ifndef QUARVELO_TESTS_LINK_FIELDS_H_
#define QUARVELO_TESTS_LINK_FIELDS_H_

#include <charconv>
#include <string>
#include <type_traits>

namespace quarvelo::testing_support {

// Values as one text to compare a whole record at once: '|' after each, numbers in their
// shortest exact form, flags as 0 or 1.
template <typename... T>
std::string Fields(const T&... values) {
  std::string out;
  auto add = [&out](const auto& value) {
    using V = std::decay_t<decltype(value)>;
    if constexpr (std::is_same_v<V, bool>) {
      out += value ? '1' : '0';
    } else if constexpr (std::is_arithmetic_v<V>) {
      char text[32];
      out.append(text, std::to_chars(text, text + sizeof text, value).ptr);
    } else {
      out += value;
    }
    out += '|';
  };
  (add(values), ...);
  return out;
}

}  // namespace quarvelo::testing_support

#endif  // QUARVELO_TESTS_LINK_FIELDS_H_
