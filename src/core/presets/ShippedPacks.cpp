#include "core/presets/ShippedPacks.h"

#include "core/support/InstallLayout.h"

#include <QCollator>
#include <QDir>
#include <QFile>
#include <QSet>
#include <algorithm>

namespace scrivel {

namespace {

QStringList jsonFiles(const QString& directory) {
    QStringList files;
    const QFileInfoList entries = QDir(directory).entryInfoList(QDir::Files, QDir::Name);
    for (const QFileInfo& entry : entries) {
        if (entry.suffix() == QLatin1String("json"))
            files.append(entry.filePath());
    }
    return files;
}

} // namespace

QStringList shippedPackRoots() {
    QStringList roots;
    if (const QString installed = installedDataDirectory(); !installed.isEmpty())
        roots << QDir(installed).filePath(QStringLiteral("packs"));
    roots << applicationResourceRoot();
    return roots;
}

QStringList shippedPackURLs(const QString& root) {
    QStringList candidates = jsonFiles(QDir(root).filePath(QStringLiteral("Packs")));
    if (candidates.isEmpty())
        candidates = jsonFiles(root);

    QStringList packs;
    for (const QString& path : candidates) {
        // The name without its last extension must itself end in ".scrivel".
        const QString name = QFileInfo(path).fileName();
        const QString stem = name.left(name.size() - int(qstrlen(".json")));
        if (stem.endsWith(QLatin1String(".scrivel")) && stem.size() > int(qstrlen(".scrivel")) - 1)
            packs.append(path);
    }
    std::sort(packs.begin(), packs.end(), [](const QString& a, const QString& b) {
        return QFileInfo(a).fileName() < QFileInfo(b).fileName();
    });
    return packs;
}

QStringList shippedPackURLs(const QStringList& roots) {
    QStringList packs;
    QSet<QString> names;
    for (const QString& root : roots) {
        for (const QString& path : shippedPackURLs(root)) {
            const QString name = QFileInfo(path).fileName();
            if (!names.contains(name)) {
                names.insert(name);
                packs.append(path);
            }
        }
    }
    std::sort(packs.begin(), packs.end(), [](const QString& a, const QString& b) {
        return QFileInfo(a).fileName() < QFileInfo(b).fileName();
    });
    return packs;
}

QList<PresetPackDocument> shippedPacks(const QString& root) {
    return shippedPacks(QStringList{root});
}

QList<PresetPackDocument> shippedPacks(const QStringList& roots) {
    QList<PresetPackDocument> documents;
    for (const QString& path : shippedPackURLs(roots)) {
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly))
            continue;
        auto document = PresetPackDocument::decode(file.readAll());
        if (!document || !document->validate())
            continue;
        documents.append(std::move(*document));
    }
    QCollator collator;
    collator.setCaseSensitivity(Qt::CaseInsensitive);
    std::stable_sort(documents.begin(), documents.end(),
                     [&](const PresetPackDocument& a, const PresetPackDocument& b) {
                         return collator.compare(a.name.value_or(QString()),
                                                 b.name.value_or(QString())) < 0;
                     });
    return documents;
}

} // namespace scrivel
