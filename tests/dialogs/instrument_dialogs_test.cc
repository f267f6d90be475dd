// The math, generator, label and annotation dialogs against the simulated oscilloscope over
// loopback TCP: what each control sends, and what the dialog shows after the readback.
#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QComboBox>
#include <QLineEdit>
#include <QRadioButton>
#include <QRegularExpression>
#include <QSpinBox>
#include <functional>
#include <memory>
#include <string>
#include <tuple>
#include <vector>

#include "dialogs/frmAnnotation.h"
#include "dialogs/frmChannelLabel.h"
#include "dialogs/frmMath.h"
#include "dialogs/frmWGEN.h"
#include "platform/text/number_text.h"
#include "tests/link/online_scope.h"

namespace quarvelo::dialogs {
namespace {

using testing_support::OnlineScope;
using testing_support::ScopeModel;
using Commands = std::vector<std::string>;

template <typename T>
T* Find(const QWidget& dialog, const char* name, int index = -1) {
  for (T* widget : dialog.findChildren<T*>(QString::fromLatin1(name))) {
    if (index < 0 || widget->property("index").toInt() == index) return widget;
  }
  ADD_FAILURE() << "no control " << name << " " << index;
  return nullptr;
}

void Click(const QWidget& dialog, const char* name, int index = -1) {
  Find<QAbstractButton>(dialog, name, index)->click();
}

class InstrumentDialogTest : public testing::Test {
 protected:
  explicit InstrumentDialogTest(const ScopeModel& model = {}) : s_(model) {}

  DialogServices Services() {
    return {s_.h.link, s_.readback, s_.h.scope,
            s_.h.ui,   s_.h.tools,  [this](bool restart) { sweeps_.push_back(restart); }};
  }
  // Sets the simulated instrument up directly, then reads its math and generator back.
  void ReadBack(const Commands& settings = {}) {
    for (const std::string& setting : settings) s_.simulator->Execute(setting);
    s_.readback.ReadBackMath(true);
    s_.readback.ReadBackWgen();
  }
  void ClearTraffic() { s_.simulator->ClearTraffic(); }
  // What the program sent, without the queries.
  Commands Sent() const {
    Commands commands;
    for (const std::string& m : s_.Sent()) {
      if (m.find('?') == std::string::npos) commands.push_back(m);
    }
    return commands;
  }

