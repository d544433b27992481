#include "cli/commands/Commands.h"

#include "cli/Await.h"
#include "cli/CliSession.h"
#include "cli/CliText.h"
#include "cli/ExitCode.h"
#include "cli/Hints.h"
#include "cli/ProviderLookup.h"
#include "cli/Terminal.h"
#include "core/providers/ProviderCatalog.h"
#include "core/support/UnicodeText.h"
#include "platform/linux/LinuxServices.h"

namespace scrivel::cli::commands {

namespace {

using Terminal::write;
using Terminal::writeProblem;

// One provider's key in the key store. A key-store failure is worded once,
// as the editor words it.
struct StoredKey {
    APIKeyStore& keys;
    ProviderEndpoint endpoint;
    QString account = credentialAccount(endpoint);

    void reportKeychain() const {
        const auto failure =
            ProviderConnectionFailure::of(ProviderConnectionFailure::Kind::keychain);
        writeProblem(failure.message(), Hints::forFailure(failure, endpoint));
    }
    // A refused key is the user's to fix; anything else is the store's.
    bool succeeded(const std::optional<APIKeyProviding::VoidResult>& result) const {
        if (result && *result)
            return true;
        if (result && result->error().kind() == KeychainError::Kind::invalidKey)
            writeProblem(result->error().saveMessage(), {});
        else
            reportKeychain();
        return false;
    }
};

int set(const StoredKey& key) {
    const auto typed = Terminal::readSecretLine(
        CliText::tr("API key for %1:").arg(key.endpoint.displayName) + QLatin1Char(' '));
    if (!typed || trimmedWhitespaceAndNewlines(*typed).isEmpty()) {
        write(stderr, CliText::tr("No key given; nothing was saved.") + QLatin1Char('\n'));
        return usageError;
    }
    if (!key.succeeded(await(key.keys.saveKey(*typed, key.account))))
        return otherFailure;
    write(stdout,
          CliText::tr("Saved the key for %1.").arg(key.endpoint.displayName) + QLatin1Char('\n'));
    return success;
}

// Whether a key is stored; nothing after saying the store could not be read.
std::optional<bool> isStored(const StoredKey& key) {
    const auto stored = await(key.keys.readKey(key.account));
    if (!stored || !*stored) {
        key.reportKeychain();
        return std::nullopt;
    }
    return bool(**stored);
}

int status(const StoredKey& key) {
    const auto stored = isStored(key);
    if (!stored)
        return otherFailure;
    write(stdout, QStringLiteral("%1: %2\n")
                      .arg(key.endpoint.displayName,
                           *stored ? CliText::tr("key stored") : CliText::tr("no key stored")));
    return success;
}

int remove(const StoredKey& key) {
    const auto stored = isStored(key);
    if (!stored)
        return otherFailure;
    if (!*stored) {
        write(
            stdout,
            CliText::tr("No key stored for %1; nothing to delete.").arg(key.endpoint.displayName) +
                QLatin1Char('\n'));
        return success;
    }
    if (!key.succeeded(await(key.keys.deleteKey(key.account))))
        return otherFailure;
    write(stdout,
          CliText::tr("Deleted the key for %1.").arg(key.endpoint.displayName) + QLatin1Char('\n'));
    return success;
}

} // namespace

// key set|delete|status PROVIDER: the provider is checked before the action.
int manageKey(Invocation& call) {
    if (call.words.size() != 2) {
        write(stderr, usageLine(QStringLiteral(
                          "scrivel-cli key set|delete|status PROVIDER [--base-url URL]")));
        return usageError;
    }
    const auto endpoint =
        findEndpoint(call.words[1], call.options.value(QStringLiteral("base-url")));
    if (!endpoint) {
        write(stderr, endpoint.error() + QStringLiteral("\n"));
        return usageError;
    }
    const StoredKey key{call.session.services().keys(), *endpoint};
    const QString action = call.words[0];
    if (action == QLatin1String("set"))
        return set(key);
    if (action == QLatin1String("status"))
        return status(key);
    if (action == QLatin1String("delete"))
        return remove(key);
    write(stderr, CliText::tr("Unknown key action \"%1\".").arg(action) + QLatin1Char('\n'));
    return usageError;
}

} // namespace scrivel::cli::commands
