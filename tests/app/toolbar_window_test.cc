// Every kind of tool on the real main window against the simulated oscilloscope over loopback
// TCP: a tool's QAction is triggered (or a combo entry picked) as the user would, and the
// simulator's traffic log shows the commands; state tools then show what the instrument
// reports. Tools whose work belongs to other parts (sweep, FFT, files, dialogs) are covered
// at the dispatcher (tests/control/dispatch_test.cc).
#include <gtest/gtest.h>

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>
#include <QTimer>
#include <algorithm>
#include <string>
#include <vector>

#include "control/qt/qt_tool_host.h"
#include "tests/app/window_on_simulator.h"

namespace quarvelo::app {
namespace {

class ToolbarWindowTest : public testing_support::WindowOnSimulator {
 protected:
  void SetUp() override {
    WindowOnSimulator::SetUp();
    if (HasFatalFailure()) return;
    // No channel shown: the sweeps that follow most commands read back but capture nothing.
    for (int n = 1; n <= 4; ++n) simulator_->Execute(":CHANnel" + std::to_string(n) + ":DISPlay 0");
    Load({{"DSO", "1"}, {"DVM", "1"}, {"WGEN", "1"}}, false);
  }

  // As a click does it: a state tool changes its state, then reports the click.
  void Trigger(const std::string& id, bool checked = true) {
    QAction* action = window_->Toolbar().Action(id);
    ASSERT_NE(action, nullptr) << id;
    if (action->isCheckable()) action->setChecked(!checked);
    action->trigger();
  }

