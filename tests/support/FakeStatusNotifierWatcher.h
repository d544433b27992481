#pragma once

#include <QDBusConnection>
#include <QDBusVariant>
#include <QList>
#include <QObject>
#include <QStringList>
#include <QThread>
#include <QVariantMap>

namespace scrivel::test {

// One node of a com.canonical.dbusmenu layout: its id, its properties
// ("label", "type", "children-display", "toggle-state", ...) and its
// children.
struct DBusMenuNode {
    int id = 0;
    QVariantMap properties;
    QList<DBusMenuNode> children;

    QString label() const { return properties.value(QStringLiteral("label")).toString(); }
    bool isSeparator() const {
        return properties.value(QStringLiteral("type")).toString() == QLatin1String("separator");
    }
    // The labels of the children, "-" for separators.
    QStringList childLabels() const;
    const DBusMenuNode* child(const QString& label) const;
};

// A tray host of the StatusNotifierItem kind on the test's session bus: it
// owns org.kde.StatusNotifierWatcher, says a host is registered (so Qt shows
// its tray icons as StatusNotifierItems with D-Bus menus), and records the
// items that register. It reads an item's properties and drives its menu
// the way hosts do (GetLayout, AboutToShow, Event). It answers on a thread
// of its own: Qt asks for the host with a blocking call, which a host on the
// caller's own thread could never answer.
class FakeStatusNotifierWatcher : public QObject {
    Q_OBJECT

public:
    explicit FakeStatusNotifierWatcher(QDBusConnection bus, QObject* parent = nullptr);
    ~FakeStatusNotifierWatcher() override;

    bool isServing() const { return m_serving; }
    // Each registered item as "<bus name>/<object path>" was given, in order.
    QStringList items;

    // The first registered item's service and property.
    QString itemService() const;
    QVariant itemProperty(const QString& name) const;
    // What the host draws: the icon's name and the bytes of every pixmap.
    QByteArray itemIcon() const;
    // The title of the item's tooltip.
    QString itemToolTip() const;
    // The item's menu: GetLayout of the whole tree.
    DBusMenuNode menuLayout() const;
    // A host opening and closing the menu: AboutToShow(id), or Event(id,
    // "opened" / "closed" / "clicked").
    bool aboutToShow(int id = 0) const;
    bool menuEvent(int id, const QString& eventId) const;

    // Called by the exported interface.
    void registerItem(const QString& service, const QString& sender);

Q_SIGNALS:
    void itemRegistered();

private:
    QDBusMessage callMenu(const QString& method, const QVariantList& arguments) const;

    QDBusConnection m_bus;
    QThread m_thread;
    QObject* m_holder = nullptr;
    bool m_serving = false;
};

} // namespace scrivel::test
