// Screen images: the oscilloscope's screen from the simulator over loopback TCP, the program's
// own drawing, and saving the panel.
#include "files/screen_images.h"

#include <gtest/gtest.h>

#include <QColor>
#include <filesystem>
#include <string>

#include "tests/files/files_test_support.h"
#include "tests/link/online_scope.h"

namespace quarvelo::files {
namespace {

class Panels : public ImagePanels {
 public:
  const QImage& ScreenDrawing() const override { return drawing; }
  const QImage& PanelPicture() const override { return panel; }
  void ShowInPanel(const QImage& picture) override { panel = picture; }

  QImage drawing;
  QImage panel;
};

TEST(ScreenImagesTest, ImportWritesTheBlockReplacesItAndKeepsItWhenNothingArrives) {
  testing_support::OnlineScope scope;
  ASSERT_TRUE(scope.h.session.RemoteOn);
  testing_support::TempFolder folder;
  Panels panels;
  ScreenImages images(scope.h.link, scope.h.ui, panels, folder.path());
  const std::string path = folder.File("screen.bmp");
  for (int import = 1; import <= 2; ++import) {
    scope.h.ui.ClearRecords();
    scope.simulator->ClearTraffic();
    images.ImportScreenImage();
    EXPECT_EQ(scope.Sent(), testing_support::WithErrorQuery(
                                {":HARDcopy:INKSaver OFF", ":DISPlay:DATA? BMP8BIT, COLor"}));
    EXPECT_EQ(scope.h.ui.status_lines(),
              (std::vector<std::string>{
                  "Screen image bytes: " + std::to_string(std::filesystem::file_size(path)),
                  "Screen image written to " + path}));
    EXPECT_EQ(panels.panel, QImage(QString::fromStdString(path), "BMP"));
    EXPECT_EQ(scope.h.ui.pointer_history(),
              (std::vector{ui::PointerShape::kHourglass, ui::PointerShape::kDefault}));
  }

  // With the link closed no bytes arrive: the file and the picture stay.
  const std::string before = testing_support::ReadWholeFile(path);
  const QImage shown = panels.panel;
  scope.h.link.CloseInstrument();
  images.ImportScreenImage();
  EXPECT_EQ(scope.h.ui.status(), "No screen image received: the previous picture is kept");
  EXPECT_EQ(testing_support::ReadWholeFile(path), before);
  EXPECT_EQ(panels.panel, shown);
}

TEST(ScreenImagesTest, ScreenShootThenSaveImageWritesTheProgramsDrawing) {
  testing_support::LinkHarness h;
  testing_support::TempFolder folder;
  Panels panels;
  panels.panel = QImage(8, 8, QImage::Format_RGB32);
  panels.panel.fill(Qt::yellow);  // an imported screen
  panels.drawing = QImage(40, 30, QImage::Format_RGB32);
  panels.drawing.fill(Qt::black);
  panels.drawing.setPixelColor(5, 7, Qt::red);
  ScreenImages images(h.link, h.ui, panels, folder.path());
  images.CaptureOwnScreen();
  panels.drawing.fill(Qt::blue);  // the panel holds a copy, not the live surface

  images.SaveScreenImage();  // cancelled: nothing written
  const std::string path = folder.File("mine.bmp");
  h.ui.QueueSaveFileAnswer(path);
  images.SaveScreenImage();
  EXPECT_EQ(h.ui.save_requests().at(1).initial_path, folder.path());
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.path()), {}), 1);
  const QImage saved(QString::fromStdString(path), "BMP");
  ASSERT_EQ(saved.size(), QSize(40, 30));
  EXPECT_EQ(saved.pixelColor(5, 7), QColor(Qt::red));
  EXPECT_EQ(saved.pixelColor(6, 7), QColor(Qt::black));
}

}  // namespace
}  // namespace quarvelo::files
