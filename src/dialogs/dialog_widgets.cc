#include "dialogs/dialog_widgets.h"

#include "platform/text/number_text.h"

namespace quarvelo::dialogs {

std::string DecimalText(double value) {
  std::string text = text::NumberText(value);
  if (text.starts_with('.')) return "0" + text;
  if (text.starts_with("-.")) return "-0" + text.substr(1);
  return text;
}

int MatchMnemonic(const QStringList& items, std::string_view reply) {
  const QString wanted = QString::fromUtf8(reply.data(), static_cast<qsizetype>(reply.size()));
  for (qsizetype i = 0; i < items.size(); ++i) {
    const QString& item = items[i];
    qsizetype end = 0;
    while (end < item.size() && !item[end].isLower()) ++end;
    if (!wanted.isEmpty() && item.left(end).compare(wanted, Qt::CaseInsensitive) == 0) {
      return static_cast<int>(i);
    }
  }
  return -1;
}

void SelectMnemonic(QComboBox* combo, std::string_view reply) {
  QStringList items;
  for (int i = 0; i < combo->count(); ++i) items << combo->itemText(i);
  combo->setCurrentIndex(MatchMnemonic(items, reply));
}

std::string TrimmedText(const QString& text) { return text.trimmed().toStdString(); }

std::string Quoted(std::string_view text) { return "\"" + std::string(text) + "\""; }

}  // namespace quarvelo::dialogs
