// The spectrum pane, the mouse cursors, markers, peak search and zoom of both views.
#include <algorithm>
#include <cmath>
#include <cstring>
#include <string>

#include "display/colours.h"
#include "display/format.h"
#include "display/screen_view.h"
#include "display/surface_painter.h"
#include "display/trace_raster.h"

namespace quarvelo::display {
namespace {

// Below any level a spectrum can have; the peak searches start from it.
constexpr double kLowestLevel = -5000;
// Half the width of the spectrum cursor's snap range, surface units.
constexpr double kSnapHalfWidth = 15;

std::int32_t RoundHalfEven(double value) { return static_cast<std::int32_t>(std::lrint(value)); }

// A number as plain text: "10", "12.5".
std::string PlainNumber(double value) {
  std::string text = FormatFixed(value, 6);
  if (text.find('.') != std::string::npos) {
    while (text.back() == '0') text.pop_back();
    if (text.back() == '.') text.pop_back();
  }
  return text == "-0" ? "0" : text;
}

}  // namespace

double ScreenView::PointX(double point) const {
  const ScreenLayout& layout = records_.layout;
  const spectrum::Spectrum& s = records_.spectrum;
  return layout.GridLeft + (layout.GridRight - layout.GridLeft) * (point - s.FirstPoint) /
                               (s.LastPoint - s.FirstPoint);
}

double ScreenView::LevelY(double level) const {
  const ScreenLayout& layout = records_.layout;
  const spectrum::Spectrum& s = records_.spectrum;
  return layout.GridTop +
         (s.LevelTop - level) / (s.LevelTop - s.LevelBottom) * (layout.GridBottom - layout.GridTop);
}

double ScreenView::FrequencyAt(double x) const {
  const ScreenLayout& layout = records_.layout;
  const spectrum::Spectrum& s = records_.spectrum;
  return s.StartFrequency + (x - layout.GridLeft) / (layout.GridRight - layout.GridLeft) *
                                (s.StopFrequency - s.StartFrequency);
}

double ScreenView::LevelAt(double y) const {
  const ScreenLayout& layout = records_.layout;
  const spectrum::Spectrum& s = records_.spectrum;
  return s.LevelTop -
         (y - layout.GridTop) / (layout.GridBottom - layout.GridTop) * (s.LevelTop - s.LevelBottom);
}

std::string ScreenView::LevelText(double level) const {
  const int unit = host_.SpectrumUnit();
  if (unit == kUnitDbv) return FormatFixed(level, 2) + "dBV";
  if (unit == kUnitDbm) return FormatFixed(level, 2) + "dBm";
  return FormatVoltage(level);
}

void ScreenView::RestoreOscilloscopePane() {
  ScreenLayout& layout = records_.layout;
  layout.GridTop = layout.ScopeTop;
  layout.GridBottom = layout.ScopeBottom;
}

void ScreenView::DrawSpectrum(int channel, bool restore_only) {
  if (restore_only) {
    EraseCursors();
    return;
  }
  DrawScreenFrame(true, false);
  DrawSpectrumTrace();
  {
    SurfacePainter painter(surface_);
    DrawSpectrumLabels(painter, channel);
    DrawSpectrumMarkers(painter);
    DrawAnnotationOn(painter);
  }
  SaveCursorFreePicture();
  DrawCursors();
  Changed();
}

void ScreenView::DrawSpectrumTrace() {
  const spectrum::Spectrum& s = records_.spectrum;
  const std::int32_t first = s.FirstPoint;
  const std::int32_t last = s.LastPoint;
  if (first < 0 || last <= first || static_cast<std::size_t>(last) >= s.SpectrumLevel.size() ||
      !(s.LevelTop > s.LevelBottom))
    return;
  const ScreenLayout& layout = records_.layout;
  const double x_scale = (layout.GridRight - layout.GridLeft) / (last - first);
  const double y_scale = (layout.GridBottom - layout.GridTop) / (s.LevelTop - s.LevelBottom);
  const auto size = static_cast<std::size_t>(last) + 1;
  if (scratch_x_.size() < size) scratch_x_.resize(size);
  if (scratch_y_.size() < size) scratch_y_.resize(size);
  std::int32_t* const x = scratch_x_.data();
  std::int32_t* const y = scratch_y_.data();
  const double* const level = s.SpectrumLevel.data();
  const double top = layout.GridTop;
  const double bottom = layout.GridBottom;
  for (std::int32_t p = first; p <= last; ++p) {
    x[p] = RoundToInt(layout.GridLeft + (p - first) * x_scale);
    // The bound first: a level of -inf or NaN lands on an edge.
    y[p] = RoundToInt(std::min(std::max(top, top + (s.LevelTop - level[p]) * y_scale), bottom));
  }
  TraceRaster raster(surface_, kSpectrumColour.rgb());
  const bool every_segment = every_segment_ || (last - first) <= 2 * (ToPixel(layout.GridRight) -
                                                                      ToPixel(layout.GridLeft));
  DrawPolyline(raster, x, y, first, last, x[first], x[last], every_segment);
}

void ScreenView::DrawSpectrumLabels(SurfacePainter& painter, int channel) {
  const spectrum::Spectrum& s = records_.spectrum;
  const ScreenLayout& layout = records_.layout;
  painter.SetFontSize(8);
  const double y = layout.GridBottom + 0.1 * painter.TextHeight();
  painter.Text(layout.GridLeft, y, FormatFrequency(s.StartFrequency, true), kOutlineColour);
  painter.TextRight(layout.GridRight, y, FormatFrequency(s.StopFrequency, true), kOutlineColour);
  painter.TextCentred((layout.GridLeft + layout.GridRight) / 2, y,
                      FormatFrequency((s.StartFrequency + s.StopFrequency) / 2, true),
                      kOutlineColour);

  const int unit = host_.SpectrumUnit();
  const double range = s.LevelTop - s.LevelBottom;
  std::string scale;
  if (unit == kUnitVoltsRms) {
    const double half = channel >= 1 && channel <= acquisition::kMaxChannels
                            ? records_.scope.Channels[channel].Scale / 2
                            : 0;
    scale = half < 1 ? FormatFixed(half * 1000, 1) + "mV RMS/" : FormatFixed(half, 1) + "V RMS/";
  } else {
    scale = PlainNumber(range / 8) + (unit == kUnitDbm ? "dBm/" : "dBV/");
  }
  painter.SetFontSize(10);
  painter.Text(layout.GridLeft, layout.GridTop - 1.05 * painter.TextHeight(), scale,
               kSpectrumColour);

  painter.SetFontSize(8);
  for (int k = 0; k <= 8; ++k) {
    double value = 0;
    if (unit == kUnitVoltsRms) {
      value = range * (8 - k) / 8;
      if (s.LevelTop / 8 < 1) value *= 1000;
    } else {
      value = s.LevelTop - k * range / 8;
    }
    const std::string label = FormatFixed(value, 1);
    const double grid_y = layout.GridTop + k * (layout.GridBottom - layout.GridTop) / 8;
    painter.Text(layout.GridLeft - 1.1 * painter.TextWidth(label),
                 grid_y - painter.TextHeight() / 2, label, kSpectrumColour);
  }
}

void ScreenView::DrawSpectrumMarkers(SurfacePainter& painter) {
  const MarkerSlots& markers = records_.view.Markers;
  const ScreenLayout& layout = records_.layout;
  painter.SetFontSize(8);
  std::vector<std::string> legend{"Markers"};
  std::array<double, kMarkerCount + 1> levels{};
  for (int m = 1; m <= kMarkerCount; ++m) {
    const Marker& marker = markers[m];
    if (!marker.active) continue;
    painter.Line(marker.x - kMarkerHalfSize, marker.y, marker.x + kMarkerHalfSize, marker.y,
                 kMarkerColour);
    painter.Line(marker.x, marker.y - kMarkerHalfSize, marker.x, marker.y + kMarkerHalfSize,
                 kMarkerColour);
    const std::string label = "[" + std::to_string(m) + "]";
    double label_x = marker.x + kMarkerHalfSize + 30;
    if (label_x + painter.TextWidth(label) > layout.GridRight)
      label_x = marker.x - kMarkerHalfSize - 30 - painter.TextWidth(label);
    painter.Text(label_x, marker.y - painter.TextHeight(), label, kMarkerColour);
    levels[m] = LevelAt(marker.y);
    legend.push_back(label + " " + FormatFrequency(FrequencyAt(marker.x), true) + " " +
                     LevelText(levels[m]));
  }
  if (markers[1].active) {
    for (int m = 2; m <= kMarkerCount; ++m) {
      if (!markers[m].active) continue;
      legend.push_back("[" + std::to_string(m) + "]-[1]=" + LevelText(levels[m] - levels[1]));
    }
  }
  DrawLegend(painter, legend);
}

// Cursors.

double ScreenView::AreaTop() const {
  return OnSpectrum() ? records_.layout.GridTop : records_.layout.ScopeTop;
}

double ScreenView::AreaBottom() const {
  return OnSpectrum() ? records_.layout.GridBottom : records_.layout.ScopeBottom;
}

bool ScreenView::CursorDataReady() const {
  const ScreenLayout& layout = records_.layout;
  const spectrum::Spectrum& s = records_.spectrum;
  if (!(layout.GridRight > layout.GridLeft) || s.FirstPoint == s.LastPoint) return false;
  if (OnSpectrum()) {
    const int c = s.SpectrumChannel;
    return s.SpectrumReady && c >= 1 && c <= acquisition::kMaxChannels &&
           records_.scope.Channels[c].Displayed && SampleCount(c) > 0 &&
           s.LastPoint > s.FirstPoint &&
           static_cast<std::size_t>(s.LastPoint) < s.SpectrumLevel.size();
  }
  const int c = records_.view.CursorSourceChannel();
  return c >= 1 && c <= acquisition::kMaxChannels && records_.scope.Channels[c].Displayed &&
         SampleCount(c) > 0 && layout.PointsLast[c] >= layout.PointsFirst[c];
}

void ScreenView::SpectrumCursor(Cursor& cursor, double x, double y) {
  const ScreenLayout& layout = records_.layout;
  const spectrum::Spectrum& s = records_.spectrum;
  const double points_per_unit =
      (s.LastPoint - s.FirstPoint) / (layout.GridRight - layout.GridLeft);
  if (records_.view.MouseHeld) {
    std::int32_t lo =
        RoundHalfEven((x - kSnapHalfWidth - layout.GridLeft) * points_per_unit + s.FirstPoint - 1);
    std::int32_t hi =
        RoundHalfEven((x + kSnapHalfWidth - layout.GridLeft) * points_per_unit + s.FirstPoint + 1);
    hi = std::min(hi, s.LastPoint);
    lo = std::max(lo, 0);
    hi = std::max(hi, lo);
    double best = kLowestLevel;
    std::int32_t best_point = lo;
    for (std::int32_t p = lo; p <= hi; ++p) {
      if (s.SpectrumLevel[p] > best) {
        best = s.SpectrumLevel[p];
        best_point = p;
      }
    }
    cursor.index = best_point;
    records_.view.LastPointerFrequency = FrequencyAt(x);
  } else {
    cursor.index = RoundHalfEven((x - layout.GridLeft) * points_per_unit + s.FirstPoint);
  }
  cursor.position = FrequencyAt(x);
  cursor.value = LevelAt(y);
  cursor.x_text = FormatFrequency(cursor.position, true);
  cursor.value_text = FormatLevel(cursor.value, host_.SpectrumUnit());
}

bool ScreenView::ScopeCursor(Cursor& cursor, double x, double y) {
  static_cast<void>(y);
  const int c = cursor.channel;
  const ScreenLayout& layout = records_.layout;
  const std::vector<std::int32_t>& xs = layout.PointX[c];
  const std::int32_t first = layout.PointsFirst[c];
  const std::int32_t last = std::min<std::int32_t>(layout.PointsLast[c], SampleCount(c) - 1);
  if (last < first || static_cast<std::size_t>(last) >= xs.size()) return false;
  // The drawn points run left to right: the nearest is beside the first at or right of x.
  const auto begin = xs.begin() + first;
  const auto end = xs.begin() + last + 1;
  auto it = std::lower_bound(begin, end, x);
  if (it == end) --it;
  if (it != begin && std::abs(*(it - 1) - x) <= std::abs(*it - x)) --it;
  // Of equal x, the first sample of that column.
  it = std::lower_bound(begin, it + 1, *it);
  const std::int32_t index = static_cast<std::int32_t>(it - xs.begin());
  const auto& samples = records_.waveforms.Samples;
  cursor.index = index;
  cursor.position = samples.Time(c)[index];
  cursor.value = samples.Volts(c)[index];
  cursor.x_text = FormatTime(cursor.position);
  cursor.value_text = FormatVoltage(cursor.value);
  records_.view.ZoomCentre = index;
  return true;
}

std::string ScreenView::ComposeReadouts() {
  const Cursor& left = records_.view.Cursors[1];
  const Cursor& right = records_.view.Cursors[2];
  std::string text;
  if (left.shown) text += "[L: " + left.x_text + " " + left.value_text + "]";
  if (right.shown) {
    if (!text.empty()) text += "  ";
    text += "[R: " + right.x_text + " " + right.value_text + "]";
  }
  if (left.shown && right.shown) {
    std::string dx;
    std::string dv;
    if (OnSpectrum()) {
      dx = FormatFrequency(right.position - left.position, true);
      dv = FormatLevel(right.value - left.value, host_.SpectrumUnit());
    } else {
      const double dt = right.position - left.position;
      dx = FormatTime(dt);
      if (dt != 0) dx += " " + FormatFrequency(1 / dt, true);
      dv = FormatVoltage(right.value - left.value);
    }
    text += "  [D: " + dx + " " + dv + "]";
  }
  return text;
}

void ScreenView::DrawCursors() {
  const ViewState& view = records_.view;
  if (!view.Cursors[1].shown && !view.Cursors[2].shown) {
    last_readout_.clear();
    return;
  }
  const ScreenLayout& layout = records_.layout;
  const spectrum::Spectrum& s = records_.spectrum;
  const bool on_spectrum = OnSpectrum();
  SurfacePainter painter(surface_);
  painter.SetFontSize(8);
  const double h = painter.TextHeight();
  double y = AreaTop() + 100;
  for (int k = 1; k <= 2; ++k) {
    const Cursor& cursor = view.Cursors[k];
    if (!cursor.shown) continue;
    const QColor colour = k == 1 ? kLeftCursorColour : kRightCursorColour;
    double mark_x = cursor.x;
    double mark_y = cursor.y;
    if (on_spectrum && cursor.index >= 0 &&
        static_cast<std::size_t>(cursor.index) < s.SpectrumLevel.size()) {
      mark_x = PointX(cursor.index);
      mark_y = std::clamp(LevelY(s.SpectrumLevel[cursor.index]), layout.GridTop, layout.GridBottom);
    } else if (!on_spectrum) {
      const int c = cursor.channel;
      if (cursor.index >= layout.PointsFirst[c] && cursor.index <= layout.PointsLast[c]) {
        mark_x = layout.PointX[c][cursor.index];
        mark_y = layout.PointY[c][cursor.index];
      }
    }
    painter.Line(mark_x, AreaTop(), mark_x, AreaBottom(), colour);
    painter.Line(mark_x - kMarkerHalfSize / 2, mark_y, mark_x + kMarkerHalfSize / 2, mark_y,
                 colour);
    const std::string readout =
        std::string(k == 1 ? "[L: " : "[R: ") + cursor.x_text + " " + cursor.value_text + "]";
    painter.TextRight(layout.GridRight - 100, y, readout, colour);
    y += h;
  }
  last_readout_ = ComposeReadouts();
  const auto d = last_readout_.find("[D:");
  if (d != std::string::npos)
    painter.TextRight(layout.GridRight - 100, y, last_readout_.substr(d), kOutlineColour);
}

void ScreenView::EraseCursors() {
  if (pic_temp_.size() != surface_.size()) {
    // The window was resized since the last drawing: draw afresh instead.
    if (OnSpectrum() && !host_.MixedDomainOn() && records_.spectrum.SpectrumReady)
      DrawSpectrum(records_.spectrum.SpectrumChannel, false);
    else
      RedrawScreen();
    return;
  }
  if (surface_.format() == pic_temp_.format() &&
      surface_.bytesPerLine() == pic_temp_.bytesPerLine())
    std::memcpy(surface_.bits(), pic_temp_.constBits(), pic_temp_.sizeInBytes());
  else
    surface_ = pic_temp_.convertToFormat(surface_.format());
  Changed();
}

void ScreenView::CursorMouse(double x, double y, bool pressed, int button) {
  static_cast<void>(pressed);  // `MouseHeld` says whether a button is down
  if (button != kLeftButton && button != kRightButton) return;
  if (!CursorDataReady()) return;
  const ScreenLayout& layout = records_.layout;
  if (x < layout.GridLeft || x > layout.GridRight) return;
  Cursor& cursor = records_.view.Cursors[button];
  if (y < AreaTop() || y > AreaBottom()) {
    cursor.shown = false;
  } else {
    cursor.x = x;
    cursor.y = y;
    if (OnSpectrum()) {
      SpectrumCursor(cursor, x, y);
      cursor.shown = true;
    } else {
      cursor.shown = ScopeCursor(cursor, x, y);
    }
  }
  DrawCursors();
  Changed();
  if (records_.view.MouseHeld)
    ui_.ShowStatus(last_readout_);
  else
    ui_.ProcessPendingEvents();
}

void ScreenView::MouseDown(double x_pixels, double y_pixels, int button) {
  records_.view.MouseHeld = true;
  EraseCursors();
  CursorMouse(x_pixels * kUnitsPerPixel, y_pixels * kUnitsPerPixel, true, button);
}

void ScreenView::MouseMove(double x_pixels, double y_pixels, int button) {
  if (!records_.view.MouseHeld) return;
  EraseCursors();
  CursorMouse(x_pixels * kUnitsPerPixel, y_pixels * kUnitsPerPixel, true, button);
}

void ScreenView::MouseUp(double x_pixels, double y_pixels, int button) {
  static_cast<void>(x_pixels);
  static_cast<void>(y_pixels);
  static_cast<void>(button);
  records_.view.MouseHeld = false;
  EraseCursors();
  DrawCursors();
  Changed();
}

// Markers and peaks.

int ScreenView::FreeMarkerSlot() const {
  for (int m = 1; m <= kMarkerCount; ++m)
    if (!records_.view.Markers[m].active) return m;
  return 0;
}

void ScreenView::PlaceMarker(int n) {
  ui_.ShowStatus("");
  if (n < 0 || n >= kMarkerCount || !CursorDataReady()) return;
  const Cursor& left = records_.view.Cursors[1];
  const ScreenLayout& layout = records_.layout;
  if (!left.shown || left.x < layout.TraceFirstX || left.x > layout.TraceLastX ||
      left.y < AreaTop() || left.y > AreaBottom())
    return;
  Marker& marker = records_.view.Markers[n + 1];
  marker = Marker{};
  marker.active = true;
  marker.x = static_cast<float>(left.x);
  marker.y = static_cast<float>(left.y);
  if (OnSpectrum()) {
    marker.frequency = FrequencyAt(left.x);
    marker.level = LevelAt(left.y);
    marker.index = left.index;
    DrawStatusPanel();
    DrawSpectrum(records_.spectrum.SpectrumChannel, false);
  } else {
    marker.time = left.position;
    marker.level = left.value;
    marker.index = left.index;
    marker.channel = left.channel;
    const int c = left.channel;
    if (left.index >= layout.PointsFirst[c] && left.index <= layout.PointsLast[c]) {
      marker.x = static_cast<float>(layout.PointX[c][left.index]);
      marker.y = static_cast<float>(layout.PointY[c][left.index]);
    }
    DrawStatusPanel();
    RedrawScreen();
  }
}

void ScreenView::AutoPeak() {
  if (!CursorDataReady()) return;
  const Cursor& left = records_.view.Cursors[1];
  const ScreenLayout& layout = records_.layout;
  if (!left.shown || left.x < layout.TraceFirstX || left.x > layout.TraceLastX ||
      left.y < AreaTop() || left.y > AreaBottom())
    return;
  const int slot = FreeMarkerSlot();
  if (OnSpectrum()) {
    const spectrum::Spectrum& s = records_.spectrum;
    const double f0 = FrequencyAt(left.x);
    double best = kLowestLevel;
    std::int32_t peak = -1;
    const std::int32_t end =
        std::min<std::int32_t>(s.LastPoint, static_cast<std::int32_t>(s.SpectrumFrequency.size()));
    for (std::int32_t p = std::max(s.FirstPoint, 0); p < end; ++p) {
      if (s.SpectrumFrequency[p] >= f0 && s.SpectrumLevel[p] > best) {
        best = s.SpectrumLevel[p];
        peak = p;
      }
    }
    if (slot != 0 && peak >= 0) {
      Marker& marker = records_.view.Markers[slot];
      marker = Marker{};
      marker.active = true;
      marker.frequency = s.SpectrumFrequency[peak];
      marker.level = best;
      marker.index = peak;
      marker.x = static_cast<float>(PointX(peak));
      marker.y = static_cast<float>(LevelY(best));
    }
    RedrawScreen();
    return;
  }
  const int c = left.channel;
  const std::int32_t count = SampleCount(c);
  const std::int32_t last = std::min(records_.scope.Channels[c].LastSample, count - 1);
  const std::span<const double> volts = records_.waveforms.Samples.Volts(c);
  const std::int32_t start = left.index;
  if (start < 0 || start > last) return;
  const double sign = volts[start] >= 0 ? 1 : -1;
  double best = sign * volts[start];
  std::int32_t best_index = start;
  const std::int32_t patience = (count - 1) / 20;
  std::int32_t misses = 0;
  for (std::int32_t i = start + 1; i <= last; ++i) {
    if (sign * volts[i] > best) {
      best = sign * volts[i];
      best_index = i;
      misses = 0;
    } else if (++misses > patience) {
      break;
    }
  }
  if (slot != 0) {
    Marker& marker = records_.view.Markers[slot];
    marker = Marker{};
    marker.active = true;
    marker.time = records_.waveforms.Samples.Time(c)[best_index];
    marker.level = volts[best_index];
    marker.index = best_index;
    marker.channel = static_cast<std::int16_t>(c);
    if (best_index >= layout.PointsFirst[c] && best_index <= layout.PointsLast[c]) {
      marker.x = static_cast<float>(layout.PointX[c][best_index]);
      marker.y = static_cast<float>(layout.PointY[c][best_index]);
    }
  }
  DrawStatusPanel();
  RedrawScreen();
}

void ScreenView::ClearMarkers() {
  for (Marker& marker : records_.view.Markers) marker.active = false;
  for (Cursor& cursor : records_.view.Cursors) cursor.shown = false;
}

void ScreenView::ClearPeaks() {
  ClearMarkers();
  DrawStatusPanel();
  if (OnSpectrum() && !host_.MixedDomainOn())
    DrawSpectrum(records_.spectrum.SpectrumChannel, false);
  else
    RedrawScreen();
}

void ScreenView::SelectCursorSource(const std::string& tool_id) {
  if (tool_id.size() < 7) return;
  const int n = tool_id[6] - '0';
  if (n < 1 || n > acquisition::kMaxChannels) return;
  ViewState& view = records_.view;
  const int current = view.CursorSourceChannel();
  if (n == current) return;
  if (!records_.scope.Channels[n].Displayed) {
    host_.ShowCursorSourceTool(current);
    return;
  }
  if (SampleCount(n) == 0) return;
  ClearMarkers();
  view.Cursors[1].channel = static_cast<std::int16_t>(n);
  view.Cursors[2].channel = static_cast<std::int16_t>(n);
  ClearSurface();
  RedrawScreen();
}

// Zoom.

void ScreenView::ZoomView(int mode) {
  if (mode < kZoomIn || mode > kZoomReset) return;
  if (host_.SweepMode())
    ZoomOscilloscope(mode);
  else
    ZoomSpectrum(mode);
}

void ScreenView::ZoomOscilloscope(int mode) {
  ViewState& view = records_.view;
  if (view.ZoomBusy) return;
  const int reference = view.DisplayedChannel;
  if (reference < 1 || reference > acquisition::kMaxChannels ||
      !records_.scope.Channels[reference].Displayed)
    return;
  const std::int32_t count = SampleCount(reference);
  if (count < 2) return;
  view.ZoomBusy = true;
  spectrum::Spectrum& s = records_.spectrum;
  if (mode == kZoomReset) {
    s.FirstPoint = 0;
    s.LastPoint = count - 1;
  } else {
    const std::int32_t width = s.LastPoint - s.FirstPoint;
    const std::int32_t new_width = mode == kZoomIn ? width / 2 : 2 * width;
    if (new_width < 2) {
      view.ZoomBusy = false;
      return;
    }
    s.LastPoint = static_cast<std::int32_t>(std::floor(new_width / 2.0 + view.ZoomCentre));
    s.FirstPoint = std::max<std::int32_t>(
        static_cast<std::int32_t>(std::floor(view.ZoomCentre - new_width / 2.0)), 0);
    s.LastPoint = std::min(s.LastPoint, count - 1);
  }
  for (auto& channel : records_.scope.Channels) {
    channel.FirstSample = s.FirstPoint;
    channel.LastSample = s.LastPoint;
  }
  view.LastZoomMode = mode;
  ClearMarkers();
  ClearSurface();
  RedrawScreen();
  view.ZoomBusy = false;
}

void ScreenView::ZoomSpectrum(int mode) {
  const spectrum::Spectrum& s = records_.spectrum;
  if (!s.SpectrumReady || s.MixedDomain || SampleCount(s.SpectrumChannel) == 0) return;
  ui_.ShowStatus("");
  ClearMarkers();
  const double centre = records_.view.LastPointerFrequency / 1000;
  const double span = s.StopFrequency - s.StartFrequency;
  records_.view.LastZoomMode = mode;
  if (mode == kZoomIn)
    SetCenterSpan(centre, span / 2 / 1000);
  else if (mode == kZoomOut)
    SetCenterSpan(centre, 2 * span / 1000);
  else
    ShowFullSpectrum(host_.ReapplyBandwidthLimit());
}

void ScreenView::ShowFullSpectrum(double upper_limit_hz) {
  spectrum::Spectrum& s = records_.spectrum;
  const double n = s.TransformLength;
  const double half_rate = records_.scope.SampleRate * 1000 / 2;
  if (!(n > 0) || !(half_rate > 0)) return;
  // The range a new spectrum run shows: every point, up to the upper limit when it is on.
  const double denominator = n / 2 + 1;
  s.FirstPoint = 1;
  s.LastPoint = RoundHalfEven(n / 2 + 1);
  s.StartFrequency = s.FirstPoint / denominator * half_rate;
  s.StopFrequency = s.LastPoint / denominator * half_rate;
  if (upper_limit_hz > 0 && upper_limit_hz < s.StopFrequency) {
    s.StopFrequency = upper_limit_hz;
    s.LastPoint = RoundHalfEven(denominator * upper_limit_hz / half_rate);
    if (s.LastPoint < s.FirstPoint + 10) {
      s.LastPoint = s.FirstPoint + 10;
      s.StopFrequency = s.LastPoint / denominator * half_rate;
    }
  }
  DrawStatusPanel();
  DrawSpectrum(s.SpectrumChannel, false);
}

void ScreenView::SetCenterSpanFromEntries(double centre_mhz, double span_mhz) {
  if (records_.spectrum.StopFrequency == 0) return;
  SetCenterSpan(centre_mhz * 1000, span_mhz * 1000);
  records_.view.LastPointerFrequency = centre_mhz * 1e6;
}

void ScreenView::SetCenterSpan(double centre_khz, double span_khz) {
  spectrum::Spectrum& s = records_.spectrum;
  const double half_rate = records_.scope.SampleRate / 2;
  if (!OnSpectrum() || s.StopFrequency == 0 || !(centre_khz > 0 && centre_khz < half_rate)) return;
  const double n = s.TransformLength;
  const std::int32_t centre = RoundHalfEven(centre_khz / half_rate * n / 2);
  s.QuarterPoint = centre;
  const std::int32_t old_first = s.FirstPoint;
  const std::int32_t old_last = s.LastPoint;
  if (span_khz != 0) {
    s.FirstPoint = RoundHalfEven((centre_khz - span_khz / 2) / half_rate * n / 2);
    s.LastPoint = RoundHalfEven((centre_khz + span_khz / 2) / half_rate * n / 2);
  } else {
    s.FirstPoint = RoundHalfEven(centre - n / 4);
    s.LastPoint = RoundHalfEven(centre + n / 4);
  }
  s.FirstPoint = std::max(s.FirstPoint, 1);
  s.LastPoint = std::min(s.LastPoint, RoundHalfEven(n / 2 + 1));
  if (s.LastPoint <= s.FirstPoint) {
    ui_.ShowStatus("Span too small!");
    s.FirstPoint = old_first;
    s.LastPoint = old_last;
    return;
  }
  ClearMarkers();
  DrawStatusPanel();
  const double denominator = n / 2 + 1;
  s.StartFrequency = s.FirstPoint / denominator * records_.scope.SampleRate * 1000 / 2;
  s.StopFrequency = s.LastPoint / denominator * records_.scope.SampleRate * 1000 / 2;
  DrawSpectrum(s.SpectrumChannel, false);
  host_.SendFftCentreSpan(centre_khz * 1000, span_khz * 1000);
}

}  // namespace quarvelo::display
