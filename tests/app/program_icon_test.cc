#include "app/program_icon.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QTemporaryDir>

namespace quarvelo::app {
namespace {

// Installed (or copied beside the build's bin/) icon files win over the drawing.
TEST(ProgramIconTest, PrefersTheIconFilesBesideTheExecutable) {
  QTemporaryDir prefix;
  const QString apps = prefix.filePath(QStringLiteral("share/icons/hicolor/48x48/apps"));
  ASSERT_TRUE(QDir().mkpath(apps));
  QImage red(48, 48, QImage::Format_ARGB32);
  red.fill(Qt::red);
  ASSERT_TRUE(red.save(apps + "/" + QString::fromLatin1(kDesktopId) + ".png"));
  QDir().mkpath(prefix.filePath(QStringLiteral("bin")));

  const QIcon installed = ProgramIcon(prefix.filePath(QStringLiteral("bin")));
  EXPECT_EQ(installed.pixmap(48, 48).toImage().pixelColor(24, 24), QColor(Qt::red));

  const QIcon drawn = ProgramIcon(prefix.filePath(QStringLiteral("nowhere/bin")));
  EXPECT_EQ(drawn.pixmap(48, 48).toImage().convertToFormat(QImage::Format_ARGB32),
            DrawProgramIcon(48).convertToFormat(QImage::Format_ARGB32));
}

}  // namespace
}  // namespace quarvelo::app
