#pragma once

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

} // namespace scrivel::cli
