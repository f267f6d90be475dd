#include "app/set_top_most.h"

#include <QWidget>

namespace quarvelo::app {

void SetTopMost(QWidget* window, bool on) {
  if (window == nullptr) return;
  // Changing a window flag re-creates the native window, which hides it and may forget its
  // place: put it back where it was.
  const QRect geometry = window->geometry();
  const bool was_visible = window->isVisible();
  const bool was_minimised = window->isMinimized();
  window->setWindowFlag(Qt::WindowStaysOnTopHint, on);
  window->setGeometry(geometry);
  if (was_visible) {
    const bool without_activating = window->testAttribute(Qt::WA_ShowWithoutActivating);
    window->setAttribute(Qt::WA_ShowWithoutActivating, true);
    if (was_minimised) {
      window->showMinimized();
    } else {
      window->show();
    }
    window->setAttribute(Qt::WA_ShowWithoutActivating, without_activating);
  }
}

}  // namespace quarvelo::app
