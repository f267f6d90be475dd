#include "dialogs/help.h"

#include <QDesktopServices>
#include <QDir>
#include <QFileInfo>
#include <QUrl>

namespace quarvelo::dialogs {

std::int32_t OpenDocument(std::string_view target) {
  const QString text =
      QString::fromUtf8(target.data(), static_cast<qsizetype>(target.size())).trimmed();
  if (text.isEmpty()) return kFileNotFound;
  // Relative paths are taken from the root folder, as the opener runs with no folder of ours.
  const QUrl url = QUrl::fromUserInput(text, QDir::rootPath());
  if (!url.isValid()) return kFileNotFound;
  if (url.isLocalFile()) {
    const QFileInfo file(url.toLocalFile());
    if (!file.exists()) return file.dir().exists() ? kFileNotFound : kPathNotFound;
    if (!file.isReadable()) return kAccessDenied;
  }
  return QDesktopServices::openUrl(url) ? kOpened : kNoAssociation;
}

std::string OpenDocumentErrorText(std::int32_t code) {
  switch (code) {
    case 2:
      return "File not found";
    case 3:
      return "Path not found";
    case 5:
      return "Access denied";
    case 8:
      return "Out of memory";
    case 11:
      return "invalid EXE file or mirror in EXE image";
    case 26:
      return "A sharing violation occured";
    case 27:
      return "incomplete or invalid file association";
    case 29:
      return "DDE transaction failed";
    case 30:
      return "DDE busy";
    case 31:
      return "No association for file extension";
    case 32:
      return "DLL not found";
    default:
      return "unknow error";
  }
}

void OpenDocumentChecked(std::string_view target, ui::UiServices& ui) {
  const std::int32_t code = OpenDocument(target);
  if (code > kOpenFailedLimit) return;
  ui.ShowMessage(OpenDocumentErrorText(code), ui::MessageIcon::kNone, ui::MessageButtons::kOk);
}

}  // namespace quarvelo::dialogs
