#include "display/surface_painter.h"

#include <QFont>
#include <QFontMetricsF>
#include <QPen>
#include <QString>
#include <cmath>

#include "display/trace_raster.h"

namespace quarvelo::display {
namespace {

// Points at 96 dpi, in surface units.
QFont SurfaceFont(int points) {
  QFont font;
  font.setStyleHint(QFont::SansSerif);
  font.setPixelSize(static_cast<int>(std::lround(points * 96.0 / 72.0 * 15.0)));
  return font;
}

QString ToQString(std::string_view text) {
  return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

double Snap(double units) { return ToPixel(units) * 15.0; }

}  // namespace

SurfacePainter::SurfacePainter(QImage& image) : painter_(&image) {
  painter_.scale(1.0 / 15.0, 1.0 / 15.0);
  painter_.setRenderHint(QPainter::Antialiasing, false);
  SetFontSize(8);
}

void SurfacePainter::SetFontSize(int points) {
  painter_.setFont(SurfaceFont(points));
  const QFontMetricsF metrics(painter_.font());
  ascent_ = metrics.ascent();
  height_ = metrics.height();
}

double SurfacePainter::TextWidth(std::string_view text) const {
  return QFontMetricsF(painter_.font()).horizontalAdvance(ToQString(text));
}

double SurfacePainter::TextHeight() const { return height_; }

void SurfacePainter::Line(double x0, double y0, double x1, double y1, const QColor& colour) {
  painter_.setPen(QPen(colour, 0));
  painter_.drawLine(QPointF(Snap(x0), Snap(y0)), QPointF(Snap(x1), Snap(y1)));
}

void SurfacePainter::Box(double left, double top, double right, double bottom,
                         const QColor& colour) {
  painter_.setPen(QPen(colour, 0));
  painter_.setBrush(Qt::NoBrush);
  painter_.drawRect(QRectF(QPointF(Snap(left), Snap(top)), QPointF(Snap(right), Snap(bottom))));
}

void SurfacePainter::FillBox(double left, double top, double right, double bottom,
                             const QColor& colour) {
  painter_.fillRect(QRectF(QPointF(Snap(left), Snap(top)), QPointF(Snap(right), Snap(bottom))),
                    colour);
}

void SurfacePainter::Text(double x, double y, std::string_view text, const QColor& colour) {
  painter_.setPen(colour);
  painter_.drawText(QPointF(x, y + ascent_), ToQString(text));
}

void SurfacePainter::TextCentred(double x, double y, std::string_view text, const QColor& colour) {
  Text(x - TextWidth(text) / 2, y, text, colour);
}

void SurfacePainter::TextRight(double x, double y, std::string_view text, const QColor& colour) {
  Text(x - TextWidth(text), y, text, colour);
}

double SmallTextHeight() {
  // Independent of any painter so that the layout can be computed before drawing.
  return QFontMetricsF(SurfaceFont(8)).height();
}

}  // namespace quarvelo::display
