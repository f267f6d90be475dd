#include "control/qt/qt_tool_host.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QApplication>
#include <QComboBox>
#include <QLabel>
#include <QMainWindow>
#include <QMenuBar>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>
#include <QToolButton>
#include <memory>
#include <string>
#include <vector>

#include "acquisition/scope_state.h"
#include "control/menu_layout.h"
#include "control/set_toolbar.h"
#include "control/tool_catalogue.h"
#include "platform/settings/memory_settings_store.h"

namespace quarvelo::control {
namespace {

using ::testing::ElementsAre;
using ::testing::ElementsAreArray;

QString Q(std::string_view text) { return QString::fromUtf8(text.data(), text.size()); }

std::vector<std::string> Names(const QList<QAction*>& actions) {
  std::vector<std::string> names;
  for (const QAction* action : actions) {
    names.push_back(action->isSeparator() ? "-" : action->objectName().toStdString());
  }
  return names;
}

class QtToolHostTest : public ::testing::Test {
 protected:
  QtToolHostTest() : window_(std::make_unique<QMainWindow>()), host_(window_.get()) {
    // Wide enough that no toolbar folds tools into its overflow menu.
    window_->resize(2400, 600);
  }

  QWidget* ToolbarWidget(std::string_view toolbar, std::string_view id) {
    return host_.Toolbar(toolbar)->widgetForAction(host_.Action(id));
  }
  QList<QComboBox*> Combos(std::string_view id) { return window_->findChildren<QComboBox*>(Q(id)); }

