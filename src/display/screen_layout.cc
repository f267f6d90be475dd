#include "display/screen_layout.h"

namespace quarvelo::display {

void ComputeLayout(double width, double height, bool spectrum_shown, bool spectrum_pane,
                   double text_height, ScreenLayout& layout) {
  const double u = width / 19;
  const double v = height / 11.5;
  layout.Width = width;
  layout.Height = height;
  layout.GridLeft = (spectrum_shown || spectrum_pane ? 0.8 : 0.45) * u;
  layout.GridRight = layout.GridLeft + 15.5 * u;
  layout.FullTop = 0.45 * v;
  layout.FullBottom = layout.FullTop + 9.2 * v;
  layout.ScopeTop = layout.FullTop;
  layout.ScopeBottom =
      spectrum_shown || spectrum_pane ? layout.FullTop + 4.6 * v : layout.FullBottom;
  if (spectrum_pane) {
    layout.GridTop = layout.FullTop + 4.6 * v + 300;
    layout.GridBottom = layout.FullBottom;
  } else {
    layout.GridTop = layout.ScopeTop;
    layout.GridBottom = layout.ScopeBottom;
  }
  layout.OverviewTop = layout.FullBottom + 1.2 * text_height;
  layout.OverviewBottom = height - 30;
}

}  // namespace quarvelo::display
