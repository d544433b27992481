#pragma once

#include <QObject>
#include <QString>

namespace scrivel {

// One Scrivel per user session. The first instance owns the name
// "com.scrivel.app" on the session bus; a later start asks it to activate
// (or to toggle the panel, for `scrivel --toggle`) and exits. Without a
// session bus every start runs on its own.
class SingleInstance : public QObject {
    Q_OBJECT

public:
    enum class Role { primary, secondary, standalone };

    static QString serviceName() { return QStringLiteral("com.scrivel.app"); }
    static QString objectPath() { return QStringLiteral("/com/scrivel/app"); }
    static QString interfaceName() { return QStringLiteral("com.scrivel.app.Instance"); }

    explicit SingleInstance(QObject* parent = nullptr);

    // Claims the session's name, or finds the instance that holds it.
    Role claim();
    // Asks the running instance to "Activate" or "Toggle"; false when it did
    // not answer.
    bool forward(const QString& method);

Q_SIGNALS:
    void activateRequested();
    void toggleRequested();
};

} // namespace scrivel
