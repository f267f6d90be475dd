#include "app/sweep_window_view.h"

#include <QLabel>
#include <QProgressBar>
#include <QWidget>
#include <cmath>

#include "display/screen_view.h"
#include "display/view_state.h"
#include "platform/qt/picture_box.h"

namespace quarvelo::app {

void SweepWindowView::ShowPanels(bool fft, bool visa, bool activity) {
  widgets_.fra_fft->setVisible(fft);
  widgets_.fra_visa->setVisible(visa);
  widgets_.fra_activity->setVisible(activity);
}

// The screen drawing lays out the entry boxes for the spectrum view.
void SweepWindowView::PrepareSpectrumEntries() {}

void SweepWindowView::ClearScreen() { screen_->ClearSurface(); }
void SweepWindowView::DrawFrame() { screen_->DrawScreenFrame(true, true); }

// The screen drawing's operations and view values (AttachScreen).
void SweepWindowView::ClearMarkers() { screen_->ClearMarkers(); }
void SweepWindowView::DrawStatusPanel() { screen_->DrawStatusPanel(); }
void SweepWindowView::RedrawScreen() { screen_->RedrawScreen(); }
void SweepWindowView::DrawChannelTrace(int channel) {
  screen_->DrawChannelTrace(channel, true, false);
}
void SweepWindowView::DrawSpectrum(int channel) { screen_->DrawSpectrum(channel, false); }
void SweepWindowView::RestoreOscilloscopePane() { screen_->RestoreOscilloscopePane(); }

int SweepWindowView::CursorChannel() const { return state_->CursorSourceChannel(); }
void SweepWindowView::SetCursorChannel(int channel) {
  state_->Cursors[1].channel = static_cast<std::int16_t>(channel);
  state_->Cursors[2].channel = static_cast<std::int16_t>(channel);
}
int SweepWindowView::DisplayedChannel() const { return state_->DisplayedChannel; }
void SweepWindowView::SetDisplayedChannel(int channel) {
  state_->DisplayedChannel = static_cast<std::int16_t>(channel);
}
void SweepWindowView::SetZoomCentre(double centre) { state_->ZoomCentre = centre; }
void SweepWindowView::SetLastZoomMode(int mode) { state_->LastZoomMode = mode; }
double SweepWindowView::ZoomCentre() const { return state_->ZoomCentre; }
int SweepWindowView::LastZoomMode() const { return state_->LastZoomMode; }

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
