#include "core/shortcuts/GlobalShortcutStatus.h"

namespace scrivel {

QString GlobalShortcutStatus::settingsText() const {
    const QString bindCommand =
        tr("Bind the command “%1” to a shortcut in your desktop’s keyboard settings.")
            .arg(toggleCommand());
    switch (kind) {
    case Kind::keyGrabs:
        break;
    case Kind::desktopPending:
        return tr("Asking the desktop for the shortcut…");
    case Kind::desktopBound:
        if (!triggerDescription.isEmpty())
            return triggerDescription;
        return canConfigure ? tr("No keys assigned yet: choose them with Change…")
                            : tr("No keys assigned yet: choose them in your desktop’s settings.");
    case Kind::unavailable:
        switch (reason) {
        case Reason::noPortal:
            return tr("This desktop offers apps no global shortcut.") + QLatin1Char(' ') +
                   bindCommand;
        case Reason::refused:
            return tr("The desktop declined Scrivel’s global shortcut.") + QLatin1Char(' ') +
                   bindCommand;
        case Reason::failed:
            return tr("The desktop’s shortcut service did not answer.") + QLatin1Char(' ') +
                   bindCommand;
        }
        break;
    }
    return {};
}

} // namespace scrivel
