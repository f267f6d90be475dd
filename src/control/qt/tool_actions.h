// The tools that are more than a button: combo boxes, labels and the channel buttons with their
// pop-up menu. Each is one shared QAction (a QWidgetAction) whose widget is created anew for
// every toolbar or menu that shows it, so that all places show the same items, text and state.
#ifndef QUARVELO_CONTROL_QT_TOOL_ACTIONS_H_
#define QUARVELO_CONTROL_QT_TOOL_ACTIONS_H_

#include <QComboBox>
#include <QMenu>
#include <QString>
#include <QStringList>
#include <QToolButton>
#include <QWidgetAction>

namespace quarvelo::control {

class ComboToolAction : public QWidgetAction {
  Q_OBJECT

 public:
  ComboToolAction(const QString& id, const QString& caption, const QString& tooltip,
                  QObject* parent);

  // Replacing the items selects nothing.
  void SetItems(const QStringList& items);
  const QStringList& Items() const { return items_; }
  // An index outside the items selects nothing.
  void SetIndex(int index);
  int Index() const { return index_; }
  // Text equal to an item selects it; other text is shown with nothing selected.
  void SetText(const QString& text);
  QString Text() const;

 signals:
  // The user picked an entry (not emitted for changes made through the setters).
  void Activated();

 protected:
  QWidget* createWidget(QWidget* parent) override;

 private:
  void Refresh(QComboBox* combo) const;
  void RefreshAll();
  void OnUserActivated(int index);

  QStringList items_;
  int index_ = -1;
  QString free_text_;
};

// A read-only text (the "Edge:" caption, the sample-rate readout); follows the action's text.
class LabelToolAction : public QWidgetAction {
  Q_OBJECT

 public:
  LabelToolAction(const QString& id, const QString& caption, const QString& tooltip,
                  QObject* parent);

 protected:
  QWidget* createWidget(QWidget* parent) override;
};

// The channel button of a toolbar: pressing its main part toggles the channel, pressing its
// arrow (or Alt+Down, F4 or the menu key while it has focus) opens the channel menu under it.
class DropDownButton : public QToolButton {
  Q_OBJECT

 public:
  DropDownButton(QAction* action, QMenu* menu, QWidget* parent);

 signals:
  // Around the menu: before it opens, and after it has closed and the command picked from
  // it has run.
  void MenuAboutToOpen();
  void MenuClosed();

 protected:
  void mousePressEvent(QMouseEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;

 private:
  bool OnArrow(const QPoint& position) const;
};

// A checkable tool shown as a `DropDownButton` in toolbars and as a checkable entry in menus.
class DropDownToolAction : public QWidgetAction {
  Q_OBJECT

 public:
  DropDownToolAction(const QString& id, const QString& caption, const QString& tooltip, QMenu* menu,
                     QObject* parent);

 signals:
  void MenuAboutToOpen();
  void MenuClosed();

 protected:
  QWidget* createWidget(QWidget* parent) override;

 private:
  QMenu* menu_;
};

}  // namespace quarvelo::control

#endif  // QUARVELO_CONTROL_QT_TOOL_ACTIONS_H_
