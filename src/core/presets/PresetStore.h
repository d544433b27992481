#pragma once

#include "core/presets/Preset.h"
#include "core/presets/PresetPackDocument.h"
#include "core/presets/PresetStoreProblem.h"
#include "core/storage/SettingsStoreError.h"

#include <QList>
#include <QObject>
#include <QUuid>
#include <optional>

namespace scrivel {

class SettingsStore;

// The ordered list of presets and the active one, persisted in the settings
// store. Observable; lives on the main thread. The list order is the sidebar
// order.
class PresetStore : public QObject {
    Q_OBJECT
    Q_PROPERTY(QList<scrivel::Preset> presets READ presets NOTIFY presetsChanged)
    Q_PROPERTY(QUuid activePresetID READ activePresetIDOrNull NOTIFY activePresetIDChanged)

public:
    static QString presetsKey() { return QStringLiteral("scrivel.presets"); }
    static QString activePresetKey() { return QStringLiteral("scrivel.active-preset"); }
    // How copies of a damaged stored list begin their file names.
    static QString backupPrefix() { return QStringLiteral("presets-backup"); }

    // Loads the stored list and active identifier. Every stored preset that
    // reads is kept; when anything would be lost by saving the list again,
    // the stored data is first copied, unchanged, beside the settings (see
    // loadProblem()). An active identifier naming nothing falls back to the
    // first preset. Settings that cannot be read at all load nothing.
    explicit PresetStore(SettingsStore& settings, QObject* parent = nullptr);

    // What loading found wrong with the stored list, for telling the user.
    const std::optional<PresetStoreProblem>& loadProblem() const { return m_loadProblem; }
    // Why what the store holds is not all stored: the last write of the list
    // (or the copy that must come first) or of the active identifier failed.
    // Nothing once both have been written since. The held state stays, and
    // every change writes it again.
    std::optional<SettingsStoreError> saveError() const;

    const QList<Preset>& presets() const { return m_presets; }
    std::optional<QUuid> activePresetID() const { return m_activePresetID; }
    // The active preset, or the first one when the identifier names none.
    std::optional<Preset> activePreset() const;
    std::optional<Preset> preset(const QUuid& id) const;

    // Fills an empty store with the built-in presets and activates the first.
    // Does nothing when the settings could not be read: an unreadable store
    // is not an empty one.
    void seedIfEmpty(bool onDeviceModelAvailable);
    // Appends and saves; the active preset stays.
    void add(const Preset& preset);
    // A copy of source (or of the active preset, or of the first built-in)
    // with a fresh identifier, the name "New Preset" and edit validation off.
    Preset newPresetTemplate(const std::optional<Preset>& source = std::nullopt) const;
    // Replaces the preset with the same identifier when it differs.
    void update(const Preset& preset);
    // Moves the presets at sourceOffsets before the position destination
    // counted in the list as it was before the move, as a list view's drag and
    // drop does.
    void move(const QList<int>& sourceOffsets, int destination);
    // Deletes a preset unless it is the last one; returns the preset to select
    // next.
    std::optional<QUuid> remove(const QUuid& id);
    // Makes a preset active when it exists.
    void activate(const QUuid& id);
    // Sets the active identifier and writes it at once.
    void setActivePresetID(const std::optional<QUuid>& id);
    // Writes the list, then the active identifier. The list is not written
    // while a damaged stored list still waits to be copied (the copy is tried
    // again first).
    void save();

    struct ImportResult {
        int added = 0;
        int replaced = 0;
        // Replaced presets first, then added ones, each in pack order.
        QList<QUuid> affectedIDs;
    };
    // Validates the pack, then replaces the presets whose identifiers it
    // holds and appends the others (new copies of all of them with
    // assigningNewIDs). Changes nothing when the pack does not validate; the
    // active preset stays.
    std::expected<ImportResult, PresetPackError> importPack(const PresetPackDocument& document,
                                                            bool assigningNewIDs);
    // A pack of the presets in ids (all of them without ids), in store order.
    PresetPackDocument
    makePackDocument(const std::optional<QSet<QUuid>>& ids = std::nullopt,
                     const std::optional<QString>& name = std::nullopt,
                     const std::optional<QString>& description = std::nullopt) const;

Q_SIGNALS:
    void presetsChanged();
    void activePresetIDChanged();

private:
    qsizetype indexOf(const QUuid& id) const;
    QUuid activePresetIDOrNull() const { return m_activePresetID.value_or(QUuid()); }
    void setPresets(QList<Preset> presets);
    void writeActivePresetID();
    void load();
    std::expected<void, SettingsStoreError> copyStoredList();

    SettingsStore& m_settings;
    std::optional<PresetStoreProblem> m_loadProblem;
    // The stored data that must be copied before the list is written again.
    std::optional<QByteArray> m_uncopiedList;
    // Why the list and the active identifier as held are not what is stored.
    std::optional<SettingsStoreError> m_listWriteError;
    std::optional<SettingsStoreError> m_activeWriteError;
    QList<Preset> m_presets;
    std::optional<QUuid> m_activePresetID;
};

} // namespace scrivel
