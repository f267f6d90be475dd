// The full readback, in the instrument's order: identification, status, trigger, channels,
// generator, trigger edge, time base, acquisition, display, voltmeter, measurement, math and
// annotation.
#include <string>

#include "acquisition/readback.h"
#include "acquisition/reply_fields.h"
#include "acquisition/state_tool_ids.h"
#include "link/tool_update_guard.h"
#include "platform/text/number_parse.h"

namespace quarvelo::acquisition {

StateReadback::StateReadback(link::InstrumentLink& link, ScopeState& scope,
                             WaveformRecords& records, ui::UiServices& ui, ui::ToolHost& tools,
                             ReadbackHooks& hooks)
    : link_(link), scope_(scope), records_(records), ui_(ui), tools_(tools), hooks_(hooks) {}

double StateReadback::Number(std::string_view query) { return text::LeadingNumber(Query(query)); }

std::int16_t StateReadback::Whole16(std::string_view query) { return WholeNumber16(Query(query)); }

bool StateReadback::IsOne(std::string_view query) { return Number(query) == 1; }

void StateReadback::ReadBackState() {
  link::InstrumentSession& session = link_.session();
  if (!session.RemoteOn) return;
  link::ToolUpdateGuard guard(scope_.ToolUpdateInProgress);
  ui_.SetPointer(ui::PointerShape::kHourglass);
  records_.Shared.LastIndex = -1;  // no captured samples until the next capture

  // A silent instrument costs this one short identification, not a time-out per query.
  link_.SetIoTimeout(true, kIdentifyTimeoutMs);
  const std::string identity = Query("*IDN?");
  if (!identity.empty() && !session.TimedOut) {
    scope_.Identity = identity;
    session.TolerateTimeout = false;
    link_.PollInstrumentStatus(true);
    link_.SetIoTimeout(false, link::kDefaultIoTimeoutMs);

    ReadTriggerSource();
    const bool sweep_auto = FirstChars(Query(":TRIGger:SWEep?"), 4) == "AUTO";
    scope_.TriggerSweepAuto = sweep_auto ? 1 : 0;
    tools_.SetToolState(TriggerSweepToolId(1), sweep_auto);
    tools_.SetToolState(TriggerSweepToolId(0), !sweep_auto);
    scope_.NoiseReject = IsOne(":TRIGger:NREJect?");
    tools_.SetToolState("ID_TGNR", scope_.NoiseReject);

    const int channels = std::min<int>(scope_.ChannelCount, kMaxChannels);
    for (int n = 1; n <= channels; ++n) ReadChannel(n);
    if (scope_.HasWgen) ReadBackWgen();

    ReadTriggerEdge();
    ReadTimebaseAndAcquisition();
    ShowTriggerSourceTool();
    if (scope_.TriggerChannel >= 1 && scope_.TriggerChannel <= kMaxChannels) {
      scope_.TriggerScaleIndex = MatchTriggerScaleIndex(
          scope_.VoltsPerDivTable, scope_.Channels[scope_.TriggerChannel].Scale,
          scope_.TriggerScaleIndex);
    }
    Check(AcquireTypeToolId(Query(":ACQuire:TYPE?")));
    ReadDisplay();

    hooks_.ShowSampleRate(scope_.SampleRate);
    if (scope_.HasDvm) ReadBackDvm();
    ReadMeasureSource();
    ReadBackMath(false);
    ReadBackAnnotation(false);
  }
  ui_.SetPointer(ui::PointerShape::kDefault);
}

void StateReadback::ReadTriggerSource() {
  const std::string reply = Query(":TRIGger:EDGE:SOURce?");
  scope_.Holdoff = Number(":TRIGger:HOLDoff?");
  // A channel is asked again for its number.
  const TriggerSourceReading reading = TriggerSourceFromReply(
      FirstChars(reply, 3) == "CHA" ? Query(":TRIGger:EDGE:SOURce?") : reply);
  scope_.TriggerSource = reading.source;
  scope_.TriggerChannel = reading.channel;
}

void StateReadback::ReadChannel(int n) {
  const std::string prefix = ":CHANnel" + std::to_string(n);
  ChannelSettings& channel = scope_.Channels[n];
  channel.Inverted = text::LeadingNumber(FirstChars(Query(prefix + ":INVert?"), 1)) == 1;
  channel.Displayed = text::LeadingNumber(FirstChars(Query(prefix + ":DISPlay?"), 1)) == 1;
  tools_.SetToolState(ChannelToolId(n), channel.Displayed);
  channel.Coupling = FirstChars(Query(prefix + ":COUPling?"), 2);
  channel.ProbeAttenuation = Whole16(prefix + ":PROBe?");
  channel.BandwidthLimit = Whole16(prefix + ":BWLimit?");
  channel.Scale = Number(prefix + ":SCALe?");
  channel.Offset = Number(prefix + ":OFFSet?");
  channel.Label = WithoutQuotes(Query(prefix + ":LABel?"));
}

// Enumerations keep their previous value when the reply matches no known mnemonic, and then
// no tool is checked.
void StateReadback::ReadTriggerEdge() {
  const std::string slope = FirstChars(Query(":TRIGger:EDGE:SLOPe?"), 3);
  if (IsOneOf(slope, {"NEG", "POS", "EIT", "ALT"})) {
    scope_.TriggerSlope = slope;
    Check(TriggerSlopeToolId(slope));
  }
  const std::string coupling = FirstChars(Query(":TRIGger:EDGE:COUPLing?"), 1);
  if (IsOneOf(coupling, {"A", "D", "L"})) {
    scope_.TriggerCoupling = coupling;
    Check(TriggerCouplingToolId(coupling));
  }
  const std::string reject = FirstChars(Query(":TRIGger:EDGE:REJect?"), 1);
  if (IsOneOf(reject, {"L", "H", "O"})) {
    scope_.TriggerReject = reject;
    Check(TriggerRejectToolId(reject));
  }
  scope_.TriggerLevel = Number(":TRIGger:EDGE:LEVel?");
}

void StateReadback::ReadTimebaseAndAcquisition() {
  scope_.TimebaseScale = Number(":TIMebase:SCALe?");
  const std::string reference = FirstChars(Query(":TIMebase:REFerence?"), 1);
  if (IsOneOf(reference, {"L", "C", "R"})) {
    scope_.TimebaseReference = reference;
    Check(TimebaseReferenceToolId(reference));
  }
  const std::string mode = FirstChars(Query(":TIMebase:Mode?"), 1);
  if (IsOneOf(mode, {"M", "W", "X", "R"})) {
    scope_.TimebaseMode = mode;
    Check(TimebaseModeToolId(mode));
  }
  hooks_.ShowTimeBase(scope_.TimebaseScale);
  scope_.TimebasePosition = Number(":TIMebase:POSition?");
  const std::string type = FirstChars(Query(":ACQuire:TYPE?"), 4);
  if (IsOneOf(type, {"NORM", "AVER", "HRES", "PEAK"})) scope_.AcquireType = type;
  scope_.AcquireCount = text::LeadingInteger(Query(":ACQuire:COUNt?"));
}

void StateReadback::ShowTriggerSourceTool() {
  Check(TriggerSourceToolId(scope_.TriggerSource, scope_.TriggerChannel));
}

void StateReadback::ReadDisplay() {
  scope_.PersistenceReply = Query(":DISPlay:PERSistence?");
  scope_.VariablePersistence = "2.0";
  scope_.DisplayLabels = IsOne(":DISPlay:LABel?");
  tools_.SetToolState("ID_DISPLBL", scope_.DisplayLabels);
  const std::string tool = PersistenceToolId(scope_.PersistenceReply);
  Check(tool);
  if (tool == "ID_PERSVAR") scope_.VariablePersistence = scope_.PersistenceReply;
}

void StateReadback::ReadMeasureSource() {
  scope_.MeasureSource = Query(":MEASure:SOURce?");
  Check(MeasureSourceToolId(scope_.MeasureSource));
}

}  // namespace quarvelo::acquisition
