#pragma once

#include "core/presets/PresetPackDocument.h"

#include <QList>
#include <QString>
#include <QStringList>

namespace scrivel {

// Where the application's resources live: the Qt resource root, where the
// shipped packs are compiled in.
inline QString applicationResourceRoot() {
    return QStringLiteral(":/");
}

// Where shipped packs are looked for: the "packs" folder of the installed
// data (share/scrivel/packs, when Scrivel runs from an install prefix), then
// the resource root.
QStringList shippedPackRoots();

// The shipped pack files under root: the ".scrivel.json" files of the
// "Packs" folder (or, when that folder holds no JSON file, of root itself),
// sorted by file name.
QStringList shippedPackURLs(const QString& root);
// The same over several roots, sorted by file name: a file name found under
// an earlier root hides the same name under a later one, so an installed
// pack replaces the compiled-in copy and a pack file added there is offered
// too.
QStringList shippedPackURLs(const QStringList& roots = shippedPackRoots());
// The shipped packs that load and validate, sorted by name for display.
// Files that fail are left out without a word.
QList<PresetPackDocument> shippedPacks(const QString& root);
QList<PresetPackDocument> shippedPacks(const QStringList& roots = shippedPackRoots());

} // namespace scrivel
