// The menu bar, its menus and sub-menus, the channel pop-up and the five toolbars, as ordered
// lists of tool IDs. A sub-menu entry is the ID of a menu tool ("mnu_PERS"); `kSeparator`
// marks a separator. The same tool may appear in several lists.
#ifndef QUARVELO_CONTROL_MENU_LAYOUT_H_
#define QUARVELO_CONTROL_MENU_LAYOUT_H_

#include <span>
#include <string_view>

namespace quarvelo::control {

inline constexpr std::string_view kSeparator = "-";

struct MenuDefinition {
  std::string_view id;  // a menu tool of the catalogue
  std::span<const std::string_view> entries;
};

struct ToolbarDefinition {
  std::string_view name;  // the toolbar's title, also its object name
  std::span<const std::string_view> entries;
};

// The menus of the menu bar, left to right. "mnu_Channel" is among them but is hidden at
// run time: it is the channel buttons' pop-up.
std::span<const std::string_view> MenuBar();
// Every menu whose contents are defined, top-level and sub-menus alike.
std::span<const MenuDefinition> Menus();
// nullptr for an ID that is not a defined menu.
const MenuDefinition* FindMenu(std::string_view id);
// The five toolbars: "Channels", "FFT", "Oscilloscope", "TimeBase", "Markers".
std::span<const ToolbarDefinition> Toolbars();

}  // namespace quarvelo::control

#endif  // QUARVELO_CONTROL_MENU_LAYOUT_H_
