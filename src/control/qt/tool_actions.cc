#include "control/qt/tool_actions.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QMouseEvent>
#include <QSignalBlocker>
#include <QStyle>
#include <QStyleOptionToolButton>
#include <QToolBar>

namespace quarvelo::control {
namespace {

void Describe(QWidget* widget, const QString& id, const QString& accessible_name,
              const QString& tooltip) {
  widget->setObjectName(id);
  widget->setAccessibleName(accessible_name);
  if (!tooltip.isEmpty()) widget->setToolTip(tooltip);
}

QStringList ItemsOf(const QComboBox& combo) {
  QStringList items;
  for (int i = 0; i < combo.count(); ++i) items.append(combo.itemText(i));
  return items;
}

QString AccessibleNameOf(const QAction* action) {
  return action->text().isEmpty() ? action->toolTip() : action->text();
}

}  // namespace

ComboToolAction::ComboToolAction(const QString& id, const QString& caption, const QString& tooltip,
                                 QObject* parent)
    : QWidgetAction(parent) {
  setObjectName(id);
  setText(caption);
  if (!tooltip.isEmpty()) setToolTip(tooltip);
}

void ComboToolAction::SetItems(const QStringList& items) {
  items_ = items;
  index_ = -1;
  free_text_.clear();
  RefreshAll();
}

void ComboToolAction::SetIndex(int index) {
  index_ = (index >= 0 && index < items_.size()) ? index : -1;
  free_text_.clear();
  RefreshAll();
}

void ComboToolAction::SetText(const QString& text) {
  index_ = static_cast<int>(items_.indexOf(text));
  free_text_ = index_ < 0 ? text : QString();
  RefreshAll();
}

QString ComboToolAction::Text() const { return index_ >= 0 ? items_[index_] : free_text_; }

QWidget* ComboToolAction::createWidget(QWidget* parent) {
  auto* combo = new QComboBox();
  Describe(combo, objectName(), AccessibleNameOf(this), toolTip());
  combo->setSizeAdjustPolicy(QComboBox::AdjustToContents);
  Refresh(combo);
  connect(combo, &QComboBox::activated, this, &ComboToolAction::OnUserActivated);
  if (qobject_cast<QToolBar*>(parent) != nullptr) {
    combo->setParent(parent);
    return combo;
  }
  // In a menu the combo needs its caption beside it to be recognisable.
  auto* row = new QWidget(parent);
  auto* layout = new QHBoxLayout(row);
  layout->setContentsMargins(6, 2, 6, 2);
  auto* label = new QLabel(text(), row);
  label->setBuddy(combo);
  layout->addWidget(label);
  layout->addWidget(combo, 1);
  return row;
}

void ComboToolAction::Refresh(QComboBox* combo) const {
  const QSignalBlocker blocker(combo);
  if (ItemsOf(*combo) != items_) {
    combo->clear();
    combo->addItems(items_);
  }
  combo->setCurrentIndex(index_);
  combo->setPlaceholderText(free_text_);
}

void ComboToolAction::RefreshAll() {
  for (QWidget* widget : createdWidgets()) {
    auto* combo = qobject_cast<QComboBox*>(widget);
    if (combo == nullptr) combo = widget->findChild<QComboBox*>();
    if (combo != nullptr) Refresh(combo);
  }
}

void ComboToolAction::OnUserActivated(int index) {
  SetIndex(index);
  emit Activated();
}

LabelToolAction::LabelToolAction(const QString& id, const QString& caption, const QString& tooltip,
                                 QObject* parent)
    : QWidgetAction(parent) {
  setObjectName(id);
  setText(caption);
  if (!tooltip.isEmpty()) setToolTip(tooltip);
}

QWidget* LabelToolAction::createWidget(QWidget* parent) {
  auto* label = new QLabel(text(), parent);
  Describe(label, objectName(), AccessibleNameOf(this), toolTip());
  // The name follows the changing text (below); the description says what the readout is.
  label->setAccessibleDescription(toolTip());
  label->setContentsMargins(6, 0, 6, 0);
  connect(this, &QAction::changed, label, [this, label] {
    label->setText(text());
    label->setAccessibleName(AccessibleNameOf(this));
  });
  return label;
}

DropDownButton::DropDownButton(QAction* action, QMenu* menu, QWidget* parent)
    : QToolButton(parent) {
  setDefaultAction(action);
  setMenu(menu);
  setPopupMode(QToolButton::MenuButtonPopup);
  setObjectName(action->objectName());
  setAccessibleName(AccessibleNameOf(action));
  setAutoRaise(true);
}

bool DropDownButton::OnArrow(const QPoint& position) const {
  QStyleOptionToolButton option;
  initStyleOption(&option);
  return style()
      ->subControlRect(QStyle::CC_ToolButton, &option, QStyle::SC_ToolButtonMenu, this)
      .contains(position);
}

void DropDownButton::mousePressEvent(QMouseEvent* event) {
  const bool opens_menu = event->button() == Qt::LeftButton && OnArrow(event->position().toPoint());
  if (opens_menu) emit MenuAboutToOpen();
  // The base class runs the menu to its end, including the command picked from it.
  QToolButton::mousePressEvent(event);
  if (opens_menu) emit MenuClosed();
}

void DropDownButton::keyPressEvent(QKeyEvent* event) {
  const bool opens_menu = event->key() == Qt::Key_F4 || event->key() == Qt::Key_Menu ||
                          (event->key() == Qt::Key_Down && (event->modifiers() & Qt::AltModifier));
  if (!opens_menu) {
    QToolButton::keyPressEvent(event);
    return;
  }
  emit MenuAboutToOpen();
  showMenu();
  emit MenuClosed();
}

DropDownToolAction::DropDownToolAction(const QString& id, const QString& caption,
                                       const QString& tooltip, QMenu* menu, QObject* parent)
    : QWidgetAction(parent), menu_(menu) {
  setObjectName(id);
  setText(caption);
  if (!tooltip.isEmpty()) setToolTip(tooltip);
  setCheckable(true);
}

QWidget* DropDownToolAction::createWidget(QWidget* parent) {
  // Menus show the plain checkable entry.
  auto* toolbar = qobject_cast<QToolBar*>(parent);
  if (toolbar == nullptr) return nullptr;
  auto* button = new DropDownButton(this, menu_, parent);
  button->setToolButtonStyle(toolbar->toolButtonStyle());
  connect(toolbar, &QToolBar::toolButtonStyleChanged, button, &QToolButton::setToolButtonStyle);
  connect(button, &DropDownButton::MenuAboutToOpen, this, &DropDownToolAction::MenuAboutToOpen);
  connect(button, &DropDownButton::MenuClosed, this, &DropDownToolAction::MenuClosed);
  return button;
}

}  // namespace quarvelo::control
