#include "core/settings/GeneralSettingsModel.h"

namespace scrivel {

namespace {

QString approvalWarning() {
    return GeneralSettingsModel::tr("Allow Scrivel in your desktop’s autostart settings.");
}

} // namespace

GeneralSettingsModel::GeneralSettingsModel(LoginItemService& loginItems, QObject* parent)
    : QObject(parent), m_service(loginItems) {}

GeneralSettingsModel::LaunchControl GeneralSettingsModel::launchControl() const {
    if (!m_loginStatus)
        return LaunchControl::pendingToggle;
    if (!LaunchAtLoginService::isKnown(*m_loginStatus))
        return LaunchControl::unavailable;
    if (*m_loginStatus == LoginItemStatus::requiresApproval)
        return LaunchControl::approvalButton;
    return LaunchControl::toggle;
}

QString GeneralSettingsModel::footerText() const {
    if (m_loginStatus == LoginItemStatus::requiresApproval)
        return tr("Allow Scrivel in your desktop’s autostart settings, then return here. The "
                  "shortcut opens the panel anywhere; Ctrl+1–Ctrl+9 pick presets in sidebar "
                  "order.");
    return tr("The shortcut opens the panel anywhere. Paste text, press Return, then paste the "
              "result. In the panel, Ctrl+1–Ctrl+9 pick the first nine presets in sidebar "
              "order.");
}

void GeneralSettingsModel::refresh() {
    m_loginStatus = m_service.status();
    if (m_loginStatus == LoginItemStatus::requiresApproval)
        m_status = SettingsStatus::warning(approvalWarning());
    else if (m_status && m_status->kind == SettingsStatus::Kind::warning)
        m_status.reset();
    Q_EMIT changed();
}

void GeneralSettingsModel::setLaunchAtLogin(bool on) {
    const auto outcome = m_service.setLaunchAtLogin(on);
    refresh();
    if (!outcome)
        m_status = SettingsStatus::error(outcome.error().message());
    else if (m_loginStatus == LoginItemStatus::requiresApproval)
        m_status = SettingsStatus::warning(approvalWarning());
    else if (m_status && m_status->kind == SettingsStatus::Kind::error)
        m_status.reset();
    Q_EMIT changed();
}

} // namespace scrivel
