#pragma once

#include "core/presets/PresetPackDocument.h"
#include "core/presets/PresetPackError.h"

#include <QSet>
#include <QString>
#include <QUuid>
#include <optional>
#include <variant>

namespace scrivel {

class PresetStore;

// A failure of the pack flows: a pack error, or a file that could not be
// read or written (worded generically).
struct PresetTransferFailure {
    std::optional<PresetPackError> packError;
    // In English, for logs and the command line's detail line: the file
    // error, or what exactly made a pack invalid.
    QString debugDescription;
};

// The file-choosing and alert steps of the flows, supplied by the main window
// (dialogs) or by tests and the command line (paths).
class PresetTransferUI {
public:
    virtual ~PresetTransferUI() = default;
    // The pack file to import, or nothing when the user cancelled.
    virtual std::optional<QString> chooseImportFile() = 0;
    // Where to export, given the proposed file name; nothing when cancelled.
    virtual std::optional<QString> chooseExportFile(const QString& proposedFileName) = 0;
    // Shown with the title "Couldn’t import presets" for import and export
    // failures alike.
    virtual void showFailure(const QString& title, const QString& message) = 0;
};

// Importing and exporting presets as pack files.
namespace PresetTransfer {

QString failureTitle();
// The user's sentence for a failure.
QString message(const PresetTransferFailure& failure);

// Reads, decodes and validates a pack file.
std::expected<PresetPackDocument, PresetTransferFailure> readPack(const QString& path);
// Writes bytes atomically: the old file stays intact unless the new one is
// complete.
std::expected<void, PresetTransferFailure> writeAtomically(const QString& path,
                                                           const QByteArray& bytes);
// "<base>.scrivel.json" with the base trimmed ("Presets" when empty) and
// "/" and ":" replaced by "-".
QString proposedFileName(const QString& baseName);

// The import flow: choose, read, import (replacing presets with known
// identifiers). Returns the first affected preset.
std::optional<QUuid> importFromFile(PresetStore& store, PresetTransferUI& ui);
// Adds a shipped pack's presets as new copies.
std::optional<QUuid> addShippedPack(PresetStore& store, const PresetPackDocument& pack,
                                    PresetTransferUI& ui);
// Exports every preset as "Scrivel Presets". True when a file was written.
bool exportAll(const PresetStore& store, PresetTransferUI& ui);
// Exports the given presets. True when a file was written.
bool exportSelection(const PresetStore& store, const QSet<QUuid>& ids, PresetTransferUI& ui);
// Encodes, asks for a location and writes. False when cancelled or failed
// (failures are shown).
bool exportDocument(const PresetPackDocument& document, const QString& baseName,
                    PresetTransferUI& ui);

} // namespace PresetTransfer

} // namespace scrivel
