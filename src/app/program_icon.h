// The program's icon. The installed icon files (the SVG and the PNGs the build draws with
// DrawProgramIcon) are preferred; the drawing stands in when run from the build folder.
#ifndef QUARVELO_APP_PROGRAM_ICON_H_
#define QUARVELO_APP_PROGRAM_ICON_H_

#include <QIcon>
#include <QImage>
#include <QString>

namespace quarvelo::app {

// The desktop entry's id, also the icon's name in the icon theme.
inline constexpr char kDesktopId[] = "org.quarvelo.Quarvelo";

// The icon drawn at side x side pixels (needs no application object).
QImage DrawProgramIcon(int side);

// The PNGs installed under <executable folder>/../share/icons/hicolor, then the icon theme,
// then the drawing.
QIcon ProgramIcon(const QString& executable_folder = QString());

}  // namespace quarvelo::app

#endif  // QUARVELO_APP_PROGRAM_ICON_H_
