#pragma once

#include "core/providers/KeychainError.h"
#include "core/providers/ProviderConnectionFailure.h"
#include "core/storage/KeyStorePlace.h"

#include <QCoreApplication>
#include <QString>
#include <optional>

namespace scrivel {

// Where the editor stands with the preset's provider: not connected, fetching
// the model list, connected, or failed with a classified failure.
class PresetConnectionState {
    Q_DECLARE_TR_FUNCTIONS(PresetConnectionState)

public:
    enum class Kind { disconnected, connecting, connected, failed };

    static PresetConnectionState disconnected() {
        return PresetConnectionState(Kind::disconnected);
    }
    static PresetConnectionState connecting() { return PresetConnectionState(Kind::connecting); }
    static PresetConnectionState connected() { return PresetConnectionState(Kind::connected); }
    // savedKeyUnchanged: a key could not be saved and the one stored before
    // still serves the provider.
    static PresetConnectionState failed(const ProviderConnectionFailure& failure,
                                        bool savedKeyUnchanged = false) {
        PresetConnectionState state(Kind::failed);
        state.m_failure = failure;
        state.m_savedKeyUnchanged = savedKeyUnchanged;
        return state;
    }

    // The key store failed to read or remove a key; a store that gave no
    // answer says so, since unlocking it is what helps.
    static PresetConnectionState keyStoreFailed(const KeychainError& error) {
        PresetConnectionState state =
            failed(ProviderConnectionFailure::of(ProviderConnectionFailure::Kind::keychain));
        if (error.isNoAnswer())
            state.m_reason = noAnswerMessage();
        return state;
    }

    // A key the store would not save; a key it refused as malformed says why,
    // any other failure is the keychain's sentence. The stored key stays,
    // unless the store gave no answer: then nobody knows.
    static PresetConnectionState keyNotSaved(const KeychainError& error) {
        if (error.isNoAnswer())
            return keyStoreFailed(error);
        PresetConnectionState state =
            failed(ProviderConnectionFailure::of(ProviderConnectionFailure::Kind::keychain), true);
        if (error.kind() == KeychainError::Kind::invalidKey)
            state.m_reason = error.saveMessage();
        return state;
    }

    // Named for the store in use: only the desktop's keyring can keep
    // Scrivel waiting (a locked keyring asks for its password).
    static QString noAnswerMessage() {
        if (currentKeyStorePlace() == KeyStorePlace::privateKeyFile)
            return tr("Scrivel’s key file couldn’t be read in time. Try again.");
        return tr("The desktop’s keyring didn’t answer in time. Unlock it and try again.");
    }

    Kind kind() const { return m_kind; }
    const std::optional<ProviderConnectionFailure>& failure() const { return m_failure; }
    bool savedKeyUnchanged() const { return m_savedKeyUnchanged; }

    // The sentence of the Models row: the failure's sentence, plus a note when
    // the saved key is unchanged. Empty unless failed.
    QString message() const;

    friend bool operator==(const PresetConnectionState&, const PresetConnectionState&) = default;

private:
    explicit PresetConnectionState(Kind kind) : m_kind(kind) {}

    Kind m_kind;
    std::optional<ProviderConnectionFailure> m_failure;
    bool m_savedKeyUnchanged = false;
    std::optional<QString> m_reason; // in place of the failure's own sentence
};

} // namespace scrivel
