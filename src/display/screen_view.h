// The drawing of `picScreen`: the oscilloscope screen (graticule, traces, side panel,
// readouts, overview strip, annotation), the spectrum pane with its markers, the two mouse
// cursors, marker placement, peak search and zoom of both views. Draws into the surface's
// persistent image, in surface units of 1/15 pixel (twips at 96 dpi); `picTemp` holds the
// picture a cursor drawing is erased to.
//
// Borrows the main window's records for its lifetime; owns only the empty-frame image.
#ifndef QUARVELO_DISPLAY_SCREEN_VIEW_H_
#define QUARVELO_DISPLAY_SCREEN_VIEW_H_

#include <QFont>
#include <QImage>
#include <cstdint>
#include <string>
#include <vector>

#include "acquisition/scope_state.h"
#include "acquisition/waveform_record.h"
#include "display/display_host.h"
#include "display/screen_layout.h"
#include "display/view_state.h"
#include "platform/ui/ui_services.h"
#include "spectrum/spectrum.h"

namespace quarvelo::display {

// Mouse buttons as `CursorMouse` numbers them.
inline constexpr int kLeftButton = 1;
inline constexpr int kRightButton = 2;

class SurfacePainter;

struct ScreenRecords {
  acquisition::ScopeState& scope;
  acquisition::WaveformRecords& waveforms;
  spectrum::Spectrum& spectrum;
  ViewState& view;
  ScreenLayout& layout;
};

class ScreenView {
 public:
  // `surface` is `picScreen`'s persistent image, `pic_temp` the saved picture; both are read
  // for their size at every frame, so a resized surface lays itself out on the next redraw.
  ScreenView(QImage& surface, QImage& pic_temp, const ScreenRecords& records, DisplayHost& host,
             ui::UiServices& ui);
  ScreenView(const ScreenView&) = delete;
  ScreenView& operator=(const ScreenView&) = delete;
  ~ScreenView();

  // Frame, every displayed channel (the trigger channel last) and, with `ID_MDI` on, the
  // mixed-domain spectrum.
  void RedrawScreen();
  // Lays out the requested pane and draws graticule, overview strip and (with `draw_panel`)
  // the side panel.
  void DrawScreenFrame(bool draw_panel, bool oscilloscope_pane);
  // One channel's trace and readouts; `clear_only` restores the empty frame. False when the
  // channel could not be drawn ("DATA ERROR CH" + n is then on the status line).
  bool DrawChannelTrace(int channel, bool fit, bool clear_only);
  void DrawAnnotation();
  // The side panel alone: title, acquisition box (with the planned lines of the reference
  // channel), channels box with the trigger line, DVM box.
  void DrawStatusPanel();
  // The empty-frame picture replaces the surface's (`nullImg`).
  void ClearSurface();
  // Start-up: the empty frame without panel, `LastZoomMode` = reset, `picTemp` sized.
  void StartDisplay();

  // The spectrum pane of `channel`; `restore_only` copies `picTemp` back (erasing cursors).
  void DrawSpectrum(int channel, bool restore_only);
  // `GridTop`/`GridBottom` back to the oscilloscope pane's own values.
  void RestoreOscilloscopePane();

  void PlaceMarker(int n);  // n 0..3 for slots 1..4
  void AutoPeak();
  void ClearPeaks();
  void ClearMarkers();
  // Tool "ID_CSR" + n.
  void SelectCursorSource(const std::string& tool_id);
  // Routed by `SweepMode`: the oscilloscope-view zoom or the spectrum zoom.
  void ZoomView(int mode);
  // Centre and span in kHz.
  void SetCenterSpan(double centre_khz, double span_khz);
  // The "Set Center Frequency and Span" button: the two entry boxes in MHz.
  void SetCenterSpanFromEntries(double centre_mhz, double span_mhz);
  // One cursor update at (x, y) surface units for button 1 or 2.
  void CursorMouse(double x, double y, bool pressed, int button);

