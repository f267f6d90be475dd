#include "app/program_icon.h"

#include <QDir>
#include <QFileInfo>
#include <QPainter>
#include <QPainterPath>
#include <cmath>
#include <span>

namespace quarvelo::app {

namespace {
constexpr int kSides[] = {16, 32, 48, 64, 128, 256};
}  // namespace

QImage DrawProgramIcon(int side) {
  QImage image(side, side, QImage::Format_ARGB32_Premultiplied);
  image.fill(Qt::transparent);
  {
    QPainter painter(&image);
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
  }
  return image;
}

QIcon ProgramIcon(const QString& executable_folder) {
  QIcon icon;
  const QDir hicolor(executable_folder + QStringLiteral("/../share/icons/hicolor"));
  for (int side : executable_folder.isEmpty() ? std::span<const int>() : std::span(kSides)) {
    const QString file = hicolor.filePath(
        QStringLiteral("%1x%1/apps/%2.png").arg(side).arg(QString::fromLatin1(kDesktopId)));
    if (QFileInfo::exists(file)) icon.addFile(file, QSize(side, side));
  }
  if (!icon.isNull()) return icon;
  icon = QIcon::fromTheme(QString::fromLatin1(kDesktopId));
  if (!icon.isNull()) return icon;
  for (int side : kSides) icon.addPixmap(QPixmap::fromImage(DrawProgramIcon(side)));
  return icon;
}

}  // namespace quarvelo::app
