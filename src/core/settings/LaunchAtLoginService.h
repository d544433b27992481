#pragma once

#include "core/settings/LaunchAtLoginError.h"
#include "core/settings/LoginItemService.h"

#include <expected>

namespace scrivel {

// Turns "Launch at login" on and off over the system's login items: registers
// or unregisters only when that changes something, and sends the user to the
// system's list when the system wants the item approved there.
class LaunchAtLoginService {
public:
    explicit LaunchAtLoginService(LoginItemService& loginItems) : m_loginItems(loginItems) {}

    LoginItemStatus status() const { return m_loginItems.status(); }
    std::expected<void, LaunchAtLoginError> setLaunchAtLogin(bool on);
    void openSystemSettingsLoginItems() { m_loginItems.openSystemSettingsLoginItems(); }

    // Whether a status read from the system is one of the four known values.
    static bool isKnown(LoginItemStatus status);

private:
    LoginItemService& m_loginItems;
};

} // namespace scrivel
