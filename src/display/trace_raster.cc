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

}  // namespace quarvelo::display
