// A picture box: a widget that shows a persistent image. Drawing goes into the image, which
// survives repaints, and the widget paints it. With `follows_size` the image is resized with
// the widget (the drawing surface); otherwise it keeps the size of the picture put into it.
#ifndef QUARVELO_PLATFORM_QT_PICTURE_BOX_H_
#define QUARVELO_PLATFORM_QT_PICTURE_BOX_H_

#include <QColor>
#include <QImage>
#include <QPointF>
#include <QWidget>

namespace quarvelo::qt {

class PictureBox : public QWidget {
  Q_OBJECT

 public:
  PictureBox(bool follows_size, QColor background, QWidget* parent = nullptr);

  // The persistent image; call `update()` after drawing into it.
  QImage& Image() { return image_; }
  const QImage& Image() const { return image_; }
  // Replaces the picture (a loaded file, a copy of another surface).
  void SetImage(const QImage& image);
  // Fills the image with the background colour.
  void Clear();
  QColor Background() const { return background_; }

  QSize sizeHint() const override;

 signals:
  // Positions in widget pixels.
  void MousePressed(QPointF position, Qt::MouseButton button);
  void MouseMoved(QPointF position, Qt::MouseButtons buttons);
  void MouseReleased(QPointF position, Qt::MouseButton button);
  void Resized(QSize size);

 protected:
  void paintEvent(QPaintEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;

 private:
  bool follows_size_;
  QColor background_;
  QImage image_;
};

}  // namespace quarvelo::qt

#endif  // QUARVELO_PLATFORM_QT_PICTURE_BOX_H_
