#include "app/qt_startup_platform.h"

#include <QCoreApplication>
#include <QDir>
#include <QStandardPaths>

namespace quarvelo::app {

std::optional<std::string> QtStartupPlatform::UserDataFolder() {
  const QString folder = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
  if (folder.isEmpty()) return std::nullopt;
  return folder.toStdString();
}

std::string QtStartupPlatform::ProgramFolder() {
  return QCoreApplication::applicationDirPath().toStdString();
}

bool QtStartupPlatform::CreateFolder(const std::string& path) {
  return QDir().mkpath(QString::fromStdString(path));
}

bool QtStartupPlatform::AcquireInstanceLock(const std::string& data_folder) {
  if (lock_ && lock_->isLocked()) return true;
  lock_ = std::make_unique<QLockFile>(QString::fromStdString(data_folder) + QLatin1Char('/') +
                                      QLatin1String(kInstanceLockName));
  // A lock left by a program that crashed names a process that is gone; QLockFile sees that
  // and takes the lock over. A live holder is never overridden, however old its lock.
  lock_->setStaleLockTime(0);
  if (lock_->tryLock(0)) return true;
  // A folder we cannot write to cannot hold a lock either: run rather than refuse to start.
  return lock_->error() != QLockFile::LockFailedError;
}

}  // namespace quarvelo::app
