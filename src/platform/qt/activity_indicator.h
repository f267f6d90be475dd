// A round lamp in one colour: the main window's activity indicator.
#ifndef QUARVELO_PLATFORM_QT_ACTIVITY_INDICATOR_H_
#define QUARVELO_PLATFORM_QT_ACTIVITY_INDICATOR_H_

#include <QColor>
#include <QWidget>

namespace quarvelo::qt {

class ActivityIndicator : public QWidget {
  Q_OBJECT

 public:
  explicit ActivityIndicator(QWidget* parent = nullptr);

  void SetColour(const QColor& colour);
  QColor Colour() const { return colour_; }
  QSize sizeHint() const override { return {18, 18}; }

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  QColor colour_{192, 192, 192};
};

}  // namespace quarvelo::qt

#endif  // QUARVELO_PLATFORM_QT_ACTIVITY_INDICATOR_H_
