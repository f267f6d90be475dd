// The image panel `picKeysight`: the oscilloscope's own screen fetched as a BMP file, a copy of
// the program's drawing, and saving the panel's picture.
#ifndef QUARVELO_FILES_SCREEN_IMAGES_H_
#define QUARVELO_FILES_SCREEN_IMAGES_H_

#include <QImage>
#include <string>

#include "link/instrument_link.h"
#include "platform/ui/ui_services.h"

namespace quarvelo::files {

// The two pictures the main window shows.
class ImagePanels {
 public:
  virtual ~ImagePanels() = default;
  // The persistent image of the drawing surface `picScreen`.
  virtual const QImage& ScreenDrawing() const = 0;
  // The picture in `picKeysight`.
  virtual const QImage& PanelPicture() const = 0;
  virtual void ShowInPanel(const QImage& picture) = 0;
};

inline constexpr char kScreenImageName[] = "screen.bmp";

class ScreenImages {
 public:
  // `data_folder` is read at every call (it is known only after start-up).
  ScreenImages(link::InstrumentLink& link, ui::UiServices& ui, ImagePanels& panels,
               const std::string& data_folder);
  ScreenImages(const ScreenImages&) = delete;
  ScreenImages& operator=(const ScreenImages&) = delete;

  // "ID_ScreenShoot": the oscilloscope's screen into the data folder's screen.bmp and the panel.
  void ImportScreenImage();
  // "ID_PRTSCR": the panel shows a copy of the program's drawing.
  void CaptureOwnScreen();
  // "ID_SAVIMG": the panel's picture to a BMP file the user chooses.
  void SaveScreenImage();

  std::string ScreenImagePath() const;

 private:
  void Import();

  link::InstrumentLink& link_;
  ui::UiServices& ui_;
  ImagePanels& panels_;
  const std::string& data_folder_;
};

}  // namespace quarvelo::files

#endif  // QUARVELO_FILES_SCREEN_IMAGES_H_
