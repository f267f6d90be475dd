#include "platform/qt/activity_indicator.h"

#include <QPainter>

namespace quarvelo::qt {

ActivityIndicator::ActivityIndicator(QWidget* parent) : QWidget(parent) {
  setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

void ActivityIndicator::SetColour(const QColor& colour) {
  if (colour == colour_) return;
  colour_ = colour;
  update();
}

void ActivityIndicator::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(QPen(QColor(64, 64, 64), 1));
  painter.setBrush(colour_);
  const int side = qMin(width(), height()) - 2;
  painter.drawEllipse(QRect((width() - side) / 2, (height() - side) / 2, side, side));
}

}  // namespace quarvelo::qt
