#pragma once

namespace scrivel {
class ProviderConnectionFailure;
class RewriteError;
class UnavailableReason;
} // namespace scrivel

namespace scrivel::cli {

// scrivel-cli's exit codes (also listed in --help and the README).
enum ExitCode : int {
    success = 0,
    otherFailure = 1,      // anything else that went wrong (a file, the key store)
    usageError = 2,        // bad arguments, unknown preset or provider
    presetNotRunnable = 3, // the preset cannot run: no key, no model, no base URL
    providerFailure = 4,   // the provider failed or its reply was refused
    cancelled = 130,       // interrupted (Ctrl-C)
};

// A key store that could not be read says nothing about the preset: that is
// no "no key", and exits as another failure.
ExitCode exitCodeFor(const UnavailableReason& reason);
ExitCode exitCodeFor(const RewriteError& error);
ExitCode exitCodeFor(const ProviderConnectionFailure& failure);

} // namespace scrivel::cli
