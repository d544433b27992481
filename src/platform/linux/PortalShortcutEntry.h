#pragma once

#include <QDBusArgument>
#include <QList>
#include <QMetaType>
#include <QString>
#include <QVariantMap>

namespace scrivel {

// One element of the shortcut portal's a(sa{sv}) lists: a shortcut's id and
// its properties ("description", "preferred_trigger" going in;
// "description", "trigger_description" coming back).
struct PortalShortcutEntry {
    QString id;
    QVariantMap properties;

    // Makes the type and its list known to QtDBus (once is enough; repeating
    // is harmless).
    static void registerDBusTypes();
};

using PortalShortcutList = QList<PortalShortcutEntry>;

inline QDBusArgument& operator<<(QDBusArgument& argument, const PortalShortcutEntry& entry) {
    argument.beginStructure();
    argument << entry.id << entry.properties;
    argument.endStructure();
    return argument;
}

inline const QDBusArgument& operator>>(const QDBusArgument& argument, PortalShortcutEntry& entry) {
    argument.beginStructure();
    argument >> entry.id >> entry.properties;
    argument.endStructure();
    return argument;
}

} // namespace scrivel

Q_DECLARE_METATYPE(scrivel::PortalShortcutEntry)
Q_DECLARE_METATYPE(scrivel::PortalShortcutList)
