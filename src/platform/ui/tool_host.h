// Toolbar tools addressed by their string IDs ("ID_Run", "mnu_File"). One tool may appear in
// several menus and toolbars; its state is shared everywhere it appears.
#ifndef QUARVELO_PLATFORM_UI_TOOL_HOST_H_
#define QUARVELO_PLATFORM_UI_TOOL_HOST_H_

#include <string>
#include <string_view>
#include <vector>

namespace quarvelo::ui {

class ToolHost {
 public:
  virtual ~ToolHost() = default;

  // State buttons: false = up (0), true = down (1). Unknown IDs are ignored / read as up.
  virtual void SetToolState(std::string_view id, bool down) = 0;
  virtual bool ToolState(std::string_view id) const = 0;
  virtual void SetToolVisible(std::string_view id, bool visible) = 0;
  virtual bool ToolVisible(std::string_view id) const = 0;
  virtual void SetToolEnabled(std::string_view id, bool enabled) = 0;
  virtual void SetToolCaption(std::string_view id, std::string_view caption) = 0;
  virtual std::string ToolCaption(std::string_view id) const = 0;

  // Combo tools.
  virtual void SetComboItems(std::string_view id, const std::vector<std::string>& items) = 0;
  virtual std::vector<std::string> ComboItems(std::string_view id) const = 0;
  // -1 selects nothing.
  virtual void SetComboIndex(std::string_view id, int index) = 0;
  virtual int ComboIndex(std::string_view id) const = 0;
  virtual void SetComboText(std::string_view id, std::string_view text) = 0;
  virtual std::string ComboText(std::string_view id) const = 0;
};

}  // namespace quarvelo::ui

#endif  // QUARVELO_PLATFORM_UI_TOOL_HOST_H_
