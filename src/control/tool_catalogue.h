// Every tool of the main window's toolbar-and-menu tree, as data: one row per tool with its ID,
// caption, tool tip, kind, category and exclusive option group. The menus, toolbars and widgets
// are built from this table; code refers to tools by ID only.
#ifndef QUARVELO_CONTROL_TOOL_CATALOGUE_H_
#define QUARVELO_CONTROL_TOOL_CATALOGUE_H_

#include <span>
#include <string_view>
#include <vector>

namespace quarvelo::control {

enum class ToolKind {
  kButton,
  kStateButton,  // stays down (1) or up (0)
  kDropDown,     // a state button with a pop-up menu (the channel buttons)
  kCombo,
  kLabel,
  kMenu,
};

struct ToolDefinition {
  std::string_view id;
  std::string_view caption;
  std::string_view tooltip;  // empty when the tool has none
  ToolKind kind = ToolKind::kButton;
  std::string_view category;
  // Tools sharing a group are exclusive: putting one down puts the others up. A plain button in
  // a group cannot stay down, but putting it down still puts the others up. Empty: none.
  std::string_view option_group;
};

inline constexpr int kToolCount = 203;

// All tools, grouped by category in the order of the catalogue.
std::span<const ToolDefinition> ToolCatalogue();
// nullptr for an unknown ID.
const ToolDefinition* FindTool(std::string_view id);
// The members of an option group, in catalogue order.
std::vector<std::string_view> OptionGroupMembers(std::string_view option_group);
// Every option group name, in order of first appearance.
std::vector<std::string_view> OptionGroups();
// The text a user sees or hears for a tool: its caption, or its tool tip when the caption is
// empty.
std::string_view AccessibleName(const ToolDefinition& tool);

}  // namespace quarvelo::control

#endif  // QUARVELO_CONTROL_TOOL_CATALOGUE_H_
