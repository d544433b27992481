#include "core/presets/PresetTransfer.h"

#include "core/presets/PresetStore.h"
#include "core/support/UnicodeText.h"

#include <QCoreApplication>
#include <QFile>
#include <QSaveFile>

namespace scrivel {

namespace PresetTransfer {

namespace {

// The texts of this file, under the context they have always had.
struct TransferText {
    Q_DECLARE_TR_FUNCTIONS(PresetTransfer)
};

PresetTransferFailure fileFailure(const QString& description) {
    return PresetTransferFailure{std::nullopt, description};
}

} // namespace

QString failureTitle() {
    return TransferText::tr("Couldn’t import presets");
}

QString message(const PresetTransferFailure& failure) {
    if (failure.packError)
        return failure.packError->message();
    return TransferText::tr("The pack could not be read. Check the file and try again.");
}

std::expected<PresetPackDocument, PresetTransferFailure> readPack(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return std::unexpected(fileFailure(file.errorString()));
    const QByteArray bytes = file.readAll();
    if (file.error() != QFileDevice::NoError)
        return std::unexpected(fileFailure(file.errorString()));
    QString problem;
    auto document = PresetPackDocument::decode(bytes, &problem);
    if (!document)
        return std::unexpected(PresetTransferFailure{document.error(), problem});
    if (auto valid = document->validate(); !valid)
        return std::unexpected(PresetTransferFailure{valid.error(), {}});
    return std::move(*document);
}

std::expected<void, PresetTransferFailure> writeAtomically(const QString& path,
                                                           const QByteArray& bytes) {
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return std::unexpected(fileFailure(file.errorString()));
    if (file.write(bytes) != bytes.size()) {
        file.cancelWriting();
        return std::unexpected(fileFailure(file.errorString()));
    }
    if (!file.commit())
        return std::unexpected(fileFailure(file.errorString()));
    return {};
}

QString proposedFileName(const QString& baseName) {
    QString name = trimmedWhitespaceAndNewlines(baseName);
    if (name.isEmpty())
        name = QStringLiteral("Presets");
    name.replace(QLatin1Char('/'), QLatin1Char('-'));
    name.replace(QLatin1Char(':'), QLatin1Char('-'));
    return name + QStringLiteral(".scrivel.json");
}

namespace {

std::optional<QUuid> importDocument(PresetStore& store, const PresetPackDocument& document,
                                    bool assigningNewIDs, PresetTransferUI& ui) {
    const auto result = store.importPack(document, assigningNewIDs);
    if (!result) {
        ui.showFailure(failureTitle(), message(PresetTransferFailure{result.error(), {}}));
        return std::nullopt;
    }
    if (result->affectedIDs.isEmpty())
        return std::nullopt;
    return result->affectedIDs.first();
}

} // namespace

std::optional<QUuid> importFromFile(PresetStore& store, PresetTransferUI& ui) {
    const auto path = ui.chooseImportFile();
    if (!path)
        return std::nullopt;
    const auto document = readPack(*path);
    if (!document) {
        ui.showFailure(failureTitle(), message(document.error()));
        return std::nullopt;
    }
    return importDocument(store, *document, false, ui);
}

std::optional<QUuid> addShippedPack(PresetStore& store, const PresetPackDocument& pack,
                                    PresetTransferUI& ui) {
    return importDocument(store, pack, true, ui);
}

bool exportDocument(const PresetPackDocument& document, const QString& baseName,
                    PresetTransferUI& ui) {
    const auto bytes = document.encode();
    if (!bytes) {
        ui.showFailure(failureTitle(), message(fileFailure(QStringLiteral("encoding failed"))));
        return false;
    }
    const auto path = ui.chooseExportFile(proposedFileName(baseName));
    if (!path)
        return false;
    if (const auto written = writeAtomically(*path, *bytes); !written) {
        ui.showFailure(failureTitle(), message(written.error()));
        return false;
    }
    return true;
}

bool exportAll(const PresetStore& store, PresetTransferUI& ui) {
    const PresetPackDocument document =
        store.makePackDocument(std::nullopt, TransferText::tr("Scrivel Presets"), std::nullopt);
    if (document.presets.isEmpty())
        return false;
    return exportDocument(document, document.name.value_or(QStringLiteral("Presets")), ui);
}

bool exportSelection(const PresetStore& store, const QSet<QUuid>& ids, PresetTransferUI& ui) {
    const PresetPackDocument document = store.makePackDocument(ids);
    if (document.presets.isEmpty())
        return false;
    const QString baseName = document.presets.size() == 1 ? document.presets.first().name
                                                          : TransferText::tr("Scrivel Presets");
    return exportDocument(document, baseName, ui);
}

} // namespace PresetTransfer

} // namespace scrivel
