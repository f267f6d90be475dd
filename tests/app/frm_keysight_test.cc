#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QLineEdit>
#include <QPushButton>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QToolButton>
#include <csignal>
#include <memory>

#include "app/frmKeysight.h"
#include "app/qt_startup_platform.h"
#include "app/quit_signals.h"
#include "app/set_top_most.h"
#include "platform/qt/picture_box.h"
#include "platform/qt/qsettings_store.h"

namespace quarvelo::app {
namespace {

// Each test gets its own data folder and settings file.
class FrmKeysightTest : public testing::Test {
 protected:
  FrmKeysightTest() {
    qputenv("XDG_DATA_HOME", (dir_.path() + "/data").toUtf8());
    store_ = std::make_unique<qt::QSettingsStore>(SettingsPath());
  }

  QString SettingsPath() const { return dir_.path() + "/QUARVELO.conf"; }
  QString DataFolder() const { return dir_.path() + "/data/QUARVELO"; }
  // The stored text, as a second program reading the file would see it.
  QString Stored(const QString& key) const {
    QSettings file(SettingsPath(), QSettings::IniFormat);
    return file.value(key, QStringLiteral("<missing>")).toString();
  }

  std::unique_ptr<frmKeysight> NewWindow() {
    return std::make_unique<frmKeysight>(*store_, platform_);
  }

