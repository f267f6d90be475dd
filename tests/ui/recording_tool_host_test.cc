#include <gtest/gtest.h>

#include "platform/ui/recording_ui.h"

namespace quarvelo::ui {
namespace {

TEST(RecordingToolHostTest, RestrictedHostIgnoresAndCollectsUnknownIds) {
  RecordingToolHost host({"ID_Run", "ID_AVG"});
  host.SetToolState("ID_Rnu", true);
  host.SetToolCaption("ID_Rnu", "x");
  host.SetComboItems("ID_AVGG", {"1"});
  EXPECT_FALSE(host.ToolState("ID_Rnu"));
  EXPECT_FALSE(host.ToolVisible("ID_Rnu"));
  EXPECT_EQ(host.ToolCaption("ID_Rnu"), "");
  EXPECT_TRUE(host.ComboItems("ID_AVGG").empty());
  EXPECT_EQ(host.unknown_ids(), (std::set<std::string, std::less<>>{"ID_AVGG", "ID_Rnu"}));
  EXPECT_TRUE(host.state_history().empty());
  host.SetToolState("ID_Run", true);
  EXPECT_TRUE(host.ToolState("ID_Run"));
}

TEST(RecordingToolHostTest, StateHistoryRecordsEveryCallInOrder) {
  RecordingToolHost host;
  host.SetToolState("ID_CH1", true);
  host.SetToolState("ID_CH1", true);
  host.SetToolState("ID_Remote", false);
  using Change = RecordingToolHost::StateChange;
  EXPECT_EQ(host.state_history(),
            (std::vector<Change>{{"ID_CH1", true}, {"ID_CH1", true}, {"ID_Remote", false}}));
  host.ClearHistory();
  EXPECT_TRUE(host.state_history().empty());
  EXPECT_TRUE(host.ToolState("ID_CH1"));
}

TEST(RecordingToolHostTest, ComboSelectionFollowsIndexAndText) {
  RecordingToolHost host;
  host.SetComboItems("ID_Bins", {"256", "512", "1024", "2048", "4906"});
  EXPECT_EQ(host.ComboIndex("ID_Bins"), -1);
  EXPECT_EQ(host.ComboText("ID_Bins"), "");

  const struct {
    int set_index;
    int index;
    const char* text;
  } index_cases[] = {{4, 4, "4906"}, {0, 0, "256"}, {5, -1, ""}, {-1, -1, ""}, {-7, -1, ""}};
  for (const auto& c : index_cases) {
    host.SetComboIndex("ID_Bins", c.set_index);
    EXPECT_EQ(host.ComboIndex("ID_Bins"), c.index) << c.set_index;
    EXPECT_EQ(host.ComboText("ID_Bins"), c.text) << c.set_index;
  }

  host.SetComboText("ID_Bins", "1024");
  EXPECT_EQ(host.ComboIndex("ID_Bins"), 2);
  host.SetComboText("ID_Bins", "4096");  // not an item: text kept, nothing selected
  EXPECT_EQ(host.ComboIndex("ID_Bins"), -1);
  EXPECT_EQ(host.ComboText("ID_Bins"), "4096");

  host.SetComboIndex("ID_Bins", 1);
  host.SetComboItems("ID_Bins", {"a", "b"});  // new items clear the selection
  EXPECT_EQ(host.ComboIndex("ID_Bins"), -1);
  EXPECT_EQ(host.ComboItems("ID_Bins"), (std::vector<std::string>{"a", "b"}));
}

}  // namespace
}  // namespace quarvelo::ui
