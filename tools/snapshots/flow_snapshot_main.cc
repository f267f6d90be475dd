// Pictures of the real flow for the documentation, made by the real window against the
// simulated oscilloscope on loopback: Control switched on and channels 2 and 3 shown (the
// traces of a sweep), then FFT Channel 2 averaged over four passes and zoomed to 0..100 kHz,
// where its fundamental and harmonics lie, then the mixed-domain view of a sweep.
//   quarvelo_flow_snapshot TRACES.png SPECTRUM.png MIXED.png [WIDTH HEIGHT]
// It runs offscreen with its own temporary settings and data folders.
#include <QApplication>
#include <QLineEdit>
#include <QPushButton>
#include <QPixmap>
#include <QTemporaryDir>
#include <QTimer>
#include <cstdio>
#include <memory>
#include <string>

#include "app/frmKeysight.h"
#include "app/program_icon.h"
#include "app/qt_startup_platform.h"
#include "control/tool_dispatcher.h"
#include "platform/qt/qsettings_store.h"
#include "sim/simulator.h"

namespace {

void LetEventsRun() {
  for (int i = 0; i < 20; ++i) QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
}

bool Save(quarvelo::app::frmKeysight& window, const char* path) {
  LetEventsRun();
  const bool saved = window.grab().save(QString::fromLocal8Bit(path));
  if (!saved) std::fprintf(stderr, "cannot write %s\n", path);
  return saved;
}

// A state tool pressed by the user: it goes down (or up), then its command runs.
void Press(quarvelo::app::frmKeysight& window, const char* tool, bool down) {
  window.Tools().SetToolState(tool, down);
  window.Dispatcher().ToolClick(tool);
}

}  // namespace

int main(int argc, char* argv[]) {
  if (argc != 4 && argc != 6) {
    std::fprintf(
        stderr, "usage: quarvelo_flow_snapshot TRACES.png SPECTRUM.png MIXED.png [WIDTH HEIGHT]\n");
    return 2;
  }
  QTemporaryDir home;
  if (!home.isValid()) return 1;
  if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
  qputenv("XDG_CONFIG_HOME", (home.path() + "/config").toUtf8());
  qputenv("XDG_DATA_HOME", (home.path() + "/data").toUtf8());
  QApplication application(argc, argv);
  QApplication::setWindowIcon(quarvelo::app::ProgramIcon());

  quarvelo::sim::SimulatorOptions options;
  options.vxi11_port = -1;
  options.portmapper_port = -1;
  options.hislip_port = -1;
  std::string error;
  std::unique_ptr<quarvelo::sim::Simulator> simulator =
      quarvelo::sim::Simulator::Start(options, &error);
  if (simulator == nullptr) {
    std::fprintf(stderr, "simulator: %s\n", error.c_str());
    return 1;
  }

  quarvelo::qt::QSettingsStore store(home.path() + "/QUARVELO.conf");
  store.Set("Setup", "VISA", simulator->SocketResource());
  store.Set("Setup", "DSO", "1");
  store.Set("Setup", "Channels", "4");
  store.Set("Setup", "DVM", "1");
  store.Set("Setup", "WGEN", "1");
  quarvelo::app::QtStartupPlatform platform;
  quarvelo::app::frmKeysight window(store, platform);
  if (!window.Form_Load()) return 1;
  window.resize(argc == 6 ? QString(argv[4]).toInt() : 1400,
                argc == 6 ? QString(argv[5]).toInt() : 900);
  window.show();
  LetEventsRun();

  // Oscilloscope -> Control: the link opens, the settings are read back and one sweep runs.
  Press(window, "ID_Remote", true);
  if (!window.Session().RemoteOn) {
    std::fprintf(stderr, "the link did not open\n");
    return 1;
  }
  Press(window, "ID_CH2", true);
  Press(window, "ID_CH3", true);
  window.Dispatcher().ToolClick("ID_DIG");
  if (!Save(window, argv[1])) return 1;

  // FFT Channel 2, averaged over four passes, then centre 50 kHz and span 100 kHz.
  window.Settings().AverageCount = 4;
  window.Dispatcher().ToolClick("ID_FFT2");
  for (QLineEdit* box : window.findChildren<QLineEdit*>("txtMHz")) {
    const int index = box->property("index").toInt();
    if (index == 0) box->setText("0.05");
    if (index == 1) box->setText("0.1");
  }
  window.findChild<QPushButton*>("cmdSet")->click();
  if (!Save(window, argv[2])) return 1;

  // Mixed Domain Interface on: the next sweep draws the spectrum of the shown samples too.
  Press(window, "ID_MDI", true);
  window.Dispatcher().ToolClick("ID_DIG");
  if (!Save(window, argv[3])) return 1;

  Press(window, "ID_Remote", false);
  return 0;
}
