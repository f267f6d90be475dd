// Always on top: keeps a window above all others, or releases it.
#ifndef QUARVELO_APP_SET_TOP_MOST_H_
#define QUARVELO_APP_SET_TOP_MOST_H_

class QWidget;

namespace quarvelo::app {

// The window keeps its position and size, is shown, and is not activated.
void SetTopMost(QWidget* window, bool on);

}  // namespace quarvelo::app

#endif  // QUARVELO_APP_SET_TOP_MOST_H_
