#pragma once

#include <QCoreApplication>
#include <QString>

namespace scrivel::cli {

// scrivel-cli's own texts, translated under one context. Each is a whole
// sentence without the line break that ends it, so translators see what is
// said and never lose a newline.
class CliText {
    Q_DECLARE_TR_FUNCTIONS(CliApplication)
};

// "Usage: " and a command's syntax, on a line of its own.
inline QString usageLine(const QString& syntax) {
    return CliText::tr("Usage: %1").arg(syntax) + QLatin1Char('\n');
}

} // namespace scrivel::cli
