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

  void ShowPanels(bool fft, bool visa, bool activity) override;
  void PrepareSpectrumEntries() override;
  void ClearScreen() override;
  void ClearMarkers() override;
  void DrawStatusPanel() override;
  void RedrawScreen() override;
  void DrawChannelTrace(int channel) override;
  void DrawSpectrum(int channel) override;
  void RestoreOscilloscopePane() override;

  void ClearDrawnFlags() override;
  void MarkDrawn(int channel) override;
  int CursorChannel() const override { return cursor_channel_; }
  void SetCursorChannel(int channel) override { cursor_channel_ = channel; }
  int DisplayedChannel() const override { return displayed_channel_; }
  void SetDisplayedChannel(int channel) override { displayed_channel_ = channel; }
  void SetZoomCentre(double centre) override { zoom_centre_ = centre; }
  void SetLastZoomMode(int mode) override { last_zoom_mode_ = mode; }

  void ShowAverageCount(int count) override;
  void SetProgressRange(int minimum, int maximum) override;
  void SetProgressValue(double value) override;
  bool WindowMinimised() const override;

  double ZoomCentre() const { return zoom_centre_; }
  int LastZoomMode() const { return last_zoom_mode_; }

 private:
  SweepWidgets widgets_;
  // Kept here until the screen drawing owns them.
  int cursor_channel_ = 1;
  int displayed_channel_ = 1;
  double zoom_centre_ = 0;
  int last_zoom_mode_ = 2;
  std::array<bool, 5> drawn_{};
};

}  // namespace quarvelo::app

#endif  // QUARVELO_APP_SWEEP_WINDOW_VIEW_H_
