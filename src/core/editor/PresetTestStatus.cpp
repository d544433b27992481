#include "core/editor/PresetTestStatus.h"

namespace scrivel {

PresetTestStatus PresetTestStatus::failed(const TransformFailure& failure) {
    switch (failure.kind()) {
    case TransformFailure::Kind::cancelled:
        return PresetTestStatus(false, tr("Test cancelled."));
    case TransformFailure::Kind::other:
        return PresetTestStatus(false, tr("Couldn’t reach the provider."));
    case TransformFailure::Kind::rewrite:
        break;
    }
    if (!failure.error())
        return PresetTestStatus(false, tr("Couldn’t reach the provider."));
    const RewriteError& error = *failure.error();
    switch (error.kind()) {
    case RewriteError::Kind::modelUnavailable:
        return PresetTestStatus(false, error.reason() ? error.reason()->message()
                                                      : tr("Couldn’t reach the provider."));
    case RewriteError::Kind::outputRejected:
    case RewriteError::Kind::modelFailed:
        // A rejected reply carries only a detail code for the logs; the panel's
        // wording is the sentence made for people.
        return PresetTestStatus(false, error.kind() == RewriteError::Kind::modelFailed
                                           ? error.text()
                                           : error.panelMessage());
    case RewriteError::Kind::emptyInput:
        return PresetTestStatus(false, tr("Nothing to test."));
    case RewriteError::Kind::inputTooLarge:
        return PresetTestStatus(false, tr("Test input was too large."));
    case RewriteError::Kind::cancelled:
        return PresetTestStatus(false, tr("Test cancelled."));
    case RewriteError::Kind::timeout:
        return PresetTestStatus(false, tr("The provider timed out."));
    }
    return PresetTestStatus(false, tr("Couldn’t reach the provider."));
}

} // namespace scrivel
