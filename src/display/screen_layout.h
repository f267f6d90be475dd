// The geometry of the drawing surface, recomputed at every frame drawing, and the point tables
// of the drawn samples the mouse handlers hit-test against.
#ifndef QUARVELO_DISPLAY_SCREEN_LAYOUT_H_
#define QUARVELO_DISPLAY_SCREEN_LAYOUT_H_

#include <array>
#include <cstdint>
#include <vector>

namespace quarvelo::display {

// Surface units per pixel: the surface is measured in twips at 96 dpi.
inline constexpr double kUnitsPerPixel = 15;

struct ScreenLayout {
  double Width = 0;  // W, surface units
  double Height = 0;
  double GridLeft = 0;
  double GridRight = 0;
  double GridTop = 0;  // of the current pane
  double GridBottom = 0;
  double FullTop = 0;
  double FullBottom = 0;
  double ScopeTop = 0;  // the oscilloscope pane's own top and bottom
  double ScopeBottom = 0;
  double OverviewTop = 0;
  double OverviewBottom = 0;
  double TraceFirstX = 0;
  double TraceLastX = 0;
  double AcquisitionTop = 0;
  double ChannelsTop = 0;
  double DvmTop = 0;
  // Per channel 1..4, per sample index: rounded surface x and y of every drawn sample. Entries
  // outside the drawn range are stale.
  std::array<std::vector<std::int32_t>, 5> PointX;
  std::array<std::vector<std::int32_t>, 5> PointY;
  // The sample range each channel's tables hold (-1 .. -2: nothing drawn).
  std::array<std::int32_t, 5> PointsFirst{-1, -1, -1, -1, -1};
  std::array<std::int32_t, 5> PointsLast{-2, -2, -2, -2, -2};
};

// The graticule's geometry for a surface of `width` x `height` units: the oscilloscope pane
// (`spectrum_pane` false) or the spectrum pane, with or without the spectrum beside the
// traces. `text_height` is the height of "XXX" in the 8-point font. Leaves the point tables,
// the trace x and the panel tops as they are.
void ComputeLayout(double width, double height, bool spectrum_shown, bool spectrum_pane,
                   double text_height, ScreenLayout& layout);

}  // namespace quarvelo::display

#endif  // QUARVELO_DISPLAY_SCREEN_LAYOUT_H_
