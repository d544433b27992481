#pragma once

#include <QObject>
#include <QString>
#include <QVariantMap>
#include <expected>
#include <memory>

namespace scrivel {

class LocalInstanceChannel;

// One Scrivel per user session and display. The first instance owns the name
// "com.scrivel.app" on the session bus, where it answers the standard
// org.freedesktop.Application interface (Activate, Open, ActivateAction
// "toggle") beside its own com.scrivel.app.Instance at /com/scrivel/app, and
// listens on a socket in the user's runtime folder (LocalInstanceChannel); a
// later start finds it on either and asks it to activate (or to toggle the
// panel, for `scrivel --toggle`), then exits. Either way the launcher's
// activation token goes along, so the running one may take the keyboard.
// The bus is asked first; the socket alone is enough where there is no
// session bus. With neither, every start runs on its own.
class SingleInstance : public QObject {
    Q_OBJECT

public:
    enum class Role { primary, secondary, standalone };
    enum class Command { activate, toggle };

    static QString serviceName() { return QStringLiteral("com.scrivel.app"); }
    static QString objectPath() { return QStringLiteral("/com/scrivel/app"); }
    static QString interfaceName() { return QStringLiteral("com.scrivel.app.Instance"); }
    static QString applicationInterfaceName() {
        return QStringLiteral("org.freedesktop.Application");
    }
    // The action name of the panel toggle in org.freedesktop.Application.
    static QString toggleAction() { return QStringLiteral("toggle"); }

    // The socket for this process's display in $XDG_RUNTIME_DIR, or why
    // there is none. Needs the QGuiApplication.
    static std::expected<QString, QString> localSocketOfThisDisplay();

    explicit SingleInstance(std::expected<QString, QString> localSocket, QObject* parent = nullptr);
    ~SingleInstance() override;

    // Claims the session's name and the socket, or finds the instance that
    // holds one of them.
    Role claim();
    // Asks the running instance found by claim() to run the command, with
    // the launcher's platform data ("activation-token",
    // "desktop-startup-id"); false when it did not answer.
    bool forward(Command command, const QVariantMap& platformData = {});
    // After claim() returned standalone: why neither channel works, as one
    // phrase ("no session bus, and XDG_RUNTIME_DIR is unset").
    QString standaloneReason() const;

Q_SIGNALS:
    // The token is the launcher's activation token (or X11 startup id), empty
    // when the caller had none.
    void activateRequested(const QString& activationToken);
    void toggleRequested(const QString& activationToken);

private:
    std::expected<QString, QString> m_localSocket;
    std::unique_ptr<LocalInstanceChannel> m_local;
    QString m_localProblem;
    bool m_forwardOnBus = false;
};

} // namespace scrivel
