// The instrument's screen as an 8-bit indexed picture: graticule, one trace per displayed
// channel, trigger-level and reference markers, a status band at the top.
#ifndef QUARVELO_SIM_IMAGE_SCREEN_DRAWING_H_
#define QUARVELO_SIM_IMAGE_SCREEN_DRAWING_H_

#include <array>
#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

namespace quarvelo::sim {

constexpr int kScreenWidth = 800;
constexpr int kScreenHeight = 480;

struct Rgb {
  std::uint8_t red, green, blue;
};

// Palette indexes.
enum PaletteIndex : std::uint8_t {
  kBackground = 0,
  kGrid = 1,
  kChannel1 = 2,  // channels 1..4 are kChannel1 + n - 1
  kText = 6,
  kBand = 7,
  kMarker = 8,
};

struct ScreenTrace {
  int channel = 1;  // 1..4
  // Vertical position in divisions above the centre line, samples spread evenly across the
  // ten divisions.
  std::vector<double> divisions;
  std::string scale_text;  // "500mV/"
};

struct ScreenContent {
  std::vector<ScreenTrace> traces;
  bool running = true;
  double trigger_divisions = 0;  // trigger level marker, divisions above the centre
  int trigger_channel = 1;
  double reference_divisions = 5;  // time reference from the left edge
  bool ink_saver = false;          // white background, as for printing
  std::string timebase_text;       // "100us/"
  std::string trigger_text;        // "1.20V"
};

// "500m", "1.25k", "100u": three significant digits with an SI prefix, then `unit`.
std::string EngineeringText(double value, const char* unit);

struct IndexedImage {
  int width = kScreenWidth;
  int height = kScreenHeight;
  std::vector<std::uint8_t> pixels;  // row-major, top row first
  bool ink_saver = false;            // drawn for the ink saver palette
};

// The 256-entry palette; `gray` maps every colour to its luminance, `ink_saver` puts the
// traces on white with darker colours.
std::array<Rgb, 256> ScreenPalette(bool gray, bool ink_saver = false);

IndexedImage DrawScreen(const ScreenContent& content);

// The graticule's geometry, shared with the tests that look for traces.
struct Graticule {
  static constexpr int kLeft = 40;
  static constexpr int kTop = 40;
  static constexpr int kDivisionPixels = 72;  // 10 x 72 = 720 wide, 8 x 50 = 400 high
  static constexpr int kDivisionHeight = 50;
  static constexpr int kRight = kLeft + 10 * kDivisionPixels;
  static constexpr int kBottom = kTop + 8 * kDivisionHeight;
  static int RowOf(double divisions) {
    return static_cast<int>(std::lround((kTop + kBottom) / 2.0 - divisions * kDivisionHeight));
  }
};

}  // namespace quarvelo::sim

#endif  // QUARVELO_SIM_IMAGE_SCREEN_DRAWING_H_
