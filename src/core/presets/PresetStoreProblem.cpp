#include "core/presets/PresetStoreProblem.h"

#include <QDir>
#include <QFileInfo>

namespace scrivel {

QString PresetStoreProblem::message() const {
    const QString path = QDir::toNativeSeparators(m_path);
    switch (m_kind) {
    case Kind::presetsUnreadable:
        if (m_kept == 0)
            return tr("Scrivel couldn’t read your presets. They were copied, unchanged, to %1.")
                .arg(path);
        // Damage between presets (a list cut off after one) hides how many
        // were lost.
        if (m_unreadable == 0)
            return tr("Your stored presets are damaged; Scrivel kept the %1 it could read. The "
                      "stored presets were copied, unchanged, to %2.")
                .arg(m_kept)
                .arg(path);
        return tr("Scrivel could read only %1 of your %2 stored presets. The stored presets were "
                  "copied, unchanged, to %3.")
            .arg(m_kept)
            .arg(m_kept + m_unreadable)
            .arg(path);
    case Kind::newerFields:
        return tr("Your presets hold settings from a newer version of Scrivel, which this version "
                  "drops when it saves them. They were copied, unchanged, to %1.")
            .arg(path);
    case Kind::copyFailed:
        break;
    }
    return tr("Scrivel can’t keep all of your stored presets and couldn’t copy them to %1, so "
              "changes to presets aren’t saved until it can.")
        .arg(path);
}

QString PresetStoreProblem::statusLine() const {
    const QString file = QFileInfo(m_path).fileName();
    switch (m_kind) {
    case Kind::presetsUnreadable:
        return tr("Presets couldn’t be read: copy in %1").arg(file);
    case Kind::newerFields:
        return tr("Presets from a newer Scrivel: copy in %1").arg(file);
    case Kind::copyFailed:
        break;
    }
    return tr("Presets couldn’t be copied: changes aren’t saved");
}

} // namespace scrivel
