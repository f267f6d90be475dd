#include "control/set_toolbar.h"

#include <string_view>

#include "display/time_base_ladder.h"
#include "platform/settings/settings_text.h"

namespace quarvelo::control {
namespace {

// The program, not the user, changes the tools here: their commands must not run.
class ToolUpdateScope {
 public:
  explicit ToolUpdateScope(bool& flag) : flag_(flag), previous_(flag) { flag_ = true; }
  ~ToolUpdateScope() { flag_ = previous_; }
  ToolUpdateScope(const ToolUpdateScope&) = delete;
  ToolUpdateScope& operator=(const ToolUpdateScope&) = delete;

 private:
  bool& flag_;
  bool previous_;
};

// Tools that exist only on the model with two math functions and two generators.
constexpr std::string_view kSecondUnitTools[] = {
    "mnu_MATHFUNC", "mnu_WGENN", "ID_WGEN1", "ID_WGEN2", "ID_MATHFUNC1", "ID_MATHFUNC2",
};

constexpr std::string_view kChannel34Tools[] = {
    "ID_CH3",  "ID_CH4", "ID_CSR3", "ID_CSR4",      "ID_FFT3",
    "ID_FFT4", "ID_TG3", "ID_TG4",  "ID_MEASCHAN3", "ID_MEASCHAN4",
};

constexpr std::string_view kDvmTools[] = {
    "ID_DVM",   "ID_DVMCH1", "ID_DVMCH2", "mnu_DVM",  "ID_ADVM",
    "mnu_DVMM", "ID_DVMM1",  "ID_DVMM2",  "ID_DVMM3", "ID_DVMM4",
};

}  // namespace

void SetToolbar(ui::ToolHost& tools, const settings::SettingsStore& settings, bool remote_on,
                const SpectrumChoices& choices, acquisition::ScopeState& state) {
  ToolUpdateScope updating(state.ToolUpdateInProgress);

  state.Model = settings::ReadInteger(settings, "Setup", "DSO", "0") == 1 ? 1 : 0;
  if (remote_on) {
    // Anything but an explicit 4 is taken as 2, so that a corrupt setting never makes the
    // program address channels a two-channel instrument does not have.
    state.ChannelCount = settings::ReadInteger(settings, "Setup", "Channels", "2") == 4 ? 4 : 2;
  } else {
    state.ChannelCount = acquisition::kMaxChannels;
  }

  const bool two_units = state.Model == 1;
  state.MathPrefix = two_units ? ":FUNC1" : ":FUNC";
  state.WgenPrefix = two_units ? ":WGEN1" : ":WGEN";
  for (std::string_view id : kSecondUnitTools) tools.SetToolVisible(id, two_units);

  // Shown only as the channel buttons' pop-up, never in the menu bar.
  tools.SetToolVisible("mnu_Channel", false);

  const bool four_channels = state.ChannelCount != 2;
  for (std::string_view id : kChannel34Tools) tools.SetToolVisible(id, four_channels);

  tools.SetComboIndex("ID_Bins", choices.BinsIndex);
  tools.SetComboIndex("ID_Scale", choices.SpectrumUnit);
  tools.SetComboIndex("ID_Window", choices.WindowIndex);

  tools.SetToolVisible("ID_WG", state.HasWgen);
  for (std::string_view id : kDvmTools) tools.SetToolVisible(id, state.HasDvm);
  tools.SetToolVisible("ID_DVMCH3", state.HasDvm && four_channels);
  tools.SetToolVisible("ID_DVMCH4", state.HasDvm && four_channels);

  tools.SetComboItems("ID_TB", display::TimeBaseLadder());
  acquisition::FillVoltsPerDivTable(state);
}

}  // namespace quarvelo::control
