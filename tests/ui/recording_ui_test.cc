#include "platform/ui/recording_ui.h"

#include <gtest/gtest.h>

#include "platform/ui/status_text.h"

namespace quarvelo::ui {
namespace {

TEST(StatusLineTextTest, RemovesOuterBlanksOnly) {
  const struct {
    const char* in;
    const char* out;
  } cases[] = {
      {"  Ready  ", "Ready"},
      {"INST Error: -113,\"Undefined header\"\n", "INST Error: -113,\"Undefined header\""},
      {"\t a  b \r\n", "a  b"},
      {"   ", ""},
      {"", ""},
  };
  for (const auto& c : cases) EXPECT_EQ(StatusLineText(c.in), c.out) << c.in;
}

TEST(RecordingUiTest, MessageBoxesWithoutScriptPressTheFirstButton) {
  const struct {
    MessageButtons buttons;
    MessageResult expected;
  } cases[] = {
      {MessageButtons::kOk, MessageResult::kOk},
      {MessageButtons::kOkCancel, MessageResult::kOk},
      {MessageButtons::kYesNo, MessageResult::kYes},
      {MessageButtons::kYesNoCancel, MessageResult::kYes},
  };
  for (const auto& c : cases) {
    RecordingUi ui;
    EXPECT_EQ(ui.ShowMessage("x", MessageIcon::kQuestion, c.buttons), c.expected);
  }
}

TEST(RecordingUiTest, MessageAnswersComeFromTheScriptInOrder) {
  RecordingUi ui;
  ui.QueueMessageAnswer(MessageResult::kCancel);
  ui.QueueMessageAnswer(MessageResult::kNo);
  EXPECT_EQ(ui.ShowMessage("RESET WGEN\r\nAre you sure?", MessageIcon::kExclamation,
                           MessageButtons::kOkCancel),
            MessageResult::kCancel);
  EXPECT_EQ(ui.ShowMessage("b", MessageIcon::kNone, MessageButtons::kYesNo), MessageResult::kNo);
  // Script used up: back to the default.
  EXPECT_EQ(ui.ShowMessage("c", MessageIcon::kCritical, MessageButtons::kOkCancel),
            MessageResult::kOk);
  ASSERT_EQ(ui.messages().size(), 3u);
  EXPECT_EQ(ui.messages()[0].text, "RESET WGEN\r\nAre you sure?");
  EXPECT_EQ(ui.messages()[0].icon, MessageIcon::kExclamation);
  EXPECT_EQ(ui.messages()[0].buttons, MessageButtons::kOkCancel);
  EXPECT_EQ(ui.messages()[0].answer, MessageResult::kCancel);
  EXPECT_EQ(ui.messages()[2].icon, MessageIcon::kCritical);
  EXPECT_EQ(ui.messages()[0].title, "QUARVELO");
  ui.ShowTitledMessage("Error!", "N = 0", MessageIcon::kCritical, MessageButtons::kOk);
  EXPECT_EQ(ui.messages().back().title, "Error!");
}

TEST(RecordingUiTest, FileDialogsAnswerFromTheirOwnQueuesAndCancelWhenEmpty) {
  RecordingUi ui;
  ui.QueueOpenFileAnswer("/tmp/a.csv");
  ui.QueueSaveFileAnswer(std::nullopt);
  ui.QueueSaveFileAnswer("/tmp/b.bmp");
  const FileDialogRequest request{"Save BMP File", "BMP Files(*.bmp)|*.bmp", "/data"};
  EXPECT_EQ(ui.AskSaveFile(request), std::nullopt);
  EXPECT_EQ(ui.AskOpenFile(request), "/tmp/a.csv");
  EXPECT_EQ(ui.AskSaveFile(request), "/tmp/b.bmp");
  EXPECT_EQ(ui.AskOpenFile(request), std::nullopt);
  ASSERT_EQ(ui.save_requests().size(), 2u);
  EXPECT_EQ(ui.save_requests()[0].filter, "BMP Files(*.bmp)|*.bmp");
  EXPECT_EQ(ui.open_requests().size(), 2u);
}

TEST(RecordingUiTest, PausesAreFreeButRecordedAndRunTheEventHook) {
  RecordingUi ui;
  int hook_runs = 0;
  ui.SetEventHook([&] {
    ++hook_runs;
    ui.Pause(5);  // a hook that pauses must not recurse
  });
  ui.Pause(1000);
  ui.ProcessPendingEvents();
  EXPECT_EQ(hook_runs, 2);
  EXPECT_EQ(ui.event_runs(), 1);
  EXPECT_EQ(ui.pauses(), (std::vector<int>{1000, 5, 5}));
  EXPECT_EQ(ui.total_pause_ms(), 1010);
}

TEST(RecordingUiTest, CallLogKeepsOrderAndClearRecordsKeepsTheScript) {
  RecordingUi ui;
  ui.QueueMessageAnswer(MessageResult::kCancel);
  ui.ShowStatus("a");
  ui.Pause(10);
  ui.SetSingleTimerEnabled(false);
  EXPECT_EQ(ui.calls(),
            (std::vector<std::string>{"ShowStatus a", "Pause 10", "SetSingleTimerEnabled 0"}));
  ui.ClearRecords();
  EXPECT_TRUE(ui.calls().empty());
  EXPECT_TRUE(ui.pauses().empty());
  EXPECT_EQ(ui.ShowMessage("q", MessageIcon::kQuestion, MessageButtons::kOkCancel),
            MessageResult::kCancel);
}

}  // namespace
}  // namespace quarvelo::ui
