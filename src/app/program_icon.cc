#include "app/program_icon.h"

#include <QPainter>
#include <QPainterPath>
#include <QPixmap>
#include <cmath>

namespace quarvelo::app {

QIcon ProgramIcon() {
  QIcon icon;
  for (int side : {16, 32, 64, 128}) {
    QPixmap pixmap(side, side);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    const double s = side;
    painter.setPen(QPen(QColor(160, 160, 160), s / 32.0));
    painter.setBrush(QColor(0, 0, 0));
    painter.drawRoundedRect(QRectF(s * 0.03, s * 0.03, s * 0.94, s * 0.94), s * 0.12, s * 0.12);
    // A yellow trace above, a green spectrum below: the two views of the program.
    QPainterPath trace;
    for (int i = 0; i <= 40; ++i) {
      const double x = s * (0.12 + 0.76 * i / 40.0);
      const double y = s * (0.32 - 0.14 * std::sin(i / 40.0 * 4 * M_PI));
      if (i == 0) {
        trace.moveTo(x, y);
      } else {
        trace.lineTo(x, y);
      }
    }
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(QColor(255, 255, 0), s / 16.0));
    painter.drawPath(trace);
    painter.setPen(QPen(QColor(0, 255, 0), s / 16.0));
    const double bars[] = {0.10, 0.32, 0.18, 0.08, 0.05};
    for (int i = 0; i < 5; ++i) {
      const double x = s * (0.2 + 0.15 * i);
      painter.drawLine(QPointF(x, s * 0.85), QPointF(x, s * (0.85 - bars[i])));
    }
    painter.end();
    icon.addPixmap(pixmap);
  }
  return icon;
}

}  // namespace quarvelo::app