  std::unique_ptr<QMainWindow> window_;
  QtToolHost host_;
};

TEST_F(QtToolHostTest, OneActionPerToolNamedByItsIdAndCheckableByItsKind) {
  for (const ToolDefinition& tool : ToolCatalogue()) {
    QAction* action = host_.Action(tool.id);
    ASSERT_NE(action, nullptr) << tool.id;
    EXPECT_EQ(window_->findChildren<QAction*>(Q(tool.id)).size(), 1) << tool.id;
    const bool has_state = tool.kind == ToolKind::kStateButton || tool.kind == ToolKind::kDropDown;
    EXPECT_EQ(action->isCheckable(), has_state) << tool.id;
    EXPECT_EQ(action->menu() != nullptr, tool.kind == ToolKind::kMenu) << tool.id;
  }
  EXPECT_EQ(host_.Action("ID_Nothing"), nullptr);
}

TEST_F(QtToolHostTest, MenuBarMenusAndToolbarsFollowTheLayout) {
  EXPECT_THAT(Names(window_->menuBar()->actions()), ElementsAreArray(MenuBar()));
  for (const MenuDefinition& menu : Menus()) {
    ASSERT_NE(host_.Menu(menu.id), nullptr) << menu.id;
    EXPECT_THAT(Names(host_.Menu(menu.id)->actions()), ElementsAreArray(menu.entries)) << menu.id;
  }
  ASSERT_EQ(window_->findChildren<QToolBar*>().size(), 5);
  for (const ToolbarDefinition& toolbar : Toolbars()) {
    ASSERT_NE(host_.Toolbar(toolbar.name), nullptr) << toolbar.name;
    EXPECT_THAT(Names(host_.Toolbar(toolbar.name)->actions()), ElementsAreArray(toolbar.entries))
        << toolbar.name;
  }
  EXPECT_EQ(host_.ChannelMenu(), host_.Menu("mnu_Channel"));
}

TEST_F(QtToolHostTest, ToolbarClickChangesTheStateTheMenuShows) {
  QSignalSpy clicked(&host_, &QtToolHost::ToolClicked);
  window_->show();
  QWidget* button = ToolbarWidget("FFT", "ID_MDI");
  ASSERT_NE(button, nullptr);
  QTest::mouseClick(button, Qt::LeftButton);
  ASSERT_EQ(clicked.size(), 1);
  EXPECT_EQ(clicked[0][0].toString(), "ID_MDI");
  EXPECT_TRUE(host_.ToolState("ID_MDI"));
  // The FFT menu holds the very same action, so it shows the new state.
  EXPECT_TRUE(host_.Menu("mnu_FFT")->actions().contains(host_.Action("ID_MDI")));
  QTest::mouseClick(button, Qt::LeftButton);
  EXPECT_FALSE(host_.ToolState("ID_MDI"));
  EXPECT_EQ(clicked.size(), 2);
}

TEST_F(QtToolHostTest, ProgramChangesEmitNoToolEventsAndUnknownIdsAreIgnored) {
  QSignalSpy clicked(&host_, &QtToolHost::ToolClicked);
  QSignalSpy combo_changed(&host_, &QtToolHost::ComboChanged);
  host_.SetToolState("ID_Run", true);
  host_.SetToolState("ID_TSN", true);
  host_.SetComboIndex("ID_AVG", 3);
  host_.SetComboText("ID_Window", "Flat-Top");
  host_.SetToolEnabled("ID_Single", false);
  EXPECT_TRUE(host_.ToolState("ID_Run"));
  EXPECT_FALSE(host_.Action("ID_Single")->isEnabled());
  host_.SetToolState("ID_Nope", true);
  host_.SetToolVisible("ID_Nope", true);
  host_.SetComboItems("ID_Run", {"x"});  // not a combo
  host_.SetComboIndex("ID_Nope", 1);
  EXPECT_FALSE(host_.ToolState("ID_Nope"));
  EXPECT_FALSE(host_.ToolVisible("ID_Nope"));
  EXPECT_EQ(host_.ComboIndex("ID_Nope"), -1);
  EXPECT_TRUE(host_.ComboItems("ID_Run").empty());
  EXPECT_EQ(host_.ToolCaption("ID_Nope"), "");
  EXPECT_EQ(clicked.size(), 0);
  EXPECT_EQ(combo_changed.size(), 0);
}

TEST_F(QtToolHostTest, OptionGroupsAreExclusiveForUserAndProgram) {
  host_.SetToolState("ID_TSP", true);
  host_.SetToolState("ID_TCD", true);
  host_.Action("ID_TSN")->trigger();  // the user picks another slope
  EXPECT_TRUE(host_.ToolState("ID_TSN"));
  EXPECT_FALSE(host_.ToolState("ID_TSP"));
  EXPECT_TRUE(host_.ToolState("ID_TCD")) << "another setting's group is untouched";

  host_.SetToolState("ID_TSE", true);  // a readback checks the instrument's slope
  EXPECT_FALSE(host_.ToolState("ID_TSN"));
  // Clicking the checked member again keeps it checked.
  host_.Action("ID_TSE")->trigger();
  EXPECT_TRUE(host_.ToolState("ID_TSE"));
  // The program may clear a group entirely.
  host_.SetToolState("ID_TSE", false);
  for (std::string_view id : OptionGroupMembers("TriggerSlope")) EXPECT_FALSE(host_.ToolState(id));
  // The digital source is a plain button: showing it clears the other sources.
  host_.SetToolState("ID_TG2", true);
  host_.SetToolState("ID_TGDIG", true);
  EXPECT_FALSE(host_.ToolState("ID_TGDIG"));
  for (std::string_view id : OptionGroupMembers("TriggerSource")) EXPECT_FALSE(host_.ToolState(id));
  // Tools outside groups are independent state buttons.
  host_.SetToolState("ID_BW", true);
  host_.SetToolState("ID_CHANINV", true);
  EXPECT_TRUE(host_.ToolState("ID_BW"));
}

TEST_F(QtToolHostTest, ComboSelectionIsSharedByEveryPlaceThatShowsIt) {
  // "ID_AVG" is in the FFT toolbar and the FFT menu.
  ASSERT_EQ(Combos("ID_AVG").size(), 2);
  host_.SetComboIndex("ID_AVG", 2);
  for (const QComboBox* combo : Combos("ID_AVG")) EXPECT_EQ(combo->currentText(), "4");

  QSignalSpy combo_changed(&host_, &QtToolHost::ComboChanged);
  window_->show();
  auto* toolbar_combo = qobject_cast<QComboBox*>(ToolbarWidget("FFT", "ID_AVG"));
  ASSERT_NE(toolbar_combo, nullptr);
  QTest::keyClick(toolbar_combo, Qt::Key_Down);
  ASSERT_EQ(combo_changed.size(), 1);
  EXPECT_EQ(combo_changed[0][0].toString(), "ID_AVG");
  EXPECT_EQ(host_.ComboIndex("ID_AVG"), 3);
  for (const QComboBox* combo : Combos("ID_AVG")) EXPECT_EQ(combo->currentIndex(), 3);
}

TEST_F(QtToolHostTest, ComboTextSelectsOnlyAnExactItem) {
  host_.SetComboText("ID_Bins", "4906");
  EXPECT_EQ(host_.ComboIndex("ID_Bins"), 4);
  host_.SetComboText("ID_Bins", "4096");
  EXPECT_EQ(host_.ComboIndex("ID_Bins"), -1);
  EXPECT_EQ(host_.ComboText("ID_Bins"), "4096");
  host_.SetComboIndex("ID_Bins", 12);
  EXPECT_EQ(host_.ComboIndex("ID_Bins"), -1);
  host_.SetComboItems("ID_Scale", {"a", "b"});
  EXPECT_EQ(host_.ComboIndex("ID_Scale"), -1);
  for (const QComboBox* combo : Combos("ID_Scale")) EXPECT_EQ(combo->count(), 2);
}

TEST_F(QtToolHostTest, LabelToolsShowTheirCaption) {
  host_.SetToolCaption("ID_SR", "2.00GSa/s");
  EXPECT_EQ(host_.ToolCaption("ID_SR"), "2.00GSa/s");
  auto* label = qobject_cast<QLabel*>(ToolbarWidget("TimeBase", "ID_SR"));
  ASSERT_NE(label, nullptr);
  EXPECT_EQ(label->text(), "2.00GSa/s");
  EXPECT_EQ(label->accessibleName(), "2.00GSa/s");
}

// Records the host's signals in the order they come.
class EventLog : public QObject {
 public:
  explicit EventLog(QtToolHost& host) {
    connect(&host, &QtToolHost::ToolClicked, this,
            [this](const QString& id) { events.push_back("click " + id.toStdString()); });
    connect(&host, &QtToolHost::DropDownRequested, this,
            [this](const QString& id) { events.push_back("drop " + id.toStdString()); });
    connect(&host, &QtToolHost::DropDownClosed, this,
            [this](const QString& id) { events.push_back("closed " + id.toStdString()); });
  }
  std::vector<std::string> events;
};

// The arrow and Alt+Down open the channel menu between the request and the close, also when it
// is hidden from the menu bar (as on a two-channel model); the main part toggles the channel.
TEST_F(QtToolHostTest, ChannelArrowOrAltDownOpensTheChannelMenuAndTheMainPartToggles) {
  host_.SetToolVisible("mnu_Channel", false);
  window_->show();
  auto* button = qobject_cast<QToolButton*>(ToolbarWidget("Channels", "ID_CH2"));
  ASSERT_NE(button, nullptr);
  EXPECT_EQ(button->popupMode(), QToolButton::MenuButtonPopup);
  EventLog log(host_);
  QMenu* shown = nullptr;
  // The menu runs its own event loop; pick its first entry ("Set Offset") with the keyboard.
  QTimer::singleShot(0, [&] {
    shown = qobject_cast<QMenu*>(QApplication::activePopupWidget());
    if (shown == nullptr) return;
    QTest::keyClick(shown, Qt::Key_Down);
    QTest::keyClick(shown, Qt::Key_Return);
  });
  // Never hang the suite if the menu did not take the keys.
  QTimer::singleShot(3000, [] {
    if (QWidget* popup = QApplication::activePopupWidget()) popup->close();
  });
  const QPoint arrow(button->width() - 3, button->height() / 2);
  QTest::mousePress(button, Qt::LeftButton, {}, arrow);
  QTest::mouseRelease(button, Qt::LeftButton, {}, arrow);
  EXPECT_EQ(shown, host_.ChannelMenu());
  EXPECT_FALSE(host_.ToolState("ID_CH2")) << "the arrow does not toggle the channel";

  QTest::mouseClick(button, Qt::LeftButton, {}, QPoint(4, button->height() / 2));
  EXPECT_TRUE(host_.ToolState("ID_CH2"));
  QTimer::singleShot(0, [] {
    if (QWidget* popup = QApplication::activePopupWidget()) popup->close();
  });
  QTest::keyClick(button, Qt::Key_Down, Qt::AltModifier);
  EXPECT_THAT(log.events,
              ElementsAre("drop ID_CH2", "click mnu_Channel", "click ID_OFS", "closed ID_CH2",
                          "click ID_CH2", "drop ID_CH2", "click mnu_Channel", "closed ID_CH2"));
}

TEST_F(QtToolHostTest, SetToolbarForTwoChannelsHidesTheirToolsOnScreenUntilShownAgain) {
  settings::MemorySettingsStore settings;
  settings.Set("Setup", "Channels", "2");
  acquisition::ScopeState state;
  window_->show();
  SetToolbar(host_, settings, /*remote_on=*/true, SpectrumChoices{}, state);
  QApplication::processEvents();  // toolbars hide the widgets of hidden tools on the next cycle
  EXPECT_FALSE(ToolbarWidget("Channels", "ID_CH3")->isVisible());
  EXPECT_FALSE(ToolbarWidget("FFT", "ID_FFT4")->isVisible());
  EXPECT_TRUE(ToolbarWidget("Channels", "ID_CH2")->isVisible());
  EXPECT_FALSE(host_.Menu("mnu_Channel")->menuAction()->isVisible());
  EXPECT_FALSE(host_.ToolVisible("mnu_MATHFUNC"));
  host_.SetToolVisible("ID_CH3", true);
  QApplication::processEvents();
  EXPECT_TRUE(ToolbarWidget("Channels", "ID_CH3")->isVisible());
}

}  // namespace
}  // namespace quarvelo::control
