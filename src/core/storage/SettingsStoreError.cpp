#include "core/storage/SettingsStoreError.h"

#include <QDir>

namespace scrivel {

QString SettingsStoreError::message() const {
    const QString path = QDir::toNativeSeparators(m_path);
    switch (m_kind) {
    case Kind::unreadable:
        return tr("Scrivel couldn’t read your settings from %1.").arg(path);
    case Kind::unwritable:
        break;
    }
    return tr("Scrivel couldn’t save your settings to %1.").arg(path);
}

} // namespace scrivel
