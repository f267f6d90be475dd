// The dispatchers and the command set against the simulated oscilloscope over loopback TCP,
// with the recording UI (free pauses, scripted message boxes) and a recording implementation
// of the operations that belong to the layers above (sweep, screen view, files, dialogs).
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "control/combo_items.h"
#include "control/control_commands.h"
#include "control/dispatch_targets.h"
#include "control/spectrum_choices.h"
#include "control/tool_dispatcher.h"
#include "display/time_base_ladder.h"
#include "link/tool_update_guard.h"
#include "tests/link/online_scope.h"

namespace quarvelo::control {
namespace {

using ::testing::ElementsAreArray;
using ::testing::IsEmpty;
using testing_support::OnlineScope;
using testing_support::ScopeModel;

// Records each upward call as its name and argument.
#define RECORD(Name) \
  void Name() override { calls.emplace_back(#Name); }
#define RECORD_ARG(Name, Type) \
  void Name(Type a) override { calls.push_back(#Name " " + std::to_string(a)); }

class RecordingTargets : public DispatchTargets {
 public:
  // clang-format off
  RECORD(ConfigureInstrumentFft) RECORD(ReadBackState) RECORD(ReadBackDvm) RECORD(ReadBackMath)
  RECORD(ReadBackWgen) RECORD(RedrawScreen) RECORD(RedrawFrame) RECORD(DrawStatusPanel)
  RECORD(AutoPeak) RECORD(ClearPeaks) RECORD(ClearMarkers) RECORD(SetCenterSpanFromEntries)
  RECORD(SaveCsvFile) RECORD(OpenCsvFile) RECORD(ImportScreenImage) RECORD(CaptureOwnScreen)
  RECORD(SaveScreenImage) RECORD(ShowMathDialog) RECORD(ShowWgenDialog) RECORD(ShowAbout)
  RECORD(ShowAnnotationDialog) RECORD(ShowSettingsDialog) RECORD(ShowHelp) RECORD(ExitProgram)
  RECORD(RebuildToolbar) RECORD_ARG(Sweep, bool) RECORD_ARG(FftRun, int)
  RECORD_ARG(ZoomView, int) RECORD_ARG(PlaceMarker, int) RECORD_ARG(ShowChannelLabelDialog, int)
  RECORD_ARG(SetTopMost, bool)
  bool SweepMode() const override { return sweep_mode; }
  // clang-format on
  void SelectCursorSource(std::string_view id) override {
    calls.push_back("SelectCursorSource " + std::string(id));
  }
  void SetDrawingTriggerChannel(int channel, bool offline) override {
    calls.push_back("SetDrawingTriggerChannel " + std::to_string(channel) +
                    (offline ? " offline" : ""));
  }
  std::optional<double> FirstCursorDivisions() const override { return cursor_divisions; }
  std::optional<CursorTimes> BothCursorTimes() const override { return cursor_times; }

  std::vector<std::string> calls;
  bool sweep_mode = true;
  std::optional<double> cursor_divisions;
  std::optional<CursorTimes> cursor_times;
};

// The instrument's state as the simulator starts, read back once; the oscilloscope stopped.
class DispatchTest : public ::testing::Test {
 protected:
  explicit DispatchTest(const ScopeModel& model = {}) : online_(model) {
    for (const ComboDefinition& combo : Combos()) {
      online_.h.tools.SetComboItems(combo.id, {combo.items.begin(), combo.items.end()});
    }
    online_.h.tools.SetComboItems("ID_TB", display::TimeBaseLadder());
    online_.readback.ReadBackState();
    online_.h.flags.Stopped = true;
    online_.simulator->ClearTraffic();
  }

  // The commands the instrument received, without the queries and the error-queue drains.
  std::vector<std::string> Commands() const {
    std::vector<std::string> commands;
    for (const std::string& message : online_.Sent()) {
      if (!message.ends_with("?")) commands.push_back(message);
    }
    return commands;
  }

  // As the toolbar reports a click: the tool's state has already changed.
  void Click(std::string_view id, bool down = false) {
    {
      link::ToolUpdateGuard user(scope_.ToolUpdateInProgress);  // not the code under test
      online_.h.tools.SetToolState(id, down);
    }
    dispatcher_.ToolClick(id);
  }
  void Pick(std::string_view id, int index) {
    online_.h.tools.SetComboIndex(id, index);
    dispatcher_.ComboChange(id);
  }

  OnlineScope online_;
  acquisition::ScopeState& scope_ = online_.h.scope;
  RecordingTargets targets_;
  SpectrumChoices choices_;
  ControlCommands commands_{online_.h.link, scope_, online_.h.ui, online_.h.tools, targets_};
  ToolDispatcher dispatcher_{commands_,    online_.h.link,  scope_,  choices_,
                             online_.h.ui, online_.h.tools, targets_};
};

struct ClickCase {
  const char* name;
  std::function<void(ToolDispatcher&, RecordingTargets&, acquisition::ScopeState&)> setup;
  const char* id;
  bool down;
  std::vector<std::string> commands;
  std::vector<std::string> calls;
  std::string status;  // the status line afterwards
};

class ClickTest : public DispatchTest, public ::testing::WithParamInterface<ClickCase> {};

auto NoSetup = [](ToolDispatcher&, RecordingTargets&, acquisition::ScopeState&) {};

TEST_P(ClickTest, SendsAndCalls) {
  const ClickCase& c = GetParam();
  c.setup(dispatcher_, targets_, scope_);
  targets_.calls.clear();
  online_.simulator->ClearTraffic();
  Click(c.id, c.down);
  EXPECT_THAT(Commands(), ElementsAreArray(c.commands));
  EXPECT_THAT(targets_.calls, ElementsAreArray(c.calls));
  EXPECT_EQ(online_.h.ui.status(), c.status);
  EXPECT_THAT(online_.h.tools.unguarded, IsEmpty()) << "a tool changed outside the guard";
}

// Setup, clicked tool with its state after the click, commands sent, calls upward, status.
// clang-format off
const ClickCase kClickCases[] = {
    {"HoldoffAboveTenSecondsIsTen", [](auto&, auto& t, auto&) { t.cursor_times = {1, 13}; },
     "ID_TGHOL", false, {":TRIGger:HOLDoff 10"}, {"Sweep 1"}, ""},
    {"NegativeHoldoffIsMadePositive", [](auto&, auto& t, auto&) { t.cursor_times = {0.005, 0}; },
     "ID_TGHOL", false, {":TRIGger:HOLDoff .005"}, {"Sweep 1"}, ""},
    {"HoldoffWithoutCursors", NoSetup, "ID_TGHOL", false, {}, {},
     "HoldOff error: Cursors not set"},
    {"HoldoffOnTheSpectrumView", [](auto&, auto& t, auto&) { t.sweep_mode = false; },
     "ID_TGHOL", false, {}, {}, ""},
    {"OffsetFromTheCursor",
     [](auto&, auto& t, auto& s) { t.cursor_divisions = -1.5; s.Channels[1].Scale = 0.5; },
     "ID_OFS", false, {":CHANnel1:OFFSet -750mV"}, {"Sweep 0"}, ""},
    {"OffsetBeyondTheScreenIsIgnored", [](auto&, auto& t, auto&) { t.cursor_divisions = 4.5; },
     "ID_OFS", false, {}, {}, ""},
    {"TriggerLevelFromTheCursor",
     [](auto&, auto& t, auto& s) {
       t.cursor_divisions = 2; s.TriggerChannel = 2; s.Channels[2].Scale = 0.2; },
     "ID_TGL", false, {":TRIGger:EDGE:LEVel -.4"}, {"Sweep 1"}, ""},
    {"VoltsUpAtTheSmallestStepStays", [](auto&, auto&, auto& s) { s.TriggerScaleIndex = 11; },
     "ID_VUP", false, {":CHANnel1:SCALe 1mV"}, {"Sweep 0"}, ""},
    {"VoltsDownAtTheLargestStepStays",
     [](auto&, auto&, auto& s) { s.TriggerScaleIndex = 0; s.TriggerChannel = 2; },
     "ID_VDN", false, {":CHANnel2:SCALe 5000mV"}, {"Sweep 0"}, ""},
    {"ProbeOnTheMenuChannel", [](auto& d, auto&, auto&) { d.DropDown("ID_CH2"); },
     "ID_PR01", false, {":CHANnel2:PROBe 1"}, {"Sweep 1"}, ""},
    {"AutoRangeOnTheTriggerChannel",
     [](auto&, auto&, auto& s) { s.TriggerSource = "CHAN2"; s.DvmSource = 2; },
     "ID_ADVM", true, {}, {"ReadBackDvm"}, ""},
    {"AutoRangeElsewhere",
     [](auto&, auto&, auto& s) { s.TriggerSource = "CHAN1"; s.DvmSource = 2; },
     "ID_ADVM", true, {":DVM:ARANge 1"}, {"ReadBackDvm"}, ""},
    {"RemoteOffClosesAndRedraws", NoSetup, "ID_Remote", false, {},
     {"RebuildToolbar", "RedrawFrame"}, ""},
    {"RefreshOnReadsBack", NoSetup, "ID_Refresh", true, {}, {"ReadBackState"}, ""},
    {"SingleStartsTheSinglePoll", NoSetup, "ID_Single", true,
     {":RUN", ":SINGLE"}, {"DrawStatusPanel"}, ""},
    {"AutoScaleRunsAndReadsBack", NoSetup, "ID_AutoScale", false,
     {":AUToscale", ":RUN"}, {"ReadBackState", "ReadBackState", "Sweep 1"}, ""},
    {"OscilloscopeMenuReadsTheOptions", NoSetup, "mnu_Oscilloscope", false, {},
     {"ReadBackDvm", "ReadBackWgen"}, ""},
    {"ChannelLabelOfTheMenuChannel", [](auto& d, auto&, auto&) { d.DropDown("ID_CH3"); },
     "ID_CHANLBL", false, {}, {"ShowChannelLabelDialog 3"}, ""},
    {"ZoomOut", NoSetup, "ID_ZoomM", false, {}, {"ZoomView 1"}, ""},
    {"MarkerSlot", NoSetup, "ID_Cursor4", false, {}, {"PlaceMarker 3"}, ""},
    {"OpenWithControlOnDoesNothing", NoSetup, "ID_Open", false, {}, {}, ""},
    {"SaveImage", NoSetup, "ID_SAVIMG", false, {}, {"SaveScreenImage"}, ""},
    {"CursorSource", NoSetup, "ID_CSR2", true, {}, {"SelectCursorSource ID_CSR2"}, ""},
    {"AlwaysOnTop", NoSetup, "ID_TOP", true, {}, {"SetTopMost 1"}, ""},
};
// clang-format on

INSTANTIATE_TEST_SUITE_P(Tools, ClickTest, ::testing::ValuesIn(kClickCases),
                         [](const auto& info) { return std::string(info.param.name); });

TEST_F(DispatchTest, ResetGeneratorAsksFirstAndAutoRangeRefusalSaysWhy) {
  online_.h.ui.QueueMessageAnswer(ui::MessageResult::kCancel);
  Click("ID_WGENRST");
  online_.h.ui.QueueMessageAnswer(ui::MessageResult::kOk);
  Click("ID_WGENRST");
  scope_.TriggerSource = "CHAN1";
  scope_.DvmSource = 1;
  Click("ID_ADVM", true);
  EXPECT_THAT(Commands(), ElementsAreArray({":WGEN1:RST"}));  // after the OK only
  const std::vector<ui::RecordedMessage>& shown = online_.h.ui.messages();
  ASSERT_EQ(shown.size(), 3u);
  EXPECT_EQ(shown[0].text, "RESET WGEN\r\nAre you sure?");
  EXPECT_EQ(shown[0].buttons, ui::MessageButtons::kOkCancel);
  EXPECT_EQ(shown[2].text, "Not available in this mode");
  EXPECT_EQ(shown[2].icon, ui::MessageIcon::kCritical);
}

TEST_F(DispatchTest, DvmSettleWaitsASecondUnderTheHourglass) {
  Click("ID_DVMCH2", true);
  EXPECT_THAT(Commands(), ElementsAreArray({":DVM:SOURce CHANnel2"}));
  EXPECT_THAT(online_.h.ui.pauses(), ElementsAreArray({kDvmSettleMs}));
  EXPECT_EQ(online_.h.ui.pointer(), ui::PointerShape::kDefault);
  EXPECT_THAT(targets_.calls, ElementsAreArray({"ReadBackDvm", "RedrawScreen"}));
}

// The other combos' choices: see the toolbar window test.
TEST_F(DispatchTest, UnitChoiceClearsTheMarkers) {
  Pick("ID_Scale", 2);
  EXPECT_EQ(FftSettingsOf(choices_).SpectrumUnit, 2);
  EXPECT_THAT(targets_.calls, ElementsAreArray({"ClearMarkers"}));
}

TEST_F(DispatchTest, TimeBaseStepsMoveTheComboAndSendItsTime) {
  const int last = static_cast<int>(display::TimeBaseLadder().size()) - 1;
  online_.h.tools.SetComboIndex("ID_TB", last - 1);
  Click("ID_TBUP");
  Click("ID_TBUP");  // at the slow end: nothing moves, nothing is sent
  online_.h.tools.SetComboIndex("ID_TB", 1);
  Click("ID_TBDN");
  Click("ID_TBDN");  // at the fast end
  EXPECT_THAT(Commands(), ElementsAreArray({":TIMebase:SCALe 50", ":TIMebase:SCALe 2E-10"}));
  EXPECT_EQ(online_.h.tools.ComboIndex("ID_TB"), 0);
}

TEST_F(DispatchTest, ChannelMenuShowsTheSettingsOfItsChannel) {
  scope_.Channels[2].Coupling = "AC";
  scope_.Channels[2].BandwidthLimit = 1;
  scope_.Channels[2].Scale = 0.05;
  dispatcher_.DropDown("ID_CH2");
  EXPECT_TRUE(online_.h.tools.ToolState("ID_AC"));
  EXPECT_FALSE(online_.h.tools.ToolState("ID_DC"));
  EXPECT_TRUE(online_.h.tools.ToolState("ID_BW"));
  EXPECT_TRUE(online_.h.tools.ToolState("ID_50"));
  EXPECT_THAT(online_.h.tools.unguarded, IsEmpty());
}

TEST_F(DispatchTest, NothingActsWhileTheProgramChangesTools) {
  scope_.ToolUpdateInProgress = true;
  for (const char* id : {"ID_Run", "ID_FFT1", "ID_CH1", "ID_Exit", "ID_TGHOL"}) Click(id, true);
  Pick("ID_Scale", 1);
  dispatcher_.DropDown("ID_CH3");
  EXPECT_THAT(Commands(), IsEmpty());
  EXPECT_THAT(targets_.calls, IsEmpty());
  EXPECT_EQ(choices_.SpectrumUnit, 0);
  EXPECT_EQ(dispatcher_.MenuChannel(), 1);
}

// A macro without commands only sweeps; the Set button sends its text on the oscilloscope view,
// sweeps in mixed domain and sets centre and span on the spectrum view.
TEST_F(DispatchTest, MacrosAndTheSetButtonByView) {
  dispatcher_.RunMacro("", "", true);
  dispatcher_.RunMacro(":RUN", ":MEASure:VPP %", false);
  dispatcher_.SetClicked("  :STOP  ");
  choices_.MixedDomain = true;
  dispatcher_.SetClicked(":RUN");
  choices_.MixedDomain = false;
  targets_.sweep_mode = false;
  dispatcher_.SetClicked(":RUN");
  EXPECT_THAT(Commands(), ElementsAreArray({":RUN", ":MEASure:VPP %", ":STOP"}));
  EXPECT_THAT(targets_.calls, ElementsAreArray({"Sweep 1", "Sweep 1", "SetCenterSpanFromEntries"}));
}

TEST_F(DispatchTest, SecondMathFunctionAndGeneratorTakeTheCommands) {
  Click("ID_MATHFUNC2", true);
  Click("ID_MATHADD", true);
  Click("ID_WGEN2", true);
  Click("ID_WG", true);
  EXPECT_THAT(Commands(), ElementsAreArray({":FUNC2:OPERation ADD", ":WGEN2:OUTPut 1"}));
  EXPECT_TRUE(online_.h.tools.ToolState("ID_MATHADD"));
}

TEST_F(DispatchTest, BandwidthLimitByView) {
  dispatcher_.BandwidthLimitClicked(true, "35.5");
  targets_.sweep_mode = false;
  dispatcher_.BandwidthLimitClicked(false, "35.5");
  EXPECT_FALSE(choices_.BandwidthLimitOn);
  EXPECT_THAT(targets_.calls, ElementsAreArray({"Sweep 0", "ZoomView 2"}));
}

class TwoChannelDispatchTest : public DispatchTest {
 protected:
  TwoChannelDispatchTest() : DispatchTest(ScopeModel{"2000X", 2, true, true}) {}
};

TEST_F(TwoChannelDispatchTest, ChannelThreeCommandsSendNothing) {
  dispatcher_.DropDown("ID_CH3");
  Click("ID_PR01");
  Click("ID_DC", true);
  Click("ID_TG3", true);
  commands_.SetChannelProbe(2, 10);
  EXPECT_THAT(Commands(), ElementsAreArray({":CHANnel2:PROBe 10"}));
  EXPECT_EQ(scope_.TriggerChannel, 1);
}

// Remote control off: only the tools that work on files and the view act.
TEST_F(DispatchTest, OfflineStage) {
  online_.h.link.CloseInstrument();
  online_.simulator->ClearTraffic();
  targets_.calls.clear();
  online_.h.flags.RunBit = 1;
  for (const char* id :
       {"ID_Run", "ID_TGEXT", "ID_AutoScale", "mnu_Math", "ID_MSVPP", "ID_DVM", "ID_ACQUPEAK"}) {
    Click(id, true);
  }
  EXPECT_THAT(targets_.calls, IsEmpty());
  for (const char* id : {"ID_DIG", "ID_FFT2", "ID_Open", "ID_HLP", "ID_MDI", "ID_TG2", "ID_Exit"}) {
    Click(id, true);
  }
  Click("ID_CH3", false);
  EXPECT_THAT(targets_.calls,
              ElementsAreArray({"Sweep 1", "FftRun 2", "OpenCsvFile", "ShowHelp", "Sweep 0",
                                "SetDrawingTriggerChannel 2 offline", "ExitProgram"}));
  EXPECT_TRUE(choices_.MixedDomain);
  EXPECT_EQ(scope_.TriggerChannel, 2);
  EXPECT_FALSE(scope_.Channels[3].Displayed);
  EXPECT_THAT(online_.Sent(), IsEmpty());
}

}  // namespace
}  // namespace quarvelo::control
