#pragma once

#include <QByteArray>
#include <QString>

namespace scrivel::test {

// Readable rendering of bytes for failure messages: printable ASCII as is,
// everything else as \xNN.
QString printable(const QByteArray& bytes);

// A text of exactly byteCount UTF-8 bytes made of the given unit repeated and
// padded with ASCII 'a' (unit must be shorter than byteCount).
QString textOfUtf8Bytes(qsizetype byteCount, const QString& unit = QStringLiteral("a"));

} // namespace scrivel::test
