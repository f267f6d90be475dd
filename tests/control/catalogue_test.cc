#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "acquisition/state_tool_ids.h"
#include "control/combo_items.h"
#include "control/menu_layout.h"
#include "control/tool_catalogue.h"

namespace quarvelo::control {
namespace {

using ::testing::ElementsAre;

// Every tool placed somewhere: menu bar menus, sub-menus reached from them, toolbars.
void Place(std::string_view id, std::set<std::string_view>& placed) {
  if (!placed.insert(id).second) return;
  if (const MenuDefinition* menu = FindMenu(id)) {
    for (std::string_view entry : menu->entries) Place(entry, placed);
  }
}

std::set<std::string_view> PlacedTools() {
  std::set<std::string_view> placed;
  for (std::string_view id : MenuBar()) Place(id, placed);
  for (const ToolbarDefinition& toolbar : Toolbars()) {
    placed.insert(toolbar.entries.begin(), toolbar.entries.end());
  }
  placed.erase(kSeparator);
  return placed;
}

TEST(ToolCatalogueTest, HoldsTwoHundredThreeToolsWithUniqueWellFormedIds) {
  ASSERT_EQ(ToolCatalogue().size(), 203u);
  std::set<std::string_view> ids;
  for (const ToolDefinition& tool : ToolCatalogue()) {
    SCOPED_TRACE(std::string(tool.id));
    EXPECT_TRUE(ids.insert(tool.id).second) << "duplicate";
    EXPECT_TRUE(tool.id.starts_with(tool.kind == ToolKind::kMenu ? "mnu_" : "ID_"));
    EXPECT_FALSE(AccessibleName(tool).empty());
    EXPECT_FALSE(tool.category.empty());
    EXPECT_EQ(FindTool(tool.id), &tool);
  }
  EXPECT_EQ(FindTool("ID_Nothing"), nullptr);
}

// An entry naming no tool is left out of the menus the Qt host builds: its layout test shows it.
TEST(MenuLayoutTest, EveryMenuToolHasAMenuAndToolbarsHoldNoMenus) {
  for (const MenuDefinition& menu : Menus()) {
    ASSERT_NE(FindTool(menu.id), nullptr) << menu.id;  // of kind menu: the catalogue loop below
    ASSERT_FALSE(menu.entries.empty()) << menu.id;
    EXPECT_NE(menu.entries.front(), kSeparator) << menu.id;
    EXPECT_NE(menu.entries.back(), kSeparator) << menu.id;
  }
  for (const ToolDefinition& tool : ToolCatalogue()) {
    EXPECT_EQ(FindMenu(tool.id) != nullptr, tool.kind == ToolKind::kMenu) << tool.id;
  }
  for (const ToolbarDefinition& toolbar : Toolbars()) {
    for (std::string_view entry : toolbar.entries) {
      if (entry == kSeparator) continue;
      ASSERT_NE(FindTool(entry), nullptr) << entry;
      EXPECT_NE(FindTool(entry)->kind, ToolKind::kMenu) << entry;
    }
  }
}

TEST(MenuLayoutTest, OnlyTheKnownLooseToolsAreNowhereInTheMenusOrToolbars) {
  std::set<std::string_view> unplaced;
  const std::set<std::string_view> placed = PlacedTools();
  for (const ToolDefinition& tool : ToolCatalogue()) {
    if (!placed.contains(tool.id)) unplaced.insert(tool.id);
  }
  // Reached by ID only (state mirroring, or no place in the menu listing).
  EXPECT_THAT(unplaced, ElementsAre("ID_PERSCLR", "ID_TGDIG", "mnu_MATHFUNC", "mnu_WGENN"));
}

TEST(OptionGroupTest, GroupsAreSetsOfStateButtons) {
  for (std::string_view group : OptionGroups()) {
    EXPECT_GE(OptionGroupMembers(group).size(), 2u) << group;
    for (std::string_view id : OptionGroupMembers(group)) {
      // The digital trigger source is the one plain button that names a group's value.
      EXPECT_TRUE(id == "ID_TGDIG" || FindTool(id)->kind == ToolKind::kStateButton) << id;
    }
  }
  EXPECT_TRUE(OptionGroupMembers("").empty());
  // A tool mirrored from two settings at once would be cleared by either.
  EXPECT_NE(FindTool("ID_TCA")->option_group, FindTool("ID_AC")->option_group);
  EXPECT_NE(FindTool("ID_TGSA")->option_group, FindTool("ID_TSA")->option_group);
}

// The readback checks the tool built from each mnemonic: every such ID must exist, and the
// values of one setting must share one exclusive group so that checking one clears the rest.
TEST(OptionGroupTest, StateMirrorToolsExistAndShareTheirSettingsGroup) {
  using namespace acquisition;
  const std::vector<std::vector<std::string>> settings = {
      {TriggerSlopeToolId("NEG"), TriggerSlopeToolId("POS"), TriggerSlopeToolId("EIT"),
       TriggerSlopeToolId("ALT")},
      {TriggerCouplingToolId("A"), TriggerCouplingToolId("D"), TriggerCouplingToolId("L")},
      {TriggerRejectToolId("L"), TriggerRejectToolId("H"), TriggerRejectToolId("O")},
      {TimebaseReferenceToolId("L"), TimebaseReferenceToolId("C"), TimebaseReferenceToolId("R")},
      {TimebaseModeToolId("M"), TimebaseModeToolId("W"), TimebaseModeToolId("X"),
       TimebaseModeToolId("R")},
      {AcquireTypeToolId("NORM"), AcquireTypeToolId("AVER"), AcquireTypeToolId("HRES"),
       AcquireTypeToolId("PEAK")},
      {PersistenceToolId("INF"), PersistenceToolId("MIN"), PersistenceToolId("0.5")},
      {TriggerSweepToolId(0), TriggerSweepToolId(1)},
      {TriggerSourceToolId("CHAN1", 1), TriggerSourceToolId("CHAN4", 4),
       TriggerSourceToolId("EXT", 1), TriggerSourceToolId("LINE", 1),
       TriggerSourceToolId("WGEN", 1), TriggerSourceToolId("DIG", 1)},
      {MeasureSourceToolId("CHAN3,CHAN1"), MeasureSourceToolId("EXT"), MeasureSourceToolId("WMEM2"),
       MeasureSourceToolId("FUNC")},
      {MathOperationToolId("ADD"), MathOperationToolId("DIV"), MathOperationToolId("FFT")},
      {MathPrefixToolId(":FUNC1"), MathPrefixToolId(":FUNC2")},
      {WgenPrefixToolId(":WGEN1"), WgenPrefixToolId(":WGEN2")},
      {DvmModeToolId(1), DvmModeToolId(4)},
      {DvmSourceToolId(1), DvmSourceToolId(4)},
      {VoltsPerDivToolId(5.0), VoltsPerDivToolId(0.001), VoltsPerDivToolId(0.2)},
  };
  for (const std::vector<std::string>& ids : settings) {
    std::set<std::string_view> groups;
    for (const std::string& id : ids) {
      ASSERT_NE(FindTool(id), nullptr) << id;
      groups.insert(FindTool(id)->option_group);
    }
    EXPECT_EQ(groups.size(), 1u) << ids.front();
    EXPECT_FALSE(groups.begin()->empty()) << ids.front();
  }
  for (const std::string& id :
       std::vector<std::string>{ChannelToolId(1), ChannelToolId(4), "ID_DISPLBL", "ID_TGNR",
                                "ID_MATHDISP", "ID_DVM", "ID_ADVM", "ID_WG"}) {
    ASSERT_NE(FindTool(id), nullptr) << id;
    EXPECT_NE(FindTool(id)->kind, ToolKind::kButton) << id;
  }
}

TEST(ComboItemsTest, EveryComboToolHasItemsDefinedAndInitialTextIsAnItem) {
  for (const ToolDefinition& tool : ToolCatalogue()) {
    EXPECT_TRUE(tool.kind != ToolKind::kCombo || FindCombo(tool.id) != nullptr) << tool.id;
  }
  for (const ComboDefinition& combo : Combos()) {
    ASSERT_NE(FindTool(combo.id), nullptr) << combo.id;
    EXPECT_EQ(FindTool(combo.id)->kind, ToolKind::kCombo) << combo.id;
    EXPECT_TRUE(combo.initial_text.empty() ||
                std::ranges::find(combo.items, combo.initial_text) != combo.items.end())
        << combo.id;
  }
}

}  // namespace
}  // namespace quarvelo::control
