// Small helpers shared by the dialogs: naming controls for tests and screen readers, control
// arrays, the Refreshing guard, and the texts the dialogs show and send.
#ifndef QUARVELO_DIALOGS_DIALOG_WIDGETS_H_
#define QUARVELO_DIALOGS_DIALOG_WIDGETS_H_

#include <QComboBox>
#include <QString>
#include <QStringList>
#include <QWidget>
#include <string>
#include <string_view>

namespace quarvelo::dialogs {

// Control arrays share one objectName and carry their index in this dynamic property.
inline constexpr char kIndexProperty[] = "index";

// Names a control (objectName for tests), sets its tool tip, and gives screen readers a name:
// `accessible` when given, else the tool tip.
template <typename Widget>
Widget* Named(Widget* widget, const char* object_name, const QString& tooltip = QString(),
              const QString& accessible = QString()) {
  widget->setObjectName(QString::fromLatin1(object_name));
  if (!tooltip.isEmpty()) widget->setToolTip(tooltip);
  widget->setAccessibleName(accessible.isEmpty() ? tooltip : accessible);
  return widget;
}

template <typename Widget>
Widget* Indexed(Widget* widget, int index) {
  widget->setProperty(kIndexProperty, index);
  return widget;
}

// Set while code fills the controls, so that their change events do nothing.
class RefreshingGuard {
 public:
  explicit RefreshingGuard(bool& flag) : flag_(flag), previous_(flag) { flag_ = true; }
  ~RefreshingGuard() { flag_ = previous_; }
  RefreshingGuard(const RefreshingGuard&) = delete;
  RefreshingGuard& operator=(const RefreshingGuard&) = delete;

 private:
  bool& flag_;
  bool previous_;
};

// A number as a box shows it: the shortest text that reads back as the value, with a "0"
// before a leading decimal point ("0.5", "5", "2.5", "1E-06").
std::string DecimalText(double value);

// The index of the item whose short form (its text up to the first lower-case letter,
// "SUBTract" -> "SUBT", "CHAN2" -> "CHAN2") equals the instrument's reply, ignoring case;
// -1 when none does.
int MatchMnemonic(const QStringList& items, std::string_view reply);

// Selects the item matching `reply` (none when nothing matches).
void SelectMnemonic(QComboBox* combo, std::string_view reply);

// The text of a box with its outer blanks removed, as UTF-8.
std::string TrimmedText(const QString& text);

// `text` in double quotation marks, as the instrument reads a string parameter.
std::string Quoted(std::string_view text);

}  // namespace quarvelo::dialogs

#endif  // QUARVELO_DIALOGS_DIALOG_WIDGETS_H_
