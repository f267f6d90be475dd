#include "files/screen_images.h"

#include <cstdio>
#include <memory>
#include <optional>

namespace quarvelo::files {
namespace {

struct FileCloser {
  void operator()(std::FILE* file) const { std::fclose(file); }
};

// Replaces the file with exactly `bytes`; false when it could not be written whole.
bool WriteWholeFile(const std::string& path, std::span<const std::uint8_t> bytes) {
  std::remove(path.c_str());
  std::unique_ptr<std::FILE, FileCloser> file(std::fopen(path.c_str(), "wb"));
  if (file == nullptr) return false;
  const bool written = std::fwrite(bytes.data(), 1, bytes.size(), file.get()) == bytes.size();
  return std::fclose(file.release()) == 0 && written;
}

}  // namespace

ScreenImages::ScreenImages(link::InstrumentLink& link, ui::UiServices& ui, ImagePanels& panels,
                           const std::string& data_folder)
    : link_(link), ui_(ui), panels_(panels), data_folder_(data_folder) {}

std::string ScreenImages::ScreenImagePath() const {
  if (data_folder_.empty()) return kScreenImageName;
  return data_folder_.back() == '/' ? data_folder_ + kScreenImageName
                                    : data_folder_ + "/" + kScreenImageName;
}

void ScreenImages::ImportScreenImage() {
  ui_.SetPointer(ui::PointerShape::kHourglass);
  Import();
  ui_.SetPointer(ui::PointerShape::kDefault);
}

void ScreenImages::Import() {
  link_.SendCommand(":HARDcopy:INKSaver OFF");
  const std::int32_t count = link_.QueryBinaryBlock(":DISPlay:DATA? BMP8BIT, COLor");
  ui_.ShowStatus("Screen image bytes: " + std::to_string(count));
  // An empty file could not be shown; the previous picture and its file stay.
  if (count <= 0) {
    ui_.ShowStatus("No screen image received: the previous picture is kept");
    return;
  }
  const std::string path = ScreenImagePath();
  if (!WriteWholeFile(path, link_.binary_block(count))) {
    ui_.ShowStatus("Screen image not written to " + path);
    return;
  }
  QImage picture;
  if (!picture.load(QString::fromStdString(path), "BMP")) {
    ui_.ShowStatus("Screen image written to " + path +
                   " is not a picture: the previous picture is kept");
    return;
  }
  panels_.ShowInPanel(picture);
  ui_.ShowStatus("Screen image written to " + path);
}

void ScreenImages::CaptureOwnScreen() { panels_.ShowInPanel(panels_.ScreenDrawing().copy()); }

void ScreenImages::SaveScreenImage() {
  const std::optional<std::string> path =
      ui_.AskSaveFile({"Save BMP File", "BMP Files(*.bmp)|*.bmp", data_folder_});
  if (!path.has_value()) return;
  // Errors while saving are not reported: the user can see the file is missing and try again.
  static_cast<void>(panels_.PanelPicture().save(QString::fromStdString(*path), "BMP"));
}

}  // namespace quarvelo::files
