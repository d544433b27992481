#pragma once

#include "core/presets/PresetPackDocument.h"

#include <QList>
#include <QString>

namespace scrivel {

// Where the application's resources live: the Qt resource root, where the
// shipped packs are compiled in.
inline QString applicationResourceRoot() {
    return QStringLiteral(":/");
}

// The shipped pack files under root: the ".scrivel.json" files of the
// "Packs" folder (or, when that folder holds no JSON file, of root itself),
// sorted by file name.
QStringList shippedPackURLs(const QString& root = applicationResourceRoot());
// The shipped packs that load and validate, sorted by name for display.
// Files that fail are left out without a word.
QList<PresetPackDocument> shippedPacks(const QString& root = applicationResourceRoot());

} // namespace scrivel
