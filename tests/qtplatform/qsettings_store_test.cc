#include "platform/qt/qsettings_store.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QStandardPaths>
#include <QTemporaryDir>

namespace quarvelo::qt {
namespace {

TEST(QSettingsStoreTest, ValuesAreTextInSectionsAndSurviveANewStore) {
  QTemporaryDir dir;
  const QString path = dir.path() + "/QUARVELO.conf";
  {
    QSettingsStore store(path);
    EXPECT_EQ(store.Get("Setup", "VISA", "none"), "none");
    store.Set("Setup", "VISA", "TCPIP0::127.0.0.1::5025::SOCKET");
    store.Set("FFT", "BWL", "200");
    store.Set("Macros", "Command1_3", ":MEAS:VPP? CHAN1; :RUN");
    store.Set("Macros", "Caption3", "");
  }
  QSettingsStore reopened(path);
  EXPECT_EQ(reopened.Get("Setup", "VISA", ""), "TCPIP0::127.0.0.1::5025::SOCKET");
  EXPECT_EQ(reopened.Get("FFT", "BWL", ""), "200");
  EXPECT_EQ(reopened.Get("Macros", "Command1_3", ""), ":MEAS:VPP? CHAN1; :RUN");
  EXPECT_EQ(reopened.Get("Macros", "Caption3", "MAC3"), "");
  EXPECT_EQ(reopened.Get("FFT", "VISA", "missing"), "missing");
}

TEST(QSettingsStoreTest, HandEditedAndBrokenFilesStillRead) {
  QTemporaryDir dir;
  const QString path = dir.path() + "/QUARVELO.conf";
  {
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("[Setup]\nChannels=4, 2\nHeight\n\x01\x02garbage[[\n[FFT\nAVG=3\n");
  }
  QSettingsStore store(path);
  EXPECT_EQ(store.Get("Setup", "Channels", "2"), "4, 2");
  EXPECT_EQ(store.Get("Setup", "Width", "14580"), "14580");
  store.Set("Setup", "Width", "9000");
  EXPECT_EQ(QSettingsStore(path).Get("Setup", "Width", ""), "9000");
}

TEST(QSettingsStoreTest, UserStoreLivesUnderTheConfigFolder) {
  QSettingsStore store;
  EXPECT_TRUE(store.FileName().startsWith(
      QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation)))
      << store.FileName().toStdString();
  EXPECT_TRUE(store.FileName().endsWith("QUARVELO/QUARVELO.conf"));
}

}  // namespace
}  // namespace quarvelo::qt
