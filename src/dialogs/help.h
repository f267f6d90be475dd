// Opening documents and web addresses with the desktop's own opener, with readable texts for
// the failures, and the program's built-in user's guide.
#ifndef QUARVELO_DIALOGS_HELP_H_
#define QUARVELO_DIALOGS_HELP_H_

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/ui/ui_services.h"

namespace quarvelo::dialogs {

// Result codes of OpenDocument; anything above kOpenFailedLimit is success.
inline constexpr std::int32_t kFileNotFound = 2;
inline constexpr std::int32_t kPathNotFound = 3;
inline constexpr std::int32_t kAccessDenied = 5;
inline constexpr std::int32_t kNoAssociation = 31;
inline constexpr std::int32_t kOpenFailedLimit = 32;
inline constexpr std::int32_t kOpened = 42;

// The first page of the user's guide, built into the program.
inline constexpr char kHelpIndex[] = "qrc:/help/index.html";

// Hands `target` (a file path, or a web or mail address) to the desktop's opener. Returns
// kOpened on success; kFileNotFound, kPathNotFound or kAccessDenied for a local file that
// cannot be opened, kNoAssociation when the desktop has nothing to open it with.
std::int32_t OpenDocument(std::string_view target);

// The message for a failed OpenDocument code (2 "File not found" ... "unknow error").
std::string OpenDocumentErrorText(std::int32_t code);

// OpenDocument, and a message box with the failure's text when it fails.
void OpenDocumentChecked(std::string_view target, ui::UiServices& ui);

}  // namespace quarvelo::dialogs

#endif  // QUARVELO_DIALOGS_HELP_H_
