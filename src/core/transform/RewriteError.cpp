#include "core/transform/RewriteError.h"

namespace scrivel {

QString RewriteError::panelMessage() const {
    switch (m_kind) {
    case Kind::outputRejected:
        return tr("The provider returned an unsafe edit. Try again.");
    case Kind::modelUnavailable:
        return m_reason ? m_reason->message() : QString();
    case Kind::modelFailed:
        return m_text;
    case Kind::emptyInput:
        return tr("Enter some text.");
    case Kind::inputTooLarge:
        return tr("This text is too long for the provider.");
    case Kind::cancelled:
        return tr("Cancelled. Try again.");
    case Kind::timeout:
        return tr("Timed out. Try again.");
    }
    Q_UNREACHABLE();
    return QString();
}

QString RewriteError::logDescription() const {
    switch (m_kind) {
    case Kind::outputRejected:
        return QStringLiteral("outputRejected(%1)").arg(m_text);
    case Kind::modelUnavailable:
        return QStringLiteral("modelUnavailable");
    case Kind::modelFailed:
        return QStringLiteral("modelFailed");
    case Kind::emptyInput:
        return QStringLiteral("emptyInput");
    case Kind::inputTooLarge:
        return QStringLiteral("inputTooLarge");
    case Kind::cancelled:
        return QStringLiteral("cancelled");
    case Kind::timeout:
        return QStringLiteral("timeout");
    }
    Q_UNREACHABLE();
    return QString();
}

} // namespace scrivel
