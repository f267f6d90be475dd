// Not installed: writes the program's icon as <folder>/<side>x<side>/apps/<id>.png for the
// sides given, so the installed PNGs are the window's own drawing.
#include <QDir>
#include <QGuiApplication>
#include <QImage>
#include <cstdio>
#include <cstdlib>

#include "app/program_icon.h"

int main(int argc, char* argv[]) {
  if (argc < 3) {
    std::fputs("usage: quarvelo_icon_png FOLDER SIDE...\n", stderr);
    return 2;
  }
  const QDir folder(QString::fromLocal8Bit(argv[1]));
  for (int i = 2; i < argc; ++i) {
    const int side = std::atoi(argv[i]);
    const QString relative = QStringLiteral("%1x%1/apps").arg(side);
    if (side <= 0 || !folder.mkpath(relative)) return 1;
    const QString file = folder.filePath(
        relative + QStringLiteral("/%1.png").arg(QLatin1String(quarvelo::app::kDesktopId)));
    if (!quarvelo::app::DrawProgramIcon(side).save(file, "PNG")) {
      std::fprintf(stderr, "cannot write %s\n", qPrintable(file));
      return 1;
    }
  }
  return 0;
}
