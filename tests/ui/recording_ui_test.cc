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

// The recording host stands for the toolbar in the dispatcher's tests: a misspelt ID must show.
TEST(RecordingToolHostTest, RestrictedHostIgnoresAndCollectsUnknownIds) {
  RecordingToolHost host({"ID_Run", "ID_AVG"});
  host.SetToolState("ID_Rnu", true);
  host.SetComboItems("ID_AVGG", {"1"});
  EXPECT_FALSE(host.ToolState("ID_Rnu"));
  EXPECT_TRUE(host.ComboItems("ID_AVGG").empty());
  EXPECT_EQ(host.unknown_ids(), (std::set<std::string, std::less<>>{"ID_AVGG", "ID_Rnu"}));
  host.SetToolState("ID_Run", true);
  EXPECT_TRUE(host.ToolState("ID_Run"));
}

}  // namespace
}  // namespace quarvelo::ui
