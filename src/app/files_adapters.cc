#include "app/files_adapters.h"

#include "platform/qt/picture_box.h"

namespace quarvelo::app {

const QImage& WindowImagePanels::ScreenDrawing() const { return screen_.Image(); }

const QImage& WindowImagePanels::PanelPicture() const { return panel_.Image(); }

void WindowImagePanels::ShowInPanel(const QImage& picture) { panel_.SetImage(picture); }

}  // namespace quarvelo::app
