// The UI services over the main window's widgets.
#ifndef QUARVELO_PLATFORM_QT_QT_UI_SERVICES_H_
#define QUARVELO_PLATFORM_QT_QT_UI_SERVICES_H_

#include <QPointer>
#include <QTimer>

#include "platform/qt/activity_indicator.h"
#include "platform/ui/ui_services.h"

class QLabel;
class QWidget;

namespace quarvelo::qt {

// The widgets the services act on; they belong to the main window, which outlives the
// services' use (a widget that is gone is skipped).
struct QtUiWidgets {
  QWidget* window = nullptr;  // parent of message boxes and dialogs
  QLabel* status_line = nullptr;
  ActivityIndicator* activity = nullptr;
  QTimer* refresh_timer = nullptr;
  QTimer* single_timer = nullptr;
};

class QtUiServices : public ui::UiServices {
 public:
  explicit QtUiServices(const QtUiWidgets& widgets);
  ~QtUiServices() override;

  void ShowStatus(std::string_view text) override;
  ui::MessageResult ShowMessage(std::string_view text, ui::MessageIcon icon,
                                ui::MessageButtons buttons) override;
  ui::MessageResult ShowTitledMessage(std::string_view title, std::string_view text,
                                      ui::MessageIcon icon, ui::MessageButtons buttons) override;
  std::optional<std::string> AskOpenFile(const ui::FileDialogRequest& request) override;
  std::optional<std::string> AskSaveFile(const ui::FileDialogRequest& request) override;
  // One pointer shape for the whole application, as a busy program shows it.
  void SetPointer(ui::PointerShape shape) override;
  void ProcessPendingEvents() override;
  void Pause(int milliseconds) override;
  void SetActivityColour(ui::Rgb colour) override;
  void SetRefreshTimerEnabled(bool enabled) override;
  void SetSingleTimerEnabled(bool enabled) override;

 private:
  QPointer<QWidget> window_;
  QPointer<QLabel> status_line_;
  QPointer<ActivityIndicator> activity_;
  QPointer<QTimer> refresh_timer_;
  QPointer<QTimer> single_timer_;
  bool pointer_overridden_ = false;
};

}  // namespace quarvelo::qt

#endif  // QUARVELO_PLATFORM_QT_QT_UI_SERVICES_H_
