// The main window's dialog tools against the simulated oscilloscope over loopback TCP: each
// tool opens its dialog, the generator panel stays open beside the window until the link
// closes, and the guide opens in a window of its own.
#include <gtest/gtest.h>

#include <QApplication>
#include <QTimer>

#include "tests/app/window_on_simulator.h"

namespace quarvelo::app {
namespace {

class WindowDialogsTest : public testing_support::WindowOnSimulator {
 protected:
  void SetUp() override {
    WindowOnSimulator::SetUp();
    if (!HasFatalFailure()) Load({{"DSO", "1"}, {"WGEN", "1"}}, true);
  }
};

TEST_F(WindowDialogsTest, ModalDialogToolsOpenTheirDialog) {
  const struct {
    const char* tool;
    const char* dialog;
    const char* sent_first;  // "" when the tool sends nothing before the dialog
  } cases[] = {{"ID_MATHSET", "frmMath", ":FUNC1:DISPlay 1"},
               {"ID_DISPANN", "frmAnnotation", ""},
               {"ID_About", "frmAbout", ""}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.tool);
    QString shown;
    QTimer::singleShot(0, [&shown] {
      QWidget* dialog = QApplication::activeModalWidget();
      ASSERT_NE(dialog, nullptr);
      shown = dialog->objectName();
      dialog->close();
    });
    Trigger(c.tool);
    EXPECT_EQ(shown, c.dialog);
    EXPECT_TRUE(*c.sent_first == '\0' || Received({c.sent_first}));
  }
}

TEST_F(WindowDialogsTest, GeneratorPanelStaysBesideTheWindowUntilTheLinkCloses) {
  Trigger("ID_WGENSET");
  QWidget* panel = window_->findChild<QWidget*>("frmWGEN");
  ASSERT_NE(panel, nullptr);
  EXPECT_TRUE(panel->isVisible());
  EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
  EXPECT_TRUE(window_->Scope().WgenDialogOpen);
  EXPECT_TRUE(Received({":WGEN1:FUNCtion?"}));  // read back before it shows

  Trigger("ID_WGENSET");
  EXPECT_EQ(window_->findChildren<QWidget*>("frmWGEN").size(), 1);

  window_->Link().CloseInstrument();
  EXPECT_FALSE(window_->Scope().WgenDialogOpen);
  EXPECT_FALSE(panel->isVisible());
  window_->Link().OpenInstrument();
  Trigger("ID_WGENSET");
  EXPECT_TRUE(window_->Scope().WgenDialogOpen);
  EXPECT_TRUE(window_->findChild<QWidget*>("frmWGEN")->isVisible()) << "opens again";
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
}

}  // namespace
}  // namespace quarvelo::app
