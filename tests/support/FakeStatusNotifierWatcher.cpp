#include "support/FakeStatusNotifierWatcher.h"

#include <QDBusAbstractAdaptor>
#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDateTime>

namespace scrivel::test {

namespace {

const QString watcherService = QStringLiteral("org.kde.StatusNotifierWatcher");
const QString watcherPath = QStringLiteral("/StatusNotifierWatcher");
const QString itemInterface = QStringLiteral("org.kde.StatusNotifierItem");
const QString menuInterface = QStringLiteral("com.canonical.dbusmenu");

class WatcherAdaptor : public QDBusAbstractAdaptor {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.kde.StatusNotifierWatcher")
    Q_PROPERTY(QStringList RegisteredStatusNotifierItems READ registeredItems)
    Q_PROPERTY(bool IsStatusNotifierHostRegistered READ isHostRegistered)
    Q_PROPERTY(int ProtocolVersion READ protocolVersion)

public:
    WatcherAdaptor(QObject* holder, FakeStatusNotifierWatcher& watcher)
        : QDBusAbstractAdaptor(holder), m_watcher(watcher) {
        setAutoRelaySignals(false);
    }
    // Nobody asks in these tests; the list itself lives on the test's thread.
    QStringList registeredItems() const { return {}; }
    bool isHostRegistered() const { return true; }
    int protocolVersion() const { return 0; }

public Q_SLOTS:
    void RegisterStatusNotifierItem(const QString& service, const QDBusMessage& message) {
        QMetaObject::invokeMethod(
            &m_watcher,
            [watcher = &m_watcher, service, sender = message.service()] {
                watcher->registerItem(service, sender);
            },
            Qt::QueuedConnection);
    }
    void RegisterStatusNotifierHost(const QString&) {}

Q_SIGNALS:
    void StatusNotifierItemRegistered(const QString& item);
    void StatusNotifierHostRegistered();

private:
    FakeStatusNotifierWatcher& m_watcher;
};

void readNode(const QDBusArgument& argument, DBusMenuNode& node) {
    argument.beginStructure();
    argument >> node.id >> node.properties;
    argument.beginArray();
    while (!argument.atEnd()) {
        QDBusVariant child;
        argument >> child;
        DBusMenuNode childNode;
        readNode(child.variant().value<QDBusArgument>(), childNode);
        node.children.append(childNode);
    }
    argument.endArray();
    argument.endStructure();
}

} // namespace

QStringList DBusMenuNode::childLabels() const {
    QStringList labels;
    for (const DBusMenuNode& node : children)
        labels.append(node.isSeparator() ? QStringLiteral("-") : node.label());
    return labels;
}

const DBusMenuNode* DBusMenuNode::child(const QString& label) const {
    for (const DBusMenuNode& node : children) {
        if (node.label() == label)
            return &node;
    }
    return nullptr;
}

FakeStatusNotifierWatcher::FakeStatusNotifierWatcher(QDBusConnection bus, QObject* parent)
    : QObject(parent), m_bus(std::move(bus)) {
    m_holder = new QObject;
    new WatcherAdaptor(m_holder, *this);
    m_holder->moveToThread(&m_thread);
    m_thread.start();
    m_serving = m_bus.registerObject(watcherPath, m_holder, QDBusConnection::ExportAdaptors) &&
                m_bus.registerService(watcherService);
}

FakeStatusNotifierWatcher::~FakeStatusNotifierWatcher() {
    m_bus.unregisterService(watcherService);
    m_bus.unregisterObject(watcherPath);
    m_holder->deleteLater();
    m_thread.quit();
    m_thread.wait();
}

void FakeStatusNotifierWatcher::registerItem(const QString& service, const QString& sender) {
    // Items register by bus name (then at /StatusNotifierItem) or by path
    // (then on the caller's connection).
    items.append(service.startsWith(QLatin1Char('/')) ? sender + service : service);
    Q_EMIT itemRegistered();
}

QString FakeStatusNotifierWatcher::itemService() const {
    return items.isEmpty() ? QString() : items.first().section(QLatin1Char('/'), 0, 0);
}

QVariant FakeStatusNotifierWatcher::itemProperty(const QString& name) const {
    QDBusMessage get = QDBusMessage::createMethodCall(
        itemService(), QStringLiteral("/StatusNotifierItem"),
        QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"));
    get << itemInterface << name;
    const QDBusMessage reply = m_bus.call(get, QDBus::BlockWithGui, 5000);
    if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().isEmpty())
        return {};
    return reply.arguments().first().value<QDBusVariant>().variant();
}

namespace {

// An a(iiay) pixmap list, flattened.
QByteArray pixmapBytes(const QDBusArgument& argument) {
    QByteArray bytes;
    argument.beginArray();
    while (!argument.atEnd()) {
        int width = 0;
        int height = 0;
        QByteArray data;
        argument.beginStructure();
        argument >> width >> height >> data;
        argument.endStructure();
        bytes += QByteArray::number(width) + 'x' + QByteArray::number(height) + ':' + data;
    }
    argument.endArray();
    return bytes;
}

} // namespace

QByteArray FakeStatusNotifierWatcher::itemIcon() const {
    return itemProperty(QStringLiteral("IconName")).toString().toUtf8() + '|' +
           pixmapBytes(itemProperty(QStringLiteral("IconPixmap")).value<QDBusArgument>());
}

QString FakeStatusNotifierWatcher::itemToolTip() const {
    // (icon name, pixmaps, title, description)
    const QDBusArgument argument = itemProperty(QStringLiteral("ToolTip")).value<QDBusArgument>();
    QString iconName;
    QString title;
    QString description;
    argument.beginStructure();
    argument >> iconName;
    (void)pixmapBytes(argument);
    argument >> title >> description;
    argument.endStructure();
    return title;
}

QDBusMessage FakeStatusNotifierWatcher::callMenu(const QString& method,
                                                 const QVariantList& arguments) const {
    const QString menuPath = itemProperty(QStringLiteral("Menu")).value<QDBusObjectPath>().path();
    QDBusMessage call =
        QDBusMessage::createMethodCall(itemService(), menuPath, menuInterface, method);
    call.setArguments(arguments);
    return m_bus.call(call, QDBus::BlockWithGui, 5000);
}

DBusMenuNode FakeStatusNotifierWatcher::menuLayout() const {
    DBusMenuNode root;
    const QDBusMessage reply = callMenu(QStringLiteral("GetLayout"), {0, -1, QStringList()});
    if (reply.type() == QDBusMessage::ReplyMessage && reply.arguments().size() >= 2)
        readNode(reply.arguments()[1].value<QDBusArgument>(), root);
    return root;
}

bool FakeStatusNotifierWatcher::aboutToShow(int id) const {
    return callMenu(QStringLiteral("AboutToShow"), {id}).type() == QDBusMessage::ReplyMessage;
}

bool FakeStatusNotifierWatcher::menuEvent(int id, const QString& eventId) const {
    return callMenu(QStringLiteral("Event"),
                    {id, eventId, QVariant::fromValue(QDBusVariant(QString())),
                     uint(QDateTime::currentSecsSinceEpoch())})
               .type() == QDBusMessage::ReplyMessage;
}

} // namespace scrivel::test

#include "FakeStatusNotifierWatcher.moc"
