#pragma once

#include <QHashFunctions>
#include <QUuid>

namespace scrivel {

// What the main window's sidebar has selected: a preset, the settings entry,
// or the update settings.
class MainSidebarItem {
public:
    enum class Kind { preset, settings, updater };

    static MainSidebarItem preset(const QUuid& id) { return MainSidebarItem(Kind::preset, id); }
    static MainSidebarItem settings() { return MainSidebarItem(Kind::settings, {}); }
    static MainSidebarItem updater() { return MainSidebarItem(Kind::updater, {}); }

    Kind kind() const { return m_kind; }
    bool isPreset() const { return m_kind == Kind::preset; }
    // The preset's identifier; null for the other kinds.
    const QUuid& presetID() const { return m_presetID; }

    friend bool operator==(const MainSidebarItem&, const MainSidebarItem&) = default;
    friend size_t qHash(const MainSidebarItem& item, size_t seed = 0) {
        return qHashMulti(seed, int(item.m_kind), item.m_presetID);
    }

private:
    MainSidebarItem(Kind kind, const QUuid& id) : m_kind(kind), m_presetID(id) {}

    Kind m_kind;
    QUuid m_presetID;
};

} // namespace scrivel
