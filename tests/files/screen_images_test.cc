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

using testing_support::TempFolder;

class Panels : public ImagePanels {
 public:
  const QImage& ScreenDrawing() const override { return drawing; }
  const QImage& PanelPicture() const override { return panel; }
  void ShowInPanel(const QImage& picture) override { panel = picture; }

  QImage drawing;
  QImage panel;
};

// The number at the end of the "Screen image bytes: " line.
std::uintmax_t ReportedBytes(const std::vector<std::string>& lines) {
  constexpr std::string_view kPrefix = "Screen image bytes: ";
  for (const std::string& line : lines) {
    if (line.starts_with(kPrefix)) return std::stoull(line.substr(kPrefix.size()));
  }
  ADD_FAILURE() << "no byte count on the status line";
  return 0;
}

TEST(ScreenImagesTest, ImportWritesTheBlockReplacesItAndShowsIt) {
  testing_support::OnlineScope scope;
  ASSERT_TRUE(scope.h.session.RemoteOn);
  TempFolder folder;
  Panels panels;
  ScreenImages images(scope.h.link, scope.h.ui, panels, folder.path());
  const std::string path = folder.File("screen.bmp");
  for (int import = 1; import <= 2; ++import) {
    scope.h.ui.ClearRecords();
    images.ImportScreenImage();
    const std::uintmax_t bytes = ReportedBytes(scope.h.ui.status_lines());
    EXPECT_GT(bytes, 1000u);
    EXPECT_EQ(std::filesystem::file_size(path), bytes) << import;
    EXPECT_EQ(scope.h.ui.status(), "Screen image written to " + path);
    EXPECT_FALSE(panels.panel.isNull());
    EXPECT_EQ(panels.panel, QImage(QString::fromStdString(path), "BMP"));
    EXPECT_EQ(scope.h.ui.pointer(), ui::PointerShape::kDefault);
  }
  const std::vector<std::string> once =
      testing_support::WithErrorQuery({":HARDcopy:INKSaver OFF", ":DISPlay:DATA? BMP8BIT, COLor"});
  std::vector<std::string> expected = once;
  expected.insert(expected.end(), once.begin(), once.end());
  EXPECT_EQ(scope.Sent(), expected);
}

TEST(ScreenImagesTest, NoBytesKeepThePreviousPictureAndFile) {
  testing_support::LinkHarness h;  // remote control off: nothing arrives
  TempFolder folder;
  Panels panels;
  panels.panel = QImage(4, 3, QImage::Format_RGB32);
  panels.panel.fill(Qt::green);
  testing_support::WriteWholeFile(folder.File("screen.bmp"), "old");
  ScreenImages images(h.link, h.ui, panels, folder.path());
  images.ImportScreenImage();
  EXPECT_EQ(h.ui.status_lines().front(), "Screen image bytes: 0");
  EXPECT_NE(h.ui.status().find("previous picture is kept"), std::string::npos);
  EXPECT_EQ(testing_support::ReadWholeFile(folder.File("screen.bmp")), "old");
  EXPECT_EQ(panels.panel.pixelColor(0, 0), QColor(Qt::green));
}

TEST(ScreenImagesTest, ScreenShootThenSaveImageWritesTheProgramsDrawing) {
  testing_support::LinkHarness h;
  TempFolder folder;
  Panels panels;
  panels.panel = QImage(8, 8, QImage::Format_RGB32);
  panels.panel.fill(Qt::yellow);  // an imported screen
  panels.drawing = QImage(40, 30, QImage::Format_RGB32);
  panels.drawing.fill(Qt::black);
  panels.drawing.setPixelColor(5, 7, Qt::red);
  ScreenImages images(h.link, h.ui, panels, folder.path());
  images.CaptureOwnScreen();
  panels.drawing.fill(Qt::blue);  // the panel keeps a copy, not the live surface

  images.SaveScreenImage();  // cancelled
  const std::string path = folder.File("mine.bmp");
  h.ui.QueueSaveFileAnswer(path);
  images.SaveScreenImage();
  ASSERT_EQ(h.ui.save_requests().size(), 2u);
  EXPECT_EQ(h.ui.save_requests()[0].title, "Save BMP File");
  EXPECT_EQ(h.ui.save_requests()[0].filter, "BMP Files(*.bmp)|*.bmp");
  EXPECT_EQ(h.ui.save_requests()[0].initial_path, folder.path());
  const QImage saved(QString::fromStdString(path), "BMP");
  ASSERT_EQ(saved.size(), QSize(40, 30));
  EXPECT_EQ(saved.pixelColor(5, 7), QColor(Qt::red));
  EXPECT_EQ(saved.pixelColor(6, 7), QColor(Qt::black));
}

}  // namespace
}  // namespace quarvelo::files