  OnlineScope s_;
  std::vector<bool> sweeps_;
};

TEST_F(InstrumentDialogTest, EveryControlHasANameForScreenReaders) {
  ReadBack();
  const std::unique_ptr<QDialog> dialogs[] = {std::make_unique<frmMath>(Services()),
                                              std::make_unique<frmWGEN>(Services()),
                                              std::make_unique<frmChannelLabel>(Services(), 1),
                                              std::make_unique<frmAnnotation>(Services())};
  const QRegularExpression control("^(txt|cmd|cbo|ssp|ssr|opt|fra|fa)[A-Z]");
  for (const auto& dialog : dialogs) {
    SCOPED_TRACE(dialog->objectName().toStdString());
    const QList<QWidget*> controls = dialog->findChildren<QWidget*>(control);
    EXPECT_GT(controls.size(), 3);
    for (const QWidget* widget : controls)
      EXPECT_FALSE(widget->accessibleName().isEmpty()) << widget->objectName().toStdString();
  }
}

TEST_F(InstrumentDialogTest, MathFrequencyButtonsSendCentreAndSpanAndShowTheReadback) {
  const struct {
    const char* name;
    std::vector<std::pair<int, const char*>> boxes;  // txtMHz index, text typed
    int set;                                         // cmdSet index, -1 for OK
    Commands sent;
    const char* shown;  // centre | span
  } cases[] = {
      // clang-format off
      {"stop frequency", {{2, "10"}}, 0,
       {":FUNC1:FFT:CENTer 5000000", ":FUNC1:FFT:SPAN 10000000"}, "5|10"},
      {"zero span", {{0, "2"}, {1, "0"}}, 1, {":FUNC1:FFT:CENTer 2000000"}, "2|6"},
      {"OK after the centre", {{0, "3"}}, -1,
       {":FUNC1:FFT:CENTer 3000000", ":FUNC1:FFT:SPAN 6000000"}, "3|6"},
      {"OK after the stop frequency", {{0, "1"}, {2, "4"}}, -1,
       {":FUNC1:FFT:CENTer 2000000", ":FUNC1:FFT:SPAN 4000000"}, "2|4"},
      // clang-format on
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    ReadBack({":FUNC1:FFT:SPAN 6E6"});
    frmMath dialog(Services());
    ClearTraffic();
    for (const auto& [index, typed] : c.boxes)
      Find<QLineEdit>(dialog, "txtMHz", index)->setText(typed);
    c.set < 0 ? Click(dialog, "cmdOk") : Click(dialog, "cmdSet", c.set);
    EXPECT_EQ(Sent(), c.sent);
    EXPECT_EQ(Find<QLineEdit>(dialog, "txtMHz", 0)->text() + "|" +
                  Find<QLineEdit>(dialog, "txtMHz", 1)->text(),
              c.shown);
    EXPECT_EQ(dialog.result(), c.set < 0 ? QDialog::Accepted : QDialog::Rejected);
  }
}

TEST_F(InstrumentDialogTest, MathCombosScalesAndFunctionSendTheirCommandAndShowTheReadback) {
  const std::tuple<const char*, int, int, const char*> cases[] = {
      // control, index, item, sent
      {"cboOperation", 0, 1, ":FUNC1:OPERation SUBTract"},
      {"cboSource", 0, 2, ":FUNC1:SOURce1 CHAN3"},
      {"cboSource", 1, 4, ":FUNC1:SOURce2 NONE"},
      {"cboVType", -1, 1, ":FUNC1:FFT:VTYPe VRMS"},
      {"cboWindow", -1, 2, ":FUNC1:FFT:WINDow FLATtop"},
  };
  ReadBack();
  frmMath dialog(Services());
  for (const auto& [control, index, item, sent] : cases) {
    SCOPED_TRACE(control);
    ClearTraffic();
    QComboBox* combo = Find<QComboBox>(dialog, control, index);
    combo->setCurrentIndex(item);
    EXPECT_EQ(Sent(), Commands{sent});
    EXPECT_EQ(combo->currentIndex(), item);
  }
  ClearTraffic();
  Find<QLineEdit>(dialog, "txtScale", 0)->setText("0.5");
  Find<QLineEdit>(dialog, "txtScale", 1)->setText("abc");  // not a number: 0
  Click(dialog, "cmdOk");
  EXPECT_EQ(Sent(), (Commands{":FUNC1:OFFSet .5", ":FUNC1:RANGe 0",
                              ":FUNC1:REFerence " + text::NumberText(s_.h.scope.MathReference)}));
  // Choosing the other function reads it back and sends nothing.
  ClearTraffic();
  Find<QComboBox>(dialog, "cboFunc")->setCurrentIndex(1);
  EXPECT_EQ(s_.h.scope.MathPrefix, ":FUNC2");
  EXPECT_TRUE(Sent().empty());
  EXPECT_EQ(s_.Sent().at(0), ":FUNC2:DISPlay?");
}

class SmallScopeDialogTest : public InstrumentDialogTest {
 protected:
  SmallScopeDialogTest() : InstrumentDialogTest(ScopeModel{.model = "2000X"}) {}
};

TEST_F(SmallScopeDialogTest, InnerFunctionSourcesGoToGoftOnTheSingleFunction) {
  ReadBack();
  frmMath dialog(Services());
  EXPECT_FALSE(Find<QComboBox>(dialog, "cboFunc")->isEnabled());
  ClearTraffic();
  Find<QComboBox>(dialog, "cboSource", 3)->setCurrentIndex(2);
  Find<QComboBox>(dialog, "cboOperation", 1)->setCurrentIndex(2);
  EXPECT_EQ(Sent(), (Commands{":FUNC:GOFT:SOURce2 CHAN3", ":FUNC:GOFT:OPERation MULTiply"}));
  EXPECT_EQ(Find<QComboBox>(dialog, "cboSource", 3)->currentIndex(), 2);
  EXPECT_EQ(Find<QComboBox>(dialog, "cboOperation", 1)->currentIndex(), 2);
}

TEST_F(InstrumentDialogTest, ShapeParameterIsClampedSentAndShownAsReadBack) {
  const std::tuple<Commands, int, const char*, int> cases[] = {
      // setup, typed, sent, shown
      // clang-format off
      {{":WGEN1:FUNCtion SQUare"}, 95, "SQUare:DCYCle 80", 80},
      {{":WGEN1:FUNCtion SQUare"}, 5, "SQUare:DCYCle 20", 20},
      {{":WGEN1:FUNCtion PULSe", ":WGEN1:PERiod 1E-6"}, 50, "PULSe:WIDTh  5E-07", 50},
      {{":WGEN1:FUNCtion PULSe", ":WGEN1:PERiod 1E-7"}, 1, "PULSe:WIDTh  2E-08", 20},
      {{":WGEN1:FUNCtion PULSe", ":WGEN1:PERiod 1E-7"}, 100, "PULSe:WIDTh  8E-08", 80},
      {{":WGEN1:FUNCtion RAMP"}, 30, "RAMP:SYMMetry 30", 30},
      // clang-format on
  };
  for (const auto& [setup, typed, sent, shown] : cases) {
    SCOPED_TRACE(sent);
    ReadBack(setup);
    frmWGEN dialog(Services());
    ClearTraffic();
    auto* value = Find<QSpinBox>(dialog, "sspValue");
    value->setValue(typed);
    EXPECT_EQ(Sent(), Commands{std::string(":WGEN1:FUNCtion:") + sent});
    EXPECT_EQ(value->value(), shown);
  }
}

TEST_F(InstrumentDialogTest, SetSendsTheEditedTimingAndLevels) {
  const Commands kSine = {":WGEN1:FUNCtion SINusoid", ":WGEN1:VOLTage 1",
                          ":WGEN1:VOLTage:OFFSet 0"};
  // Setup, the boxes typed in ("optFreq": the kHz unit), the commands sent.
  const std::tuple<Commands, std::vector<std::pair<const char*, const char*>>, Commands> cases[] = {
      // clang-format off
      {{":WGEN1:FUNCtion DC"}, {{"txtVOLTageOFFSet", "0.5"}}, {":WGEN1:VOLTage:OFFSet .5"}},
      {kSine, {{"optFreq", ""}, {"txtMHz", "2"}},
       {":WGEN1:FREQuency 2000", ":WGEN1:VOLTage 1", ":WGEN1:VOLTage:OFFSet 0"}},
      {{":WGEN1:FUNCtion SQUare", ":WGEN1:VOLTage 1", ":WGEN1:VOLTage:OFFSet 0"},
       {{"txtPERiod", "1E-3"}, {"txtVOLTageHIGH", "1.5"}, {"txtVOLTageLOW", "-0.25"}},
       {":WGEN1:PERiod .001", ":WGEN1:VOLTage:HIGH 1.5", ":WGEN1:VOLTage:LOW  -.25"}},
      {{":WGEN1:FUNCtion SINusoid", ":WGEN1:FREQuency 1E5", ":WGEN1:VOLTage 1",
        ":WGEN1:VOLTage:OFFSet 0", ":WGEN1:MODulation:TYPE FM", ":WGEN1:MODulation:STATe 1"},
       {{"txtMODFREQuency", "200"}, {"txtFMDEViation", "1000"}},
       {":WGEN1:FREQuency 100000", ":WGEN1:VOLTage 1", ":WGEN1:VOLTage:OFFSet 0",
        ":WGEN1:MODulation:FM:FREQuency 200", ":WGEN1:MODulation:FM:DEViation 1000"}},
      // clang-format on
  };
  for (const auto& [setup, typed, sent] : cases) {
    SCOPED_TRACE(sent.front());
    ReadBack(setup);
    frmWGEN dialog(Services());
    ClearTraffic();
    for (const auto& [box, text] : typed) {
      std::string(box) == "optFreq" ? Find<QRadioButton>(dialog, box, 1)->click()
                                    : Find<QLineEdit>(dialog, box)->setText(text);
    }
    Click(dialog, "cmdSet");
    EXPECT_EQ(Sent(), sent);
    EXPECT_TRUE(s_.h.ui.messages().empty());
  }
}

TEST_F(InstrumentDialogTest, FrequencyShowsInTheUnitItsSizeCalls) {
  const std::tuple<const char*, const char*, int> cases[] = {// frequency, shown, unit
                                                             {"2.5E6", "2.5", 2},
                                                             {"999", "999", 0},
                                                             {"1000", "1", 1},
                                                             {"12500", "12.5", 1}};
  for (const auto& [frequency, shown, unit] : cases) {
    SCOPED_TRACE(frequency);
    ReadBack({":WGEN1:FUNCtion SINusoid", std::string(":WGEN1:FREQuency ") + frequency});
    frmWGEN dialog(Services());
    EXPECT_EQ(Find<QLineEdit>(dialog, "txtMHz")->text(), shown);
    EXPECT_TRUE(Find<QRadioButton>(dialog, "optFreq", unit)->isChecked());
  }
}

TEST_F(InstrumentDialogTest, RunStopAndResetAskFirst) {
  ReadBack();
  frmWGEN dialog(Services());
  ClearTraffic();
  Click(dialog, "ssrRun");  // shows running: this stops
  EXPECT_TRUE(s_.h.link.flags().Stopped);
  EXPECT_FALSE(s_.h.tools.ToolState("ID_Run"));
  Click(dialog, "ssrRun");
  EXPECT_TRUE(s_.h.tools.ToolState("ID_Run"));
  s_.h.ui.QueueMessageAnswer(ui::MessageResult::kCancel);
  Click(dialog, "cmdReset");
  s_.h.ui.QueueMessageAnswer(ui::MessageResult::kOk);
  Click(dialog, "cmdReset");
  EXPECT_EQ(Sent(), (Commands{":STOP", ":RUN", ":WGEN1:RST"}));
  ASSERT_EQ(s_.h.ui.messages().size(), 2u);
  EXPECT_EQ(s_.h.ui.messages()[0].text, "RESET WGEN\r\nAre you sure?");
  EXPECT_EQ(s_.h.ui.messages()[0].icon, ui::MessageIcon::kQuestion);
}

TEST_F(InstrumentDialogTest, ChannelLabelIsSentTrimmedAndKept) {
  frmChannelLabel dialog(Services(), 2);
  EXPECT_EQ(Find<QWidget>(dialog, "faLabel")->property("title").toString(), "Channel[2]");
  ClearTraffic();
  Find<QLineEdit>(dialog, "txtLabel")->setText(" PUMP ");
  Click(dialog, "cmdOk");
  EXPECT_EQ(Sent(), Commands{":CHANnel2:LABel \"PUMP\""});
  EXPECT_EQ(s_.h.scope.Channels[2].Label, "PUMP");
  EXPECT_EQ(s_.Sent().back(), ":SYSTem:ERRor?");
  EXPECT_EQ(sweeps_, std::vector<bool>{true});
}

TEST_F(InstrumentDialogTest, AnnotationControlsSendTheirCommands) {
  // What is done, how, the commands sent, AnnotationColor afterwards.
  using Act = std::function<void(frmAnnotation&)>;
  const std::tuple<const char*, Act, Commands, const char*> cases[] = {
      // clang-format off
      {"empty text switched on",
       [](frmAnnotation& d) { Find<QLineEdit>(d, "txtLabel")->clear(); Click(d, "ssrON"); },
       {":DISPlay:ANNotation:TEXT \"\"", ":DISPlay:ANNotation 1"}, "MARK"},
      {"transparent background",
       [](frmAnnotation& d) { Find<QComboBox>(d, "cboBackGround")->setCurrentIndex(2); },
       {":DISPlay:ANNotation:BACKground TRANsparent"}, "MARK"},
      {"colour", [](frmAnnotation& d) { Find<QComboBox>(d, "cboColor")->setCurrentIndex(9); },
       {":DISPlay:ANNotation:COLor RED"}, "RED"},
      {"OK", [](frmAnnotation& d) { Click(d, "cmdOk"); },
       {":DISPlay:ANNotation:TEXT \"NOTE 1\""}, "MARK"},
      // clang-format on
  };
  for (const auto& [name, act, sent, colour] : cases) {
    SCOPED_TRACE(name);
    ReadBack({":DISPlay:ANNotation 0", ":DISPlay:ANNotation:TEXT \" NOTE 1 \"",
              ":DISPlay:ANNotation:COLor MARKer", ":DISPlay:ANNotation:BACKground OPAQue"});
    frmAnnotation dialog(Services());
    EXPECT_EQ(Find<QComboBox>(dialog, "cboColor")->currentText(), "MARKer");
    EXPECT_EQ(Find<QComboBox>(dialog, "cboBackGround")->currentText(), "OPAQue");
    ClearTraffic();
    act(dialog);
    EXPECT_EQ(Sent(), sent);
    EXPECT_EQ(s_.h.scope.AnnotationColor, colour);
  }
}

}  // namespace
}  // namespace quarvelo::dialogs
