#include "app/AppStateExport.h"

#include "app/AppDelegate.h"
#include "core/panel/FixPanelControlsState.h"

#include <QDBusConnection>
#include <QGuiApplication>

namespace scrivel {

AppStateExport::AppStateExport(AppDelegate& delegate, QObject* parent)
    : QObject(parent), m_delegate(delegate) {
    m_registered = QDBusConnection::sessionBus().registerObject(
        objectPath(), this, QDBusConnection::ExportAllProperties);
}

AppStateExport::~AppStateExport() {
    if (m_registered)
        QDBusConnection::sessionBus().unregisterObject(objectPath());
}

bool AppStateExport::panelVisible() const {
    return m_delegate.fixPanel() && m_delegate.fixPanel()->isPanelVisible();
}

QString AppStateExport::shortcutDelivery() const {
    using Kind = GlobalShortcutStatus::Kind;
    switch (m_delegate.shortcuts().deliveryStatus().kind) {
    case Kind::keyGrabs:
        return QStringLiteral("keyGrabs");
    case Kind::desktopPending:
        return QStringLiteral("desktopPending");
    case Kind::desktopBound:
        return QStringLiteral("desktopBound");
    case Kind::unavailable:
        break;
    }
    return QStringLiteral("unavailable");
}

QString AppStateExport::shortcutText() const {
    KeyboardShortcuts& shortcuts = m_delegate.shortcuts();
    const GlobalShortcutStatus status = shortcuts.deliveryStatus();
    if (status.kind == GlobalShortcutStatus::Kind::keyGrabs)
        return shortcuts.displayText(ShortcutName::rewriteFocusedField()).value_or(QString());
    return status.settingsText();
}

QString AppStateExport::windowSystem() const {
    return QGuiApplication::platformName();
}

QString AppStateExport::shortcutHint() const {
    KeyboardShortcuts& shortcuts = m_delegate.shortcuts();
    return shortcutHintText(shortcuts.deliveryStatus(),
                            shortcuts.displayText(ShortcutName::rewriteFocusedField()))
        .value_or(QString());
}

} // namespace scrivel
