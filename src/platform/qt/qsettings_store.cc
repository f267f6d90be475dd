#include "platform/qt/qsettings_store.h"

#include <QStringList>
#include <QVariant>

namespace quarvelo::qt {
namespace {

QString ToQString(std::string_view text) {
  return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

QString FullKey(std::string_view section, std::string_view key) {
  return ToQString(section) + QLatin1Char('/') + ToQString(key);
}

}  // namespace

QSettingsStore::QSettingsStore()
    : settings_(std::make_unique<QSettings>(QSettings::NativeFormat, QSettings::UserScope,
                                            QStringLiteral("QUARVELO"),
                                            QStringLiteral("QUARVELO"))) {}

QSettingsStore::QSettingsStore(const QString& path)
    : settings_(std::make_unique<QSettings>(path, QSettings::IniFormat)) {}

std::string QSettingsStore::Get(std::string_view section, std::string_view key,
                                std::string_view default_value) const {
  const QVariant value = settings_->value(FullKey(section, key));
  if (!value.isValid()) return std::string(default_value);
  // A hand-edited INI line with an unquoted comma ("1,2") comes back as a list; keep the text
  // the user wrote instead of losing it.
  if (value.userType() == QMetaType::QStringList) {
    return value.toStringList().join(QStringLiteral(", ")).toStdString();
  }
  return value.toString().toStdString();
}

void QSettingsStore::Set(std::string_view section, std::string_view key, std::string_view value) {
  settings_->setValue(FullKey(section, key), ToQString(value));
  settings_->sync();
}

QString QSettingsStore::FileName() const { return settings_->fileName(); }

}  // namespace quarvelo::qt
