#pragma once

#include <QObject>
#include <QPointer>
#include <QString>

namespace scrivel {

class StatusItemModel;

// Publishes the status item's look, tooltip, accessible value and status line
// on the session bus at /com/scrivel/StatusItem (interface
// com.scrivel.StatusItem), with PropertiesChanged on every change. A tray
// icon embedded over XEmbed shows its tooltip to nobody but the pointer;
// scripts, tests and assistive tools read the state here instead.
class DBusStatusItemExport : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "com.scrivel.StatusItem")
    Q_PROPERTY(QString Look READ look)
    Q_PROPERTY(QString ToolTip READ toolTip)
    Q_PROPERTY(QString AccessibleValue READ accessibleValue)
    Q_PROPERTY(QString StatusLine READ statusLine)

public:
    static QString objectPath() { return QStringLiteral("/com/scrivel/StatusItem"); }
    static QString interfaceName() { return QStringLiteral("com.scrivel.StatusItem"); }

    explicit DBusStatusItemExport(StatusItemModel& model, QObject* parent = nullptr);
    ~DBusStatusItemExport() override;

    // False when the session bus is missing or the path is taken.
    bool isRegistered() const { return m_registered; }

    QString look() const;
    QString toolTip() const;
    QString accessibleValue() const;
    QString statusLine() const;

private:
    void announceChanges();

    QPointer<StatusItemModel> m_model;
    bool m_registered = false;
    QString m_lastLook, m_lastToolTip, m_lastAccessibleValue, m_lastStatusLine;
};

} // namespace scrivel