  QTemporaryDir dir_;
  std::unique_ptr<qt::QSettingsStore> store_;
  QtStartupPlatform platform_;
};

TEST_F(FrmKeysightTest, FirstStartLoadsDefaultsAndCreatesTheDataFolder) {
  auto window = NewWindow();
  ASSERT_TRUE(window->Form_Load());
  EXPECT_EQ(window->windowTitle(), QStringLiteral("QUARVELO %1.%2.%3")
                                       .arg(QUARVELO_VERSION_MAJOR)
                                       .arg(QUARVELO_VERSION_MINOR)
                                       .arg(QUARVELO_VERSION_PATCH));
  EXPECT_EQ(window->pos(), QPoint(0, 0));
  EXPECT_EQ(window->size(), QSize(14580 / 15, 11760 / 15));
  EXPECT_FALSE(window->Loading());
  EXPECT_EQ(window->DataFolder(), DataFolder().toStdString());
  EXPECT_TRUE(QDir(DataFolder()).exists());
  EXPECT_EQ(window->picTemp().size(), window->picScreen()->Image().size());
  EXPECT_FALSE(window->Session().RemoteOn);
  EXPECT_FALSE(window->Tools().ToolState("ID_Remote"));
  // The timers tick every second, once the link opens (tests/app/frm_keysight_link_test.cc).
  for (const char* name : {"tmrRefresh", "tmrSingle"}) {
    auto* timer = window->findChild<QTimer*>(QString::fromLatin1(name));
    ASSERT_NE(timer, nullptr) << name;
    EXPECT_EQ(timer->interval(), 1000) << name;
    EXPECT_FALSE(timer->isActive()) << name;
  }
}

TEST_F(FrmKeysightTest, StoredGeometryAndMacroCaptionsAreApplied) {
  store_->Set("Setup", "Top", "1500");
  store_->Set("Setup", "Left", "3000");
  store_->Set("Setup", "Width", "abc");  // reads 0: the width is left alone
  store_->Set("Macros", "Caption2", "Autoscale");
  store_->Set("FFT", "BW", "1");
  store_->Set("FFT", "AVG", "3");
  auto window = NewWindow();
  const int width_before = window->width();
  ASSERT_TRUE(window->Form_Load());
  EXPECT_EQ(window->pos(), QPoint(200, 100));
  EXPECT_EQ(window->size(), QSize(width_before, 784));
  EXPECT_EQ(window->findChildren<QPushButton*>("cmdMac")[1]->text(), "Autoscale");
  EXPECT_TRUE(window->findChild<QToolButton*>("ssrBW")->isChecked());
  // The averaging list shows the stored entry after the toolbar rebuild.
  EXPECT_EQ(window->Tools().ComboIndex("ID_AVG"), 3);
  EXPECT_EQ(window->Tools().ComboText("ID_AVG"), "8");
  EXPECT_EQ(window->Settings().AverageCount, 8);
}

TEST_F(FrmKeysightTest, ClosingStoresSettingsAsTextThatTheNextRunReads) {
  {
    auto window = NewWindow();
    ASSERT_TRUE(window->Form_Load());
    window->move(30, 40);
    window->resize(800, 600);
    // As the user does it: typed into the box, then the ribbon button clicked.
    QLineEdit* upper_limit = window->findChildren<QLineEdit*>("txtMHz")[2];
    upper_limit->clear();
    QTest::keyClicks(upper_limit, "350");
    window->findChild<QToolButton*>("ssrBW")->click();
    window->close();
  }
  for (const auto& [key, text] : {std::pair{"Setup/Top", "600"},
                                  {"Setup/Left", "450"},
                                  {"Setup/Width", "12000"},
                                  {"Setup/Height", "9000"},
                                  {"FFT/BWL", "350"},
                                  {"FFT/BW", "1"},
                                  {"FFT/Window", "6"},
                                  {"Setup/DVM", "0"}}) {
    EXPECT_EQ(Stored(key), text) << key;
  }

  // The next run (the same platform object still holds the lock) reads it all back.
  auto again = NewWindow();
  ASSERT_TRUE(again->Form_Load());
  EXPECT_EQ(again->pos(), QPoint(30, 40));
  EXPECT_EQ(again->size(), QSize(800, 600));
  EXPECT_EQ(again->findChildren<QLineEdit*>("txtMHz")[2]->text(), "350");
}

TEST_F(FrmKeysightTest, AWindowDestroyedWithoutClosingStillSaves) {
  {
    auto window = NewWindow();
    ASSERT_TRUE(window->Form_Load());
  }
  EXPECT_EQ(Stored("FFT/AVG"), "0");
  EXPECT_EQ(Stored("Setup/Height"), "11760");
}

TEST_F(FrmKeysightTest, ASecondInstanceOnTheSameDataFolderEndsAtOnce) {
  auto first = NewWindow();
  ASSERT_TRUE(first->Form_Load());
  QtStartupPlatform other_platform;
  frmKeysight second(*store_, other_platform);
  EXPECT_FALSE(second.Form_Load());
  EXPECT_NE(second.windowTitle().left(9), "QUARVELO ");
  second.close();
  // The second instance ended before loading: it must not overwrite what the first stored.
  EXPECT_EQ(Stored("FFT/AVG"), "<missing>");
}

TEST_F(FrmKeysightTest, DrawingSurfaceIsBlackAndFollowsTheWindowSize) {
  auto window = NewWindow();
  ASSERT_TRUE(window->Form_Load());
  window->show();
  window->resize(1000, 800);
  QCoreApplication::processEvents();
  qt::PictureBox* surface = window->picScreen();
  EXPECT_EQ(surface->Image().size(), surface->size());
  EXPECT_EQ(surface->Image().pixelColor(5, 5), QColor(0, 0, 0));
  window->resize(700, 500);
  QCoreApplication::processEvents();
  EXPECT_EQ(surface->Image().size(), surface->size());
}

TEST_F(FrmKeysightTest, TopMostKeepsThePlaceAndTheFlag) {
  auto window = NewWindow();
  ASSERT_TRUE(window->Form_Load());
  window->show();
  window->setGeometry(50, 60, 640, 480);
  const QRect before = window->geometry();
  SetTopMost(window.get(), true);
  EXPECT_TRUE(window->windowFlags().testFlag(Qt::WindowStaysOnTopHint));
  EXPECT_TRUE(window->isVisible());
  EXPECT_EQ(window->geometry(), before);
  SetTopMost(window.get(), false);
  EXPECT_FALSE(window->windowFlags().testFlag(Qt::WindowStaysOnTopHint));
  EXPECT_EQ(window->geometry(), before);
}

TEST_F(FrmKeysightTest, SettingsDialogOkRebuildsTheToolbarForTheNewConfiguration) {
  auto window = NewWindow();
  ASSERT_TRUE(window->Form_Load());
  QTimer::singleShot(0, [] {
    QWidget* dialog = QApplication::activeModalWidget();
    ASSERT_NE(dialog, nullptr);
    ASSERT_EQ(dialog->objectName(), "frmSettings");
    dialog->findChild<QComboBox*>("cboDSO")->setCurrentIndex(1);
    dialog->findChild<QLineEdit*>("txtVISA")->setText(" TCPIP0::127.0.0.1::5025::SOCKET ");
    dialog->findChild<QAbstractButton*>("cmdOk")->click();
  });
  window->ShowSettingsDialog();
  EXPECT_EQ(window->Session().Address, "TCPIP0::127.0.0.1::5025::SOCKET");
  // The rebuild read the new model: X3000 numbers its math functions.
  EXPECT_EQ(window->Scope().Model, 1);
  EXPECT_EQ(window->Scope().MathPrefix, ":FUNC1");
}

TEST_F(FrmKeysightTest, TerminationSignalClosesTheWindowAndSaves) {
  auto window = NewWindow();
  ASSERT_TRUE(window->Form_Load());
  window->show();
  QuitSignals quit_signals(window.get());
  std::raise(SIGTERM);
  for (int i = 0; i < 100 && window->isVisible(); ++i) {
    QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
  }
  EXPECT_FALSE(window->isVisible());
  EXPECT_EQ(Stored("Setup/Width"), "14580");
}

}  // namespace
}  // namespace quarvelo::app
