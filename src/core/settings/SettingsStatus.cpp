#include "core/settings/SettingsStatus.h"

#include <QCoreApplication>

namespace scrivel {

QString SettingsStatus::accessibleName() const {
    switch (kind) {
    case Kind::neutral:
        return message;
    case Kind::success:
        return QCoreApplication::translate("SettingsStatus", "Success. %1").arg(message);
    case Kind::warning:
        return QCoreApplication::translate("SettingsStatus", "Warning. %1").arg(message);
    case Kind::error:
        return QCoreApplication::translate("SettingsStatus", "Error. %1").arg(message);
    }
    return message;
}

} // namespace scrivel
