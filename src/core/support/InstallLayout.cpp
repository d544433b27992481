#include "core/support/InstallLayout.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

#ifndef SCRIVEL_DATA_FROM_BINDIR
#error "SCRIVEL_DATA_FROM_BINDIR must name the data folder relative to the binaries"
#endif

namespace scrivel {

QString installedDataDirectory() {
    if (!QCoreApplication::instance())
        return {};
    return installedDataDirectory(QCoreApplication::applicationDirPath());
}

QString installedDataDirectory(const QString& executableDirectory) {
    if (executableDirectory.isEmpty())
        return {};
    const QString path = QDir::cleanPath(
        QDir(executableDirectory).filePath(QStringLiteral(SCRIVEL_DATA_FROM_BINDIR)));
    return QFileInfo(path).isDir() ? path : QString();
}

QStringList translationDirectories() {
    return translationDirectories(
        QCoreApplication::instance() ? QCoreApplication::applicationDirPath() : QString());
}

QStringList translationDirectories(const QString& executableDirectory) {
    QStringList directories;
    const QString installed = installedDataDirectory(executableDirectory);
    if (!installed.isEmpty())
        directories << QDir(installed).filePath(QStringLiteral("translations"));
    directories << QStringLiteral(":/translations");
    directories.removeIf([](const QString& path) { return !QFileInfo(path).isDir(); });
    return directories;
}

} // namespace scrivel
