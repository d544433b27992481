#pragma once

#include <QLoggingCategory>
#include <QString>

namespace scrivel {

// The one logging category of the rewrite pipeline: subsystem
// "com.scrivel.app", category "rewrite". Progress at debug level, outcomes
// at info, failures at warning/critical. Enable with
// QT_LOGGING_RULES="com.scrivel.app.rewrite.debug=true".
const QLoggingCategory& rewriteLog();

// Log lines mark their variable parts private: they read "<private>" unless
// private logging is enabled (SCRIVEL_PRIVATE_LOGS=1 in the environment, or
// setPrivateLoggingEnabled for a debugging session). API keys never go
// through here at all.
QString privateValue(const QString& value);
QString privateValue(qint64 value);
bool privateLoggingEnabled();
void setPrivateLoggingEnabled(bool enabled);

} // namespace scrivel
