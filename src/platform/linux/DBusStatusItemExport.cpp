#include "platform/linux/DBusStatusItemExport.h"

#include "core/tray/StatusItemModel.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QMetaEnum>
#include <QVariantMap>

namespace scrivel {

DBusStatusItemExport::DBusStatusItemExport(StatusItemModel& model, QObject* parent)
    : QObject(parent), m_model(&model) {
    m_lastLook = look();
    m_lastToolTip = toolTip();
    m_lastAccessibleValue = accessibleValue();
    m_lastStatusLine = statusLine();
    m_registered = QDBusConnection::sessionBus().registerObject(
        objectPath(), this, QDBusConnection::ExportAllProperties);
    connect(&model, &StatusItemModel::buttonChanged, this, &DBusStatusItemExport::announceChanges);
    connect(&model, &StatusItemModel::menuChanged, this, &DBusStatusItemExport::announceChanges);
}

DBusStatusItemExport::~DBusStatusItemExport() {
    if (m_registered)
        QDBusConnection::sessionBus().unregisterObject(objectPath());
}

QString DBusStatusItemExport::look() const {
    if (!m_model)
        return {};
    return QString::fromLatin1(
        QMetaEnum::fromType<StatusItemModel::Look>().valueToKey(int(m_model->look())));
}

QString DBusStatusItemExport::toolTip() const {
    return m_model ? m_model->toolTip() : QString();
}

QString DBusStatusItemExport::accessibleValue() const {
    return m_model ? m_model->accessibleValue() : QString();
}

QString DBusStatusItemExport::statusLine() const {
    return m_model ? m_model->statusLine() : QString();
}

void DBusStatusItemExport::announceChanges() {
    QVariantMap changed;
    auto note = [&changed](const char* name, QString& last, const QString& now) {
        if (last != now) {
            last = now;
            changed.insert(QString::fromLatin1(name), now);
        }
    };
    note("Look", m_lastLook, look());
    note("ToolTip", m_lastToolTip, toolTip());
    note("AccessibleValue", m_lastAccessibleValue, accessibleValue());
    note("StatusLine", m_lastStatusLine, statusLine());
    if (changed.isEmpty() || !m_registered)
        return;
    QDBusMessage signal =
        QDBusMessage::createSignal(objectPath(), QStringLiteral("org.freedesktop.DBus.Properties"),
                                   QStringLiteral("PropertiesChanged"));
    signal << interfaceName() << changed << QStringList();
    QDBusConnection::sessionBus().send(signal);
}

} // namespace scrivel
