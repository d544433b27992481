#include "core/shortcuts/HotKeyError.h"

namespace scrivel {

QString HotKeyError::description() const {
    switch (kind) {
    case Kind::takenByAnotherClient:
        return QStringLiteral("the combination is held by another application");
    case Kind::unknownKey:
        return QStringLiteral("the key has no key code on this keyboard");
    case Kind::unavailable:
        return QStringLiteral("this session offers no global shortcuts");
    case Kind::refused:
        break;
    }
    return QStringLiteral("the display server refused the grab");
}

} // namespace scrivel
