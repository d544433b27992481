#include "core/settings/LaunchAtLoginService.h"

#include "core/support/Log.h"

namespace scrivel {

bool LaunchAtLoginService::isKnown(LoginItemStatus status) {
    switch (status) {
    case LoginItemStatus::notRegistered:
    case LoginItemStatus::enabled:
    case LoginItemStatus::requiresApproval:
    case LoginItemStatus::notFound:
        return true;
    }
    return false;
}

std::expected<void, LaunchAtLoginError> LaunchAtLoginService::setLaunchAtLogin(bool on) {
    const LoginItemStatus current = m_loginItems.status();
    if (!isKnown(current))
        return std::unexpected(LaunchAtLoginError::unknownStatus());

    if (current == LoginItemStatus::requiresApproval) {
        m_loginItems.openSystemSettingsLoginItems();
        return {};
    }
    std::expected<void, LoginItemFailure> outcome;
    if (on && current != LoginItemStatus::enabled)
        outcome = m_loginItems.registerItem();
    else if (!on && current == LoginItemStatus::enabled)
        outcome = m_loginItems.unregisterItem();
    if (!outcome) {
        qCWarning(rewriteLog).noquote()
            << "autostart entry update failed:" << privateValue(outcome.error().systemDescription);
        return std::unexpected(LaunchAtLoginError::systemFailure(on, outcome.error()));
    }
    return {};
}

} // namespace scrivel
