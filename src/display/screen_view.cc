// The oscilloscope screen: frame, side panel, traces, readouts and annotation.
#include "display/screen_view.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <exception>
#include <string>

#include "display/colours.h"
#include "display/format.h"
#include "display/surface_painter.h"
#include "display/trace_raster.h"

namespace quarvelo::display {
namespace {

// A holdoff above the instrument's minimum is worth showing.
constexpr double kShownHoldoff = 40e-9;

bool Finite(double value) { return std::isfinite(value); }

}  // namespace

ScreenView::ScreenView(QImage& surface, QImage& pic_temp, const ScreenRecords& records,
                       DisplayHost& host, ui::UiServices& ui)
    : surface_(surface), pic_temp_(pic_temp), records_(records), host_(host), ui_(ui) {}

ScreenView::~ScreenView() = default;

bool ScreenView::OnSpectrum() const { return !host_.SweepMode(); }

bool ScreenView::SpectrumShown() const { return !host_.SweepMode() || host_.MixedDomainOn(); }

std::int32_t ScreenView::SampleCount(int channel) const {
  if (channel < 1 || channel > acquisition::kMaxChannels) return 0;
  const auto& samples = records_.waveforms.Samples;
  const std::int32_t count = records_.waveforms.Records[channel].ByteCount;
  return std::clamp<std::int32_t>(count, 0, samples.capacity());
}

int ScreenView::ReferenceChannel() const {
  // An FFT run makes its channel the trigger source; the readback it starts with may have
  // found it so already, without the trigger-source command that moves `DisplayedChannel`.
  return OnSpectrum() ? records_.scope.TriggerChannel : records_.view.DisplayedChannel;
}

bool ScreenView::ReferenceZoomed() const {
  const int reference = ReferenceChannel();
  if (reference < 1 || reference > acquisition::kMaxChannels) return false;
  const auto& channel = records_.scope.Channels[reference];
  return channel.LastSample < SampleCount(reference) - 1 || channel.FirstSample > 0;
}

void ScreenView::Changed() { host_.SurfaceChanged(); }

void ScreenView::SaveCursorFreePicture() {
  // Into the same memory each time: a fresh copy of the surface costs page faults.
  if (pic_temp_.size() != surface_.size() || pic_temp_.format() != surface_.format() ||
      pic_temp_.bytesPerLine() != surface_.bytesPerLine()) {
    pic_temp_ = surface_.copy();
    return;
  }
  std::memcpy(pic_temp_.bits(), surface_.constBits(), surface_.sizeInBytes());
}

void ScreenView::ClearSurface() {
  surface_.fill(Qt::black);
  Changed();
}

void ScreenView::StartDisplay() {
  records_.view.LastZoomMode = kZoomReset;
  ClearSurface();
  DrawScreenFrame(false, true);
  DrawStatusPanel();
  SaveCursorFreePicture();
}

void ScreenView::RedrawScreen() {
  ViewState& view = records_.view;
  acquisition::ScopeState& scope = records_.scope;
  view.FirstTrace = true;
  const bool zoomed = ReferenceZoomed();
  DrawScreenFrame(true, true);
  const int reference = ReferenceChannel();
  const int trigger = scope.TriggerChannel;
  const std::int32_t trigger_count = SampleCount(trigger);
  const int channels = std::min<int>(scope.ChannelCount, acquisition::kMaxChannels);
  for (int c = 1; c <= channels; ++c) {
    if (c == reference || c == trigger || !scope.Channels[c].Displayed) continue;
    if (zoomed && SampleCount(c) != trigger_count) continue;
    DrawChannelTrace(c, true, false);
  }
  if (reference != trigger && reference >= 1 && reference <= channels &&
      scope.Channels[reference].Displayed)
    DrawChannelTrace(reference, true, false);
  // The trigger channel lies on top of the others.
  if (trigger >= 1 && trigger <= channels && scope.Channels[trigger].Displayed)
    DrawChannelTrace(trigger, true, false);

  const spectrum::Spectrum& spectrum = records_.spectrum;
  if (host_.MixedDomainOn()) {
    host_.MixedDomainSpectrum(spectrum.FirstPoint, spectrum.LastPoint);
    return;  // the spectrum drawing keeps the picture and draws the cursors
  }
  if (OnSpectrum() && spectrum.SpectrumReady) {
    DrawSpectrum(spectrum.SpectrumChannel, false);
    return;
  }
  SaveCursorFreePicture();
  DrawCursors();
  Changed();
}

void ScreenView::DrawGrid(SurfacePainter& painter, double left, double top, double right,
                          double bottom, int vertical_tick_divisor) {
  const double width = right - left;
  const double height = bottom - top;
  for (int i = 1; i <= 7; ++i) {
    const double y = top + i * height / 8;
    painter.Line(left, y, right, y, kGraticuleColour);
  }
  for (int i = 1; i <= 9; ++i) {
    const double x = left + i * width / 10;
    painter.Line(x, top, x, bottom, kGraticuleColour);
  }
  const double centre_x = (left + right) / 2 + 10;
  const double tick_x = records_.layout.Width / 300;
  for (int i = 1; i < vertical_tick_divisor; ++i) {
    const double y = top + i * height / vertical_tick_divisor;
    painter.Line(centre_x - tick_x, y, centre_x + tick_x, y, kGraticuleColour);
  }
  const double centre_y = (top + bottom) / 2 + 12;
  const double tick_y = records_.layout.Height / 250;
  for (int i = 1; i <= 39; ++i) {
    const double x = left + i * width / 40;
    painter.Line(x, centre_y - tick_y, x, centre_y + tick_y, kGraticuleColour);
  }
}

void ScreenView::DrawScreenFrame(bool draw_panel, bool oscilloscope_pane) {
  const bool shown = SpectrumShown();
  if (!shown || oscilloscope_pane) surface_.fill(Qt::black);
  ScreenLayout& layout = records_.layout;
  ComputeLayout(surface_.width() * kUnitsPerPixel, surface_.height() * kUnitsPerPixel, shown,
                !oscilloscope_pane, SmallTextHeight(), layout);
  {
    SurfacePainter painter(surface_);
    if (!oscilloscope_pane) ClearSpectrumPane(painter);
    layout.TraceFirstX = layout.GridLeft;
    layout.TraceLastX = layout.GridRight;
    DrawGrid(painter, layout.GridLeft, layout.GridTop, layout.GridRight, layout.GridBottom, 35);
    painter.Box(layout.GridLeft, layout.GridTop, layout.GridRight, layout.GridBottom,
                kOutlineColour);
    if (draw_panel) {
      if (oscilloscope_pane && ReferenceZoomed() && records_.view.LastZoomMode != kZoomReset) {
        DrawGrid(painter, layout.GridLeft, layout.OverviewTop, layout.GridRight,
                 layout.OverviewBottom, 16);
        painter.Box(layout.GridLeft, layout.OverviewTop, layout.GridRight, layout.OverviewBottom,
                    kOutlineColour);
      }
      if (oscilloscope_pane) DrawPanel(painter);
    }
  }
  Changed();
}

void ScreenView::ClearSpectrumPane(SurfacePainter& painter) {
  // The scope pane above and the side panel stay; a new pass replaces only the spectrum.
  const ScreenLayout& layout = records_.layout;
  const double top = layout.ScopeBottom + kUnitsPerPixel;
  const double bottom = layout.OverviewTop - kUnitsPerPixel;
  painter.FillBox(0, top, layout.GridRight + 30, bottom, Qt::black);
  painter.FillBox(layout.GridRight + 31, std::max(top, panel_bottom_ + 30), layout.Width, bottom,
                  Qt::black);
}

double ScreenView::DrawPanelBox(SurfacePainter& painter, double top, double bottom,
                                const char* header) {
  const ScreenLayout& layout = records_.layout;
  const double left = layout.GridRight + 30;
  const double right = layout.Width - 30;
  painter.SetFontSize(8);
  const double header_bottom = top + 1.5 * painter.TextHeight();
  painter.FillBox(left, top, right, bottom, Qt::black);
  painter.Box(left, top, right, bottom, kPanelOutlineColour);
  painter.FillBox(left, top, right, header_bottom, kHeaderFillColour);
  painter.Box(left, top, right, header_bottom, kPanelOutlineColour);
  painter.TextCentred((left + right) / 2, top + 0.25 * painter.TextHeight(), header,
                      kOutlineColour);
  return header_bottom;
}

void ScreenView::DrawPanel(SurfacePainter& painter) {
  ScreenLayout& layout = records_.layout;
  const double left = layout.GridRight + 30;
  const double right = layout.Width - 30;
  // The boxes move when the surface changes height: what an earlier layout drew goes first.
  painter.SetFontSize(10);
  const double large = painter.TextHeight();
  painter.SetFontSize(8);
  const double channels_box_top = (layout.FullBottom - layout.FullTop) / 2 + 30;
  const double channels_bottom =
      channels_box_top + 1.5 * painter.TextHeight() + large + 4.5 * painter.TextHeight();
  painter.FillBox(left, 30, right + kUnitsPerPixel, std::max(panel_bottom_, channels_bottom),
                  Qt::black);

  painter.SetFontSize(10);
  painter.FillBox(left, 30, right, layout.FullTop - 30, kTitleFillColour);
  painter.Box(left, 30, right, layout.FullTop - 30, kOutlineColour);
  painter.TextCentred((left + right) / 2, (30 + layout.FullTop - 30 - painter.TextHeight()) / 2,
                      "QUARVELO", kOutlineColour);

  layout.AcquisitionTop = DrawPanelBox(painter, layout.FullTop,
                                       (layout.FullBottom - layout.FullTop) / 2, "Acquisition");
  PrintAcquisitionLines(painter);

  // Header, the trigger line at 10 points and one line per channel.
  layout.ChannelsTop = DrawPanelBox(painter, channels_box_top, channels_bottom, "Channels");
  DrawChannelLines(painter);
  layout.DvmTop = channels_bottom + 30;
  panel_bottom_ = channels_bottom;
  DrawDvmBox(painter);
}

void ScreenView::PrintAcquisitionLines(SurfacePainter& painter) {
  const int reference = ReferenceChannel();
  if (SampleCount(reference) < 2) return;
  const std::optional<spectrum::PlanLines> lines = host_.PlanTransform(reference);
  if (!lines) return;
  const ScreenLayout& layout = records_.layout;
  painter.SetFontSize(8);
  const double x = layout.GridRight + 90;
  const double right = layout.Width - 30 - kUnitsPerPixel;
  const double h = painter.TextHeight();
  painter.FillBox(x, layout.AcquisitionTop + kUnitsPerPixel, right, layout.AcquisitionTop + 2.4 * h,
                  Qt::black);
  painter.Text(x, layout.AcquisitionTop + 0.2 * h, lines->first, kOutlineColour);
  painter.Text(x, layout.AcquisitionTop + 1.2 * h, lines->second, kOutlineColour);
}

void ScreenView::DrawChannelLines(SurfacePainter& painter) {
  const acquisition::ScopeState& scope = records_.scope;
  const ScreenLayout& layout = records_.layout;
  const double x = layout.GridRight + 90;
  painter.SetFontSize(10);
  const double level = scope.TriggerLevel;
  const std::string level_text =
      std::abs(level) < 1 ? FormatFixed(level * 1000, 1) + "mV" : FormatFixed(level, 2) + "V";
  const std::string digit =
      scope.TriggerSource.size() >= 5 ? scope.TriggerSource.substr(4, 1) : std::string();
  painter.Text(x, layout.ChannelsTop + 0.2 * painter.TextHeight(),
               "TRG " + digit + " " + scope.TriggerSlope + " " + level_text,
               ChannelColour(scope.TriggerChannel));
  double y = layout.ChannelsTop + 1.2 * painter.TextHeight();
  painter.SetFontSize(8);
  const int channels = std::min<int>(scope.ChannelCount, acquisition::kMaxChannels);
  for (int c = 1; c <= channels; ++c) {
    const auto& channel = scope.Channels[c];
    if (!channel.Displayed) continue;
    painter.Text(x, y, "CH" + std::to_string(c) + " " + FormatVoltage(channel.Scale) + "/",
                 ChannelColour(c));
    y += painter.TextHeight();
  }
}

void ScreenView::DrawDvmBox(SurfacePainter& painter) {
  const acquisition::ScopeState& scope = records_.scope;
  if (!scope.DvmEnabled) return;
  const ScreenLayout& layout = records_.layout;
  painter.SetFontSize(8);
  const double h = painter.TextHeight();
  const double bottom = layout.DvmTop + 1.5 * h + 2.4 * h;
  const double contents = DrawPanelBox(painter, layout.DvmTop, bottom,
                                       ("DVM CH" + std::to_string(scope.DvmSource)).c_str());
  const double x = layout.GridRight + 90;
  painter.Text(x, contents + 0.2 * h, FormatVoltage(scope.DvmReading), kOutlineColour);
  painter.Text(x, contents + 1.2 * h, FormatFrequency(scope.DvmFrequency, true), kOutlineColour);
  panel_bottom_ = bottom;
}

void ScreenView::DrawStatusPanel() {
  {
    SurfacePainter painter(surface_);
    DrawPanel(painter);
  }
  Changed();
}

bool ScreenView::DrawChannelTrace(int channel, bool fit, bool clear_only) {
  static_cast<void>(fit);  // every trace is fitted to the screen's time span
  if (clear_only) {
    EraseCursors();
    return true;
  }
  bool drawn = false;
  try {
    drawn = DrawTrace(channel);
  } catch (const std::exception&) {
    drawn = false;  // a record too large for the point tables
  }
  if (channel >= 1 && channel <= acquisition::kMaxChannels)
    records_.scope.Channels[channel].DataError = !drawn;
  if (!drawn) ui_.ShowStatus("DATA ERROR CH" + std::to_string(channel));
  Changed();
  return drawn;
}

bool ScreenView::DrawTrace(int channel) {
  if (channel < 1 || channel > acquisition::kMaxChannels) return false;
  const acquisition::ScopeState& scope = records_.scope;
  const auto& settings = scope.Channels[channel];
  const std::int32_t count = SampleCount(channel);
  const double interval = records_.waveforms.Records[channel].XIncrement;
  const int reference = ReferenceChannel();
  const bool reference_channel = channel == reference;
  const bool zoomed = reference >= 1 && reference <= acquisition::kMaxChannels &&
                      scope.Channels[reference].Displayed && ReferenceZoomed();
  std::int32_t first = settings.FirstSample;
  std::int32_t last = settings.LastSample;
  double span = last * interval;
  if (zoomed) {
    first = scope.Channels[reference].FirstSample;
    last = scope.Channels[reference].LastSample;
    span = (last - first) * records_.waveforms.Records[reference].XIncrement;
  }
  const double full_range = settings.Scale * 8;
  if (count < 2 || first < 0 || last >= count || last <= first) return false;
  if (!Finite(span) || span <= 0 || !Finite(full_range) || full_range <= 0) return false;

  ScreenLayout& layout = records_.layout;
  DrawSamples(channel, first, last, span, layout.GridLeft, layout.GridRight, layout.ScopeTop,
              layout.ScopeBottom, true);
  SurfacePainter painter(surface_);
  if (reference_channel && zoomed && records_.view.LastZoomMode != kZoomReset) {
    const double full_span = (count - 1) * interval;
    if (Finite(full_span) && full_span > 0) {
      DrawSamples(channel, 0, count - 1, full_span, layout.GridLeft, layout.GridRight,
                  layout.OverviewTop, layout.OverviewBottom, false);
      const auto time = records_.waveforms.Samples.Time(channel);
      const double width = layout.GridRight - layout.GridLeft;
      const double x0 = (time[first] - time[0]) / full_span * width + layout.GridLeft;
      const double x1 = (time[last] - time[0]) / full_span * width + layout.GridLeft;
      painter.Box(x0, layout.OverviewTop + 30, x1, layout.OverviewBottom - 30, kShownRangeColour);
    }
  }
  if (reference_channel) {
    PrintAcquisitionLines(painter);
    const double ratio = count * interval / (scope.TimebaseScale * 10);
    DrawTraceReadouts(painter, channel, ratio, first, zoomed, span);
  }
  DrawTraceMarkers(painter, channel);
  if (reference_channel) {
    DrawDvmBox(painter);
    DrawAnnotationOn(painter);
  }
  return true;
}

void ScreenView::DrawSamples(int channel, std::int32_t first, std::int32_t last, double span,
                             double left, double right, double top, double bottom,
                             bool store_points) {
  const auto& samples = records_.waveforms.Samples;
  const std::span<const double> time = samples.Time(channel);
  const std::span<const double> volts = samples.Volts(channel);
  const auto& settings = records_.scope.Channels[channel];
  const double full_range = settings.Scale * 8;
  const double x_scale = (right - left) / span;
  const double y_scale = (bottom - top) / full_range;
  // y = (F/2 - (v - offset)) * y_scale + top, folded into one multiply-add.
  const double y_base = (full_range / 2 + settings.Offset) * y_scale + top;
  const double t0 = time[first];

  // The overview strip's points go to scratch tables; the trace's to the point tables, which
  // only grow, so that a record as long as the last one reuses them.
  ScreenLayout& layout = records_.layout;
  std::vector<std::int32_t>& xs = store_points ? layout.PointX[channel] : scratch_x_;
  std::vector<std::int32_t>& ys = store_points ? layout.PointY[channel] : scratch_y_;
  const auto size = static_cast<std::size_t>(last) + 1;
  if (xs.size() < size) xs.resize(size);
  if (ys.size() < size) ys.resize(size);
  std::int32_t* const point_x = xs.data();
  std::int32_t* const point_y = ys.data();
  const double* const t = time.data();
  const double* const v = volts.data();
  // x is kept within a pane's width of the graticule, so that a wild time value cannot make a
  // line millions of pixels long; the bound comes first in each max, so that a NaN gives way.
  const double x_low = 2 * left - right;
  const double x_high = 2 * right - left;
  for (std::int32_t i = first; i <= last; ++i) {
    point_x[i] = RoundToInt(std::min(std::max(x_low, (t[i] - t0) * x_scale + left), x_high));
    point_y[i] = RoundToInt(std::min(std::max(top, y_base - v[i] * y_scale), bottom));
  }
  if (store_points) {
    layout.PointsFirst[channel] = first;
    layout.PointsLast[channel] = last;
    layout.TraceFirstX = left;
    layout.TraceLastX = (t[last] - t0) * x_scale + left;
  }

  TraceRaster raster(surface_, ChannelColour(channel).rgb());
  // Every segment is drawn as it comes while the record is short against the pane.
  const bool every_segment =
      every_segment_ || (last - first) <= 2 * (ToPixel(right) - ToPixel(left));
  // A segment is drawn when its start lies on the graticule.
  DrawPolyline(raster, point_x, point_y, first, last, RoundToInt(left), RoundToInt(right),
               every_segment);
}

void ScreenView::DrawTraceReadouts(SurfacePainter& painter, int channel, double ratio,
                                   std::int32_t first, bool zoomed, double shown_span) {
  const acquisition::ScopeState& scope = records_.scope;
  const ScreenLayout& layout = records_.layout;
  const auto time = records_.waveforms.Samples.Time(channel);
  painter.SetFontSize(8);
  const double first_time = zoomed ? time[first] * ratio : time[0] / ratio;
  painter.FillBox(layout.GridLeft, layout.FullTop - 1.2 * painter.TextHeight(),
                  (layout.GridLeft + layout.GridRight) / 2 - 30, layout.FullTop - kUnitsPerPixel,
                  Qt::black);
  painter.Text(layout.GridLeft, layout.FullTop - 1.1 * painter.TextHeight(),
               FormatTime(Finite(first_time) ? first_time : 0), kOutlineColour);

  painter.SetFontSize(10);
  std::string per_division = FormatTime(scope.TimebaseScale);
  const double shown_per_division = shown_span / 10;
  if (zoomed && shown_per_division < 0.95 * scope.TimebaseScale)
    per_division = FormatTime(shown_per_division) + "?";
  if (scope.Holdoff > kShownHoldoff) per_division += "  [Ho:" + FormatTime(scope.Holdoff) + "]";
  const double middle = (layout.GridLeft + layout.GridRight) / 2;
  const double y = std::max(0.0, (layout.FullTop - painter.TextHeight()) / 2);
  painter.FillBox(middle, y, layout.GridRight, y + painter.TextHeight(), Qt::black);
  painter.Text(middle, y, per_division, kOutlineColour);
  time_readout_ = per_division;
}

void ScreenView::DrawLegend(SurfacePainter& painter, const std::vector<std::string>& lines) {
  if (lines.size() <= 1) return;
  const ScreenLayout& layout = records_.layout;
  painter.SetFontSize(8);
  const double h = painter.TextHeight();
  const double x = layout.GridRight + 90;
  double y = std::max(panel_bottom_ + 30, layout.GridBottom - lines.size() * h);
  painter.FillBox(layout.GridRight + 31, y, layout.Width, y + lines.size() * h, Qt::black);
  for (const std::string& line : lines) {
    painter.Text(x, y, line, kOutlineColour);
    y += h;
  }
}

void ScreenView::DrawTraceMarkers(SurfacePainter& painter, int channel) {
  const MarkerSlots& markers = records_.view.Markers;
  std::vector<std::string> legend{"Markers"};
  painter.SetFontSize(8);
  for (int m = 1; m <= kMarkerCount; ++m) {
    const Marker& marker = markers[m];
    if (!marker.active || marker.channel != channel) continue;
    painter.Line(marker.x - kMarkerHalfSize, marker.y, marker.x + kMarkerHalfSize, marker.y,
                 kMarkerColour);
    painter.Line(marker.x, marker.y - kMarkerHalfSize, marker.x, marker.y + kMarkerHalfSize,
                 kMarkerColour);
    painter.Text(marker.x + kMarkerHalfSize + 30, marker.y - painter.TextHeight(),
                 "[" + std::to_string(m) + "]", kMarkerColour);
    legend.push_back("[" + std::to_string(m) + "] " + FormatTime(marker.time) + " " +
                     FormatVoltage(marker.level));
  }
  const Marker& one = markers[1];
  if (one.active && one.channel == channel) {
    for (int m = 2; m <= kMarkerCount; ++m) {
      const Marker& marker = markers[m];
      if (!marker.active || marker.channel != channel) continue;
      legend.push_back("[" + std::to_string(m) + "]-[1]=" + FormatTime(marker.time - one.time) +
                       " " + FormatVoltage(marker.level - one.level));
    }
  }
  DrawLegend(painter, legend);
}

void ScreenView::DrawAnnotation() {
  {
    SurfacePainter painter(surface_);
    DrawAnnotationOn(painter);
  }
  Changed();
}

void ScreenView::DrawAnnotationOn(SurfacePainter& painter) {
  const acquisition::ScopeState& scope = records_.scope;
  if (!scope.AnnotationOn) return;
  const ScreenLayout& layout = records_.layout;
  const double x = layout.GridLeft + 100;
  const double y = layout.GridTop + 100;
  painter.SetFontSize(8);
  const std::string& text = scope.AnnotationText;
  const double w = painter.TextWidth(text);
  const double h = painter.TextHeight();
  const QColor colour = ColourByName(scope.AnnotationColor);
  const std::string& background = scope.AnnotationBackground;
  if (background == "OPAQ") {
    painter.FillBox(x, y, x + w, y + h, Qt::black);
    painter.Text(x, y, text, colour);
  } else if (background == "INV") {
    painter.FillBox(x, y, x + w, y + h, colour);
    painter.Text(x, y, text, Qt::black);
  } else if (background == "TRAN") {
    painter.Text(x, y, text, colour);
  } else {
    painter.Text(x, y, text, painter.painter().pen().color());
  }
}

}  // namespace quarvelo::display
