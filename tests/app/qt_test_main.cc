// The main of the Qt test programs (window, dialogs, Qt platform): they run without a display
// and never see the user's own settings or data. The platform plugin is "offscreen" and the
// per-user folders point into a temporary folder that lives as long as the test program.
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
