#include "control/set_toolbar.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "control/combo_items.h"
#include "control/tool_catalogue.h"
#include "display/time_base_ladder.h"
#include "platform/settings/memory_settings_store.h"
#include "platform/ui/recording_ui.h"

namespace quarvelo::control {
namespace {

std::vector<std::string> AllToolIds() {
  std::vector<std::string> ids;
  for (const ToolDefinition& tool : ToolCatalogue()) ids.emplace_back(tool.id);
  return ids;
}

// A host that knows exactly the catalogue's tools (a misspelt ID shows in unknown_ids()) and
// holds the combos' fixed items, as the real toolbar does.
class SetToolbarTest : public ::testing::Test {
 protected:
  SetToolbarTest() : tools_(AllToolIds()) {
    for (const ComboDefinition& combo : Combos()) {
      tools_.SetComboItems(combo.id, {combo.items.begin(), combo.items.end()});
    }
  }

  void Run(bool remote_on, const SpectrumChoices& selections = {}) {
    SetToolbar(tools_, settings_, remote_on, selections, state_);
    EXPECT_TRUE(tools_.unknown_ids().empty());
  }

  ui::RecordingToolHost tools_;
  settings::MemorySettingsStore settings_;
  acquisition::ScopeState state_;
};

const std::vector<std::string_view> kChannel34Tools = {
    "ID_CH3",  "ID_CH4", "ID_CSR3", "ID_CSR4",      "ID_FFT3",
    "ID_FFT4", "ID_TG3", "ID_TG4",  "ID_MEASCHAN3", "ID_MEASCHAN4"};
const std::vector<std::string_view> kSecondUnitTools = {
    "mnu_MATHFUNC", "mnu_WGENN", "ID_WGEN1", "ID_WGEN2", "ID_MATHFUNC1", "ID_MATHFUNC2"};
const std::vector<std::string_view> kDvmTools = {"ID_DVM",  "ID_DVMCH1", "ID_DVMCH2", "mnu_DVM",
                                                 "ID_ADVM", "mnu_DVMM",  "ID_DVMM1",  "ID_DVMM4"};

struct ConfigurationCase {
  const char* name;
  bool remote_on;
  const char* channels_setting;  // nullptr: not stored
  const char* dso_setting;
  bool has_dvm;
  bool has_wgen;
  int expected_channels;
  int expected_model;
};

void PrintTo(const ConfigurationCase& c, std::ostream* os) { *os << c.name; }

class SetToolbarConfigurationTest : public SetToolbarTest,
                                    public ::testing::WithParamInterface<ConfigurationCase> {};

TEST_P(SetToolbarConfigurationTest, ShowsTheToolsOfModelChannelsAndOptions) {
  const ConfigurationCase& c = GetParam();
  if (c.channels_setting) settings_.Set("Setup", "Channels", c.channels_setting);
  if (c.dso_setting) settings_.Set("Setup", "DSO", c.dso_setting);
  state_.HasDvm = c.has_dvm;
  state_.HasWgen = c.has_wgen;
  state_.MathPrefix = ":FUNC2";  // a second unit chosen before: the model resets it
  state_.WgenPrefix = ":WGEN2";
  const bool four = c.expected_channels == 4;
  const bool x3000 = c.expected_model == 1;
  std::vector<std::pair<std::string_view, bool>> shown = {
      {"ID_WG", c.has_wgen}, {"ID_DVMCH3", c.has_dvm && four}, {"ID_DVMCH4", c.has_dvm && four}};
  for (std::string_view id : kChannel34Tools) shown.emplace_back(id, four);
  for (std::string_view id : kSecondUnitTools) shown.emplace_back(id, x3000);
  for (std::string_view id : kDvmTools) shown.emplace_back(id, c.has_dvm);
  // Start from the opposite picture so that every visibility must be set, not left over.
  for (const auto& [id, visible] : shown) tools_.SetToolVisible(id, !visible);

  Run(c.remote_on);

  EXPECT_EQ(state_.ChannelCount, c.expected_channels);
  EXPECT_EQ(state_.Model, c.expected_model);
  EXPECT_EQ(state_.MathPrefix, x3000 ? ":FUNC1" : ":FUNC");
  EXPECT_EQ(state_.WgenPrefix, x3000 ? ":WGEN1" : ":WGEN");
  EXPECT_FALSE(tools_.ToolVisible("mnu_Channel"));
  for (const auto& [id, visible] : shown) EXPECT_EQ(tools_.ToolVisible(id), visible) << id;
  // Tools of channels 1 and 2 never depend on the configuration.
  for (std::string_view id : {"ID_CH1", "ID_CH2", "ID_FFT1", "ID_TG2", "ID_CSR2"})
    EXPECT_TRUE(tools_.ToolVisible(id)) << id;
}

// Offline every channel is offered, whatever the setting says; an empty store means "2"
// channels and model "0"; corrupt settings read leniently and fall back to the safe choice.
// clang-format off
INSTANTIATE_TEST_SUITE_P(
    Configurations, SetToolbarConfigurationTest,
    ::testing::Values(
        ConfigurationCase{"Remote2chModel0Bare",     true,  "2",     "0",     false, false, 2, 0},
        ConfigurationCase{"Remote4chModel0Bare",     true,  "4",     "0",     false, false, 4, 0},
        ConfigurationCase{"Remote2chModel1Options",  true,  "2",     "1",     true,  true,  2, 1},
        ConfigurationCase{"Remote4chModel1Options",  true,  "4",     "1",     true,  true,  4, 1},
        ConfigurationCase{"Remote4chModel0DvmOnly",  true,  "4",     "0",     true,  false, 4, 0},
        ConfigurationCase{"Remote2chModel1WgenOnly", true,  "2",     "1",     false, true,  2, 1},
        ConfigurationCase{"Offline2chSetting",       false, "2",     "1",     true,  false, 4, 1},
        ConfigurationCase{"RemoteDefaults",          true,  nullptr, nullptr, false, false, 2, 0},
        ConfigurationCase{"CorruptChannels",         true,  "abc",   "x",     true,  true,  2, 0},
        ConfigurationCase{"ChannelsThree",           true,  "3",     "2",     true,  true,  2, 0},
        ConfigurationCase{"ChannelsWithUnit",        true,  "4 ch",  "1.0",   false, false, 4, 1}),
    [](const ::testing::TestParamInfo<ConfigurationCase>& info) { return info.param.name; });
// clang-format on

TEST_F(SetToolbarTest, RefillsTimeBaseComboAndVoltsPerDivTableAndRestoresTheUpdateFlag) {
  state_.VoltsPerDivTable.fill(0);
  tools_.SetComboItems("ID_TB", {"stale"});
  Run(false);
  EXPECT_FALSE(state_.ToolUpdateInProgress);
  state_.ToolUpdateInProgress = true;
  Run(false);  // twice gives the same list, not a doubled one
  EXPECT_TRUE(state_.ToolUpdateInProgress);
  EXPECT_EQ(tools_.ComboItems("ID_TB"), display::TimeBaseLadder());
  EXPECT_EQ(state_.VoltsPerDivTable, acquisition::kVoltsPerDivMillivolts);
}

}  // namespace
}  // namespace quarvelo::control
