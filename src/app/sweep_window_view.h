// The sweep cycle's view of the main window: the frames, `picScreen`, `lblAVGCount` and
// `pgbFFT`, and the screen drawing's view values.
#ifndef QUARVELO_APP_SWEEP_WINDOW_VIEW_H_
#define QUARVELO_APP_SWEEP_WINDOW_VIEW_H_

#include <array>

#include "app/sweep_view.h"

class QLabel;
class QProgressBar;
class QWidget;

namespace quarvelo::qt {
class PictureBox;
}  // namespace quarvelo::qt

namespace quarvelo::display {
class ScreenView;
struct ViewState;
}  // namespace quarvelo::display

namespace quarvelo::app {

// The window's widgets; Qt's parent chain owns them and they outlive the view.
struct SweepWidgets {
  QWidget* window = nullptr;
  QWidget* fra_fft = nullptr;
  QWidget* fra_visa = nullptr;
  QWidget* fra_activity = nullptr;
  qt::PictureBox* pic_screen = nullptr;
  QLabel* lbl_avg_count = nullptr;
  QProgressBar* pgb_fft = nullptr;
};

class SweepWindowView final : public SweepView {
 public:
  explicit SweepWindowView(const SweepWidgets& widgets) : widgets_(widgets) {}
  // The screen drawing the screen operations and view values go to; both outlive the view.
  void AttachScreen(display::ScreenView& screen, display::ViewState& state) {
    screen_ = &screen;
    state_ = &state;
  }

  void ShowPanels(bool fft, bool visa, bool activity) override;
  void PrepareSpectrumEntries() override;
  void ClearScreen() override;
  void DrawFrame() override;
  void ClearMarkers() override;
  void DrawStatusPanel() override;
  void RedrawScreen() override;
  void DrawChannelTrace(int channel) override;
  void DrawSpectrum(int channel) override;
  void RestoreOscilloscopePane() override;

  void ClearDrawnFlags() override;
  void MarkDrawn(int channel) override;
  int CursorChannel() const override;
  void SetCursorChannel(int channel) override;
  int DisplayedChannel() const override;
  void SetDisplayedChannel(int channel) override;
  void SetZoomCentre(double centre) override;
  void SetLastZoomMode(int mode) override;

  void ShowAverageCount(int count) override;
  void SetProgressRange(int minimum, int maximum) override;
  void SetProgressValue(double value) override;
  bool WindowMinimised() const override;

  double ZoomCentre() const;
  int LastZoomMode() const;

 private:
  SweepWidgets widgets_;
  display::ScreenView* screen_ = nullptr;
  display::ViewState* state_ = nullptr;
  std::array<bool, 5> drawn_{};
};

}  // namespace quarvelo::app

#endif  // QUARVELO_APP_SWEEP_WINDOW_VIEW_H_
