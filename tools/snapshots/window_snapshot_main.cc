// Saves a picture of the main window as a user first sees it, for the documentation:
//   quarvelo_window_snapshot OUT.png [WIDTH HEIGHT]
// It runs offscreen with its own temporary settings and data folders.
#include <QApplication>
#include <QPixmap>
#include <QTemporaryDir>
#include <cstdio>

#include "app/frmKeysight.h"
#include "app/program_icon.h"
#include "app/qt_startup_platform.h"
#include "platform/qt/qsettings_store.h"

int main(int argc, char* argv[]) {
  if (argc != 2 && argc != 4) {
    std::fprintf(stderr, "usage: quarvelo_window_snapshot OUT.png [WIDTH HEIGHT]\n");
    return 2;
  }
  QTemporaryDir home;
  if (!home.isValid()) return 1;
  if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
  qputenv("XDG_CONFIG_HOME", (home.path() + "/config").toUtf8());
  qputenv("XDG_DATA_HOME", (home.path() + "/data").toUtf8());
  QApplication application(argc, argv);
  QApplication::setWindowIcon(quarvelo::app::ProgramIcon());
  quarvelo::qt::QSettingsStore store(home.path() + "/QUARVELO.conf");
  quarvelo::app::QtStartupPlatform platform;
  quarvelo::app::frmKeysight window(store, platform);
  if (!window.Form_Load()) return 1;
  if (argc == 4) window.resize(QString(argv[2]).toInt(), QString(argv[3]).toInt());
  window.show();
  window.Ui().ShowStatus("Ready");
  for (int i = 0; i < 20; ++i) QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
  return window.grab().save(QString::fromLocal8Bit(argv[1])) ? 0 : 1;
}
