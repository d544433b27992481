#pragma once

#include "core/settings/LoginItemService.h"

#include <QString>
#include <QStringList>

namespace scrivel {

// Launch at login on Linux desktops: an autostart entry
// $XDG_CONFIG_HOME/autostart/<app id>.desktop that starts the running binary
// (the AppImage itself when run from one). The desktop's own startup settings
// may hide the entry; that counts as not registered. Nothing ever waits for
// approval here.
class XdgAutostartLoginItemService : public LoginItemService {
public:
    // The entry of this process: the XDG config home of the environment and
    // the binary this process runs from.
    explicit XdgAutostartLoginItemService(const QString& appID);
    // An entry for the given folder and binary, for tests.
    XdgAutostartLoginItemService(const QString& appID, const QString& configHome,
                                 const QString& executable);

    QString entryPath() const;
    const QString& executable() const { return m_executable; }

    LoginItemStatus status() const override;
    std::expected<void, LoginItemFailure> registerItem() override;
    std::expected<void, LoginItemFailure> unregisterItem() override;
    void openSystemSettingsLoginItems() override {}

    // The binary a login should start: $APPIMAGE when it names an existing
    // file (the running binary is then a temporary mount), else the running
    // binary.
    static QString launchExecutable(const QString& appImage, const QString& runningBinary);
    // The text of the entry.
    static QByteArray entryText(const QString& executable);
    // Quoting of one argument in an Exec key, and the reverse: the arguments
    // of an Exec value (an empty list when it is malformed).
    static QString quotedExecArgument(const QString& argument);
    static QStringList execArguments(const QString& execValue);

private:
    QString m_appID;
    QString m_configHome;
    QString m_executable;
};

} // namespace scrivel
