#include "PlatformInfo.h"

namespace scrivel::platform {

QString adapterSetName() {
#if defined(Q_OS_MACOS)
    return QStringLiteral("macos");
#elif defined(Q_OS_LINUX)
    return QStringLiteral("linux");
#else
    return QStringLiteral("dummy");
#endif
}

} // namespace scrivel::platform
