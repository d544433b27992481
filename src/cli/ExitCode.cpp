#include "cli/ExitCode.h"

#include "core/providers/ProviderConnectionFailure.h"
#include "core/transform/RewriteError.h"
#include "core/transform/UnavailableReason.h"

namespace scrivel::cli {

ExitCode exitCodeFor(const UnavailableReason& reason) {
    return reason.kind() == UnavailableReason::Kind::keychainError ? otherFailure
                                                                   : presetNotRunnable;
}

ExitCode exitCodeFor(const RewriteError& error) {
    switch (error.kind()) {
    case RewriteError::Kind::modelUnavailable:
        return error.reason() ? exitCodeFor(*error.reason()) : presetNotRunnable;
    case RewriteError::Kind::emptyInput:
        return usageError;
    case RewriteError::Kind::cancelled:
        return cancelled;
    default:
        return providerFailure;
    }
}

ExitCode exitCodeFor(const ProviderConnectionFailure& failure) {
    switch (failure.kind()) {
    case ProviderConnectionFailure::Kind::missingCredential:
    case ProviderConnectionFailure::Kind::invalidEndpoint:
    case ProviderConnectionFailure::Kind::unauthorized:
    case ProviderConnectionFailure::Kind::forbidden:
        return presetNotRunnable;
    case ProviderConnectionFailure::Kind::keychain:
        return otherFailure;
    default:
        return providerFailure;
    }
}

} // namespace scrivel::cli
