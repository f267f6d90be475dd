// The state readback against the simulated oscilloscope over loopback TCP: a changed
// instrument read back into every field and tool, trigger sources, quoted texts, "no value",
// channels and options the instrument lacks, and a silent instrument.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "acquisition/reply_fields.h"
#include "platform/text/number_parse.h"
#include "tests/link/online_scope.h"

namespace quarvelo::acquisition {
namespace {

using testing_support::Fields;
using testing_support::OnlineScope;
using testing_support::WithErrorQuery;

bool AnySentStartsWith(const std::vector<std::string>& sent, std::string_view prefix) {
  return std::any_of(sent.begin(), sent.end(),
                     [&](const std::string& m) { return m.starts_with(prefix); });
}

class RecordingReadbackHooks : public ReadbackHooks {
 public:
  void ShowTimeBase(double seconds) override { time_bases.push_back(seconds); }
  void ShowSampleRate(double ksps) override { sample_rates.push_back(ksps); }
  std::vector<double> time_bases;
  std::vector<double> sample_rates;
};

TEST(ReadbackTest, ChangedInstrumentFillsEveryFieldAndChecksItsTools) {
  OnlineScope s;
  for (const char* settings :
       {":CHANnel2:DISPlay 1;PROBe 10;SCALe 0.5;OFFSet 0.25;COUPling AC;BWLimit 1;INVert 1",
        ":CHANnel2:LABel \"ABC\";:CHANnel1:DISPlay 0;:TRIGger:EDGE:SOURce CHANnel2",
        ":TRIGger:SWEep NORMal;NREJect 1;:TRIGger:EDGE:SLOPe NEGative;COUPling AC;REJect HFReject",
        ":TRIGger:EDGE:LEVel 0.3;:TRIGger:HOLDoff 1E-6;:TIMebase:SCALe 2E-4;REFerence LEFT",
        ":TIMebase:POSition 1E-4;:ACQuire:TYPE AVERage;COUNt 16;:DISPlay:PERSistence INFinite",
        ":DISPlay:LABel 1;:MEASure:SOURce CHANnel2;:DVM:ENABle 1;MODE DC;SOURce CHANnel2;ARANge 1",
        ":FUNC1:DISPlay 1;OPERation FFT;:WGEN1:OUTPut 1;:DISPlay:ANNotation 1",
        ":DISPlay:ANNotation:TEXT \"Hello scope\";COLor RED;BACKground INVerted;*CLS"}) {
    s.simulator->Execute(settings);
  }
  RecordingReadbackHooks hooks;
  StateReadback readback(s.h.link, s.h.scope, s.records, s.h.ui, s.h.tools, hooks);
  readback.ReadBackState();

  const ScopeState& st = s.h.scope;
  const ChannelSettings& ch2 = st.Channels[2];
  EXPECT_EQ(st.Identity, s.simulator->Execute("*IDN?"));
  // 500 mV/div is the fourth V/div step (index 3).
  EXPECT_EQ(Fields(ch2.Displayed, ch2.Scale, ch2.Offset, ch2.Coupling, ch2.ProbeAttenuation,
                   ch2.BandwidthLimit, ch2.Inverted, ch2.Label, st.Channels[1].Displayed,
                   st.TriggerSource, st.TriggerChannel, st.TriggerSweepAuto, st.NoiseReject,
                   st.TriggerSlope, st.TriggerCoupling, st.TriggerReject, st.TriggerLevel,
                   st.Holdoff, st.TriggerScaleIndex, st.TimebaseScale, st.TimebaseReference,
                   st.TimebaseMode, st.TimebasePosition, st.AcquireType, st.AcquireCount,
                   st.PersistenceReply, st.VariablePersistence, st.DisplayLabels,
                   st.MeasureSource.substr(0, 5), st.DvmEnabled, st.DvmMode, st.DvmSource,
                   st.DvmAutoRange, st.MathDisplay, st.MathOperation, st.Wgen.OutputOn,
                   st.AnnotationOn, st.AnnotationText, st.AnnotationColor, st.AnnotationBackground),
            "1|0.5|0.25|AC|10|1|1|ABC|0|CHAN2|2|0|1|NEG|A|H|0.3|1e-06|3|2e-04|L|M|1e-04|AVER|16|"
            "INF|2.0|1|CHAN2|1|2|2|1|1|FFT|1|1|Hello scope|RED|INV|");

  for (const char* id :
       {"ID_CH2",       "ID_TGSN",      "ID_TGNR", "ID_TSN",      "ID_TCA",     "ID_TJH",
        "ID_TRL",       "ID_TMM",       "ID_TG2",  "ID_ACQUAVER", "ID_PERSINF", "ID_DISPLBL",
        "ID_MEASCHAN2", "ID_DVM",       "ID_ADVM", "ID_DVMM2",    "ID_DVMCH2",  "ID_MATHFFT",
        "ID_MATHDISP",  "ID_MATHFUNC1", "ID_WG",   "ID_WGEN1"}) {
    EXPECT_TRUE(s.h.tools.ToolState(id)) << id;
  }
  for (const char* id : {"ID_CH1", "ID_TGSA"}) EXPECT_FALSE(s.h.tools.ToolState(id)) << id;
  EXPECT_TRUE(s.h.tools.unguarded.empty()) << s.h.tools.unguarded.front();
  EXPECT_FALSE(st.ToolUpdateInProgress);
  EXPECT_EQ(s.h.ui.pointer(), ui::PointerShape::kDefault);
  EXPECT_EQ(hooks.time_bases, std::vector<double>{2e-4});
  EXPECT_EQ(hooks.sample_rates.size(), 1u);
  EXPECT_TRUE(s.h.ui.status_lines().empty()) << s.h.ui.status();
  EXPECT_TRUE(s.h.session.RemoteOn);
  const auto sent = s.Sent();
  EXPECT_EQ(sent.at(0), "*IDN?");
  EXPECT_TRUE(AnySentStartsWith(sent, ":CHANnel4:LABel?"));
  EXPECT_EQ(std::count(sent.begin(), sent.end(), "*ESR?"), 1) << "the status poll runs once";
}

struct SourceCase {
  const char* command;
  const char* source;
  int channel;
  const char* tool;
};

class TriggerSourceTest : public testing::TestWithParam<SourceCase> {};

TEST_P(TriggerSourceTest, ReadsSourceChannelAndTool) {
  const SourceCase& c = GetParam();
  OnlineScope s;
  // A scale between the V/div steps keeps the previous step index.
  s.simulator->Execute(std::string(c.command) + ";:CHANnel1:SCALe 0.3;:CHANnel3:SCALe 0.3");
  s.h.scope.TriggerChannel = 4;
  s.h.scope.TriggerScaleIndex = 7;
  s.readback.ReadBackState();
  EXPECT_EQ(Fields(s.h.scope.TriggerSource, s.h.scope.TriggerChannel, s.h.scope.TriggerScaleIndex),
            Fields(c.source, c.channel, 7));
  EXPECT_TRUE(s.h.tools.ToolState(c.tool));
}

INSTANTIATE_TEST_SUITE_P(
    Sources, TriggerSourceTest,
    testing::Values(SourceCase{":TRIGger:EDGE:SOURce CHANnel3", "CHAN3", 3, "ID_TG3"},
                    SourceCase{":TRIGger:EDGE:SOURce LINE", "LINE", 1, "ID_TGLINE"},
                    SourceCase{":TRIGger:EDGE:SOURce EXTernal", "EXT", 1, "ID_TGEXT"},
                    SourceCase{":TRIGger:EDGE:SOURce WGEN", "WGEN", 1, "ID_TGWAV"},
                    // The modulation source is kept; channel 1's tool shows it.
                    SourceCase{":TRIGger:EDGE:SOURce WMODulation", "WMO", 1, "ID_TG1"}));

// Replies the simulator cannot give (no digital channels, an unknown source) are read by the
// same reading the readback uses.
TEST(TriggerSourceReplyTest, DigitalKeptAndUnknownFallsBackToChannelOne) {
  for (const auto& [reply, fields] :
       {std::pair{"DIG3", "DIG|1|"}, {"XYZ", "CHA|1|"}, {"", "CHA|1|"}, {"CHAN9", "CHAN9|1|"}}) {
    const TriggerSourceReading reading = TriggerSourceFromReply(reply);
    EXPECT_EQ(Fields(reading.source, reading.channel), fields) << reply;
  }
}

struct ModeCase {
  const char* setting;
  const char* tool;
  bool variable_persistence;  // otherwise "2.0"
  int dvm_mode;
};

class ModeReadbackTest : public testing::TestWithParam<ModeCase> {};

TEST_P(ModeReadbackTest, ChecksTheToolAndKeepsTheVariablePersistence) {
  const ModeCase& c = GetParam();
  OnlineScope s;
  s.simulator->Execute(std::string(":DVM:ENABle 1;:DVM:MODE DC;") + c.setting);
  s.readback.ReadBackState();
  const std::string persistence = s.simulator->Execute(":DISPlay:PERSistence?");
  EXPECT_TRUE(s.h.tools.ToolState(c.tool)) << c.tool;
  EXPECT_EQ(Fields(s.h.scope.PersistenceReply, s.h.scope.VariablePersistence, s.h.scope.DvmMode),
            Fields(persistence, c.variable_persistence ? persistence : "2.0", c.dvm_mode));
}

INSTANTIATE_TEST_SUITE_P(
    Modes, ModeReadbackTest,
    testing::Values(ModeCase{":DISPlay:PERSistence MINimum", "ID_PERSMIN", false, 2},
                    ModeCase{":DISPlay:PERSistence 2.5", "ID_PERSVAR", true, 2},
                    ModeCase{":DVM:MODE ACRMs", "ID_DVMM1", false, 1},
                    ModeCase{":DVM:MODE DCRMs", "ID_DVMM3", false, 3}));

struct WgenCase {
  const char* name;
  const char* prefix;
  std::string settings;  // after the prefix
  std::string queries;   // between ":FUNCtion?" and ":OUTPut:LOAD?", a blank after each
};

class WgenReadbackTest : public testing::TestWithParam<WgenCase> {};

TEST_P(WgenReadbackTest, AsksTheFunctionsAndModulationsOwnSettings) {
  const WgenCase& c = GetParam();
  OnlineScope s;
  const std::string p = c.prefix;
  s.h.scope.WgenPrefix = p;
  s.simulator->Execute(p + c.settings);
  ASSERT_EQ(text::LeadingNumber(s.simulator->Execute(":SYSTem:ERRor?")), 0);
  s.simulator->ClearTraffic();
  s.readback.ReadBackWgen();

  std::vector<std::string> asked;
  std::vector<std::string> expected = {p + ":OUTPut?", p + ":FUNCtion?"};
  for (size_t at = 0, end; (end = c.queries.find(' ', at)) != std::string::npos; at = end + 1) {
    asked.push_back(c.queries.substr(at, end - at));
    expected.push_back(p + asked.back());
  }
  expected.push_back(p + ":OUTPut:LOAD?");
  EXPECT_EQ(s.Sent(), WithErrorQuery(expected));

  const WgenSettings& w = s.h.scope.Wgen;
  const std::pair<const char*, double> fields[] = {
      {":FREQuency?", w.Frequency},
      {":PERiod?", w.Period},
      {":VOLTage?", w.Amplitude},
      {":VOLTage:OFFSet?", w.Offset},
      {":VOLTage:HIGH?", w.High},
      {":VOLTage:LOW?", w.Low},
      {":FUNCtion:SQUare:DCYCle?", w.SquareDutyCycle},
      {":FUNCtion:RAMP:SYMMetry?", w.RampSymmetry},
      {":FUNCtion:PULSe:WIDTh?", w.PulseWidth},
      {":MODulation:STATe?", w.ModulationState},
      {":MODulation:AM:DEPTh?", w.AmDepth},
      {":MODulation:AM:FREQuency?", w.AmFrequency},
      {":MODulation:FM:DEViation?", w.FmDeviation},
      {":MODulation:FM:FREQuency?", w.FmFrequency},
      {":MODulation:FUNCtion:RAMP:SYMMetry?", w.ModulationRampSymmetry},
      {":MODulation:FSKey:FREQuency?", w.FskFrequency},
      {":MODulation:FSKey:RATE?", w.FskRate}};
  for (const auto& [query, value] : fields) {
    if (std::find(asked.begin(), asked.end(), query) == asked.end()) continue;
    EXPECT_DOUBLE_EQ(value, text::LeadingNumber(s.simulator->Execute(p + query))) << query;
  }
  EXPECT_EQ(w.Function, s.simulator->Execute(p + ":FUNCtion?"));
  EXPECT_TRUE(s.h.tools.ToolState("ID_" + p.substr(1)));
}

const std::string kShape =
    ":FREQuency? :PERiod? :VOLTage? :VOLTage:OFFSet? :VOLTage:HIGH? "
    ":VOLTage:LOW? ";
const std::string kModulation = ":MODulation:STATe? :MODulation:NOISe? ";
const std::string kModulated = ":FUNCtion SINusoid;MODulation:STATe 1;TYPE ";
const std::string kAmFm = kShape + kModulation + ":MODulation:TYPE? :MODulation:FUNCtion? ";

INSTANTIATE_TEST_SUITE_P(
    Functions, WgenReadbackTest,
    testing::Values(
        WgenCase{"SineOfTheSecond", ":WGEN2", ":FUNCtion SINusoid;FREQuency 3000",
                 kShape + kModulation},
        WgenCase{"Square", ":WGEN1", ":FUNCtion SQUare;FUNCtion:SQUare:DCYCle 30",
                 kShape + ":FUNCtion:SQUare:DCYCle? " + kModulation},
        WgenCase{"Ramp", ":WGEN1", ":FUNCtion RAMP;FUNCtion:RAMP:SYMMetry 40",
                 kShape + ":FUNCtion:RAMP:SYMMetry? " + kModulation},
        WgenCase{"Pulse", ":WGEN1", ":FUNCtion PULSe;FUNCtion:PULSe:WIDTh 2E-4",
                 kShape + ":FUNCtion:PULSe:WIDTh? " + kModulation},
        WgenCase{"Noise", ":WGEN1", ":FUNCtion NOISe",
                 ":VOLTage? :VOLTage:OFFSet? :VOLTage:HIGH? :VOLTage:LOW? " + kModulation},
        WgenCase{"Dc", ":WGEN1", ":FUNCtion DC;:WGEN1:VOLTage:OFFSet 0.5",
                 ":VOLTage:OFFSet? " + kModulation},
        WgenCase{"OtherFunction", ":WGEN1", ":FUNCtion SINC",
                 ":FREQuency? :PERiod? :VOLTage? :VOLTage:OFFSet? " + kModulation},
        WgenCase{"Am", ":WGEN1", kModulated + "AM;AM:DEPTh 40;FREQuency 300",
                 kAmFm + ":MODulation:AM:DEPTh? :MODulation:AM:FREQuency? "
                         ":MODulation:FUNCtion:RAMP:SYMMetry? "},
        WgenCase{"Fm", ":WGEN1",
                 kModulated + "FM;FM:DEViation 200;:WGEN1:MODulation:FUNCtion:RAMP:SYMMetry 60",
                 kAmFm + ":MODulation:FM:DEViation? :MODulation:FM:FREQuency? "
                         ":MODulation:FUNCtion:RAMP:SYMMetry? "},
        WgenCase{"Fsk", ":WGEN1", kModulated + "FSK",
                 kShape + kModulation +
                     ":MODulation:TYPE? :MODulation:FSKey:FREQuency? :MODulation:FSKey:RATE? "}),
    [](const testing::TestParamInfo<WgenCase>& info) { return std::string(info.param.name); });

TEST(ReadbackTest, NoValueFromTheVoltmeterIsStoredAsZero) {
  OnlineScope s;
  // A frequency reading of an input without a repeating signal has no value.
  s.simulator->Execute(
      ":SIMulate:CHANnel2:SIGNal NONE;:DVM:ENABle 1;:DVM:SOURce CHANnel2;:DVM:MODE FREQ");
  ASSERT_GT(text::LeadingNumber(s.simulator->Execute(":DVM:CURRent?")), 1e37);
  ASSERT_GT(text::LeadingNumber(s.simulator->Execute(":DVM:FREQuency?")), 1e37);
  s.h.scope.DvmReading = s.h.scope.DvmFrequency = 5;
  s.readback.ReadBackDvm();
  EXPECT_EQ(Fields(s.h.scope.DvmMode, s.h.scope.DvmReading, s.h.scope.DvmFrequency), "4|0|0|");
  EXPECT_TRUE(s.h.tools.ToolState("ID_DVMM4"));
}

// A quoted label and text: see the changed-instrument test.
TEST(ReadbackTest, AnnotationOffLeavesItsFieldsUnlessAllAreAskedAndEmptyQuotesAreEmpty) {
  OnlineScope s;
  s.simulator->Execute(":DISPlay:ANNotation 0;:DISPlay:ANNotation:TEXT \"new\"");
  s.h.scope.AnnotationText = "old";
  s.h.scope.AnnotationColor = "CH1";
  s.readback.ReadBackAnnotation(false);
  EXPECT_EQ(Fields(s.h.scope.AnnotationOn, s.h.scope.AnnotationText, s.h.scope.AnnotationColor),
            "0|old|CH1|");
  EXPECT_EQ(s.Sent(), WithErrorQuery({":DISPlay:ANNotation?"}));
  s.readback.ReadBackAnnotation(true);
  EXPECT_EQ(s.h.scope.AnnotationText, "new");
  s.simulator->Execute(":DISPlay:ANNotation:TEXT \"\";:DISPlay:ANNotation 1");
  s.readback.ReadBackState();
  EXPECT_EQ(s.h.scope.AnnotationText, "");
}

// The single-function family: every query the readback sends (its :FUNC and :WGEN prefixes
// included) is answered without an instrument error, and what the instrument lacks (channels
// three and four, the options) is never asked.
TEST(ReadbackTest, TwoThousandXIsReadWithoutErrorsAndNeverAskedWhatItLacks) {
  OnlineScope s({.model = "2000X", .channels = 2});
  s.simulator->Execute(":WGEN:MODulation:STATe 1;:WGEN:MODulation:TYPE FM;:DVM:ENABle 1");
  s.h.scope.Channels[3].Label = "untouched";
  s.readback.ReadBackState();
  s.readback.ReadBackMath(true);
  for (const char* asked : {":CHANnel2:", ":WGEN:MODulation:FM", ":FUNC:GOFT"}) {
    EXPECT_TRUE(AnySentStartsWith(s.Sent(), asked)) << asked;
  }
  for (const char* no : {":CHANnel3", ":CHANnel4"}) EXPECT_FALSE(AnySentStartsWith(s.Sent(), no));
  EXPECT_EQ(s.h.scope.Channels[3].Label, "untouched");
  EXPECT_TRUE(s.h.ui.status_lines().empty()) << s.h.ui.status();
  EXPECT_TRUE(s.h.session.RemoteOn);

  OnlineScope bare({.model = "2000X", .has_wgen = false, .has_dvm = false});
  bare.readback.ReadBackState();
  bare.readback.ReadBackDvm();
  bare.readback.ReadBackWgen();
  for (const char* no : {":DVM", ":WGEN"}) EXPECT_FALSE(AnySentStartsWith(bare.Sent(), no));
}

// g(t) is asked only on the single-function family.
struct MathCase {
  const char* name;
  const char* model;
  const char* prefix;
  const char* settings;  // after the shared ones
  const char* fields;    // display to g(t) source 2; g(t) "unread" when it must not be asked
  const char* operation_tool;
  const char* function_tool;
};

class MathReadbackTest : public testing::TestWithParam<MathCase> {};

TEST_P(MathReadbackTest, ReadsEveryFieldOfTheNamedFunction) {
  const MathCase& c = GetParam();
  OnlineScope s({.model = c.model});
  const std::string p = c.prefix;
  s.h.scope.MathPrefix = p;
  s.simulator->Execute(p + ":FFT:CENTer 2E6;SPAN 4E6;" + p + ":OFFSet 0.5;RANGe 16;REFerence -20");
  s.simulator->Execute(std::string(c.settings) + ";*CLS");
  ScopeState& st = s.h.scope;
  st.GoftOperation = st.GoftSource1 = st.GoftSource2 = "unread";
  s.readback.ReadBackMath(true);

  EXPECT_EQ(
      Fields(st.MathDisplay, st.MathOperation, st.FftCenter, st.FftSpan, st.FftVerticalType,
             st.FftWindow, st.MathOffset, st.MathRange, st.MathReference, st.MathScale,
             st.MathSource1, st.MathSource2, st.GoftOperation, st.GoftSource1, st.GoftSource2),
      c.fields);
  std::vector<std::string> queries;
  for (const char* q :
       {":DISPlay?", ":OPERation?", ":FFT:CENTer?", ":FFT:SPAN?", ":FFT:VTYPe?", ":FFT:WINDow?",
        ":OFFSet?", ":RANGe?", ":REFerence?", ":SCALe?", ":SOURce1?", ":SOURce2?"}) {
    queries.push_back(p + q);
  }
  if (std::string(c.model) == "2000X") {
    for (const char* q : {":GOFT:OPERation?", ":GOFT:SOURce1?", ":GOFT:SOURce2?"}) {
      queries.push_back(p + q);
    }
  }
  EXPECT_EQ(s.Sent(), WithErrorQuery(queries));
  EXPECT_TRUE(s.h.ui.status_lines().empty()) << s.h.ui.status();
  EXPECT_TRUE(s.h.session.RemoteOn);
  EXPECT_EQ(s.h.tools.ToolState("ID_MATHDISP"), st.MathDisplay);
  EXPECT_TRUE(s.h.tools.ToolState(c.function_tool)) << c.function_tool;
  if (*c.operation_tool != '\0') {
    EXPECT_TRUE(s.h.tools.ToolState(c.operation_tool)) << c.operation_tool;
  }
  EXPECT_TRUE(s.h.tools.unguarded.empty()) << s.h.tools.unguarded.front();
  EXPECT_FALSE(st.ToolUpdateInProgress);
}

INSTANTIATE_TEST_SUITE_P(
    Functions, MathReadbackTest,
    testing::Values(
        MathCase{"SingleFunction", "2000X", ":FUNC",
                 ":FUNC:DISPlay 1;OPERation SUBTract;SOURce1 GOFT;SOURce2 CHANnel3;"
                 ":FUNC:GOFT:OPERation MULTiply;SOURce1 CHANnel3;SOURce2 CHANnel4;"
                 ":FUNC:FFT:VTYPe VRMS;WINDow FLATtop;:FUNC:SCALe 2.6",
                 "1|SUBT|2e+06|4e+06|1|2|0.5|16|-20|3|GOFT|CHAN3|MULT|CHAN3|CHAN4|", "ID_MATHSUBT",
                 "ID_MATHFUNC"},
        // The second function differs from the first in every field, so a wrong prefix shows.
        MathCase{"SecondOfTwo", "3000X", ":FUNC2",
                 ":FUNC1:DISPlay 1;OPERation FFT;:FUNC2:DISPlay 0;OPERation INTegrate;"
                 ":FUNC2:SOURce1 FUNCtion1;SOURce2 CHANnel1;:FUNC2:FFT:VTYPe VRMS;"
                 ":FUNC2:FFT:WINDow RECTangular;:FUNC2:SCALe 0.4",
                 "0|INT|2e+06|4e+06|1|0|0.5|16|-20|0|FUNC1|CHAN1|unread|unread|unread|", "",
                 "ID_MATHFUNC2"}),
    [](const testing::TestParamInfo<MathCase>& info) { return std::string(info.param.name); });

TEST(ReadbackTest, OffLineReadsNothing) {
  testing_support::LinkHarness h;
  WaveformRecords records;
  NoReadbackHooks hooks;
  StateReadback readback(h.link, h.scope, records, h.ui, h.tools, hooks);
  h.scope.HasDvm = h.scope.HasWgen = h.scope.DvmEnabled = h.scope.AnnotationOn = true;
  readback.ReadBackState();
  readback.ReadBackDvm();
  readback.ReadBackAnnotation(true);
  readback.ReadBackMath(true);
  readback.ReadBackWgen();
  EXPECT_TRUE(h.scope.DvmEnabled);
  EXPECT_TRUE(h.scope.AnnotationOn);
  EXPECT_TRUE(h.tools.state_history().empty());
}

}  // namespace
}  // namespace quarvelo::acquisition
