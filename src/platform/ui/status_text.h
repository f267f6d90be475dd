// The text the status line shows for a ShowStatus call, shared by every UiServices
// implementation so that tests and the window agree.
#ifndef QUARVELO_PLATFORM_UI_STATUS_TEXT_H_
#define QUARVELO_PLATFORM_UI_STATUS_TEXT_H_

#include <string>
#include <string_view>

namespace quarvelo::ui {

// `text` without leading and trailing blanks (spaces, tabs, CR, LF): instrument replies end in
// a line feed that must not show as an empty second line.
std::string StatusLineText(std::string_view text);

}  // namespace quarvelo::ui

#endif  // QUARVELO_PLATFORM_UI_STATUS_TEXT_H_
