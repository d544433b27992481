#pragma once

#include <QString>
#include <QStringList>

namespace scrivel {

// The folder of the data installed with Scrivel (share/scrivel under the
// install prefix), found from the folder of the running executable through
// the same relative path `cmake --install` puts between the two: it holds
// "packs" and "translations". Empty when it does not exist, as in a build
// tree, or when no application object exists yet.
QString installedDataDirectory();
QString installedDataDirectory(const QString& executableDirectory);

// The folders holding translation files (.qm), first match wins: the
// installed data folder's "translations", then the ones compiled in under
// ":/translations". Only folders that exist are listed.
QStringList translationDirectories();
QStringList translationDirectories(const QString& executableDirectory);

} // namespace scrivel
