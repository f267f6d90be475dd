#include "platform/qt/picture_box.h"

#include <QMouseEvent>
#include <QPainter>

namespace quarvelo::qt {

PictureBox::PictureBox(bool follows_size, QColor background, QWidget* parent)
    : QWidget(parent), follows_size_(follows_size), background_(background) {
  setAttribute(Qt::WA_OpaquePaintEvent);
  setMouseTracking(true);
  image_ = QImage(QSize(1, 1), QImage::Format_RGB32);
  image_.fill(background_);
}

void PictureBox::SetImage(const QImage& image) {
  image_ = image.convertToFormat(QImage::Format_RGB32);
  if (!follows_size_) {
    setMinimumSize(image_.size());
    updateGeometry();
  }
  update();
}

void PictureBox::Clear() {
  image_.fill(background_);
  update();
}

QSize PictureBox::sizeHint() const {
  if (follows_size_) return {640, 480};
  return image_.size();
}

void PictureBox::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.fillRect(rect(), background_);
  painter.drawImage(0, 0, image_);
}

void PictureBox::resizeEvent(QResizeEvent* event) {
  QWidget::resizeEvent(event);
  if (follows_size_ && size() != image_.size() && !size().isEmpty()) {
    // What was drawn stays where it was; new area shows the background until the next redraw.
    QImage resized(size(), QImage::Format_RGB32);
    resized.fill(background_);
    QPainter painter(&resized);
    painter.drawImage(0, 0, image_);
    painter.end();
    image_ = resized;
  }
  emit Resized(size());
}

void PictureBox::mousePressEvent(QMouseEvent* event) {
  emit MousePressed(event->position(), event->button());
}

void PictureBox::mouseMoveEvent(QMouseEvent* event) {
  emit MouseMoved(event->position(), event->buttons());
}

void PictureBox::mouseReleaseEvent(QMouseEvent* event) {
  emit MouseReleased(event->position(), event->button());
}

}  // namespace quarvelo::qt
