#include "core/selection/SelectionPreferences.h"

#include "core/storage/SettingsStore.h"

namespace scrivel {

SelectionPreferences::SelectionPreferences(SettingsStore& settings, bool available, QObject* parent)
    : QObject(parent), m_settings(settings), m_available(available) {}

std::optional<QString> SelectionPreferences::unavailableReason() const {
    if (m_available)
        return std::nullopt;
    return tr("Needs an X11 session");
}

bool SelectionPreferences::takeSelectionSetting() const {
    return m_settings.boolean(takeSelectionKey()).value_or(true);
}

bool SelectionPreferences::replaceSelectionSetting() const {
    return m_settings.boolean(replaceSelectionKey()).value_or(false);
}

void SelectionPreferences::setTakeSelection(bool on) {
    if (on == takeSelectionSetting() && m_settings.contains(takeSelectionKey()))
        return;
    // A write that fails is kept in memory and reported by the store.
    (void)m_settings.setBoolean(takeSelectionKey(), on);
    Q_EMIT changed();
}

void SelectionPreferences::setReplaceSelection(bool on) {
    if (on == replaceSelectionSetting() && m_settings.contains(replaceSelectionKey()))
        return;
    (void)m_settings.setBoolean(replaceSelectionKey(), on);
    Q_EMIT changed();
}

} // namespace scrivel
