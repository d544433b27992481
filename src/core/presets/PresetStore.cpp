#include "core/presets/PresetStore.h"

#include "core/support/Log.h"

#include "core/presets/BuiltInPresets.h"
#include "core/presets/StoredPresetList.h"
#include "core/storage/SettingsStore.h"

#include <QCoreApplication>
#include <QThread>
#include <algorithm>

namespace scrivel {

namespace {

void assertMainThread() {
    Q_ASSERT_X(!QCoreApplication::instance() ||
                   QThread::currentThread() == QCoreApplication::instance()->thread(),
               "PresetStore", "used off the main thread");
}

} // namespace

PresetStore::PresetStore(SettingsStore& settings, QObject* parent)
    : QObject(parent), m_settings(settings) {
    assertMainThread();
    if (m_settings.readError())
        return;
    load();
}

void PresetStore::load() {
    // Stored as bytes by this version; a text or anything else under the key
    // is kept as its text.
    std::optional<QByteArray> data = m_settings.data(presetsKey());
    if (!data && m_settings.contains(presetsKey()))
        data = m_settings.text(presetsKey()).value_or(QString()).toUtf8();
    if (data) {
        StoredPresetList stored = StoredPresetList::read(*data);
        m_presets = std::move(stored.presets);
        if (stored.losesData()) {
            qCWarning(rewriteLog).noquote()
                << QStringLiteral(
                       "stored presets damaged unreadable=%1 wellFormed=%2 unknownKeys=%3")
                       .arg(stored.unreadable)
                       .arg(stored.wellFormed)
                       .arg(stored.unknownKeys.size());
            m_uncopiedList = *data;
            const auto kind = stored.unreadable > 0 || !stored.wellFormed
                                  ? PresetStoreProblem::Kind::presetsUnreadable
                                  : PresetStoreProblem::Kind::newerFields;
            const auto copied = m_settings.keepCopy(backupPrefix(), *data);
            if (copied) {
                m_uncopiedList.reset();
                m_loadProblem =
                    PresetStoreProblem(kind, *copied, stored.unreadable, int(m_presets.size()));
            } else {
                m_loadProblem =
                    PresetStoreProblem(PresetStoreProblem::Kind::copyFailed, copied.error().path(),
                                       stored.unreadable, int(m_presets.size()));
            }
        }
    }
    if (const auto text = m_settings.text(activePresetKey())) {
        if (const auto id = Preset::parseID(*text); id && preset(*id)) {
            m_activePresetID = *id;
            return;
        }
    }
    if (!m_presets.isEmpty())
        m_activePresetID = m_presets.first().id;
}

qsizetype PresetStore::indexOf(const QUuid& id) const {
    for (qsizetype i = 0; i < m_presets.size(); ++i) {
        if (m_presets[i].id == id)
            return i;
    }
    return -1;
}

std::optional<Preset> PresetStore::preset(const QUuid& id) const {
    const qsizetype index = indexOf(id);
    if (index < 0)
        return std::nullopt;
    return m_presets[index];
}

std::optional<Preset> PresetStore::activePreset() const {
    if (m_activePresetID) {
        if (auto active = preset(*m_activePresetID))
            return active;
    }
    if (m_presets.isEmpty())
        return std::nullopt;
    return m_presets.first();
}

void PresetStore::seedIfEmpty(bool onDeviceModelAvailable) {
    assertMainThread();
    if (!m_presets.isEmpty() || m_settings.readError())
        return;
    setPresets(builtInPresets(onDeviceModelAvailable));
    m_activePresetID = m_presets.first().id;
    Q_EMIT activePresetIDChanged();
    save();
}

void PresetStore::add(const Preset& preset) {
    assertMainThread();
    QList<Preset> presets = m_presets;
    presets.append(preset);
    setPresets(std::move(presets));
    save();
}

Preset PresetStore::newPresetTemplate(const std::optional<Preset>& source) const {
    Preset preset;
    if (source)
        preset = *source;
    else if (const auto active = activePreset())
        preset = *active;
    else
        preset = builtInPresets(false).first();
    preset.id = QUuid::createUuid();
    preset.name = QCoreApplication::translate("PresetStore", "New Preset");
    preset.validatesEdits = false;
    return preset;
}

void PresetStore::update(const Preset& preset) {
    assertMainThread();
    const qsizetype index = indexOf(preset.id);
    if (index < 0 || m_presets[index] == preset)
        return;
    QList<Preset> presets = m_presets;
    presets[index] = preset;
    setPresets(std::move(presets));
    save();
}

void PresetStore::move(const QList<int>& sourceOffsets, int destination) {
    assertMainThread();
    QList<int> sources;
    for (int offset : sourceOffsets) {
        if (offset >= 0 && offset < m_presets.size() && !sources.contains(offset))
            sources.append(offset);
    }
    std::sort(sources.begin(), sources.end());
    destination = std::clamp(destination, 0, int(m_presets.size()));

    // The moved presets keep their relative order and land before the preset
    // that was at `destination`; the destination counts positions before the
    // move, so every moved preset in front of it shifts it left by one.
    QList<Preset> moved;
    QList<Preset> rest;
    for (int i = 0; i < m_presets.size(); ++i)
        (sources.contains(i) ? moved : rest).append(m_presets[i]);
    const int movedBefore =
        int(std::count_if(sources.begin(), sources.end(), [&](int s) { return s < destination; }));
    const int insertAt = destination - movedBefore;

    QList<Preset> presets = rest;
    for (int i = 0; i < moved.size(); ++i)
        presets.insert(insertAt + i, moved[i]);
    setPresets(std::move(presets));
    save();
}

std::optional<QUuid> PresetStore::remove(const QUuid& id) {
    assertMainThread();
    if (m_presets.size() < 2) {
        if (const auto active = activePreset())
            return active->id;
        return std::nullopt;
    }
    const int index = int(std::max<qsizetype>(indexOf(id), 0));
    const bool wasActive = activePreset() && activePreset()->id == id;

    QList<Preset> presets = m_presets;
    presets.removeIf([&](const Preset& preset) { return preset.id == id; });
    setPresets(std::move(presets));

    const int next = std::min(index, int(m_presets.size()) - 1);
    if (wasActive)
        setActivePresetID(m_presets[next].id);
    save();
    return m_presets[next].id;
}

void PresetStore::activate(const QUuid& id) {
    assertMainThread();
    if (preset(id))
        setActivePresetID(id);
}

void PresetStore::setActivePresetID(const std::optional<QUuid>& id) {
    assertMainThread();
    const bool changed = m_activePresetID != id;
    m_activePresetID = id;
    writeActivePresetID();
    if (changed)
        Q_EMIT activePresetIDChanged();
}

void PresetStore::save() {
    assertMainThread();
    // A list that cannot be encoded is not written: the stored list keeps
    // its previous value. Nor is one whose damaged predecessor has not been
    // copied yet. The active preset is written either way.
    if (const auto copied = copyStoredList(); !copied) {
        qCWarning(rewriteLog) << "presets not saved: the stored list could not be copied";
        m_listWriteError = copied.error();
    } else if (const auto encoded = Preset::encodeList(m_presets)) {
        const auto written = m_settings.setData(presetsKey(), *encoded);
        m_listWriteError = written ? std::nullopt : std::optional(written.error());
    } else {
        qCWarning(rewriteLog) << "presets not saved: a temperature is not a finite number";
    }
    writeActivePresetID();
}

std::expected<void, SettingsStoreError> PresetStore::copyStoredList() {
    if (!m_uncopiedList)
        return {};
    const auto copied = m_settings.keepCopy(backupPrefix(), *m_uncopiedList);
    if (!copied)
        return std::unexpected(copied.error());
    m_uncopiedList.reset();
    return {};
}

std::optional<SettingsStoreError> PresetStore::saveError() const {
    return m_listWriteError ? m_listWriteError : m_activeWriteError;
}

void PresetStore::setPresets(QList<Preset> presets) {
    if (presets == m_presets)
        return;
    m_presets = std::move(presets);
    Q_EMIT presetsChanged();
}

void PresetStore::writeActivePresetID() {
    const auto written =
        m_activePresetID ? m_settings.setText(activePresetKey(), Preset::idText(*m_activePresetID))
                         : m_settings.remove(activePresetKey());
    m_activeWriteError = written ? std::nullopt : std::optional(written.error());
}

std::expected<PresetStore::ImportResult, PresetPackError>
PresetStore::importPack(const PresetPackDocument& document, bool assigningNewIDs) {
    assertMainThread();
    if (auto valid = document.validate(); !valid)
        return std::unexpected(valid.error());
    QSet<QUuid> existing;
    for (const Preset& preset : m_presets)
        existing.insert(preset.id);
    const auto made = document.makePresets(assigningNewIDs, existing);

    // An identifier may come more than once in a pack: each later item is a
    // newer version of the same preset. Only the last version is kept, and
    // each preset is counted once: replaced when it was in the store before,
    // added when it is new.
    QList<Preset> replaced;
    QList<Preset> added;
    const auto keepLatest = [](QList<Preset>& list, const Preset& preset) {
        for (Preset& kept : list) {
            if (kept.id == preset.id) {
                kept = preset;
                return;
            }
        }
        list.append(preset);
    };
    for (const Preset& preset : made.added)
        keepLatest(added, preset);
    for (const Preset& preset : made.replaced)
        keepLatest(existing.contains(preset.id) ? replaced : added, preset);

    ImportResult result;
    for (const Preset& preset : replaced) {
        update(preset);
        result.affectedIDs.append(preset.id);
    }
    for (const Preset& preset : added) {
        add(preset);
        result.affectedIDs.append(preset.id);
    }
    result.added = int(added.size());
    result.replaced = int(replaced.size());
    return result;
}

PresetPackDocument PresetStore::makePackDocument(const std::optional<QSet<QUuid>>& ids,
                                                 const std::optional<QString>& name,
                                                 const std::optional<QString>& description) const {
    QList<Preset> chosen;
    for (const Preset& preset : m_presets) {
        if (!ids || ids->contains(preset.id))
            chosen.append(preset);
    }
    return PresetPackDocument::fromPresets(chosen, name, description);
}

} // namespace scrivel
