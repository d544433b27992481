#pragma once

#include "core/editor/MainSidebarItem.h"
#include "core/presets/Preset.h"

#include <QCoreApplication>
#include <QObject>
#include <QUuid>
#include <optional>

namespace scrivel {

class PresetStore;

// The state of the main window: what the sidebar has selected and the
// pending deletion, with the sidebar's rules for adding, deleting and
// following imports.
class MainWindowModel : public QObject {
    Q_OBJECT

public:
    explicit MainWindowModel(PresetStore& store, QObject* parent = nullptr);

    PresetStore& store() const { return m_store; }

    const std::optional<MainSidebarItem>& selection() const { return m_selection; }
    void setSelection(const std::optional<MainSidebarItem>& selection);
    // The selected preset when the store still holds it.
    std::optional<Preset> selectedPreset() const;

    // Before the window is shown: the settings entry, or the selected preset
    // when it still exists and otherwise the active one.
    void prepareSelection(bool showSettings);
    // Before the window is shown on one preset (the one a failed run used):
    // that preset when the store holds it, otherwise as for the presets.
    void prepareSelection(const QUuid& presetID);

    // Appends a copy of the selected preset (or of the active one when no
    // preset is selected) and selects it.
    QUuid addPreset();

    // Deleting asks first: the preset waits here while the confirmation shows.
    void requestDeletion(const QUuid& id);
    void requestDeletionOfSelection();
    const std::optional<Preset>& presetPendingDeletion() const { return m_pendingDeletion; }
    bool isShowingDeleteConfirmation() const { return m_pendingDeletion.has_value(); }
    // Deletes the pending preset (the store keeps the last one) and selects
    // the preset the store names.
    void confirmDeletion();
    void cancelDeletion();
    static QString deleteConfirmationTitle();
    static QString deleteConfirmationMessage(const Preset& preset);

    // "Export Selected…" is offered only while a preset is selected.
    bool canExportSelected() const;
    // The delete button works only on a selected preset that is not the last.
    bool canDeleteSelection() const;

    // Moving a preset one place up (step -1) or down (step 1) in the list;
    // the selection stays on it.
    bool canMove(const QUuid& id, int step) const;
    void move(const QUuid& id, int step);

    // After an import: select the first affected preset when the store has it.
    void didImport(const std::optional<QUuid>& firstAffectedID);

    bool isActive(const QUuid& id) const;
    // The second line of a sidebar row: the provider, and the model when set.
    static QString sidebarSubtitle(const Preset& preset);
    static QString sidebarTooltip(bool isActive);

Q_SIGNALS:
    void selectionChanged();
    void deleteConfirmationChanged();

private:
    PresetStore& m_store;
    std::optional<MainSidebarItem> m_selection;
    std::optional<Preset> m_pendingDeletion;
};

} // namespace scrivel
