// The program's window icon, drawn rather than shipped as a file.
#ifndef QUARVELO_APP_PROGRAM_ICON_H_
#define QUARVELO_APP_PROGRAM_ICON_H_

#include <QIcon>

namespace quarvelo::app {

QIcon ProgramIcon();

}  // namespace quarvelo::app

#endif  // QUARVELO_APP_PROGRAM_ICON_H_
