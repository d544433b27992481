#include "core/editor/MainWindowModel.h"

#include "core/presets/PresetStore.h"
#include "core/providers/ProviderCatalog.h"

namespace scrivel {

MainWindowModel::MainWindowModel(PresetStore& store, QObject* parent)
    : QObject(parent), m_store(store) {}

void MainWindowModel::setSelection(const std::optional<MainSidebarItem>& selection) {
    if (selection == m_selection)
        return;
    m_selection = selection;
    Q_EMIT selectionChanged();
}

std::optional<Preset> MainWindowModel::selectedPreset() const {
    if (!m_selection || !m_selection->isPreset())
        return std::nullopt;
    return m_store.preset(m_selection->presetID());
}

void MainWindowModel::prepareSelection(bool showSettings) {
    if (showSettings) {
        setSelection(MainSidebarItem::settings());
        return;
    }
    if (selectedPreset())
        return;
    const std::optional<Preset> active = m_store.activePreset();
    setSelection(active ? std::optional(MainSidebarItem::preset(active->id)) : std::nullopt);
}

void MainWindowModel::prepareSelection(const QUuid& presetID) {
    if (m_store.preset(presetID))
        setSelection(MainSidebarItem::preset(presetID));
    else
        prepareSelection(false);
}

QUuid MainWindowModel::addPreset() {
    // The store falls back to the active preset, then to the first built-in.
    const Preset preset = m_store.newPresetTemplate(selectedPreset());
    m_store.add(preset);
    setSelection(MainSidebarItem::preset(preset.id));
    return preset.id;
}

void MainWindowModel::requestDeletion(const QUuid& id) {
    const std::optional<Preset> preset = m_store.preset(id);
    if (!preset)
        return;
    m_pendingDeletion = preset;
    Q_EMIT deleteConfirmationChanged();
}

void MainWindowModel::requestDeletionOfSelection() {
    if (const std::optional<Preset> preset = selectedPreset())
        requestDeletion(preset->id);
}

void MainWindowModel::confirmDeletion() {
    if (!m_pendingDeletion)
        return;
    const QUuid id = std::exchange(m_pendingDeletion, std::nullopt)->id;
    const std::optional<QUuid> next = m_store.remove(id);
    setSelection(next ? std::optional(MainSidebarItem::preset(*next)) : std::nullopt);
    Q_EMIT deleteConfirmationChanged();
}

void MainWindowModel::cancelDeletion() {
    if (!m_pendingDeletion)
        return;
    m_pendingDeletion.reset();
    Q_EMIT deleteConfirmationChanged();
}

QString MainWindowModel::deleteConfirmationTitle() {
    return tr("Delete this preset?");
}

QString MainWindowModel::deleteConfirmationMessage(const Preset& preset) {
    return tr("“%1” will be permanently deleted.").arg(preset.displayName());
}

bool MainWindowModel::canExportSelected() const {
    return selectedPreset().has_value();
}

bool MainWindowModel::canDeleteSelection() const {
    return selectedPreset().has_value() && m_store.presets().size() > 1;
}

namespace {

qsizetype offsetOf(const QList<Preset>& presets, const QUuid& id) {
    for (qsizetype i = 0; i < presets.size(); ++i)
        if (presets[i].id == id)
            return i;
    return -1;
}

} // namespace

bool MainWindowModel::canMove(const QUuid& id, int step) const {
    const QList<Preset> presets = m_store.presets();
    const qsizetype offset = offsetOf(presets, id);
    return offset >= 0 && (step == -1 || step == 1) && offset + step >= 0 &&
           offset + step < presets.size();
}

void MainWindowModel::move(const QUuid& id, int step) {
    if (!canMove(id, step))
        return;
    const int offset = int(offsetOf(m_store.presets(), id));
    // The store counts the destination in the list as it is before the move.
    m_store.move({offset}, step < 0 ? offset - 1 : offset + 2);
}

void MainWindowModel::didImport(const std::optional<QUuid>& firstAffectedID) {
    if (firstAffectedID && m_store.preset(*firstAffectedID))
        setSelection(MainSidebarItem::preset(*firstAffectedID));
}

bool MainWindowModel::isActive(const QUuid& id) const {
    const std::optional<Preset> active = m_store.activePreset();
    return active && active->id == id;
}

QString MainWindowModel::sidebarSubtitle(const Preset& preset) {
    const QString provider = providerDisplayName(preset);
    if (preset.providerID == Preset::onDeviceProviderID() || preset.model.isEmpty())
        return provider;
    return provider + QStringLiteral(" · ") + preset.model;
}

QString MainWindowModel::sidebarTooltip(bool isActive) {
    return isActive ? tr("The hotkey runs this preset")
                    : tr("Choose Use Preset to run this from the hotkey");
}

} // namespace scrivel
