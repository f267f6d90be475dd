// A painter over the surface in its own units (1/15 pixel): lines and boxes snap to whole
// pixels, so that the graticule and the traces drawn pixel by pixel meet on the same rows;
// text is measured and printed in points scaled to the surface.
#ifndef QUARVELO_DISPLAY_SURFACE_PAINTER_H_
#define QUARVELO_DISPLAY_SURFACE_PAINTER_H_

#include <QColor>
#include <QImage>
#include <QPainter>
#include <string_view>

namespace quarvelo::display {

class SurfacePainter {
 public:
  explicit SurfacePainter(QImage& image);

  QPainter& painter() { return painter_; }

  void SetFontSize(int points);
  double TextWidth(std::string_view text) const;
  double TextHeight() const;  // of the current font

  void Line(double x0, double y0, double x1, double y1, const QColor& colour);
  void Box(double left, double top, double right, double bottom, const QColor& colour);
  void FillBox(double left, double top, double right, double bottom, const QColor& colour);
  // Text whose top-left corner is at (x, y).
  void Text(double x, double y, std::string_view text, const QColor& colour);
  // Text centred horizontally on x, top at y.
  void TextCentred(double x, double y, std::string_view text, const QColor& colour);
  // Text ending at x, top at y.
  void TextRight(double x, double y, std::string_view text, const QColor& colour);

 private:
  QPainter painter_;
  double ascent_ = 0;
  double height_ = 0;
};

// Height of "XXX" in the 8-point font, without a painter.
double SmallTextHeight();

}  // namespace quarvelo::display

#endif  // QUARVELO_DISPLAY_SURFACE_PAINTER_H_
