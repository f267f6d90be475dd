// The main window's "Import Image" tool against the simulated oscilloscope over loopback TCP.
#include <gtest/gtest.h>

#include <QAction>
#include <QFile>
#include <QLabel>
#include <QTemporaryDir>
#include <QtEndian>
#include <algorithm>
#include <memory>

#include "app/frmKeysight.h"
#include "app/qt_startup_platform.h"
#include "platform/qt/picture_box.h"
#include "platform/qt/qsettings_store.h"
#include "sim/simulator.h"

namespace quarvelo::app {
namespace {

TEST(FilesWindowTest, ImportImageToolShowsTheOscilloscopesScreenFromItsFile) {
  QTemporaryDir dir;
  qputenv("XDG_DATA_HOME", (dir.path() + "/data").toUtf8());
  sim::SimulatorOptions options;
  options.vxi11_port = -1;
  options.portmapper_port = -1;
  options.hislip_port = -1;
  std::string error;
  const std::unique_ptr<sim::Simulator> simulator = sim::Simulator::Start(options, &error);
  ASSERT_NE(simulator, nullptr) << error;
  qt::QSettingsStore store(dir.path() + "/QUARVELO.conf");
  store.Set("Setup", "VISA", simulator->SocketResource());
  QtStartupPlatform platform;
  frmKeysight window(store, platform);
  ASSERT_TRUE(window.Form_Load());
  window.Link().OpenInstrument();
  ASSERT_TRUE(window.Session().RemoteOn);

  window.findChild<QAction*>("ID_ScreenShoot")->trigger();

  const QString path = QString::fromStdString(window.DataFolder()) + "/screen.bmp";
  EXPECT_EQ(window.findChild<QLabel*>("lblScreen")->text(), "Screen image written to " + path);
  const std::vector<std::string> received = simulator->ReceivedMessages();
  EXPECT_NE(std::find(received.begin(), received.end(), ":DISPlay:DATA? BMP8BIT, COLor"),
            received.end());
  // The file is the block alone: its size is the one its BMP header declares.
  QFile file(path);
  ASSERT_TRUE(file.open(QIODevice::ReadOnly));
  const QByteArray bytes = file.readAll();
  ASSERT_GT(bytes.size(), 54);
  EXPECT_EQ(bytes.left(2), "BM");
  EXPECT_EQ(qFromLittleEndian<quint32>(bytes.constData() + 2), static_cast<quint32>(bytes.size()));
  const QImage shown = window.picKeysight()->Image();
  EXPECT_EQ(shown, QImage(path, "BMP").convertToFormat(QImage::Format_RGB32));
  window.Link().CloseInstrument();
}

}  // namespace
}  // namespace quarvelo::app
