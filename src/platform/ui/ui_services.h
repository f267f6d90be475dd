// The user-interface services the subsystems call. The main window provides the Qt
// implementation; tests use a recording implementation that answers dialogs from a script
// and makes pauses free. Nothing below this seam includes Qt Widgets.
#ifndef QUARVELO_PLATFORM_UI_UI_SERVICES_H_
#define QUARVELO_PLATFORM_UI_UI_SERVICES_H_

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace quarvelo::ui {

enum class MessageIcon { kNone, kCritical, kQuestion, kExclamation, kInformation };
enum class MessageButtons { kOk, kOkCancel, kYesNo, kYesNoCancel };
enum class MessageResult { kOk, kCancel, kYes, kNo };
enum class PointerShape { kDefault, kHourglass, kCross, kSizeAll, kSizeHorizontal, kArrowQuestion };

// A colour as 0xRRGGBB.
using Rgb = std::uint32_t;
constexpr Rgb MakeRgb(int r, int g, int b) {
  return (static_cast<Rgb>(r) << 16) | (static_cast<Rgb>(g) << 8) | static_cast<Rgb>(b);
}

struct FileDialogRequest {
  std::string title;
  std::string filter;        // e.g. "CSV files (*.csv)"
  std::string initial_path;  // folder or file
};

class UiServices {
 public:
  virtual ~UiServices() = default;

  // One trimmed line on the status line `lblScreen`.
  virtual void ShowStatus(std::string_view text) = 0;
  // A message box titled "QUARVELO"; returns the button pressed.
  virtual MessageResult ShowMessage(std::string_view text, MessageIcon icon,
                                    MessageButtons buttons) = 0;
  // A message box with a title of its own (the module FFT's "Error!" box). Implementations
  // that cannot set a title may keep this default, which shows an ordinary box.
  virtual MessageResult ShowTitledMessage(std::string_view title, std::string_view text,
                                          MessageIcon icon, MessageButtons buttons) {
    static_cast<void>(title);
    return ShowMessage(text, icon, buttons);
  }
  virtual std::optional<std::string> AskOpenFile(const FileDialogRequest& request) = 0;
  virtual std::optional<std::string> AskSaveFile(const FileDialogRequest& request) = 0;
  virtual void SetPointer(PointerShape shape) = 0;
  // Lets pending user-interface events run (clicks on a stop button, repaints).
  virtual void ProcessPendingEvents() = 0;
  // Waits, letting events run meanwhile.
  virtual void Pause(int milliseconds) = 0;
  // Main-window controls the link drives directly.
  virtual void SetActivityColour(Rgb colour) = 0;         // `shaActivity`
  virtual void SetRefreshTimerEnabled(bool enabled) = 0;  // `tmrRefresh`
  virtual void SetSingleTimerEnabled(bool enabled) = 0;   // `tmrSingle`
};

}  // namespace quarvelo::ui

#endif  // QUARVELO_PLATFORM_UI_UI_SERVICES_H_
