#include "core/transform/UnavailableReason.h"

#include "core/storage/KeyStorePlace.h"

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
        return currentKeyStorePlace() == KeyStorePlace::privateKeyFile
                   ? tr("Couldn’t access the API key in Scrivel’s key file")
                   : tr("Couldn’t access the API key in the desktop’s keyring");
    case Kind::rejectedAPIKey:
        return tr("API key was rejected. Check it in Presets.");
    }
    Q_UNREACHABLE();
    return QString();
}

} // namespace scrivel
