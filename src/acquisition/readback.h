// Reading the oscilloscope's settings back into ScopeState, one query at a time, and showing
// them on the toolbar. The full readback runs after the link opens and after most changes;
// the four sub-readbacks run alone after commands that touch only their area.
#ifndef QUARVELO_ACQUISITION_READBACK_H_
#define QUARVELO_ACQUISITION_READBACK_H_

#include <string>
#include <string_view>

#include "acquisition/scope_state.h"
#include "acquisition/waveform_record.h"
#include "link/instrument_link.h"
#include "platform/ui/tool_host.h"
#include "platform/ui/ui_services.h"

namespace quarvelo::acquisition {

// Effects of the readback on controls that belong to layers above this one (the time-base
// combo and the sample-rate label with its engineering-unit text). The main window implements
// them.
class ReadbackHooks {
 public:
  virtual ~ReadbackHooks() = default;
  // SetComboTimeBase: the time-base combo shows the instrument's seconds per division.
  virtual void ShowTimeBase(double seconds_per_division) = 0;
  // The tool ID_SR shows the sample rate (kilosamples per second) as FormatSampleRate does.
  virtual void ShowSampleRate(double kilosamples_per_second) = 0;
};

class NoReadbackHooks final : public ReadbackHooks {
 public:
  void ShowTimeBase(double) override {}
  void ShowSampleRate(double) override {}
};

inline constexpr int kIdentifyTimeoutMs = 500;

class StateReadback {
 public:
  StateReadback(link::InstrumentLink& link, ScopeState& scope, WaveformRecords& records,
                ui::UiServices& ui, ui::ToolHost& tools, ReadbackHooks& hooks);

  void ReadBackState();
  void ReadBackAnnotation(bool all);
  void ReadBackDvm();
  void ReadBackMath(bool all);
  void ReadBackWgen();

 private:
  std::string Query(std::string_view query) { return link_.QueryString(query); }
  double Number(std::string_view query);
  std::int16_t Whole16(std::string_view query);
  bool IsOne(std::string_view query);
  // An empty ID (a value no tool shows) checks nothing.
  void Check(std::string_view tool_id) {
    if (!tool_id.empty()) tools_.SetToolState(tool_id, true);
  }

  void ReadTriggerSource();
  void ReadChannel(int n);
  void ReadTriggerEdge();
  void ReadTimebaseAndAcquisition();
  void ShowTriggerSourceTool();
  void ReadDisplay();
  void ReadMeasureSource();
  void ReadWgenShape(const std::string& prefix);
  void ReadWgenModulation(const std::string& prefix);

  link::InstrumentLink& link_;
  ScopeState& scope_;
  WaveformRecords& records_;
  ui::UiServices& ui_;
  ui::ToolHost& tools_;
  ReadbackHooks& hooks_;
};

}  // namespace quarvelo::acquisition

#endif  // QUARVELO_ACQUISITION_READBACK_H_
