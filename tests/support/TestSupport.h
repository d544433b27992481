#pragma once

#include "core/support/Future.h"

#include <QByteArray>
#include <QObject>
#include <QString>
#include <QTest>
#include <optional>

namespace scrivel::test {

// Readable rendering of bytes for failure messages: printable ASCII as is,
// everything else as \xNN.
QString printable(const QByteArray& bytes);

// A text of exactly byteCount UTF-8 bytes made of the given unit repeated and
// padded with ASCII 'a' (unit must be shorter than byteCount).
QString textOfUtf8Bytes(qsizetype byteCount, const QString& unit = QStringLiteral("a"));

// Delivers what is already posted to the event loop (queued calls, a
// future's delivery), and what that posts in turn, up to hops deep. A check
// that something did not happen, made after this, comes after it would have
// happened, without waiting on the clock. Timers and sockets are not
// delivered: wait for their signal instead.
void deliverPostedEvents(int hops = 20);

// Spins the event loop until the future delivers, or the time runs out.
template <typename T>
std::optional<T> waitFor(Future<T> future, int timeoutMs = 5000) {
    std::optional<T> value;
    QObject context;
    future.then(&context, [&](T delivered) { value = std::move(delivered); });
    (void)QTest::qWaitFor([&] { return value.has_value(); }, timeoutMs);
    return value;
}

} // namespace scrivel::test
