#include "platform/linux/DesktopSession.h"

#include <QGuiApplication>

namespace scrivel::DesktopSession {

bool isWayland() {
    return qgetenv("XDG_SESSION_TYPE") == "wayland" ||
           !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY");
}

bool runsNativelyOnWayland() {
    return QGuiApplication::platformName().startsWith(QLatin1String("wayland"));
}

QVariantMap launcherPlatformData() {
    QVariantMap data;
    const QString token = qEnvironmentVariable("XDG_ACTIVATION_TOKEN");
    if (!token.isEmpty())
        data.insert(QStringLiteral("activation-token"), token);
    const QString startupId = qEnvironmentVariable("DESKTOP_STARTUP_ID");
    if (!startupId.isEmpty())
        data.insert(QStringLiteral("desktop-startup-id"), startupId);
    return data;
}

QString activationToken(const QVariantMap& platformData) {
    const QString token = platformData.value(QStringLiteral("activation-token")).toString();
    if (!token.isEmpty())
        return token;
    return platformData.value(QStringLiteral("desktop-startup-id")).toString();
}

void adoptActivationToken(const QString& token) {
    if (token.isEmpty() || !runsNativelyOnWayland())
        return;
    qputenv("XDG_ACTIVATION_TOKEN", token.toUtf8());
}

void forgetActivationToken() {
    qunsetenv("XDG_ACTIVATION_TOKEN");
}

} // namespace scrivel::DesktopSession
