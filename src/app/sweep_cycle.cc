#include "app/sweep_cycle.h"

#include <string>

#include "app/sweep_adapters.h"
#include "link/tool_update_guard.h"
#include "spectrum/averaging.h"

namespace quarvelo::app {
namespace {

constexpr ui::Rgb kActivityGreen = ui::MakeRgb(0, 255, 0);
constexpr int kZoomReset = 2;

// Raises a busy flag for a scope and restores the default pointer on every way out.
class BusyScope {
 public:
  BusyScope(bool& flag, ui::UiServices& ui, ui::PointerShape shape) : flag_(flag), ui_(ui) {
    flag_ = true;
    ui_.SetPointer(shape);
  }
  ~BusyScope() {
    ui_.SetPointer(ui::PointerShape::kDefault);
    flag_ = false;
  }
  BusyScope(const BusyScope&) = delete;
  BusyScope& operator=(const BusyScope&) = delete;

 private:
  bool& flag_;
  ui::UiServices& ui_;
};

}  // namespace

SweepCycle::SweepCycle(const SweepParts& parts, SweepView& view, SweepCommands& commands,
                       SweepState& state)
    : parts_(parts), view_(view), commands_(commands), state_(state) {}

bool SweepCycle::Displayed(int channel) const {
  if (channel < 1 || channel > acquisition::kMaxChannels) return false;
  return parts_.scope.Channels[static_cast<std::size_t>(channel)].Displayed;
}

void SweepCycle::ID_Sweep(bool restart) {
  if (state_.SweepBusy) return;
  BusyScope busy(state_.SweepBusy, parts_.ui, ui::PointerShape::kHourglass);
  state_.SweepMode = true;

  if (commands_.MixedDomain()) {
    view_.ShowPanels(/*fft=*/true, /*visa=*/false, /*activity=*/true);
    view_.PrepareSpectrumEntries();
  } else {
    view_.ShowPanels(/*fft=*/false, /*visa=*/true, /*activity=*/true);
  }
  parts_.ui.ShowStatus("");
  view_.ClearScreen();
  view_.ClearMarkers();

  link::InstrumentSession& session = parts_.link.session();
  if (session.RemoteOn) parts_.readback.ReadBackState();

  view_.SetLastZoomMode(kZoomReset);
  // The next FFT run starts its shown range afresh.
  parts_.spectrum.Last.sample_rate = 0;
  view_.DrawStatusPanel();
  view_.ClearDrawnFlags();
  view_.SetCursorChannel(1);
  if (session.TimedOut) return;

  if (session.RemoteOn) {
    if (!SweepOnline(restart)) return;
  } else {
    SweepOffline();
  }
  parts_.ui.SetActivityColour(kActivityGreen);
}

bool SweepCycle::CaptureForSweep(int channel, bool restart, bool& first) {
  if (!Displayed(channel) || parts_.link.flags().CaptureBusy) return true;
  parts_.capture.CaptureChannel(static_cast<std::int16_t>(channel), /*useBins=*/true,
                                /*stopFirst=*/first && restart,
                                first ? acquisition::kDigitizeAll : acquisition::kDigitizeChannel);
  if (Interrupted()) return false;
  view_.SetCursorChannel(channel);
  first = false;
  return true;
}

bool SweepCycle::Interrupted() const {
  // A time-out the link tolerates sets TimedOut; any other VISA failure closes the link.
  const link::InstrumentSession& session = parts_.link.session();
  return session.TimedOut || !session.RemoteOn;
}

bool SweepCycle::SweepOnline(bool restart) {
  acquisition::ScopeState& scope = parts_.scope;
  const int trigger = scope.TriggerChannel;
  // The voltmeter's own measurement would otherwise disturb the capture of another channel.
  const bool dvm_paused = scope.HasDvm && scope.DvmEnabled && scope.DvmSource != trigger;
  if (dvm_paused) commands_.SetDvmEnable(false);

  bool first = true;
  for (int n = 1; n <= scope.ChannelCount; ++n) {
    if (n == trigger) continue;
    if (!CaptureForSweep(n, restart, first)) return false;
  }
  if (!CaptureForSweep(trigger, restart, first)) return false;
  if (dvm_paused) commands_.SetDvmEnable(true);

  spectrum::Spectrum& spectrum = parts_.spectrum;
  view_.SetDisplayedChannel(trigger);
  spectrum.FirstPoint = 0;
  spectrum.LastPoint = trigger >= 1 && trigger <= acquisition::kMaxChannels
                           ? parts_.records.Records[static_cast<std::size_t>(trigger)].ByteCount - 1
                           : -1;
  view_.SetZoomCentre((spectrum.FirstPoint + spectrum.LastPoint) / 2.0);
  view_.RedrawScreen();

  link::ToolUpdateGuard guard(scope.ToolUpdateInProgress);
  if (parts_.link.flags().RunBit == 1) {
    parts_.link.SendCommand(":RUN");
    parts_.tools.SetToolState("ID_Run", true);
  }
  // The cursor-source tools are a group: the cursors' channel down, the others up.
  for (int n = 1; n <= acquisition::kMaxChannels; ++n) {
    parts_.tools.SetToolState("ID_CSR" + std::to_string(n), n == view_.CursorChannel());
  }
  ShowSampleRateText(parts_.tools, scope.SampleRate);
  return true;
}

void SweepCycle::SweepOffline() {
  acquisition::ScopeState& scope = parts_.scope;
  const int channel = view_.DisplayedChannel();
  if (channel < 1 || channel > acquisition::kMaxChannels) return;
  scope.TriggerChannel = static_cast<std::int16_t>(channel);
  scope.TriggerSource = "CHAN" + std::to_string(channel);
  // The file's time base and sample rate were put into ScopeState when it was opened.
  spectrum::Spectrum& spectrum = parts_.spectrum;
  spectrum.FirstPoint = 0;
  spectrum.LastPoint = parts_.records.Records[static_cast<std::size_t>(channel)].ByteCount - 1;
  view_.RedrawScreen();
  if (commands_.MixedDomain() && Displayed(channel)) {
    parts_.analyzer.MDISpectrum(spectrum.FirstPoint, spectrum.LastPoint, commands_.FftSettings());
  }
  view_.SetZoomCentre((spectrum.FirstPoint + spectrum.LastPoint) / 2.0);
  view_.MarkDrawn(channel);
}

void SweepCycle::FftRun(std::int16_t channel) {
  acquisition::ScopeState& scope = parts_.scope;
  if (channel < 1 || channel > scope.ChannelCount) return;
  if (state_.FftBusy) return;
  BusyScope busy(state_.FftBusy, parts_.ui, ui::PointerShape::kHourglass);

  state_.SweepMode = false;
  commands_.PrepareFftTools();
  view_.ShowPanels(/*fft=*/true, /*visa=*/false, /*activity=*/false);
  view_.PrepareSpectrumEntries();

  const bool remote_on = parts_.link.session().RemoteOn;
  if (remote_on) parts_.readback.ReadBackState();
  state_.StopRequested = false;
  view_.ClearMarkers();
  view_.SetLastZoomMode(kZoomReset);

  if (remote_on) {
    AverageOnline(channel);
  } else {
    ComputeOffline(commands_.FftSettings());
  }
}

void SweepCycle::ResetShownRange(int channel) {
  spectrum::BeginAveragingPass(parts_.spectrum, state_.AvgIndex, channel, parts_.scope.SampleRate);
}

void SweepCycle::AverageOnline(int channel) {
  acquisition::ScopeState& scope = parts_.scope;
  const spectrum::FftSettings settings = commands_.FftSettings();
  view_.ClearScreen();
  view_.DrawFrame();
  const std::string source = "CHAN" + std::to_string(channel);
  for (int k = 1; k <= settings.AverageCount && !state_.StopRequested; ++k) {
    state_.AvgIndex = static_cast<std::int16_t>(k);
    view_.ShowAverageCount(k);
    parts_.ui.ProcessPendingEvents();

    if (!Displayed(channel)) commands_.SetChannelDisplay(channel, true);
    if (scope.TriggerSource != source) commands_.SetTriggerSource(channel);
    view_.DrawStatusPanel();
    parts_.capture.CaptureChannel(static_cast<std::int16_t>(channel), /*useBins=*/false,
                                  /*stopFirst=*/true, acquisition::kDigitizeChannel);
    if (Interrupted()) break;
    view_.DrawChannelTrace(channel);
    // Plan the transform for the record just captured: its length may differ from the last.
    if (!parts_.analyzer.PlanTransform(channel, /*oscilloscope_only=*/false, settings)) break;
    ResetShownRange(channel);
    parts_.analyzer.ComputeSpectrum(channel, 1, settings);
  }
  ConfigureMathFft(channel);
}

void SweepCycle::ConfigureMathFft(int channel) {
  acquisition::ScopeState& scope = parts_.scope;
  const std::string& prefix = scope.MathPrefix;
  parts_.link.SendCommand(prefix + ":DISPlay 1");
  parts_.link.SendCommand(prefix + ":SOURce1 CHAN" + std::to_string(channel));
  parts_.link.SendCommand(prefix + ":OPERation FFT");
  parts_.readback.ReadBackState();
  ShowSampleRateText(parts_.tools, scope.SampleRate);
}

void SweepCycle::ComputeOffline(const spectrum::FftSettings& settings) {
  const int channel = view_.DisplayedChannel();
  if (channel < 1 || channel > acquisition::kMaxChannels) return;
  state_.AvgIndex = 1;
  view_.ShowAverageCount(1);
  if (!parts_.analyzer.PlanTransform(channel, /*oscilloscope_only=*/false, settings)) return;
  parts_.spectrum.Last.valid = false;  // a file's record always shows its whole spectrum
  ResetShownRange(channel);
  spectrum::FftSettings single = settings;
  single.AverageCount = 1;
  parts_.analyzer.ComputeSpectrum(channel, 1, single);
}

void SweepCycle::RefreshTick() { parts_.link.PollInstrumentStatus(state_.SweepMode); }

void SweepCycle::SingleTick() { parts_.link.CheckSingleDone(state_.SweepMode); }

}  // namespace quarvelo::app