  // Picks an entry of a combo tool's widget as the user does.
  void Pick(const char* id, int index) {
    auto* combo = window_->findChild<QComboBox*>(id);
    ASSERT_NE(combo, nullptr) << id;
    combo->setCurrentIndex(index);
    emit combo->activated(index);
  }
};

struct ToolCase {
  const char* id;
  bool checked;
  std::vector<std::string> sent;
};

// Main-stage rows and families with an instrument command of their own, on the X3000 model
// (":FUNC1", ":WGEN1"); the channel menu acts on channel 1 until another one is opened.
const ToolCase kToolCases[] = {
    {"ID_Run", false, {":STOP"}},
    {"ID_Run", true, {":RUN"}},
    {"ID_TGDIG", true, {":TRIGger:EDGE:SOURce DIG"}},
    {"ID_TGEXT", true, {":TRIGger:EDGE:SOURce EXT"}},
    {"ID_TGLINE", true, {":TRIGger:EDGE:SOURce LINE"}},
    {"ID_TGWAV", true, {":TRIGger:EDGE:SOURce WGEN"}},
    {"ID_TG2", true, {":TRIGger:EDGE:SOURce CHAN2"}},
    {"ID_CH2", false, {":CHANnel2:DISPlay 0"}},
    {"ID_AC", true, {":CHANnel1:COUPling AC"}},
    {"ID_DC", true, {":CHANnel1:COUPling DC"}},
    {"ID_BW", true, {":CHANnel1:BWLimit 1"}},
    {"ID_CHANINV", true, {":CHANnel1:INV 1"}},
    {"ID_DISPLBL", true, {":DISPlay:LABel 1"}},
    {"ID_DISPCLR", false, {":DISPlay:CLEar"}},
    {"ID_200", true, {":CHANnel1:SCALe 200mV"}},
    {"ID_TMM", true, {":TIMebase:MODE MAIN"}},
    {"ID_TMR", true, {":TIMebase:MODE ROLL"}},
    {"ID_TRL", true, {":TIMebase:REFerence LEFT"}},
    {"ID_TSN", true, {":Trigger:EDGE:SLOPe NEG"}},
    {"ID_TCA", true, {":Trigger:EDGE:COUPLing AC"}},
    {"ID_TJH", true, {":Trigger:EDGE:REJect HF"}},
    {"ID_OFZ", false, {":CHANnel1:OFFSet 0mV"}},
    {"ID_TGZ", false, {":TRIGger:LEVel:ASETup"}},
    {"ID_PR01", false, {":CHANnel1:PROBe 1"}},
    {"ID_WG", true, {":WGEN1:OUTPut 1"}},
    {"ID_Single", true, {":RUN", ":SINGLE"}},
    {"ID_TGSN", true, {":TRIGger:SWEep NORMal"}},
    {"ID_TGF", false, {":TRIGger:FORCe"}},
    {"ID_TGNR", true, {":TRIGger:NREJect 1"}},
    {"ID_TGHOZ", false, {":TRIGger:HOLDoff 4E-08"}},
    {"ID_MSVPP", false, {":MEASure:VPP"}},
    {"ID_MSVRMSDCN", false, {":MEASure:VRMS CYCL,DC"}},
    {"ID_MEASCHAN2", true, {":MEASure:SOURce CHAN2", ":MEASure:SOURce?"}},
    {"ID_MATHSUBT", true, {":FUNC1:OPERation SUBT"}},
    {"ID_MATHDISP", true, {":FUNC1:DISPlay 1"}},
    {"ID_ACQUHRES", true, {":ACQuire:TYPE HRES"}},
    {"ID_PERS05", true, {":Display:PERSistence 0.5"}},
    {"ID_PERSCLR", false, {":DISPlay:CLEar"}},
    // Last: these show channels again.
    {"ID_Default", false, {":SYSTem:PRESet"}},
    {"ID_AutoScale", false, {":AUToscale", ":RUN"}},
};

TEST_F(ToolbarWindowTest, EachToolSendsItsCommand) {
  Trigger("ID_Remote");
  ASSERT_TRUE(window_->Session().RemoteOn);
  for (const ToolCase& c : kToolCases) {
    simulator_->ClearTraffic();
    Trigger(c.id, c.checked);
    EXPECT_TRUE(Received(c.sent)) << c.id;
    if (window_->Toolbar().Action(c.id)->isCheckable()) {
      EXPECT_EQ(window_->Tools().ToolState(c.id), c.checked)
          << c.id << " shows what the instrument reports";
    }
  }
  EXPECT_TRUE(window_->Session().RemoteOn) << "no command broke the link";
}

TEST_F(ToolbarWindowTest, CombosSendOrStoreTheChoiceAndKeepItShown) {
  Trigger("ID_Remote");
  simulator_->ClearTraffic();
  const std::vector<std::string> ladder = window_->Tools().ComboItems("ID_TB");
  const auto ms = std::find(ladder.begin(), ladder.end(), "1.00mS/");
  ASSERT_NE(ms, ladder.end());
  Pick("ID_TB", static_cast<int>(ms - ladder.begin()));
  EXPECT_TRUE(Received({":TIMebase:SCALe .001"}));

  Pick("ID_Bins", 4);  // "4906"
  Pick("ID_AVG", 2);
  Pick("ID_Window", 3);
  Pick("ID_Scale", 1);
  const AppSettings& choices = window_->Settings();
  EXPECT_EQ(256 << choices.BinsIndex, 4096);
  EXPECT_EQ(choices.AverageCount, 4);
  EXPECT_EQ(choices.WindowIndex, 3);
  EXPECT_EQ(choices.SpectrumUnit, 1);

  // Switching the link off rebuilds the toolbar: the choices stay shown.
  Trigger("ID_Remote", false);
  EXPECT_EQ(window_->Tools().ComboIndex("ID_Bins"), 4);
  EXPECT_EQ(window_->Tools().ComboIndex("ID_Window"), 3);
  EXPECT_EQ(window_->Tools().ComboIndex("ID_Scale"), 1);
  window_->close();
  EXPECT_EQ(store_->Get("FFT", "Window", ""), "3");
  EXPECT_EQ(store_->Get("FFT", "SCALE", ""), "1");
  EXPECT_EQ(store_->Get("FFT", "AVG", ""), "2");
}

TEST_F(ToolbarWindowTest, ChannelMenuActsOnItsChannelAndReadsBackAfterwards) {
  Trigger("ID_Remote");
  control::QtToolHost& toolbar = window_->Toolbar();
  emit toolbar.DropDownRequested(QStringLiteral("ID_CH3"));
  simulator_->ClearTraffic();
  Trigger("ID_50");
  emit toolbar.DropDownClosed(QStringLiteral("ID_CH3"));
  EXPECT_TRUE(Received({":CHANnel3:SCALe 50mV", ":CHANnel3:SCALe?"}));
  EXPECT_EQ(window_->Scope().Channels[3].Scale, 0.05);
}

TEST_F(ToolbarWindowTest, MacroTenStoresItsKeysAndRunsUnchanged) {
  Trigger("ID_Remote");
  const auto buttons = window_->findChildren<QPushButton*>("cmdMac");
  QPushButton* mac10 = *std::find_if(buttons.begin(), buttons.end(), [](QPushButton* b) {
    return b->property("index").toInt() == 9;
  });
  QTimer::singleShot(0, [] {
    QWidget* dialog = QApplication::activeModalWidget();
    ASSERT_NE(dialog, nullptr);
    const auto boxes = dialog->findChildren<QLineEdit*>("txtCommand");
    ASSERT_EQ(boxes.size(), 3);
    const char* texts[] = {"Volts", ":MEASure:VPP CHAN1", ":CHANnel1:SCALe 1V"};
    for (QLineEdit* box : boxes) box->setText(texts[box->property("index").toInt()]);
    dialog->findChild<QCheckBox*>("chkSweep")->setChecked(true);
    dialog->findChild<QPushButton*>("cmdOk")->click();
  });
  emit mac10->customContextMenuRequested(QPoint(1, 1));
  EXPECT_EQ(mac10->text(), "Volts");
  EXPECT_EQ(store_->Get("Macros", "Caption10", ""), "Volts");
  EXPECT_EQ(store_->Get("Macros", "Command1_10", ""), ":MEASure:VPP CHAN1");
  EXPECT_EQ(store_->Get("Macros", "Command2_10", ""), ":CHANnel1:SCALe 1V");
  EXPECT_EQ(store_->Get("Macros", "Sweep10", ""), "1");

  simulator_->ClearTraffic();
  mac10->click();
  EXPECT_TRUE(Received({":MEASure:VPP CHAN1", ":CHANnel1:SCALe 1V", "*IDN?"}))
      << "both commands, then a sweep (which reads the state back first)";
}

}  // namespace
}  // namespace quarvelo::app
