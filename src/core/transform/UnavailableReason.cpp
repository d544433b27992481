#include "core/transform/UnavailableReason.h"

namespace scrivel {

QString UnavailableReason::message() const {
    switch (m_kind) {
    case Kind::modelNotReady:
    case Kind::misconfigured:
    case Kind::other:
        return m_payload;
    case Kind::missingAPIKey:
        return tr("Connect this preset to a provider in Presets");
    case Kind::keychainError:
        return tr("Couldn’t access the API key in Keychain");
    case Kind::rejectedAPIKey:
        return tr("API key was rejected. Check it in Presets.");
    }
    Q_UNREACHABLE();
    return QString();
}

} // namespace scrivel
