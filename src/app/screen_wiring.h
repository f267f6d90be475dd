// The screen drawing inside the main window: the view records it keeps for the whole run
// (markers, cursors, layout), the drawing itself, its upward needs answered by the window's
// other subsystems, and `picScreen`'s mouse events (left button 1, right button 2).
#ifndef QUARVELO_APP_SCREEN_WIRING_H_
#define QUARVELO_APP_SCREEN_WIRING_H_

#include <QImage>
#include <functional>
#include <optional>

#include "display/display_host.h"
#include "display/screen_layout.h"
#include "display/screen_view.h"
#include "display/view_state.h"

namespace quarvelo::qt {
class PictureBox;
}  // namespace quarvelo::qt

namespace quarvelo::app {

// The window's answers to the drawing's questions; each is called only while the window lives.
struct ScreenHostCalls {
  std::function<bool()> sweep_mode;
  std::function<bool()> mixed_domain;
  std::function<int()> spectrum_unit;
  std::function<std::optional<spectrum::PlanLines>(int)> plan_transform;
  std::function<void(int, int)> mixed_domain_spectrum;
  std::function<double()> reapply_bandwidth_limit;
  std::function<void(double, double)> send_fft_centre_span;
  std::function<void(int)> show_cursor_source_tool;
};

class ScreenWiring final : private display::DisplayHost {
 public:
  // `pic_screen` outlives the wiring (Qt's parent chain owns it).
  ScreenWiring(qt::PictureBox& pic_screen, QImage& pic_temp, acquisition::ScopeState& scope,
               acquisition::WaveformRecords& records, spectrum::Spectrum& spectrum,
               ui::UiServices& ui, ScreenHostCalls calls);
  ScreenWiring(const ScreenWiring&) = delete;
  ScreenWiring& operator=(const ScreenWiring&) = delete;

  display::ScreenView& View() { return view_; }
  display::ViewState& State() { return state_; }
  const display::ViewState& State() const { return state_; }
  display::ScreenLayout& Layout() { return layout_; }

  // The left cursor's height in divisions from the oscilloscope pane's centre line (positive
  // downwards), while it is placed.
  std::optional<double> FirstCursorDivisions() const;

 private:
  bool SweepMode() const override { return calls_.sweep_mode(); }
  bool MixedDomainOn() const override { return calls_.mixed_domain(); }
  int SpectrumUnit() const override { return calls_.spectrum_unit(); }
  std::optional<spectrum::PlanLines> PlanTransform(int channel) override {
    return calls_.plan_transform(channel);
  }
  void MixedDomainSpectrum(int first, int last) override {
    calls_.mixed_domain_spectrum(first, last);
  }
  double ReapplyBandwidthLimit() override { return calls_.reapply_bandwidth_limit(); }
  void SendFftCentreSpan(double centre_hz, double span_hz) override {
    calls_.send_fft_centre_span(centre_hz, span_hz);
  }
  void ShowCursorSourceTool(int channel) override { calls_.show_cursor_source_tool(channel); }
  void SurfaceChanged() override;

  qt::PictureBox& pic_screen_;
  ScreenHostCalls calls_;
  display::ViewState state_;
  display::ScreenLayout layout_;
  display::ScreenView view_;
};

}  // namespace quarvelo::app

#endif  // QUARVELO_APP_SCREEN_WIRING_H_
