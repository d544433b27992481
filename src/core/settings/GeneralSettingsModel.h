#pragma once

#include "core/settings/LaunchAtLoginService.h"
#include "core/settings/SettingsStatus.h"

#include <QObject>
#include <optional>

namespace scrivel {

// The rules behind the General settings: which launch-at-login control to
// show, the status line under it and the footer. The status is read when the
// section is shown and after each change, never watched, so an approval given
// in the system's settings shows up the next time the section is shown.
class GeneralSettingsModel : public QObject {
    Q_OBJECT

public:
    enum class LaunchControl {
        // Not read yet: an "off" switch that cannot be changed.
        pendingToggle,
        // A switch, on exactly when the item is enabled.
        toggle,
        // The system wants approval: a button to its login items instead.
        approvalButton,
        // An unknown status: "Unavailable".
        unavailable,
    };

    explicit GeneralSettingsModel(LoginItemService& loginItems, QObject* parent = nullptr);

    const std::optional<LoginItemStatus>& loginStatus() const { return m_loginStatus; }
    const std::optional<SettingsStatus>& status() const { return m_status; }
    LaunchControl launchControl() const;
    bool isLaunchAtLoginOn() const { return m_loginStatus == LoginItemStatus::enabled; }
    QString footerText() const;

    // Reads the login item's status again.
    void refresh();
    // The user flipped the switch.
    void setLaunchAtLogin(bool on);
    void openSystemSettingsLoginItems() { m_service.openSystemSettingsLoginItems(); }

Q_SIGNALS:
    void changed();

private:
    LaunchAtLoginService m_service;
    std::optional<LoginItemStatus> m_loginStatus;
    std::optional<SettingsStatus> m_status;
};

} // namespace scrivel
