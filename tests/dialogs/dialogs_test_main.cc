// Offscreen, with the per-user folders in a temporary folder: these tests never touch the
// user's own settings.
#include <gtest/gtest.h>

#include <QApplication>
#include <QTemporaryDir>

int main(int argc, char* argv[]) {
  QTemporaryDir home;
  if (!home.isValid()) return 2;
  qputenv("QT_QPA_PLATFORM", "offscreen");
  qputenv("HOME", home.path().toUtf8());
  qputenv("XDG_CONFIG_HOME", (home.path() + "/config").toUtf8());
  qputenv("XDG_DATA_HOME", (home.path() + "/data").toUtf8());
  qputenv("XDG_RUNTIME_DIR", (home.path() + "/runtime").toUtf8());
  QApplication application(argc, argv);
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