  // Mouse events of the surface, positions in pixels; buttons as `CursorMouse` numbers them
  // (0 for another button).
  void MouseDown(double x_pixels, double y_pixels, int button);
  void MouseMove(double x_pixels, double y_pixels, int button);
  void MouseUp(double x_pixels, double y_pixels, int button);

  // Cursor values other tools use: the left cursor's value ("Set Offset", "Set Level") and
  // both cursors' positions ("Set HoldOff").
  const Cursor& LeftCursor() const { return records_.view.Cursors[1]; }
  const Cursor& RightCursor() const { return records_.view.Cursors[2]; }

  // For tests: the last readout of the cursors ("[L: ...]" etc.).
  const std::string& LastReadout() const { return last_readout_; }
  // The time-per-division readout at the top of the screen, as last drawn.
  const std::string& TimeReadout() const { return time_readout_; }

  // Draws long traces column by column (false) or every segment (true); the pictures are the
  // same. For comparisons only.
  void SetEverySegment(bool every_segment) { every_segment_ = every_segment; }

 private:
  bool OnSpectrum() const;
  bool SpectrumShown() const;
  int ReferenceChannel() const;
  bool ReferenceZoomed() const;
  std::int32_t SampleCount(int channel) const;
  void Changed();
  void SaveCursorFreePicture();
  void DrawGrid(SurfacePainter& painter, double left, double top, double right, double bottom,
                int vertical_tick_divisor);
  void DrawPanel(SurfacePainter& painter);
  double DrawPanelBox(SurfacePainter& painter, double top, double bottom, const char* header);
  void PrintAcquisitionLines(SurfacePainter& painter);
  void DrawChannelLines(SurfacePainter& painter);
  void DrawDvmBox(SurfacePainter& painter);
  bool DrawTrace(int channel);
  void DrawSamples(int channel, std::int32_t first, std::int32_t last, double span, double left,
                   double right, double top, double bottom, bool store_points);
  void DrawTraceReadouts(SurfacePainter& painter, int channel, double ratio, std::int32_t first,
                         bool zoomed, double shown_span);
  void DrawTraceMarkers(SurfacePainter& painter, int channel);
  void DrawLegend(SurfacePainter& painter, const std::vector<std::string>& lines);
  void DrawAnnotationOn(SurfacePainter& painter);
  void ClearSpectrumPane(SurfacePainter& painter);
  void DrawSpectrumTrace();
  void DrawSpectrumLabels(SurfacePainter& painter, int channel);
  void DrawSpectrumMarkers(SurfacePainter& painter);
  void DrawCursors();
  bool CursorDataReady() const;
  double AreaTop() const;
  double AreaBottom() const;
  void SpectrumCursor(Cursor& cursor, double x, double y);
  bool ScopeCursor(Cursor& cursor, double x, double y);
  std::string ComposeReadouts();
  void ZoomOscilloscope(int mode);
  void ZoomSpectrum(int mode);
  // The zoom reset on the spectrum: the whole spectrum within the upper limit (0: none).
  void ShowFullSpectrum(double upper_limit_hz);
  void EraseCursors();
  int FreeMarkerSlot() const;
  double PointX(double point) const;
  double LevelY(double level) const;
  double FrequencyAt(double x) const;
  double LevelAt(double y) const;
  std::string LevelText(double level) const;

  QImage& surface_;
  QImage& pic_temp_;
  ScreenRecords records_;
  DisplayHost& host_;
  ui::UiServices& ui_;
  std::string last_readout_;
  std::string time_readout_;
  bool every_segment_ = false;
  double panel_bottom_ = 0;
  std::vector<std::int32_t> scratch_x_;  // the overview strip's points
  std::vector<std::int32_t> scratch_y_;  // lowest edge of the side panel's boxes
};

}  // namespace quarvelo::display

#endif  // QUARVELO_DISPLAY_SCREEN_VIEW_H_
