// The main window's side of the files: the sweep's flag and operations and the view values the
// CSV files reach, and the two picture boxes the screen images use.
#ifndef QUARVELO_APP_FILES_ADAPTERS_H_
#define QUARVELO_APP_FILES_ADAPTERS_H_

#include <cstdint>

#include "app/sweep_cycle.h"
#include "app/sweep_state.h"
#include "app/sweep_view.h"
#include "files/csv_files.h"
#include "files/screen_images.h"
#include "spectrum/spectrum.h"

namespace quarvelo::qt {
class PictureBox;
}  // namespace quarvelo::qt

namespace quarvelo::app {

class WindowCsvHost final : public files::CsvHost {
 public:
  WindowCsvHost(SweepState& state, const spectrum::Spectrum& spectrum, SweepView& view,
                SweepCycle& sweep)
      : state_(state), spectrum_(spectrum), view_(view), sweep_(sweep) {}

  bool SweepMode() const override { return state_.SweepMode; }
  void SetSweepMode() override { state_.SweepMode = true; }
  std::int16_t SpectrumChannel() const override { return spectrum_.SpectrumChannel; }
  std::int16_t DisplayedChannel() const override {
    return static_cast<std::int16_t>(view_.DisplayedChannel());
  }
  void SetDisplayedChannel(std::int16_t channel) override { view_.SetDisplayedChannel(channel); }
  void SetCursorChannel(std::int16_t channel) override { view_.SetCursorChannel(channel); }
  void SetLastZoomMode(int mode) override { view_.SetLastZoomMode(mode); }
  void DrawEmptyFrame() override { view_.ClearScreen(); }
  // No restart: a sweep that stopped and digitized would replace the loaded record.
  void RunSweep() override { sweep_.ID_Sweep(false); }

 private:
  SweepState& state_;
  const spectrum::Spectrum& spectrum_;
  SweepView& view_;
  SweepCycle& sweep_;
};

// `picScreen`'s persistent image and `picKeysight`.
class WindowImagePanels final : public files::ImagePanels {
 public:
  WindowImagePanels(qt::PictureBox& screen, qt::PictureBox& panel)
      : screen_(screen), panel_(panel) {}

  const QImage& ScreenDrawing() const override;
  const QImage& PanelPicture() const override;
  void ShowInPanel(const QImage& picture) override;

 private:
  qt::PictureBox& screen_;
  qt::PictureBox& panel_;
};

}  // namespace quarvelo::app

#endif  // QUARVELO_APP_FILES_ADAPTERS_H_
