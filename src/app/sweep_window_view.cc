#include "app/sweep_window_view.h"

#include <QLabel>
#include <QProgressBar>
#include <QWidget>
#include <cmath>

#include "platform/qt/picture_box.h"

namespace quarvelo::app {

void SweepWindowView::ShowPanels(bool fft, bool visa, bool activity) {
  widgets_.fra_fft->setVisible(fft);
  widgets_.fra_visa->setVisible(visa);
  widgets_.fra_activity->setVisible(activity);
}

// The screen drawing lays out the entry boxes for the spectrum view.
void SweepWindowView::PrepareSpectrumEntries() {}

void SweepWindowView::ClearScreen() { widgets_.pic_screen->Clear(); }

// The screen drawing's operations; they act once it is connected.
void SweepWindowView::ClearMarkers() {}
void SweepWindowView::DrawStatusPanel() {}
void SweepWindowView::RedrawScreen() { widgets_.pic_screen->update(); }
void SweepWindowView::DrawChannelTrace(int) {}
void SweepWindowView::DrawSpectrum(int) { widgets_.pic_screen->update(); }
void SweepWindowView::RestoreOscilloscopePane() {}

void SweepWindowView::ClearDrawnFlags() { drawn_.fill(false); }

void SweepWindowView::MarkDrawn(int channel) {
  if (channel >= 0 && channel < static_cast<int>(drawn_.size())) drawn_[channel] = true;
}

void SweepWindowView::ShowAverageCount(int count) {
  widgets_.lbl_avg_count->setText(QString::number(count));
}

void SweepWindowView::SetProgressRange(int minimum, int maximum) {
  widgets_.pgb_fft->setRange(minimum, maximum);
}

void SweepWindowView::SetProgressValue(double value) {
  widgets_.pgb_fft->setValue(static_cast<int>(std::lround(value)));
}

bool SweepWindowView::WindowMinimised() const { return widgets_.window->isMinimized(); }

}  // namespace quarvelo::app
