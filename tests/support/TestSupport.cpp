#include "support/TestSupport.h"

#include <QCoreApplication>

namespace scrivel::test {

QString printable(const QByteArray& bytes) {
    QString out;
    for (const char c : bytes) {
        const auto u = static_cast<unsigned char>(c);
        if (u >= 0x20 && u < 0x7f)
            out += QLatin1Char(c);
        else
            out += QStringLiteral("\\x%1").arg(u, 2, 16, QLatin1Char('0'));
    }
    return out;
}

QString textOfUtf8Bytes(qsizetype byteCount, const QString& unit) {
    const qsizetype unitBytes = unit.toUtf8().size();
    const qsizetype units = byteCount / unitBytes;
    QString text = unit.repeated(units);
    text += QString(byteCount - units * unitBytes, QLatin1Char('a'));
    return text;
}

void deliverPostedEvents(int hops) {
    // Each call delivers the events posted before it; what they post waits
    // for the next call.
    for (int i = 0; i < hops; ++i)
        QCoreApplication::sendPostedEvents();
}

} // namespace scrivel::test
