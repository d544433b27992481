#include "core/support/Log.h"

namespace scrivel {

namespace {

bool& privateLoggingFlag() {
    static bool enabled = qEnvironmentVariableIntValue("SCRIVEL_PRIVATE_LOGS") == 1;
    return enabled;
}

} // namespace

const QLoggingCategory& rewriteLog() {
    static const QLoggingCategory category("com.scrivel.app.rewrite");
    return category;
}

bool privateLoggingEnabled() {
    return privateLoggingFlag();
}

void setPrivateLoggingEnabled(bool enabled) {
    privateLoggingFlag() = enabled;
}

QString privateValue(const QString& value) {
    return privateLoggingEnabled() ? value : QStringLiteral("<private>");
}

QString privateValue(qint64 value) {
    return privateValue(QString::number(value));
}

} // namespace scrivel
