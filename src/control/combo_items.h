// The fixed items of the toolbar's combo tools. The program uses the selected index, never the
// text, so the texts stand as the program has always shown them ("4906", "dbV").
#ifndef QUARVELO_CONTROL_COMBO_ITEMS_H_
#define QUARVELO_CONTROL_COMBO_ITEMS_H_

#include <span>
#include <string_view>

namespace quarvelo::control {

struct ComboDefinition {
  std::string_view id;
  std::span<const std::string_view> items;
  std::string_view initial_text;  // empty: nothing selected at first
};

// "ID_AVG", "ID_Window", "ID_Bins", "ID_Scale" and "ID_TB" (empty here; `SetToolbar` fills it
// from the time-base ladder).
std::span<const ComboDefinition> Combos();
// nullptr for an ID that is not a combo tool.
const ComboDefinition* FindCombo(std::string_view id);

}  // namespace quarvelo::control

#endif  // QUARVELO_CONTROL_COMBO_ITEMS_H_
