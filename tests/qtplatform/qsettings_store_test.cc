#include "platform/qt/qsettings_store.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <tuple>

namespace quarvelo::qt {
namespace {

TEST(QSettingsStoreTest, ValuesAreTextInSectionsAndSurviveANewStore) {
  QTemporaryDir dir;
  const QString path = dir.path() + "/QUARVELO.conf";
  const std::tuple<const char*, const char*, const char*> values[] = {
      {"Setup", "VISA", "TCPIP0::127.0.0.1::5025::SOCKET"},
      {"FFT", "BWL", "200"},
      {"Macros", "Command1_3", ":MEAS:VPP? CHAN1; :RUN"},
      {"Macros", "Caption3", ""}};
  {
    QSettingsStore store(path);
    EXPECT_EQ(store.Get("Setup", "VISA", "none"), "none");
    for (const auto& [section, key, value] : values) store.Set(section, key, value);
  }
  QSettingsStore reopened(path);
  for (const auto& [section, key, value] : values)
    EXPECT_EQ(reopened.Get(section, key, "missing"), value) << key;
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
