#include "display/trace_raster.h"

#include <algorithm>
#include <cstdlib>

namespace quarvelo::display {

TraceRaster::TraceRaster(QImage& image, QRgb colour)
    : bits_(image.bits()),
      stride_(image.bytesPerLine()),
      width_(image.width()),
      height_(image.height()),
      colour_(colour | 0xff000000u) {}

void TraceRaster::Run(int x, int y0, int y1) {
  if (x < 0 || x >= width_) return;
  const int top = std::max(std::min(y0, y1), 0);
  const int bottom = std::min(std::max(y0, y1), height_ - 1);
  for (int y = top; y <= bottom; ++y)
    reinterpret_cast<QRgb*>(bits_ + static_cast<std::ptrdiff_t>(y) * stride_)[x] = colour_;
}

void TraceRaster::Line(int x0, int y0, int x1, int y1) {
  if (x0 == x1) {
    Run(x0, y0, y1);
    return;
  }
  // Always from left to right, so that a segment drawn either way covers the same pixels.
  if (x1 < x0) {
    std::swap(x0, x1);
    std::swap(y0, y1);
  }
  const int dx = x1 - x0;
  const int dy = -std::abs(y1 - y0);
  const int step_y = y0 < y1 ? 1 : -1;
  int error = dx + dy;
  for (;;) {
    Plot(x0, y0);
    if (x0 == x1 && y0 == y1) return;
    const int twice = 2 * error;
    if (twice >= dy) {
      error += dy;
      x0 += 1;
    }
    if (twice <= dx) {
      error += dx;
      y0 += step_y;
    }
  }
}

void DrawPolyline(TraceRaster& raster, const std::int32_t* x, const std::int32_t* y,
                  std::int32_t first, std::int32_t last, std::int32_t min_x, std::int32_t max_x,
                  bool every_segment) {
  const auto drawn_from = [&](std::int32_t i) { return x[i] >= min_x && x[i] <= max_x; };
  const auto line = [&](std::int32_t i) {
    raster.Line(UnitsToPixel(x[i - 1]), UnitsToPixel(y[i - 1]), UnitsToPixel(x[i]),
                UnitsToPixel(y[i]));
  };
  // The run waiting in one column: the chain's lowest and highest y there, in units (the
  // pixel of a unit only grows with it, so the run's ends are the pixels of these).
  bool pending = false;
  int column = 0;
  std::int32_t low = 0;
  std::int32_t high = 0;
  const auto flush = [&] {
    if (pending) raster.Run(column, UnitsToPixel(low), UnitsToPixel(high));
    pending = false;
  };
  bool previous_drawn = false;
  std::int32_t i = first + 1;
  while (i <= last) {
    const bool drawn = drawn_from(i - 1);
    if (drawn && every_segment) {
      line(i);
    } else if (drawn) {
      const int px = UnitsToPixel(x[i - 1]);
      const std::int32_t column_left = px * 15 - 7;
      const std::int32_t column_right = px * 15 + 7;
      if (x[i] < column_left || x[i] > column_right) {
        flush();
        line(i);
      } else {
        if (pending && (!previous_drawn || px != column)) flush();
        if (!pending) {
          pending = true;
          column = px;
          low = high = y[i - 1];
        }
        low = std::min(low, y[i]);
        high = std::max(high, y[i]);
        ++i;
        // Every further segment that starts in this column is drawn when the whole column is
        // on the drawn range: take them all at once.
        if (column_left >= min_x && column_right <= max_x) {
          while (i <= last && x[i] >= column_left && x[i] <= column_right) {
            low = std::min(low, y[i]);
            high = std::max(high, y[i]);
            ++i;
          }
        }
        previous_drawn = true;
        continue;
      }
    }
    previous_drawn = drawn;
    ++i;
  }
  flush();
}

}  // namespace quarvelo::display
