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
#include <cstring>

namespace quarvelo::display {

// Nearest integer, halves to even (the processor's default rounding), for |value| < 2^31.
// Adding 1.5 x 2^52 leaves the rounded integer in the low bits of the sum; unlike
// `std::lrint`, which is a library call, loops over whole records vectorise with it.
inline std::int32_t RoundToInt(double value) {
  const double shifted = value + 6755399441055744.0;
  std::int64_t bits;
  std::memcpy(&bits, &shifted, sizeof bits);
  return static_cast<std::int32_t>(bits);
}

// Pixel of a rounded surface coordinate (units of 1/15 pixel), rounded to nearest: 15 is odd,
// so there are no halves.
inline int UnitsToPixel(std::int32_t units) {
  const std::int32_t shifted = units + 7;
  return shifted >= 0 ? shifted / 15 : -((14 - shifted) / 15);
}

// Pixel of a surface coordinate; the same pixel as its rounded value in the point tables.
inline int ToPixel(double units) { return UnitsToPixel(RoundToInt(units)); }

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

// The polyline through points first..last of the tables (surface units, rounded). The segment
// from point i to i + 1 is drawn when x[i] lies in [min_x, max_x]. `every_segment` draws each
// segment as a line (the reference the column drawing must equal); otherwise the segments of a
// chain within one pixel column are merged into one run.
void DrawPolyline(TraceRaster& raster, const std::int32_t* x, const std::int32_t* y,
                  std::int32_t first, std::int32_t last, std::int32_t min_x, std::int32_t max_x,
                  bool every_segment);

}  // namespace quarvelo::display

#endif  // QUARVELO_DISPLAY_TRACE_RASTER_H_
