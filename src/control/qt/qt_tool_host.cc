#include "control/qt/qt_tool_host.h"

#include <QMenuBar>
#include <QToolButton>
#include <span>

#include "control/combo_items.h"
#include "control/menu_layout.h"
#include "control/qt/tool_actions.h"
#include "control/tool_catalogue.h"

namespace quarvelo::control {
namespace {

QString ToQString(std::string_view text) {
  return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

constexpr std::string_view kInstrumentRow[] = {"Oscilloscope", "TimeBase"};
constexpr std::string_view kAnalysisRow[] = {"Channels", "FFT"};
constexpr std::string_view kMarkerRow[] = {"Markers"};
constexpr std::span<const std::string_view> kToolbarRows[] = {kInstrumentRow, kAnalysisRow,
                                                              kMarkerRow};

QStringList ToQStringList(const std::vector<std::string>& items) {
  QStringList list;
  list.reserve(static_cast<qsizetype>(items.size()));
  for (const std::string& item : items) list.append(QString::fromStdString(item));
  return list;
}

}  // namespace

QtToolHost::QtToolHost(QMainWindow* window) : QObject(window), window_(window) {
  // Menus first: the channel buttons need the channel menu, and menu tools are actions too.
  CreateMenus();
  CreateActions();
  for (const MenuDefinition& definition : Menus()) {
    if (QMenu* menu = Menu(definition.id)) FillMenu(menu, definition.id);
  }
  for (std::string_view id : MenuBar()) {
    if (QMenu* menu = Menu(id)) window_->menuBar()->addMenu(menu);
  }
  CreateToolbars(window);
}

QtToolHost::~QtToolHost() = default;

void QtToolHost::CreateMenus() {
  for (const ToolDefinition& tool : ToolCatalogue()) {
    if (tool.kind != ToolKind::kMenu) continue;
    const QString id = ToQString(tool.id);
    auto* menu = new QMenu(ToQString(tool.caption), window_);
    menu->setObjectName(id);
    menu->setAccessibleName(ToQString(AccessibleName(tool)));
    menu->setToolTipsVisible(true);
    menu->menuAction()->setObjectName(id);
    // Opening a menu is a tool event of its own: some menus read the instrument back first.
    connect(menu, &QMenu::aboutToShow, this, [this, id] { emit ToolClicked(id); });
    menus_.emplace(std::string(tool.id), menu);
    actions_.emplace(std::string(tool.id), menu->menuAction());
  }
}

void QtToolHost::CreateActions() {
  for (const ToolDefinition& tool : ToolCatalogue()) {
    const QString id = ToQString(tool.id);
    const QString caption = ToQString(tool.caption);
    const QString tooltip = ToQString(tool.tooltip);
    QAction* action = nullptr;
    switch (tool.kind) {
      case ToolKind::kMenu:
        continue;
      case ToolKind::kCombo: {
        auto* combo = new ComboToolAction(id, caption, tooltip, this);
        if (const ComboDefinition* definition = FindCombo(tool.id)) {
          QStringList items;
          for (std::string_view item : definition->items) items.append(ToQString(item));
          combo->SetItems(items);
          if (!definition->initial_text.empty())
            combo->SetText(ToQString(definition->initial_text));
        }
        connect(combo, &ComboToolAction::Activated, this, [this, id] { emit ComboChanged(id); });
        action = combo;
        break;
      }
      case ToolKind::kLabel:
        action = new LabelToolAction(id, caption, tooltip, this);
        break;
      case ToolKind::kDropDown: {
        auto* drop_down = new DropDownToolAction(id, caption, tooltip, ChannelMenu(), this);
        connect(drop_down, &DropDownToolAction::MenuAboutToOpen, this,
                [this, id] { emit DropDownRequested(id); });
        connect(drop_down, &DropDownToolAction::MenuClosed, this,
                [this, id] { emit DropDownClosed(id); });
        action = drop_down;
        break;
      }
      case ToolKind::kButton:
      case ToolKind::kStateButton:
        action = new QAction(caption, this);
        action->setObjectName(id);
        if (!tooltip.isEmpty()) action->setToolTip(tooltip);
        action->setCheckable(tool.kind == ToolKind::kStateButton);
        break;
    }
    if (!tool.option_group.empty()) {
      auto [it, added] = groups_.try_emplace(std::string(tool.option_group), nullptr);
      if (added) {
        it->second = new QActionGroup(this);
        it->second->setObjectName(ToQString(tool.option_group));
        it->second->setExclusionPolicy(QActionGroup::ExclusionPolicy::Exclusive);
      }
      if (action->isCheckable()) it->second->addAction(action);
    }
    connect(action, &QAction::triggered, this, [this, id] { emit ToolClicked(id); });
    actions_.emplace(std::string(tool.id), action);
  }
}

void QtToolHost::FillMenu(QMenu* menu, std::string_view menu_id) {
  const MenuDefinition* definition = FindMenu(menu_id);
  if (definition == nullptr) return;
  for (std::string_view entry : definition->entries) {
    if (entry == kSeparator) {
      menu->addSeparator();
    } else if (QMenu* sub_menu = Menu(entry)) {
      menu->addMenu(sub_menu);
    } else if (QAction* action = Action(entry)) {
      menu->addAction(action);
    }
  }
}

void QtToolHost::CreateToolbars(QMainWindow* window) {
  for (const ToolbarDefinition& definition : Toolbars()) {
    const QString name = ToQString(definition.name);
    auto* toolbar = new QToolBar(name, window);
    toolbar->setObjectName(name);
    toolbar->setAccessibleName(name);
    toolbar->setToolButtonStyle(Qt::ToolButtonTextOnly);
    for (std::string_view entry : definition.entries) {
      if (entry == kSeparator) {
        toolbar->addSeparator();
        continue;
      }
      QAction* action = Action(entry);
      if (action == nullptr) continue;
      toolbar->addAction(action);
      // Screen readers and UI automation find the buttons by the tool's caption (or tip).
      if (auto* button = qobject_cast<QToolButton*>(toolbar->widgetForAction(action))) {
        button->setObjectName(action->objectName());
        const ToolDefinition* tool = FindTool(entry);
        button->setAccessibleName(ToQString(AccessibleName(*tool)));
      }
    }
    toolbars_.emplace(std::string(definition.name), toolbar);
  }
  // Rows that fit the default window width (14580 twips, 972 pixels) without folding tools
  // into overflow menus: instrument, then per-channel analysis, then the markers.
  bool first_row = true;
  for (std::span<const std::string_view> row : kToolbarRows) {
    if (!first_row) window->addToolBarBreak(Qt::TopToolBarArea);
    first_row = false;
    for (std::string_view name : row) {
      if (QToolBar* toolbar = Toolbar(name)) window->addToolBar(Qt::TopToolBarArea, toolbar);
    }
  }
}

QAction* QtToolHost::Action(std::string_view id) const {
  auto it = actions_.find(id);
  return it == actions_.end() ? nullptr : it->second;
}

QMenu* QtToolHost::ChannelMenu() const { return Menu("mnu_Channel"); }

QMenu* QtToolHost::Menu(std::string_view id) const {
  auto it = menus_.find(id);
  return it == menus_.end() ? nullptr : it->second;
}

QToolBar* QtToolHost::Toolbar(std::string_view name) const {
  auto it = toolbars_.find(name);
  return it == toolbars_.end() ? nullptr : it->second;
}

ComboToolAction* QtToolHost::Combo(std::string_view id) const {
  return qobject_cast<ComboToolAction*>(Action(id));
}

void QtToolHost::SetToolState(std::string_view id, bool down) {
  QAction* action = Action(id);
  if (action == nullptr) return;
  if (action->isCheckable()) {
    action->setChecked(down);
    return;
  }
  const ToolDefinition* tool = FindTool(id);
  if (!down || tool == nullptr || tool->option_group.empty()) return;
  auto group = groups_.find(tool->option_group);
  if (group == groups_.end()) return;
  if (QAction* checked = group->second->checkedAction()) checked->setChecked(false);
}

bool QtToolHost::ToolState(std::string_view id) const {
  const QAction* action = Action(id);
  return action != nullptr && action->isChecked();
}

void QtToolHost::SetToolVisible(std::string_view id, bool visible) {
  if (QAction* action = Action(id)) action->setVisible(visible);
}

bool QtToolHost::ToolVisible(std::string_view id) const {
  const QAction* action = Action(id);
  return action != nullptr && action->isVisible();
}

void QtToolHost::SetToolEnabled(std::string_view id, bool enabled) {
  if (QAction* action = Action(id)) action->setEnabled(enabled);
}

void QtToolHost::SetToolCaption(std::string_view id, std::string_view caption) {
  if (QAction* action = Action(id)) action->setText(ToQString(caption));
}

std::string QtToolHost::ToolCaption(std::string_view id) const {
  const QAction* action = Action(id);
  return action == nullptr ? std::string() : action->text().toStdString();
}

void QtToolHost::SetComboItems(std::string_view id, const std::vector<std::string>& items) {
  if (ComboToolAction* combo = Combo(id)) combo->SetItems(ToQStringList(items));
}

std::vector<std::string> QtToolHost::ComboItems(std::string_view id) const {
  std::vector<std::string> items;
  if (const ComboToolAction* combo = Combo(id)) {
    for (const QString& item : combo->Items()) items.push_back(item.toStdString());
  }
  return items;
}

void QtToolHost::SetComboIndex(std::string_view id, int index) {
  if (ComboToolAction* combo = Combo(id)) combo->SetIndex(index);
}

int QtToolHost::ComboIndex(std::string_view id) const {
  const ComboToolAction* combo = Combo(id);
  return combo == nullptr ? -1 : combo->Index();
}

void QtToolHost::SetComboText(std::string_view id, std::string_view text) {
  if (ComboToolAction* combo = Combo(id)) combo->SetText(ToQString(text));
}

std::string QtToolHost::ComboText(std::string_view id) const {
  const ComboToolAction* combo = Combo(id);
  return combo == nullptr ? std::string() : combo->Text().toStdString();
}

}  // namespace quarvelo::control
