#include "platform/qt/file_filter.h"

#include <QStringList>

namespace quarvelo::qt {

QString QtFileFilter(std::string_view filter) {
  QString text = QString::fromUtf8(filter.data(), static_cast<qsizetype>(filter.size()));
  if (!text.contains(QLatin1Char('|'))) return text;
  const QStringList parts = text.split(QLatin1Char('|'));
  QStringList entries;
  for (qsizetype i = 0; i < parts.size(); i += 2) {
    QString description = parts[i].trimmed();
    const QString patterns = i + 1 < parts.size()
                                 ? QString(parts[i + 1]).replace(QLatin1Char(';'), QLatin1Char(' '))
                                 : QString();
    if (description.isEmpty() && patterns.isEmpty()) continue;
    // Qt takes the patterns from the parentheses at the end of the description, while the
    // classic form takes them from the second field: make the second field the one that counts.
    if (!patterns.isEmpty()) {
      const qsizetype open = description.lastIndexOf(QLatin1Char('('));
      if (description.endsWith(QLatin1Char(')')) && open >= 0) {
        description = description.left(open).trimmed();
      }
      description += QStringLiteral(" (") + patterns.trimmed() + QLatin1Char(')');
    }
    entries << description;
  }
  return entries.join(QStringLiteral(";;"));
}

}  // namespace quarvelo::qt
