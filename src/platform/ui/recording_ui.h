// In-memory implementations of the UI seam for tests: `RecordingUi` records every call, answers
// message boxes and file dialogs from a script and makes pauses free; `RecordingToolHost` keeps
// every tool's state, visibility, caption and combo contents in memory.
#ifndef QUARVELO_PLATFORM_UI_RECORDING_UI_H_
#define QUARVELO_PLATFORM_UI_RECORDING_UI_H_

#include <deque>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/ui/tool_host.h"
#include "platform/ui/ui_services.h"

namespace quarvelo::ui {

struct RecordedMessage {
  std::string title = "QUARVELO";
  std::string text;
  MessageIcon icon = MessageIcon::kNone;
  MessageButtons buttons = MessageButtons::kOk;
  MessageResult answer = MessageResult::kOk;  // what the script answered
};

// The answer a user pressing Enter would give: the first button of the set.
MessageResult DefaultAnswer(MessageButtons buttons);

class RecordingUi : public UiServices {
 public:
  RecordingUi() = default;

  // --- Script. Answers are consumed in order; an empty queue gives the default answer
  // (`DefaultAnswer` for message boxes, "cancelled" for file dialogs). A queued message answer
  // that is not one of the box's buttons is still returned, so a test can provoke odd paths.
  void QueueMessageAnswer(MessageResult answer) { message_answers_.push_back(answer); }
  void QueueOpenFileAnswer(std::optional<std::string> path) {
    open_answers_.push_back(std::move(path));
  }
  void QueueSaveFileAnswer(std::optional<std::string> path) {
    save_answers_.push_back(std::move(path));
  }
  // Runs whenever the code under test lets pending events run or pauses: the place where a
  // test plays the user (a click on "Stop averaging" in the middle of a run).
  void SetEventHook(std::function<void()> hook) { event_hook_ = std::move(hook); }

  // --- UiServices.
  void ShowStatus(std::string_view text) override;
  MessageResult ShowMessage(std::string_view text, MessageIcon icon,
                            MessageButtons buttons) override;
  MessageResult ShowTitledMessage(std::string_view title, std::string_view text, MessageIcon icon,
                                  MessageButtons buttons) override;
  std::optional<std::string> AskOpenFile(const FileDialogRequest& request) override;
  std::optional<std::string> AskSaveFile(const FileDialogRequest& request) override;
  void SetPointer(PointerShape shape) override;
  void ProcessPendingEvents() override;
  void Pause(int milliseconds) override;
  void SetActivityColour(Rgb colour) override;
  void SetRefreshTimerEnabled(bool enabled) override;
  void SetSingleTimerEnabled(bool enabled) override;

  // --- Records.
  // Status lines as shown (trimmed), oldest first; `status()` is what the line shows now.
  const std::vector<std::string>& status_lines() const { return status_lines_; }
  const std::string& status() const { return status_; }
  const std::vector<RecordedMessage>& messages() const { return messages_; }
  const std::vector<FileDialogRequest>& open_requests() const { return open_requests_; }
  const std::vector<FileDialogRequest>& save_requests() const { return save_requests_; }
  const std::vector<PointerShape>& pointer_history() const { return pointer_history_; }
  PointerShape pointer() const { return pointer_; }
  int event_runs() const { return event_runs_; }
  const std::vector<int>& pauses() const { return pauses_; }
  const std::vector<Rgb>& activity_history() const { return activity_history_; }
  std::optional<Rgb> activity_colour() const { return activity_colour_; }
  bool refresh_timer_enabled() const { return refresh_timer_enabled_; }
  bool single_timer_enabled() const { return single_timer_enabled_; }
  const std::vector<bool>& refresh_timer_history() const { return refresh_timer_history_; }
  const std::vector<bool>& single_timer_history() const { return single_timer_history_; }

  // Forgets the records (not the script), so a test can look at one phase only.
  void ClearRecords();

 private:
  void RunHook();

  std::deque<MessageResult> message_answers_;
  std::deque<std::optional<std::string>> open_answers_;
  std::deque<std::optional<std::string>> save_answers_;
  std::function<void()> event_hook_;
  bool in_hook_ = false;

  std::vector<std::string> status_lines_;
  std::string status_;
  std::vector<RecordedMessage> messages_;
  std::vector<FileDialogRequest> open_requests_;
  std::vector<FileDialogRequest> save_requests_;
  std::vector<PointerShape> pointer_history_;
  PointerShape pointer_ = PointerShape::kDefault;
  int event_runs_ = 0;
  std::vector<int> pauses_;
  std::vector<Rgb> activity_history_;
  std::optional<Rgb> activity_colour_;
  bool refresh_timer_enabled_ = false;
  bool single_timer_enabled_ = false;
  std::vector<bool> refresh_timer_history_;
  std::vector<bool> single_timer_history_;
};

// Tools kept in memory. Without a list of known IDs every ID is accepted and springs into
// existence on first use (visible, enabled, up, empty caption). With a list, IDs outside it
// behave as the interface says (ignored, read as up / empty) and are collected in
// `unknown_ids()`, which catches a misspelt ID in the code under test.
class RecordingToolHost : public ToolHost {
 public:
  struct StateChange {
    std::string id;
    bool down = false;
    bool operator==(const StateChange&) const = default;
  };

  RecordingToolHost() = default;
  explicit RecordingToolHost(const std::vector<std::string>& known_ids);

  void SetToolState(std::string_view id, bool down) override;
  bool ToolState(std::string_view id) const override;
  void SetToolVisible(std::string_view id, bool visible) override;
  bool ToolVisible(std::string_view id) const override;
  void SetToolEnabled(std::string_view id, bool enabled) override;
  void SetToolCaption(std::string_view id, std::string_view caption) override;
  std::string ToolCaption(std::string_view id) const override;

  // Replacing the items clears the selection (index -1, empty text).
  void SetComboItems(std::string_view id, const std::vector<std::string>& items) override;
  std::vector<std::string> ComboItems(std::string_view id) const override;
  // An index outside the items selects nothing.
  void SetComboIndex(std::string_view id, int index) override;
  int ComboIndex(std::string_view id) const override;
  // Text equal to an item selects that item; other text is kept with no item selected.
  void SetComboText(std::string_view id, std::string_view text) override;
  std::string ComboText(std::string_view id) const override;

  bool ToolEnabled(std::string_view id) const;
  // Every SetToolState call in order (also those that did not change the state).
  const std::vector<StateChange>& state_history() const { return state_history_; }
  const std::set<std::string, std::less<>>& unknown_ids() const { return unknown_ids_; }
  void ClearHistory() { state_history_.clear(); }

 private:
  struct Tool {
    bool down = false;
    bool visible = true;
    bool enabled = true;
    std::string caption;
    std::vector<std::string> items;
    int index = -1;
    std::string text;
  };

  // nullptr for an unknown ID when the host has a list of known IDs.
  Tool* Find(std::string_view id);
  const Tool* Find(std::string_view id) const;

  bool restricted_ = false;
  std::map<std::string, Tool, std::less<>> tools_;
  std::vector<StateChange> state_history_;
  mutable std::set<std::string, std::less<>> unknown_ids_;
};

}  // namespace quarvelo::ui

#endif  // QUARVELO_PLATFORM_UI_RECORDING_UI_H_
