#include "core/settings/LaunchAtLoginError.h"

namespace scrivel {

namespace {

QString reasonText(LoginItemFailure::Reason reason) {
    switch (reason) {
    case LoginItemFailure::Reason::folderNotCreated:
        return LaunchAtLoginError::tr("its folder can’t be created");
    case LoginItemFailure::Reason::permissionDenied:
        return LaunchAtLoginError::tr("permission denied");
    case LoginItemFailure::Reason::diskFull:
        return LaunchAtLoginError::tr("the disk is full");
    case LoginItemFailure::Reason::unknown:
        break;
    }
    return {};
}

} // namespace

QString LaunchAtLoginError::message() const {
    if (m_kind == Kind::unknownStatus)
        return tr("Couldn’t tell whether Scrivel starts at login. Try again later.");
    const QString reason = reasonText(m_failure.reason);
    if (m_registering)
        return reason.isEmpty()
                   ? tr("Couldn’t write the autostart entry %1.").arg(m_failure.path)
                   : tr("Couldn’t write the autostart entry %1: %2.").arg(m_failure.path, reason);
    return reason.isEmpty()
               ? tr("Couldn’t remove the autostart entry %1.").arg(m_failure.path)
               : tr("Couldn’t remove the autostart entry %1: %2.").arg(m_failure.path, reason);
}

} // namespace scrivel
