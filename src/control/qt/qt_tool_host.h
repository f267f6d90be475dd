// The main window's toolbar-and-menu tree built from the tool catalogue: one QAction per tool
// (objectName = tool ID) shared by every menu and toolbar that shows it, exclusive action groups
// for the option groups, combo and label widgets, the channel buttons with their pop-up menu,
// the menu bar and the five toolbars. Tools are addressed by ID through `ui::ToolHost`; the
// user's clicks come out as signals carrying the tool ID.
#ifndef QUARVELO_CONTROL_QT_QT_TOOL_HOST_H_
#define QUARVELO_CONTROL_QT_QT_TOOL_HOST_H_

#include <QAction>
#include <QActionGroup>
#include <QMainWindow>
#include <QMenu>
#include <QObject>
#include <QString>
#include <QToolBar>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "platform/ui/tool_host.h"

namespace quarvelo::control {

class ComboToolAction;

class QtToolHost : public QObject, public ui::ToolHost {
  Q_OBJECT

 public:
  // Adds the menu bar entries and the toolbars to `window`, which owns every widget created.
  explicit QtToolHost(QMainWindow* window);
  ~QtToolHost() override;
  QtToolHost(const QtToolHost&) = delete;
  QtToolHost& operator=(const QtToolHost&) = delete;

  // The tool's action; for a menu tool its menu action. nullptr for an unknown ID.
  QAction* Action(std::string_view id) const;
  // The channel menu ("mnu_Channel") the channel buttons open.
  QMenu* ChannelMenu() const;
  // A menu by its ID ("mnu_File"), or nullptr.
  QMenu* Menu(std::string_view id) const;
  // A toolbar by its name ("Channels", "FFT", "Oscilloscope", "TimeBase", "Markers"), or nullptr.
  QToolBar* Toolbar(std::string_view name) const;

  // ui::ToolHost. Unknown IDs are ignored and read as up, hidden, empty.
  void SetToolState(std::string_view id, bool down) override;
  bool ToolState(std::string_view id) const override;
  void SetToolVisible(std::string_view id, bool visible) override;
  bool ToolVisible(std::string_view id) const override;
  void SetToolEnabled(std::string_view id, bool enabled) override;
  void SetToolCaption(std::string_view id, std::string_view caption) override;
  std::string ToolCaption(std::string_view id) const override;
  void SetComboItems(std::string_view id, const std::vector<std::string>& items) override;
  std::vector<std::string> ComboItems(std::string_view id) const override;
  void SetComboIndex(std::string_view id, int index) override;
  int ComboIndex(std::string_view id) const override;
  void SetComboText(std::string_view id, std::string_view text) override;
  std::string ComboText(std::string_view id) const override;

 signals:
  // The user clicked a tool, or opened a menu (the menu's ID). Not emitted for changes made
  // through ui::ToolHost.
  void ToolClicked(QString id);
  // The user picked an entry of a combo tool.
  void ComboChanged(QString id);
  // The arrow of a channel button ("ID_CH1".."ID_CH4") was pressed; emitted before the
  // channel menu opens under it, so that a handler can set the menu's tool states first.
  void DropDownRequested(QString id);
  // The channel menu opened by that button has closed, after the command picked from it ran.
  void DropDownClosed(QString id);

 private:
  void CreateActions();
  void CreateMenus();
  void FillMenu(QMenu* menu, std::string_view menu_id);
  void CreateToolbars(QMainWindow* window);
  ComboToolAction* Combo(std::string_view id) const;

  QMainWindow* window_;
  std::map<std::string, QAction*, std::less<>> actions_;
  std::map<std::string, QMenu*, std::less<>> menus_;
  std::map<std::string, QToolBar*, std::less<>> toolbars_;
  std::map<std::string, QActionGroup*, std::less<>> groups_;
};

}  // namespace quarvelo::control

#endif  // QUARVELO_CONTROL_QT_QT_TOOL_HOST_H_
