// The main window's "Import Image" tool against the simulated oscilloscope over loopback TCP.
#include <gtest/gtest.h>

#include <QFile>
#include <QLabel>
#include <QtEndian>

#include "platform/qt/picture_box.h"
#include "tests/app/window_on_simulator.h"

namespace quarvelo::app {
namespace {

using FilesWindowTest = testing_support::WindowOnSimulator;

TEST_F(FilesWindowTest, ImportImageToolShowsTheOscilloscopesScreenFromItsFile) {
  Load({}, true);
  Trigger("ID_ScreenShoot");

  const QString path = QString::fromStdString(window_->DataFolder()) + "/screen.bmp";
  EXPECT_EQ(window_->findChild<QLabel*>("lblScreen")->text(), "Screen image written to " + path);
  EXPECT_TRUE(Received({":DISPlay:DATA? BMP8BIT, COLor"}));
  // The file is the block alone: its size is the one its BMP header declares.
  QFile file(path);
  ASSERT_TRUE(file.open(QIODevice::ReadOnly));
  const QByteArray bytes = file.readAll();
  ASSERT_GT(bytes.size(), 54);
  EXPECT_EQ(bytes.left(2), "BM");
  EXPECT_EQ(qFromLittleEndian<quint32>(bytes.constData() + 2), static_cast<quint32>(bytes.size()));
  const QImage shown = window_->picKeysight()->Image();
  EXPECT_EQ(shown, QImage(path, "BMP").convertToFormat(QImage::Format_RGB32));
}

}  // namespace
}  // namespace quarvelo::app
