// Traces drawn straight into the surface's pixels. A long record is drawn column by column:
// the segments a chain of samples draws inside one pixel column are vertical runs sharing
// their end points, so together they cover exactly the run from the lowest to the highest of
// those samples; segments that cross columns are drawn as lines. The picture is the same as
// drawing every segment, at a cost that follows the pane's width in pixels.
#ifndef QUARVELO_DISPLAY_TRACE_RASTER_H_
#define QUARVELO_DISPLAY_TRACE_RASTER_H_

#include <QImage>
#include <algorithm>
#include <cmath>
#include <cstdint>

namespace quarvelo::display {

// Pixel of a surface coordinate (units of 1/15 pixel).
// Halves go to the even pixel, as every rounding in the program does.
inline int ToPixel(double units) { return static_cast<int>(std::lrint(units / 15.0)); }

class TraceRaster {
 public:
  // `image` must be Format_RGB32 or Format_ARGB32; pixels outside it are skipped.
  TraceRaster(QImage& image, QRgb colour);

  // Every pixel of the line between two pixels, both ends included.
  void Line(int x0, int y0, int x1, int y1);
  // Pixels y0..y1 (either order) of column x.
  void Run(int x, int y0, int y1);

 private:
  void Plot(int x, int y) {
    if (x >= 0 && x < width_ && y >= 0 && y < height_)
      reinterpret_cast<QRgb*>(bits_ + static_cast<std::ptrdiff_t>(y) * stride_)[x] = colour_;
  }

  uchar* bits_;
  std::ptrdiff_t stride_;
  int width_;
  int height_;
  QRgb colour_;
};

// A polyline fed one segment at a time, in sample order.
class SegmentPainter {
 public:
  // `every_segment` draws each segment as it comes (the reference the column drawing must
  // equal); otherwise segments within a column are merged into one run.
  SegmentPainter(TraceRaster& raster, bool every_segment)
      : raster_(raster), every_segment_(every_segment) {}
  ~SegmentPainter() { Flush(); }

  // The segment between two pixels; `joined` says it starts where the previous one ended.
  void Segment(int x0, int y0, int x1, int y1, bool joined) {
    if (every_segment_ || x0 != x1) {
      if (!every_segment_ && x0 != x1) Flush();
      raster_.Line(x0, y0, x1, y1);
      return;
    }
    if (pending_ && (!joined || x0 != column_)) Flush();
    if (!pending_) {
      pending_ = true;
      column_ = x0;
      low_ = high_ = y0;
    }
    low_ = std::min({low_, y0, y1});
    high_ = std::max({high_, y0, y1});
  }
  void Flush() {
    if (pending_) raster_.Run(column_, low_, high_);
    pending_ = false;
  }

 private:
  TraceRaster& raster_;
  bool every_segment_;
  bool pending_ = false;
  int column_ = 0;
  int low_ = 0;
  int high_ = 0;
};

}  // namespace quarvelo::display

#endif  // QUARVELO_DISPLAY_TRACE_RASTER_H_
