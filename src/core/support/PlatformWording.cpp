#include "core/support/PlatformWording.h"

namespace scrivel {

QString platformKeyWording(const QString& text) {
#ifdef Q_OS_MACOS
    return text;
#else
    QString worded = text;
    worded.replace(QStringLiteral("⌘"), QStringLiteral("Ctrl+"));
    worded.replace(QStringLiteral("Command-"), QStringLiteral("Ctrl+"));
    return worded;
#endif
}

} // namespace scrivel
