// The state readback against the simulated oscilloscope over loopback TCP: a changed
// instrument read back into every field and tool, trigger sources, quoted texts, "no value",
// channels and options the instrument lacks, and a silent instrument.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <string>
#include <vector>

#include "acquisition/reply_fields.h"
#include "platform/text/number_parse.h"
#include "tests/link/online_scope.h"
#include "tests/link/sim_faults.h"

namespace quarvelo::acquisition {
namespace {

using testing_support::OnlineScope;
using testing_support::ScopeModel;

bool AnySentStartsWith(const std::vector<std::string>& sent, std::string_view prefix) {
  return std::any_of(sent.begin(), sent.end(),
                     [&](const std::string& m) { return m.rfind(prefix, 0) == 0; });
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
  for (const char* setting : {":CHANnel2:DISPlay 1",
                              ":CHANnel2:PROBe 10",
                              ":CHANnel2:SCALe 0.5",
                              ":CHANnel2:OFFSet 0.25",
                              ":CHANnel2:COUPling AC",
                              ":CHANnel2:BWLimit 1",
                              ":CHANnel2:INVert 1",
                              ":CHANnel2:LABel \"ABC\"",
                              ":CHANnel1:DISPlay 0",
                              ":TRIGger:EDGE:SOURce CHANnel2",
                              ":TRIGger:SWEep NORMal",
                              ":TRIGger:NREJect 1",
                              ":TRIGger:EDGE:SLOPe NEGative",
                              ":TRIGger:EDGE:COUPling AC",
                              ":TRIGger:EDGE:REJect HFReject",
                              ":TRIGger:EDGE:LEVel 0.3",
                              ":TRIGger:HOLDoff 1E-6",
                              ":TIMebase:SCALe 2E-4",
                              ":TIMebase:REFerence LEFT",
                              ":TIMebase:POSition 1E-4",
                              ":ACQuire:TYPE AVERage",
                              ":ACQuire:COUNt 16",
                              ":DISPlay:PERSistence INFinite",
                              ":DISPlay:LABel 1",
                              ":MEASure:SOURce CHANnel2",
                              ":DVM:ENABle 1",
                              ":DVM:MODE DC",
                              ":DVM:SOURce CHANnel2",
                              ":DVM:ARANge 1",
                              ":FUNC1:DISPlay 1",
                              ":FUNC1:OPERation FFT",
                              ":WGEN1:OUTPut 1",
                              ":DISPlay:ANNotation 1",
                              ":DISPlay:ANNotation:TEXT \"Hello scope\"",
                              ":DISPlay:ANNotation:COLor RED",
                              ":DISPlay:ANNotation:BACKground INVerted"}) {
    s.simulator->Execute(setting);
  }
  s.simulator->Execute("*CLS");
  RecordingReadbackHooks hooks;
  StateReadback readback(s.h.link, s.h.scope, s.records, s.h.ui, s.h.tools, hooks);
  readback.ReadBackState();

  const ScopeState& st = s.h.scope;
  EXPECT_TRUE(s.h.session.RemoteOn);
  EXPECT_EQ(st.Identity, s.simulator->Execute("*IDN?"));
  const ChannelSettings& ch2 = st.Channels[2];
  EXPECT_TRUE(ch2.Displayed);
  EXPECT_DOUBLE_EQ(ch2.Scale, 0.5);
  EXPECT_DOUBLE_EQ(ch2.Offset, 0.25);
  EXPECT_EQ(ch2.Coupling, "AC");
  EXPECT_EQ(ch2.ProbeAttenuation, 10);
  EXPECT_EQ(ch2.BandwidthLimit, 1);
  EXPECT_TRUE(ch2.Inverted);
  EXPECT_EQ(ch2.Label, "ABC");
  EXPECT_FALSE(st.Channels[1].Displayed);
  EXPECT_EQ(st.TriggerSource, "CHAN2");
  EXPECT_EQ(st.TriggerChannel, 2);
  EXPECT_EQ(st.TriggerSweepAuto, 0);
  EXPECT_TRUE(st.NoiseReject);
  EXPECT_EQ(st.TriggerSlope, "NEG");
  EXPECT_EQ(st.TriggerCoupling, "A");
  EXPECT_EQ(st.TriggerReject, "H");
  EXPECT_DOUBLE_EQ(st.TriggerLevel, 0.3);
  EXPECT_DOUBLE_EQ(st.Holdoff, 1e-6);
  EXPECT_EQ(st.TriggerScaleIndex, 3) << "500 mV/div is the fourth step";
  EXPECT_DOUBLE_EQ(st.TimebaseScale, 2e-4);
  EXPECT_EQ(st.TimebaseReference, "L");
  EXPECT_EQ(st.TimebaseMode, "M");
  EXPECT_DOUBLE_EQ(st.TimebasePosition, 1e-4);
  EXPECT_EQ(st.AcquireType, "AVER");
  EXPECT_EQ(st.AcquireCount, 16);
  EXPECT_EQ(st.PersistenceReply, "INF");
  EXPECT_EQ(st.VariablePersistence, "2.0");
  EXPECT_TRUE(st.DisplayLabels);
  EXPECT_EQ(st.MeasureSource.substr(0, 5), "CHAN2");
  EXPECT_TRUE(st.DvmEnabled);
  EXPECT_EQ(st.DvmMode, 2);
  EXPECT_EQ(st.DvmSource, 2);
  EXPECT_EQ(st.DvmAutoRange, 1);
  EXPECT_TRUE(st.MathDisplay);
  EXPECT_EQ(st.MathOperation, "FFT");
  EXPECT_TRUE(st.Wgen.OutputOn);
  EXPECT_TRUE(st.AnnotationOn);
  EXPECT_EQ(st.AnnotationText, "Hello scope");
  EXPECT_EQ(st.AnnotationColor, "RED");
  EXPECT_EQ(st.AnnotationBackground, "INV");

  for (const char* id :
       {"ID_CH2",       "ID_TGSN",      "ID_TGNR", "ID_TSN",      "ID_TCA",     "ID_TJH",
        "ID_TRL",       "ID_TMM",       "ID_TG2",  "ID_ACQUAVER", "ID_PERSINF", "ID_DISPLBL",
        "ID_MEASCHAN2", "ID_DVM",       "ID_ADVM", "ID_DVMM2",    "ID_DVMCH2",  "ID_MATHFFT",
        "ID_MATHDISP",  "ID_MATHFUNC1", "ID_WG",   "ID_WGEN1"}) {
    EXPECT_TRUE(s.h.tools.ToolState(id)) << id;
  }
  for (const char* id : {"ID_CH1", "ID_TGSA"}) EXPECT_FALSE(s.h.tools.ToolState(id)) << id;
  EXPECT_TRUE(s.h.tools.unguarded.empty()) << s.h.tools.unguarded.front();
  EXPECT_FALSE(s.h.scope.ToolUpdateInProgress);
  EXPECT_EQ(s.h.ui.pointer(), ui::PointerShape::kDefault);
  EXPECT_EQ(hooks.time_bases, std::vector<double>{2e-4});
  EXPECT_EQ(hooks.sample_rates.size(), 1u);
  EXPECT_TRUE(s.h.ui.status_lines().empty()) << s.h.ui.status();
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
  s.simulator->Execute(c.command);
  // A scale between the V/div steps keeps the previous step index.
  s.simulator->Execute(":CHANnel1:SCALe 0.3");
  s.simulator->Execute(":CHANnel3:SCALe 0.3");
  s.h.scope.TriggerChannel = 4;
  s.h.scope.TriggerScaleIndex = 7;
  s.readback.ReadBackState();
  EXPECT_EQ(s.h.scope.TriggerSource, c.source);
  EXPECT_EQ(s.h.scope.TriggerChannel, c.channel);
  EXPECT_TRUE(s.h.tools.ToolState(c.tool));
  EXPECT_EQ(s.h.scope.TriggerScaleIndex, 7);
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
  const struct {
    const char* reply;
    const char* source;
    int channel;
  } cases[] = {{"DIG3", "DIG", 1}, {"XYZ", "CHA", 1}, {"", "CHA", 1}, {"CHAN9", "CHAN9", 1}};
  for (const auto& c : cases) {
    const TriggerSourceReading reading = TriggerSourceFromReply(c.reply);
    EXPECT_EQ(reading.source, c.source) << c.reply;
    EXPECT_EQ(reading.channel, c.channel) << c.reply;
  }
}

// Persistence and voltmeter modes: the setting read back into its field and its tool.
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
  s.simulator->Execute(":DVM:ENABle 1");
  s.simulator->Execute(":DVM:MODE DC");
  s.simulator->Execute(c.setting);
  s.readback.ReadBackState();
  const std::string persistence = s.simulator->Execute(":DISPlay:PERSistence?");
  EXPECT_TRUE(s.h.tools.ToolState(c.tool)) << c.tool;
  EXPECT_EQ(s.h.scope.PersistenceReply, persistence);
  EXPECT_EQ(s.h.scope.VariablePersistence, c.variable_persistence ? persistence : "2.0");
  EXPECT_EQ(s.h.scope.DvmMode, c.dvm_mode);
}

INSTANTIATE_TEST_SUITE_P(
    Modes, ModeReadbackTest,
    testing::Values(ModeCase{":DISPlay:PERSistence MINimum", "ID_PERSMIN", false, 2},
                    ModeCase{":DISPlay:PERSistence 2.5", "ID_PERSVAR", true, 2},
                    ModeCase{":DVM:MODE ACRMs", "ID_DVMM1", false, 1},
                    ModeCase{":DVM:MODE DCRMs", "ID_DVMM3", false, 3}));

// Each generator function and modulation asks for exactly its own settings, and each lands in
// its own field.
struct WgenCase {
  const char* name;
  std::vector<std::string> settings;  // after the prefix
  std::vector<std::string> queries;   // between ":FUNCtion?" and ":OUTPut:LOAD?"
};

class WgenReadbackTest : public testing::TestWithParam<WgenCase> {};

TEST_P(WgenReadbackTest, AsksTheFunctionsAndModulationsOwnSettings) {
  OnlineScope s;
  const std::string p = ":WGEN1";
  for (const auto& setting : GetParam().settings) s.simulator->Execute(p + setting);
  ASSERT_EQ(text::LeadingNumber(s.simulator->Execute(":SYSTem:ERRor?")), 0);
  s.simulator->ClearTraffic();
  s.readback.ReadBackWgen();

  std::vector<std::string> expected = {p + ":OUTPut?", p + ":FUNCtion?"};
  for (const auto& q : GetParam().queries) expected.push_back(p + q);
  expected.push_back(p + ":OUTPut:LOAD?");
  EXPECT_EQ(s.Sent(), testing_support::WithErrorQuery(expected));

  const WgenSettings& w = s.h.scope.Wgen;
  const std::map<std::string, double> fields = {
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
  for (const auto& q : GetParam().queries) {
    const auto field = fields.find(q);
    if (field == fields.end()) continue;
    EXPECT_DOUBLE_EQ(field->second, text::LeadingNumber(s.simulator->Execute(p + q))) << q;
  }
  EXPECT_EQ(w.Function, s.simulator->Execute(p + ":FUNCtion?"));
  EXPECT_TRUE(s.h.tools.ToolState("ID_WGEN1"));
}

const std::vector<std::string> kTiming = {":FREQuency?", ":PERiod?"};
const std::vector<std::string> kLevels = {":VOLTage?", ":VOLTage:OFFSet?", ":VOLTage:HIGH?",
                                          ":VOLTage:LOW?"};
const std::vector<std::string> kModulation = {":MODulation:STATe?", ":MODulation:NOISe?"};

std::vector<std::string> Join(std::initializer_list<std::vector<std::string>> parts) {
  std::vector<std::string> all;
  for (const auto& part : parts) all.insert(all.end(), part.begin(), part.end());
  return all;
}

INSTANTIATE_TEST_SUITE_P(
    Functions, WgenReadbackTest,
    testing::Values(
        WgenCase{"Sine",
                 {":FUNCtion SINusoid", ":FREQuency 3000"},
                 Join({kTiming, kLevels, kModulation})},
        WgenCase{"Square",
                 {":FUNCtion SQUare", ":FUNCtion:SQUare:DCYCle 30"},
                 Join({kTiming, kLevels, {":FUNCtion:SQUare:DCYCle?"}, kModulation})},
        WgenCase{"Ramp",
                 {":FUNCtion RAMP", ":FUNCtion:RAMP:SYMMetry 40"},
                 Join({kTiming, kLevels, {":FUNCtion:RAMP:SYMMetry?"}, kModulation})},
        WgenCase{"Pulse",
                 {":FUNCtion PULSe", ":FUNCtion:PULSe:WIDTh 2E-4"},
                 Join({kTiming, kLevels, {":FUNCtion:PULSe:WIDTh?"}, kModulation})},
        WgenCase{"Noise", {":FUNCtion NOISe"}, Join({kLevels, kModulation})},
        WgenCase{"Dc",
                 {":FUNCtion DC", ":VOLTage:OFFSet 0.5"},
                 Join({{":VOLTage:OFFSet?"}, kModulation})},
        WgenCase{"OtherFunction",
                 {":FUNCtion SINC"},
                 Join({kTiming, {":VOLTage?", ":VOLTage:OFFSet?"}, kModulation})},
        WgenCase{"Am",
                 {":FUNCtion SINusoid", ":MODulation:STATe 1", ":MODulation:TYPE AM",
                  ":MODulation:AM:DEPTh 40", ":MODulation:AM:FREQuency 300"},
                 Join({kTiming,
                       kLevels,
                       kModulation,
                       {":MODulation:TYPE?", ":MODulation:FUNCtion?", ":MODulation:AM:DEPTh?",
                        ":MODulation:AM:FREQuency?", ":MODulation:FUNCtion:RAMP:SYMMetry?"}})},
        WgenCase{"Fm",
                 {":FUNCtion SINusoid", ":MODulation:STATe 1", ":MODulation:TYPE FM",
                  ":MODulation:FM:DEViation 200", ":MODulation:FUNCtion:RAMP:SYMMetry 60"},
                 Join({kTiming,
                       kLevels,
                       kModulation,
                       {":MODulation:TYPE?", ":MODulation:FUNCtion?", ":MODulation:FM:DEViation?",
                        ":MODulation:FM:FREQuency?", ":MODulation:FUNCtion:RAMP:SYMMetry?"}})},
        WgenCase{"Fsk",
                 {":FUNCtion SINusoid", ":MODulation:STATe 1", ":MODulation:TYPE FSK"},
                 Join({kTiming,
                       kLevels,
                       kModulation,
                       {":MODulation:TYPE?", ":MODulation:FSKey:FREQuency?",
                        ":MODulation:FSKey:RATE?"}})}),
    [](const testing::TestParamInfo<WgenCase>& info) { return std::string(info.param.name); });

TEST(ReadbackTest, NoValueFromTheVoltmeterIsStoredAsZero) {
  OnlineScope s;
  // A frequency reading of an input without a repeating signal has no value.
  s.simulator->Execute(":SIMulate:CHANnel2:SIGNal NONE");
  s.simulator->Execute(":DVM:ENABle 1");
  s.simulator->Execute(":DVM:SOURce CHANnel2");
  s.simulator->Execute(":DVM:MODE FREQ");
  ASSERT_GT(text::LeadingNumber(s.simulator->Execute(":DVM:CURRent?")), 1e37);
  ASSERT_GT(text::LeadingNumber(s.simulator->Execute(":DVM:FREQuency?")), 1e37);
  s.h.scope.DvmReading = 5;
  s.h.scope.DvmFrequency = 5;
  s.readback.ReadBackDvm();
  EXPECT_EQ(s.h.scope.DvmMode, 4);
  EXPECT_EQ(s.h.scope.DvmReading, 0);
  EXPECT_EQ(s.h.scope.DvmFrequency, 0);
  EXPECT_TRUE(s.h.tools.ToolState("ID_DVMM4"));
}

// A quoted label and text: see the changed-instrument test.
TEST(ReadbackTest, EmptyQuotedAnnotationIsEmpty) {
  OnlineScope s;
  s.simulator->Execute(":DISPlay:ANNotation:TEXT \"\"");
  s.simulator->Execute(":DISPlay:ANNotation 1");
  s.h.scope.AnnotationText = "old";
  s.readback.ReadBackState();
  EXPECT_EQ(s.h.scope.AnnotationText, "");
}

TEST(ReadbackTest, AnnotationOffLeavesItsFieldsUnlessAllAreAsked) {
  OnlineScope s;
  s.simulator->Execute(":DISPlay:ANNotation 0");
  s.simulator->Execute(":DISPlay:ANNotation:TEXT \"new\"");
  s.h.scope.AnnotationText = "old";
  s.h.scope.AnnotationColor = "CH1";
  s.h.scope.AnnotationBackground = "OPAQ";
  s.readback.ReadBackAnnotation(false);
  EXPECT_FALSE(s.h.scope.AnnotationOn);
  EXPECT_EQ(s.h.scope.AnnotationText, "old");
  EXPECT_EQ(s.h.scope.AnnotationColor, "CH1");
  EXPECT_EQ(s.Sent(), testing_support::WithErrorQuery({":DISPlay:ANNotation?"}));
  s.readback.ReadBackAnnotation(true);
  EXPECT_EQ(s.h.scope.AnnotationText, "new");
}

TEST(ReadbackTest, TwoChannelInstrumentIsNeverAskedAboutChannelsThreeAndFour) {
  OnlineScope s({.channels = 2});
  s.h.scope.Channels[3].Label = "untouched";
  s.readback.ReadBackState();
  const auto sent = s.Sent();
  EXPECT_TRUE(AnySentStartsWith(sent, ":CHANnel2:"));
  EXPECT_FALSE(AnySentStartsWith(sent, ":CHANnel3"));
  EXPECT_FALSE(AnySentStartsWith(sent, ":CHANnel4"));
  EXPECT_EQ(s.h.scope.Channels[3].Label, "untouched");
}

TEST(ReadbackTest, AbsentOptionsAreNotAsked) {
  OnlineScope s({.model = "2000X", .has_wgen = false, .has_dvm = false});
  s.readback.ReadBackState();
  s.readback.ReadBackDvm();
  s.readback.ReadBackWgen();
  const auto sent = s.Sent();
  EXPECT_FALSE(AnySentStartsWith(sent, ":DVM"));
  EXPECT_FALSE(AnySentStartsWith(sent, ":WGEN"));
  EXPECT_TRUE(AnySentStartsWith(sent, ":FUNC:DISPlay?")) << "model 0 uses the :FUNC prefix";
}

TEST(ReadbackTest, SilentInstrumentCostsOneIdentification) {
  OnlineScope s;
  s.h.scope.TimebaseScale = 0.123;
  s.simulator->Execute(testing_support::kNeverAnswerNextQuery);
  s.simulator->ClearTraffic();
  s.readback.ReadBackState();
  EXPECT_EQ(s.Sent(), std::vector<std::string>{"*IDN?"});
  EXPECT_TRUE(s.h.session.TimedOut);
  EXPECT_TRUE(s.h.session.RemoteOn);
  EXPECT_EQ(s.h.ui.status(), "TIME OUT!");
  EXPECT_TRUE(s.h.ui.messages().empty());
  EXPECT_EQ(s.h.scope.TimebaseScale, 0.123);
  EXPECT_FALSE(s.h.scope.ToolUpdateInProgress);
}

// The whole math readback of one function: the instrument's settings changed first, every
// field read back, the exact queries sent (g(t) only on the single-function family) and the
// function's tools checked.
struct MathCase {
  const char* name;
  const char* model;
  const char* prefix;
  std::vector<std::string> settings;
  bool display;
  const char* operation;
  const char* source1;
  const char* source2;
  std::int16_t vertical_type;
  std::int16_t window;
  std::int16_t scale;
  const char* goft_operation;  // expected g(t) fields; "unread" when they must not be asked
  const char* goft_source1;
  const char* goft_source2;
  const char* operation_tool;
  const char* function_tool;
};

class MathReadbackTest : public testing::TestWithParam<MathCase> {};

TEST_P(MathReadbackTest, ReadsEveryFieldOfTheNamedFunction) {
  const MathCase& c = GetParam();
  OnlineScope s({.model = c.model});
  s.h.scope.MathPrefix = c.prefix;
  for (const auto& setting : c.settings) s.simulator->Execute(setting);
  s.simulator->Execute("*CLS");
  s.h.scope.GoftOperation = s.h.scope.GoftSource1 = s.h.scope.GoftSource2 = "unread";
  s.readback.ReadBackMath(true);

  const ScopeState& st = s.h.scope;
  EXPECT_EQ(st.MathDisplay, c.display);
  EXPECT_EQ(st.MathOperation, c.operation);
  EXPECT_DOUBLE_EQ(st.FftCenter, 2e6);
  EXPECT_DOUBLE_EQ(st.FftSpan, 4e6);
  EXPECT_EQ(st.FftVerticalType, c.vertical_type);
  EXPECT_EQ(st.FftWindow, c.window);
  EXPECT_DOUBLE_EQ(st.MathOffset, 0.5);
  EXPECT_DOUBLE_EQ(st.MathRange, 16);
  EXPECT_DOUBLE_EQ(st.MathReference, -20);
  EXPECT_EQ(st.MathScale, c.scale);
  EXPECT_EQ(st.MathSource1, c.source1);
  EXPECT_EQ(st.MathSource2, c.source2);
  EXPECT_EQ(st.GoftOperation, c.goft_operation);
  EXPECT_EQ(st.GoftSource1, c.goft_source1);
  EXPECT_EQ(st.GoftSource2, c.goft_source2);

  const std::string p = c.prefix;
  std::vector<std::string> queries = {p + ":DISPlay?",  p + ":OPERation?", p + ":FFT:CENTer?",
                                      p + ":FFT:SPAN?", p + ":FFT:VTYPe?", p + ":FFT:WINDow?",
                                      p + ":OFFSet?",   p + ":RANGe?",     p + ":REFerence?",
                                      p + ":SCALe?",    p + ":SOURce1?",   p + ":SOURce2?"};
  if (std::string(c.model) == "2000X") {
    for (const char* q : {":GOFT:OPERation?", ":GOFT:SOURce1?", ":GOFT:SOURce2?"}) {
      queries.push_back(p + q);
    }
  }
  EXPECT_EQ(s.Sent(), testing_support::WithErrorQuery(queries));
  EXPECT_TRUE(s.h.ui.status_lines().empty()) << s.h.ui.status();
  EXPECT_TRUE(s.h.session.RemoteOn);

  EXPECT_EQ(s.h.tools.ToolState("ID_MATHDISP"), c.display);
  EXPECT_TRUE(s.h.tools.ToolState(c.function_tool)) << c.function_tool;
  if (*c.operation_tool != '\0') {
    EXPECT_TRUE(s.h.tools.ToolState(c.operation_tool)) << c.operation_tool;
  }
  EXPECT_TRUE(s.h.tools.unguarded.empty()) << s.h.tools.unguarded.front();
  EXPECT_FALSE(st.ToolUpdateInProgress);
}

// Settings shared by every case; each case adds its own after them.
std::vector<std::string> MathSettings(const std::string& p, std::vector<std::string> own) {
  std::vector<std::string> all = {p + ":FFT:CENTer 2E6", p + ":FFT:SPAN 4E6", p + ":OFFSet 0.5",
                                  p + ":RANGe 16", p + ":REFerence -20"};
  all.insert(all.end(), own.begin(), own.end());
  return all;
}

INSTANTIATE_TEST_SUITE_P(
    Functions, MathReadbackTest,
    testing::Values(
        MathCase{
            "SingleFunction", "2000X", ":FUNC",
            MathSettings(":FUNC",
                         {":FUNC:DISPlay 1", ":FUNC:OPERation SUBTract", ":FUNC:SOURce1 GOFT",
                          ":FUNC:SOURce2 CHANnel3", ":FUNC:GOFT:OPERation MULTiply",
                          ":FUNC:GOFT:SOURce1 CHANnel3", ":FUNC:GOFT:SOURce2 CHANnel4",
                          ":FUNC:FFT:VTYPe VRMS", ":FUNC:FFT:WINDow FLATtop", ":FUNC:SCALe 2.6"}),
            true, "SUBT", "GOFT", "CHAN3", 1, 2, 3, "MULT", "CHAN3", "CHAN4", "ID_MATHSUBT",
            "ID_MATHFUNC"},
        MathCase{"FirstOfTwo", "3000X", ":FUNC1",
                 MathSettings(":FUNC1", {":FUNC1:DISPlay 1", ":FUNC1:OPERation FFT",
                                         ":FUNC1:SOURce1 CHANnel2", ":FUNC1:SOURce2 CHANnel4",
                                         ":FUNC1:FFT:WINDow BHARris", ":FUNC1:SCALe 7",
                                         ":FUNC2:OPERation MULTiply"}),
                 true, "FFT", "CHAN2", "CHAN4", 0, 3, 7, "unread", "unread", "unread", "ID_MATHFFT",
                 "ID_MATHFUNC1"},
        // The second function differs from the first in every field, so a wrong prefix shows.
        MathCase{
            "SecondOfTwo", "3000X", ":FUNC2",
            MathSettings(":FUNC2", {":FUNC1:DISPlay 1", ":FUNC1:OPERation FFT", ":FUNC2:DISPlay 0",
                                    ":FUNC2:OPERation INTegrate", ":FUNC2:SOURce1 FUNCtion1",
                                    ":FUNC2:SOURce2 CHANnel1", ":FUNC2:FFT:VTYPe VRMS",
                                    ":FUNC2:FFT:WINDow RECTangular", ":FUNC2:SCALe 0.4"}),
            false, "INT", "FUNC1", "CHAN1", 1, 0, 0, "unread", "unread", "unread", "",
            "ID_MATHFUNC2"}),
    [](const testing::TestParamInfo<MathCase>& info) { return std::string(info.param.name); });

TEST(ReadbackTest, OffLineReadsNothing) {
  testing_support::LinkHarness h;
  WaveformRecords records;
  NoReadbackHooks hooks;
  StateReadback readback(h.link, h.scope, records, h.ui, h.tools, hooks);
  h.scope.HasDvm = h.scope.HasWgen = true;
  h.scope.DvmEnabled = true;
  h.scope.AnnotationOn = true;
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
