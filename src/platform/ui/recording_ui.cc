#include "platform/ui/recording_ui.h"

#include "platform/ui/status_text.h"

namespace quarvelo::ui {
MessageResult DefaultAnswer(MessageButtons buttons) {
  switch (buttons) {
    case MessageButtons::kOk:
    case MessageButtons::kOkCancel:
      return MessageResult::kOk;
    case MessageButtons::kYesNo:
    case MessageButtons::kYesNoCancel:
      return MessageResult::kYes;
  }
  return MessageResult::kOk;
}

void RecordingUi::ShowStatus(std::string_view text) {
  status_ = StatusLineText(text);
  status_lines_.push_back(status_);
}

MessageResult RecordingUi::ShowMessage(std::string_view text, MessageIcon icon,
                                       MessageButtons buttons) {
  return ShowTitledMessage("QUARVELO", text, icon, buttons);
}

MessageResult RecordingUi::ShowTitledMessage(std::string_view title, std::string_view text,
                                             MessageIcon icon, MessageButtons buttons) {
  MessageResult answer = DefaultAnswer(buttons);
  if (!message_answers_.empty()) {
    answer = message_answers_.front();
    message_answers_.pop_front();
  }
  messages_.push_back({std::string(title), std::string(text), icon, buttons, answer});
  return answer;
}

std::optional<std::string> RecordingUi::AskOpenFile(const FileDialogRequest& request) {
  open_requests_.push_back(request);
  if (open_answers_.empty()) return std::nullopt;
  std::optional<std::string> answer = std::move(open_answers_.front());
  open_answers_.pop_front();
  return answer;
}

std::optional<std::string> RecordingUi::AskSaveFile(const FileDialogRequest& request) {
  save_requests_.push_back(request);
  if (save_answers_.empty()) return std::nullopt;
  std::optional<std::string> answer = std::move(save_answers_.front());
  save_answers_.pop_front();
  return answer;
}

void RecordingUi::SetPointer(PointerShape shape) {
  pointer_ = shape;
  pointer_history_.push_back(shape);
}

void RecordingUi::ProcessPendingEvents() {
  ++event_runs_;
  RunHook();
}

void RecordingUi::Pause(int milliseconds) {
  pauses_.push_back(milliseconds);
  RunHook();
}

void RecordingUi::SetActivityColour(Rgb colour) {
  activity_colour_ = colour;
  activity_history_.push_back(colour);
}

void RecordingUi::SetRefreshTimerEnabled(bool enabled) {
  refresh_timer_enabled_ = enabled;
  refresh_timer_history_.push_back(enabled);
}

void RecordingUi::SetSingleTimerEnabled(bool enabled) {
  single_timer_enabled_ = enabled;
  single_timer_history_.push_back(enabled);
}

void RecordingUi::ClearRecords() {
  status_lines_.clear();
  messages_.clear();
  open_requests_.clear();
  save_requests_.clear();
  pointer_history_.clear();
  event_runs_ = 0;
  pauses_.clear();
  activity_history_.clear();
  refresh_timer_history_.clear();
  single_timer_history_.clear();
}

void RecordingUi::RunHook() {
  // A hook that itself pauses must not recurse without end.
  if (!event_hook_ || in_hook_) return;
  in_hook_ = true;
  event_hook_();
  in_hook_ = false;
}

RecordingToolHost::RecordingToolHost(const std::vector<std::string>& known_ids)
    : restricted_(true) {
  for (const std::string& id : known_ids) tools_.try_emplace(id);
}

RecordingToolHost::Tool* RecordingToolHost::Find(std::string_view id) {
  auto it = tools_.find(id);
  if (it != tools_.end()) return &it->second;
  if (restricted_) {
    unknown_ids_.emplace(id);
    return nullptr;
  }
  return &tools_.try_emplace(std::string(id)).first->second;
}

const RecordingToolHost::Tool* RecordingToolHost::Find(std::string_view id) const {
  auto it = tools_.find(id);
  if (it != tools_.end()) return &it->second;
  if (restricted_) unknown_ids_.emplace(id);
  return nullptr;
}

void RecordingToolHost::SetToolState(std::string_view id, bool down) {
  Tool* tool = Find(id);
  if (tool == nullptr) return;
  tool->down = down;
  state_history_.push_back({std::string(id), down});
}

bool RecordingToolHost::ToolState(std::string_view id) const {
  const Tool* tool = Find(id);
  return tool != nullptr && tool->down;
}

void RecordingToolHost::SetToolVisible(std::string_view id, bool visible) {
  if (Tool* tool = Find(id)) tool->visible = visible;
}

bool RecordingToolHost::ToolVisible(std::string_view id) const {
  const Tool* tool = Find(id);
  // A tool never touched is visible, as every tool is when the toolbar is built.
  if (tool == nullptr) return !restricted_;
  return tool->visible;
}

void RecordingToolHost::SetToolEnabled(std::string_view id, bool enabled) {
  if (Tool* tool = Find(id)) tool->enabled = enabled;
}

bool RecordingToolHost::ToolEnabled(std::string_view id) const {
  const Tool* tool = Find(id);
  if (tool == nullptr) return !restricted_;
  return tool->enabled;
}

void RecordingToolHost::SetToolCaption(std::string_view id, std::string_view caption) {
  if (Tool* tool = Find(id)) tool->caption = std::string(caption);
}

std::string RecordingToolHost::ToolCaption(std::string_view id) const {
  const Tool* tool = Find(id);
  return tool == nullptr ? std::string() : tool->caption;
}

void RecordingToolHost::SetComboItems(std::string_view id, const std::vector<std::string>& items) {
  Tool* tool = Find(id);
  if (tool == nullptr) return;
  tool->items = items;
  tool->index = -1;
  tool->text.clear();
}

std::vector<std::string> RecordingToolHost::ComboItems(std::string_view id) const {
  const Tool* tool = Find(id);
  return tool == nullptr ? std::vector<std::string>() : tool->items;
}

void RecordingToolHost::SetComboIndex(std::string_view id, int index) {
  Tool* tool = Find(id);
  if (tool == nullptr) return;
  if (index < 0 || index >= static_cast<int>(tool->items.size())) {
    tool->index = -1;
    tool->text.clear();
    return;
  }
  tool->index = index;
  tool->text = tool->items[static_cast<std::size_t>(index)];
}

int RecordingToolHost::ComboIndex(std::string_view id) const {
  const Tool* tool = Find(id);
  return tool == nullptr ? -1 : tool->index;
}

void RecordingToolHost::SetComboText(std::string_view id, std::string_view text) {
  Tool* tool = Find(id);
  if (tool == nullptr) return;
  tool->text = std::string(text);
  tool->index = -1;
  for (std::size_t i = 0; i < tool->items.size(); ++i) {
    if (tool->items[i] == text) {
      tool->index = static_cast<int>(i);
      break;
    }
  }
}

std::string RecordingToolHost::ComboText(std::string_view id) const {
  const Tool* tool = Find(id);
  return tool == nullptr ? std::string() : tool->text;
}

}  // namespace quarvelo::ui
