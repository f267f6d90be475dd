// Window geometry is kept in twips, 1/1440 inch: 15 twips to a (96 dpi) device-independent
// pixel, which is what Qt's logical pixels are.
#ifndef QUARVELO_APP_TWIPS_H_
#define QUARVELO_APP_TWIPS_H_

#include <cmath>

namespace quarvelo::app {

inline constexpr int kTwipsPerPixel = 15;

inline int PixelsToTwips(int pixels) { return pixels * kTwipsPerPixel; }
// Nearest pixel, halves to even.
inline int TwipsToPixels(int twips) {
  return static_cast<int>(std::nearbyint(static_cast<double>(twips) / kTwipsPerPixel));
}

}  // namespace quarvelo::app

#endif  // QUARVELO_APP_TWIPS_H_
