#include "sim/image/screen_drawing.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "sim/image/glyphs.h"

namespace quarvelo::sim {
namespace {

void Put(IndexedImage& image, int x, int y, std::uint8_t colour) {
  if (x < 0 || y < 0 || x >= image.width || y >= image.height) return;
  image.pixels[static_cast<size_t>(y) * image.width + x] = colour;
}

void FillRect(IndexedImage& image, int x0, int y0, int x1, int y1, std::uint8_t colour) {
  for (int y = std::max(0, y0); y < std::min(image.height, y1); ++y) {
    for (int x = std::max(0, x0); x < std::min(image.width, x1); ++x) Put(image, x, y, colour);
  }
}

// Text twice the font's size, top-left corner at (x, y); returns the x after it.
int DrawText(IndexedImage& image, int x, int y, const std::string& text, std::uint8_t colour) {
  constexpr int kScale = 2;
  for (char c : text) {
    const Glyph& glyph = GlyphOf(c);
    for (int row = 0; row < 7; ++row) {
      for (int column = 0; column < 5; ++column) {
        if ((glyph[row] >> (4 - column) & 1) == 0) continue;
        FillRect(image, x + column * kScale, y + row * kScale, x + (column + 1) * kScale,
                 y + (row + 1) * kScale, colour);
      }
    }
    x += 6 * kScale;
  }
  return x;
}

void DrawGraticule(IndexedImage& image) {
  using G = Graticule;
  for (int division = 0; division <= 10; ++division) {
    int x = G::kLeft + division * G::kDivisionPixels;
    bool solid = division == 0 || division == 10 || division == 5;
    for (int y = G::kTop; y <= G::kBottom; ++y) {
      if (solid || y % 4 == 0) Put(image, x, y, kGrid);
    }
  }
  for (int division = 0; division <= 8; ++division) {
    int y = G::kTop + division * G::kDivisionHeight;
    bool solid = division == 0 || division == 8 || division == 4;
    for (int x = G::kLeft; x <= G::kRight; ++x) {
      if (solid || x % 4 == 0) Put(image, x, y, kGrid);
    }
  }
}

void DrawTrace(IndexedImage& image, const ScreenTrace& trace) {
  using G = Graticule;
  if (trace.divisions.empty()) return;
  auto colour = static_cast<std::uint8_t>(kChannel1 + std::clamp(trace.channel, 1, 4) - 1);
  const int columns = G::kRight - G::kLeft;
  const size_t count = trace.divisions.size();
  int previous_row = -1;
  // Per pixel column the minimum and maximum of its samples, joined to the previous column.
  for (int column = 0; column < columns; ++column) {
    size_t begin = count * column / columns;
    size_t end = std::max(begin + 1, count * (column + 1) / columns);
    double low = trace.divisions[begin], high = low;
    for (size_t i = begin; i < std::min(end, count); ++i) {
      low = std::min(low, trace.divisions[i]);
      high = std::max(high, trace.divisions[i]);
    }
    int top = G::RowOf(std::min(high, 4.2));
    int bottom = G::RowOf(std::max(low, -4.2));
    if (previous_row >= 0) {
      top = std::min(top, previous_row);
      bottom = std::max(bottom, previous_row);
    }
    for (int y = top; y <= bottom; ++y) Put(image, G::kLeft + column, y, colour);
    previous_row = G::RowOf(std::clamp(trace.divisions[std::min(end, count) - 1], -4.2, 4.2));
  }
}

}  // namespace

std::string EngineeringText(double value, const char* unit) {
  static constexpr const char* kPrefixes[] = {"p", "n", "u", "m", "", "k", "M", "G"};
  int index = 4;
  double magnitude = std::abs(value);
  if (magnitude > 0) {
    index = std::clamp(static_cast<int>(std::floor(std::log10(magnitude) / 3.0)) + 4, 0, 7);
  }
  char text[32];
  std::snprintf(text, sizeof text, "%.3g%s%s", value / std::pow(1000.0, index - 4),
                kPrefixes[index], unit);
  return text;
}

std::array<Rgb, 256> ScreenPalette(bool gray, bool ink_saver) {
  std::array<Rgb, 256> palette{};
  palette[kBackground] = {0, 0, 0};
  palette[kGrid] = {96, 96, 96};
  palette[kChannel1] = {255, 255, 0};
  palette[kChannel1 + 1] = {0, 255, 0};
  palette[kChannel1 + 2] = {80, 140, 255};
  palette[kChannel1 + 3] = {255, 60, 60};
  palette[kText] = {255, 255, 255};
  palette[kBand] = {40, 40, 64};
  palette[kMarker] = {255, 128, 0};
  if (ink_saver) {
    palette[kBackground] = {255, 255, 255};
    palette[kGrid] = {160, 160, 160};
    palette[kChannel1] = {200, 150, 0};
    palette[kChannel1 + 1] = {0, 150, 0};
    palette[kChannel1 + 2] = {0, 70, 200};
    palette[kChannel1 + 3] = {200, 0, 0};
    palette[kText] = {0, 0, 0};
    palette[kBand] = {220, 220, 230};
  }
  for (int i = kMarker + 1; i < 256; ++i) {
    auto level = static_cast<std::uint8_t>(i);
    palette[i] = {level, level, level};
  }
  if (gray) {
    for (Rgb& colour : palette) {
      auto luma = static_cast<std::uint8_t>(
          std::lround(0.299 * colour.red + 0.587 * colour.green + 0.114 * colour.blue));
      colour = {luma, luma, luma};
    }
  }
  return palette;
}

IndexedImage DrawScreen(const ScreenContent& content) {
  using G = Graticule;
  IndexedImage image;
  image.ink_saver = content.ink_saver;
  image.pixels.assign(static_cast<size_t>(image.width) * image.height, kBackground);
  FillRect(image, 0, 0, image.width, 28, kBand);
  // Run/stop lamp: green while running, red when stopped, with its word.
  FillRect(image, 4, 4, 64, 25, content.running ? kChannel1 + 1 : kChannel1 + 3);
  DrawText(image, content.running ? 16 : 10, 7, content.running ? "RUN" : "STOP", kBackground);
  for (const ScreenTrace& trace : content.traces) {
    auto colour = static_cast<std::uint8_t>(kChannel1 + std::clamp(trace.channel, 1, 4) - 1);
    int left = 72 + 110 * (std::clamp(trace.channel, 1, 4) - 1);
    FillRect(image, left, 4, left + 104, 25, colour);
    DrawText(image, left + 4, 7, std::to_string(trace.channel) + " " + trace.scale_text,
             kBackground);
  }
  int x = DrawText(image, 516, 7, "H " + content.timebase_text, kText);
  DrawText(image, std::max(x + 12, 640), 7, "T " + content.trigger_text, kText);
  DrawGraticule(image);
  for (const ScreenTrace& trace : content.traces) DrawTrace(image, trace);
  // Trigger level at the right edge, time reference at the top of the graticule.
  int level_row = G::RowOf(std::clamp(content.trigger_divisions, -4.0, 4.0));
  FillRect(image, G::kRight + 2, level_row - 3, G::kRight + 10, level_row + 4, kMarker);
  int reference_x = G::kLeft + static_cast<int>(content.reference_divisions * G::kDivisionPixels);
  FillRect(image, reference_x - 4, G::kTop - 10, reference_x + 5, G::kTop - 2, kMarker);
  return image;
}

}  // namespace quarvelo::sim
