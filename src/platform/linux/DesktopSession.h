#pragma once

#include <QString>
#include <QVariantMap>

namespace scrivel {

// What kind of desktop session Scrivel runs in, and the launcher's
// activation token that lets a window take the keyboard there.
namespace DesktopSession {

// A Wayland session, whether Qt draws natively on Wayland or through
// XWayland: XDG_SESSION_TYPE says "wayland" or WAYLAND_DISPLAY is set. X11
// key grabs there see only keys meant for our own windows.
bool isWayland();

// Qt itself talks Wayland (not XWayland).
bool runsNativelyOnWayland();

// The launcher's activation data from this process's environment, as the
// platform data of org.freedesktop.Application: "activation-token"
// (XDG_ACTIVATION_TOKEN, Wayland) and "desktop-startup-id"
// (DESKTOP_STARTUP_ID, X11). Read it before the QGuiApplication exists: the
// X11 platform plugin takes DESKTOP_STARTUP_ID for itself.
QVariantMap launcherPlatformData();

// The token in such platform data, the Wayland one first; empty when none.
QString activationToken(const QVariantMap& platformData);

// Hands a launcher's token to Qt so the next window activation presents it
// to the compositor (the Wayland plugin takes XDG_ACTIVATION_TOKEN once).
// Does nothing for an empty token or off Wayland.
void adoptActivationToken(const QString& token);
// Drops a token that no window used.
void forgetActivationToken();

} // namespace DesktopSession

} // namespace scrivel
