// QUARVELO: remote control and host-side spectrum analysis for X-series oscilloscopes.
#include <QApplication>
#include <cstdio>
#include <string>
#include <vector>

#include "app/frmKeysight.h"
#include "app/program_command_line.h"
#include "app/program_icon.h"
#include "app/qt_startup_platform.h"
#include "app/quit_signals.h"
#include "platform/qt/qsettings_store.h"

int main(int argc, char* argv[]) {
  // Before QApplication: --help must work on a console without a display.
  switch (quarvelo::app::ProgramActionFor(std::vector<std::string>(argv + 1, argv + argc))) {
    case quarvelo::app::ProgramAction::kHelp:
      std::fputs(quarvelo::app::ProgramUsage().c_str(), stdout);
      return 0;
    case quarvelo::app::ProgramAction::kVersion:
      std::fputs(quarvelo::app::ProgramVersionText().c_str(), stdout);
      return 0;
    case quarvelo::app::ProgramAction::kRun:
      break;
  }
  QApplication application(argc, argv);
  QApplication::setOrganizationName(QStringLiteral("QUARVELO"));
  QApplication::setApplicationName(QStringLiteral("QUARVELO"));
  QApplication::setApplicationVersion(QStringLiteral(QUARVELO_VERSION_TEXT));
  QApplication::setDesktopFileName(QString::fromLatin1(quarvelo::app::kDesktopId));
  QApplication::setWindowIcon(quarvelo::app::ProgramIcon(QApplication::applicationDirPath()));

  quarvelo::qt::QSettingsStore store;
  quarvelo::app::QtStartupPlatform platform;
  quarvelo::app::frmKeysight window(store, platform);
  if (!window.Form_Load()) return 0;  // another instance is running
  quarvelo::app::QuitSignals quit_signals(&window);
  window.show();
  return QApplication::exec();
}
