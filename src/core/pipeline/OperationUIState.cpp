#include "core/pipeline/OperationUIState.h"

namespace scrivel {

OperationUIState OperationUIState::forError(const RewriteError& error) {
    using K = RewriteError::Kind;
    switch (error.kind()) {
    case K::outputRejected:
        return OperationUIState::error(tr("The provider returned an unsafe edit. Try again."));
    case K::modelUnavailable:
        return error.reason() ? modelUnavailable(*error.reason()) : idle();
    case K::modelFailed:
        return OperationUIState::error(error.text());
    case K::emptyInput:
        return OperationUIState::error(tr("No text to fix"));
    case K::inputTooLarge:
        return OperationUIState::error(tr("Text is too long for this provider"));
    case K::timeout:
        return OperationUIState::error(tr("Timed out. Try again."));
    case K::cancelled:
        return idle();
    }
    Q_UNREACHABLE();
    return idle();
}

} // namespace scrivel
