#include "platform/ui/status_text.h"

namespace quarvelo::ui {

std::string StatusLineText(std::string_view text) {
  constexpr std::string_view kBlanks = " \t\r\n";
  const std::size_t first = text.find_first_not_of(kBlanks);
  if (first == std::string_view::npos) return {};
  const std::size_t last = text.find_last_not_of(kBlanks);
  return std::string(text.substr(first, last - first + 1));
}

}  // namespace quarvelo::ui
