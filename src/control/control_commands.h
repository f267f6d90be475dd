// The front-panel command set: each operation turns one user action into SCPI for the
// oscilloscope, mirrors the choice into ScopeState and the toolbar, and refreshes the screen
// (a sweep, or a readback) so that it shows the instrument's new state. Numbers go into
// commands only as `text::NumberText` / `text::WholeNumberText`.
//
// Guards: channel operations ignore channels outside 1..ChannelCount, the voltmeter's need
// HasDvm, the generator's HasWgen; out-of-range arguments and unknown letters do nothing.
// The link itself drops every send while RemoteOn is false.
#ifndef QUARVELO_CONTROL_CONTROL_COMMANDS_H_
#define QUARVELO_CONTROL_CONTROL_COMMANDS_H_

#include <string>
#include <string_view>

#include "acquisition/scope_state.h"
#include "control/dispatch_targets.h"
#include "link/instrument_link.h"
#include "platform/ui/tool_host.h"
#include "platform/ui/ui_services.h"

namespace quarvelo::control {

inline constexpr double kMinimumHoldoff = 40e-9;  // seconds
inline constexpr double kMaximumHoldoff = 10;
inline constexpr double kMaximumDivisions = 4;  // offsets and levels from the centre line
inline constexpr int kDvmSettleMs = 1000;

class ControlCommands {
 public:
  ControlCommands(link::InstrumentLink& link, acquisition::ScopeState& scope, ui::UiServices& ui,
                  ui::ToolHost& tools, DispatchTargets& targets);
  ControlCommands(const ControlCommands&) = delete;
  ControlCommands& operator=(const ControlCommands&) = delete;

  // --- Channels.
  void SetChannelDisplay(int ch, bool on, bool refresh);
  void SetChannelProbe(int ch, double factor);
  void SetChannelCoupling(int ch, bool dc);
  void SetChannelBandwidthLimit(int ch, double value);
  // A V/div tool ("ID_500"): its millivolts follow "ID_".
  void SetChannelScale(int ch, std::string_view tool_id);
  void SetChannelOffset(int ch, double divisions);
  void SetChannelInvert(int ch, bool on);
  // V UP (+1) / V DN (-1) on the trigger channel, clamped to the twelve steps.
  void StepChannelScale(int step);

  // --- Trigger.
  // 1..4 channel, 5 "DIG", 6 "EXT", 7 "LINE", 8 "WGEN".
  void SetTriggerSource(int n, bool refresh);
  void SetTriggerLevel(double divisions);
  void SetTriggerSlope(char letter);     // N P E A
  void SetTriggerCoupling(char letter);  // A D L
  void SetTriggerReject(char letter);    // L H O
  void SetTriggerSweep(int mode);        // 1 auto, 0 normal
  void SetNoiseReject(bool on);
  void SetTriggerHoldoff(double seconds);

  // --- Time base, acquisition, display.
  void SetTimebaseMode(std::string_view tool_id);       // "ID_TMM" ...
  void SetTimebaseReference(std::string_view tool_id);  // "ID_TRL" ...
  void SetAcquireType(std::string_view tool_id);        // "ID_ACQUNORM" ...
  void SetPersistence(std::string_view tool_id);        // "ID_PERSINF" ...
  void Run();
  void Stop();
  void Single();
  void AutoScale();
  void Preset();

  // --- Measurements.
  void SetMeasureSource(std::string_view tool_id);  // "ID_MEASCHAN1" ...
  void Measure(std::string_view tool_id);           // "ID_MSVPP", "ID_MSVRMSACF" ...

  // --- Voltmeter.
  void SetDvmEnable(bool on, bool refresh);
  void SetDvmAutoRange(bool on);
  void SetDvmSource(std::string_view tool_id);  // "ID_DVMCH1" ...
  void SetDvmMode(std::string_view tool_id);    // "ID_DVMM1" ...

  // --- Math and the instrument's FFT.
  // "SET", "FUNC1", "FUNC2", "DISP" (with `on`), "ADD", "SUBT", "MULT", "DIV", "FFT".
  void MathCommand(std::string_view argument, bool on);
  void SetFftCenterSpan(double center_hz, double span_hz);

  // --- Generator.
  void SetWgenOutput(bool on, bool refresh);
  void WgenCommand(std::string_view argument);  // "SET", "RST", "1", "2"

  // --- Refreshes.
  void Sweep() { targets_.Sweep(true); }
  // Restarts the oscilloscope only when the last status poll found it running.
  void SweepIfRunning() { targets_.Sweep(!link_.flags().Stopped); }
  void ReadBack() { targets_.ReadBackState(); }
  void DvmRefresh() { targets_.ReadBackDvm(); }
  void DvmSettle();

 private:
  bool RemoteOn() const { return link_.session().RemoteOn; }
  bool ValidChannel(int ch) const { return ch >= 1 && ch <= scope_.ChannelCount; }
  static std::string Channel(int ch);  // ":CHANnel" + ch
  void MirrorMath();

  link::InstrumentLink& link_;
  acquisition::ScopeState& scope_;
  ui::UiServices& ui_;
  ui::ToolHost& tools_;
  DispatchTargets& targets_;
};

// The tool ID from its n-th character (counting from 1); empty when it is shorter.
std::string_view ToolIdTail(std::string_view tool_id, std::size_t n);

}  // namespace quarvelo::control

#endif  // QUARVELO_CONTROL_CONTROL_COMMANDS_H_
