// The main window's dialog tools against the simulated oscilloscope over loopback TCP: each
// tool opens its dialog, the generator panel stays open beside the window until the link
// closes, and the guide opens in a window of its own.
#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QLabel>
#include <QTemporaryDir>
#include <QTimer>
#include <algorithm>
#include <memory>

#include "app/frmKeysight.h"
#include "app/qt_startup_platform.h"
#include "platform/qt/qsettings_store.h"
#include "sim/simulator.h"

namespace quarvelo::app {
namespace {

class WindowDialogsTest : public testing::Test {
 protected:
  void SetUp() override {
    qputenv("XDG_DATA_HOME", (dir_.path() + "/data").toUtf8());
    sim::SimulatorOptions options;
    options.vxi11_port = -1;
    options.portmapper_port = -1;
    options.hislip_port = -1;
    std::string error;
    simulator_ = sim::Simulator::Start(options, &error);
    ASSERT_NE(simulator_, nullptr) << error;
    store_ = std::make_unique<qt::QSettingsStore>(dir_.path() + "/QUARVELO.conf");
    store_->Set("Setup", "VISA", simulator_->SocketResource());
    store_->Set("Setup", "DSO", "1");
    store_->Set("Setup", "Channels", "4");
    store_->Set("Setup", "WGEN", "1");
    window_ = std::make_unique<frmKeysight>(*store_, platform_);
    ASSERT_TRUE(window_->Form_Load());
    window_->Link().OpenInstrument();
    ASSERT_TRUE(window_->Session().RemoteOn);
  }
  void Trigger(const char* tool) { window_->findChild<QAction*>(tool)->trigger(); }
  bool Received(const std::string& message) const {
    const std::vector<std::string> received = simulator_->ReceivedMessages();
    return std::find(received.begin(), received.end(), message) != received.end();
  }

  QTemporaryDir dir_;
  std::unique_ptr<sim::Simulator> simulator_;
  std::unique_ptr<qt::QSettingsStore> store_;
  QtStartupPlatform platform_;
  std::unique_ptr<frmKeysight> window_;
};

TEST_F(WindowDialogsTest, ModalDialogToolsOpenTheirDialog) {
  const struct {
    const char* tool;
    const char* dialog;
    const char* title;
    const char* sent_first;  // "" when the tool sends nothing before the dialog
  } cases[] = {{"ID_MATHSET", "frmMath", "MATH Settings", ":FUNC1:DISPlay 1"},
               {"ID_DISPANN", "frmAnnotation", "Annotation", ""},
               {"ID_About", "frmAbout", "About QUARVELO", ""}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.tool);
    QString shown;
    QTimer::singleShot(0, [&shown] {
      QWidget* dialog = QApplication::activeModalWidget();
      ASSERT_NE(dialog, nullptr);
      shown = dialog->objectName() + "|" + dialog->windowTitle();
      dialog->close();
    });
    Trigger(c.tool);
    EXPECT_EQ(shown, QString(c.dialog) + "|" + c.title);
    if (*c.sent_first != '\0') EXPECT_TRUE(Received(c.sent_first));
  }
}

TEST_F(WindowDialogsTest, GeneratorPanelStaysBesideTheWindowUntilTheLinkCloses) {
  Trigger("ID_WGENSET");
  QWidget* panel = window_->findChild<QWidget*>("frmWGEN");
  ASSERT_NE(panel, nullptr);
  EXPECT_TRUE(panel->isVisible());
  EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
  EXPECT_TRUE(window_->Scope().WgenDialogOpen);
  EXPECT_TRUE(Received(":WGEN1:FUNCtion?"));  // read back before it shows

  Trigger("ID_WGENSET");
  EXPECT_EQ(window_->findChildren<QWidget*>("frmWGEN").size(), 1);

  window_->Link().CloseInstrument();
  EXPECT_FALSE(window_->Scope().WgenDialogOpen);
  EXPECT_FALSE(panel->isVisible());
}

TEST_F(WindowDialogsTest, HelpToolOpensTheGuideInAWindowOfItsOwn) {
  Trigger("ID_HLP");
  QWidget* guide = nullptr;
  for (QWidget* top : QApplication::topLevelWidgets()) {
    if (top->objectName() == "frmHelp") guide = top;
  }
  ASSERT_NE(guide, nullptr);
  EXPECT_TRUE(guide->isVisible());
  EXPECT_EQ(guide->parentWidget(), nullptr);
  EXPECT_EQ(guide->windowTitle(), "QUARVELO Help");
}

}  // namespace
}  // namespace quarvelo::app
