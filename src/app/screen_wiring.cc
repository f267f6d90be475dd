#include "app/screen_wiring.h"

#include "platform/qt/picture_box.h"

namespace quarvelo::app {
namespace {

int ButtonNumber(Qt::MouseButton button) {
  if (button == Qt::LeftButton) return display::kLeftButton;
  if (button == Qt::RightButton) return display::kRightButton;
  return 0;
}

}  // namespace

ScreenWiring::ScreenWiring(qt::PictureBox& pic_screen, QImage& pic_temp,
                           acquisition::ScopeState& scope, acquisition::WaveformRecords& records,
                           spectrum::Spectrum& spectrum, ui::UiServices& ui, ScreenHostCalls calls)
    : pic_screen_(pic_screen),
      calls_(std::move(calls)),
      view_(pic_screen.Image(), pic_temp, {scope, records, spectrum, state_, layout_}, *this, ui) {
  QObject::connect(&pic_screen, &qt::PictureBox::MousePressed, &pic_screen,
                   [this](QPointF position, Qt::MouseButton button) {
                     view_.MouseDown(position.x(), position.y(), ButtonNumber(button));
                   });
  QObject::connect(&pic_screen, &qt::PictureBox::MouseMoved, &pic_screen,
                   [this](QPointF position, Qt::MouseButtons buttons) {
                     const int button = buttons.testFlag(Qt::LeftButton)    ? display::kLeftButton
                                        : buttons.testFlag(Qt::RightButton) ? display::kRightButton
                                                                            : 0;
                     view_.MouseMove(position.x(), position.y(), button);
                   });
  QObject::connect(&pic_screen, &qt::PictureBox::MouseReleased, &pic_screen,
                   [this](QPointF position, Qt::MouseButton button) {
                     view_.MouseUp(position.x(), position.y(), ButtonNumber(button));
                   });
  // The window is laid out after start-up drew the empty frame into a surface of its first
  // size; until there is something to show, the frame follows the surface's size.
  QObject::connect(&pic_screen, &qt::PictureBox::Resized, &pic_screen,
                   [this, &records, &spectrum](QSize) {
                     if (spectrum.SpectrumReady) return;
                     for (int c = 1; c <= acquisition::kMaxChannels; ++c)
                       if (records.Records[c].ByteCount > 0) return;
                     view_.StartDisplay();
                     pic_screen_.update();
                   });
}

void ScreenWiring::SurfaceChanged() { pic_screen_.update(); }

std::optional<double> ScreenWiring::FirstCursorDivisions() const {
  const display::Cursor& cursor = state_.Cursors[1];
  const double division = (layout_.ScopeBottom - layout_.ScopeTop) / 8;
  if (!cursor.shown || !(division > 0)) return std::nullopt;
  return (cursor.y - (layout_.ScopeTop + layout_.ScopeBottom) / 2) / division;
}

}  // namespace quarvelo::app
