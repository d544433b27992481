#include "core/support/Future.h"
#include "core/support/Stream.h"
#include "core/support/TextSnapshot.h"
#include "support/TestSupport.h"

#include <QtTest>
#include <memory>
#include <numeric>

using namespace scrivel;

class AsyncTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void futureCancellation_data();
    void futureCancellation();
    void streamDeliversInOrderThenEndsOnce();
    void streamCancellation_data();
    void streamCancellation();
    void snapshotsShareAGrowingBuffer();
};

void AsyncTest::futureCancellation_data() {
    QTest::addColumn<QString>("how");
    QTest::addColumn<int>("delivered"); // 0: cancelled, the producer hears of it once
    QTest::newRow("cancel()") << "cancel" << 0;
    QTest::newRow("handle destroyed") << "destroy" << 0;
    QTest::newRow("context destroyed") << "context" << 0;
    QTest::newRow("cancelled after resolve, before delivery") << "late" << 0;
    QTest::newRow("detached handle destroyed: runs to its end") << "detach" << 2;
    QTest::newRow("cancel() after delivery is harmless") << "after delivery" << 1;
}

void AsyncTest::futureCancellation() {
    QFETCH(QString, how);
    QFETCH(int, delivered);
    Promise<int> promise;
    int producerHeard = 0;
    promise.onCancel([&] { ++producerHeard; });
    auto future = std::make_unique<Future<int>>(promise.future());
    auto context = std::make_unique<QObject>();
    int received = 0;
    const auto receive = [&](int value) { received = value; };
    if (how == QLatin1String("detach"))
        std::move(*future).detach(context.get(), receive);
    else
        future->then(context.get(), receive);
    if (how == QLatin1String("late") || how == QLatin1String("after delivery")) {
        promise.resolve(1);
        QCOMPARE(received, 0); // never inside resolve()
    }
    if (how == QLatin1String("after delivery"))
        QTRY_COMPARE(received, 1);

    if (how == QLatin1String("context"))
        context.reset();
    else if (how == QLatin1String("destroy") || how == QLatin1String("detach"))
        future.reset();
    else
        future->cancel();
    QCOMPARE(promise.isCancelled(), delivered == 0);
    promise.resolve(2); // ignored once cancelled or resolved
    test::deliverPostedEvents();
    QCOMPARE(received, delivered);
    QCOMPARE(producerHeard, delivered == 0 ? 1 : 0);
    if (delivered == 0) {
        bool lateHandlerRan = false;
        promise.onCancel([&] { lateHandlerRan = true; }); // at once, once cancelled
        QVERIFY(lateHandlerRan);
    }
}

void AsyncTest::streamDeliversInOrderThenEndsOnce() {
    StreamWriter<int, QString> writer;
    Stream<int, QString> stream = writer.stream();
    for (int i = 0; i < 1000; ++i) // buffered: nobody has subscribed yet
        writer.push(i);
    QList<int> events;
    std::optional<std::optional<QString>> end;
    stream.subscribe(
        this, [&](int event) { events.append(event); },
        [&](std::optional<QString> error) {
            QCOMPARE(events.size(), 1001); // the end comes after every event
            end = error;
        });
    writer.push(1000);
    QVERIFY(events.isEmpty()); // never inside push()
    QTRY_COMPARE(events.size(), 1001);
    QVERIFY(!end);
    writer.fail(QStringLiteral("dropped"));
    writer.finish(); // a second end is ignored
    writer.push(1001);
    QTRY_VERIFY(end.has_value());
    QCOMPARE(*end, std::optional(QStringLiteral("dropped")));
    QList<int> pushed(1001);
    std::iota(pushed.begin(), pushed.end(), 0);
    QCOMPARE(events, pushed);
    QVERIFY(stream.isDone());
}

void AsyncTest::streamCancellation_data() {
    QTest::addColumn<QString>("how");
    QTest::addColumn<QList<int>>("events");
    QTest::newRow("handle dropped by a callback mid-flush") << "callback" << QList<int>{1, 2};
    QTest::newRow("handle dropped") << "handle" << QList<int>{};
    QTest::newRow("context destroyed") << "context" << QList<int>{};
}

void AsyncTest::streamCancellation() {
    QFETCH(QString, how);
    QFETCH(QList<int>, events);
    StreamWriter<int, QString> writer;
    auto stream = std::make_unique<Stream<int, QString>>(writer.stream());
    auto context = std::make_unique<QObject>();
    int producerHeard = 0;
    writer.onCancel([&] { ++producerHeard; });
    QList<int> received;
    bool ended = false;
    stream->subscribe(
        context.get(),
        [&](int event) {
            received.append(event);
            if (event == 2 && how == QLatin1String("callback"))
                stream.reset();
        },
        [&](std::optional<QString>) { ended = true; });
    for (int i = 1; i <= 4; ++i)
        writer.push(i);
    if (how == QLatin1String("handle"))
        stream.reset();
    else if (how == QLatin1String("context"))
        context.reset();
    writer.finish();
    QTRY_COMPARE(producerHeard, 1);
    test::deliverPostedEvents();
    QCOMPARE(received, events);
    QVERIFY(!ended);
    QVERIFY(writer.isCancelled());
}

void AsyncTest::snapshotsShareAGrowingBuffer() {
    TextAccumulator accumulator;
    accumulator.append(u"Hello");
    const TextSnapshot first = accumulator.snapshot();
    accumulator.append(u", world");
    for (int i = 0; i < 1000; ++i) // force reallocations of the buffer
        accumulator.append(u"!");
    const TextSnapshot second = accumulator.snapshot();

    QCOMPARE(first.toString(), QStringLiteral("Hello"));
    QCOMPARE(second.view().left(12), QStringView(u"Hello, world"));
    QCOMPARE(second.size(), 1012);
    QVERIFY(second.extends(first));
    QVERIFY(!first.extends(second));
    QVERIFY(!(first == second));
    QVERIFY(first == TextSnapshot(QStringLiteral("Hello"))); // compared by content
    QVERIFY(!TextSnapshot(QStringLiteral("Hello")).extends(first));
}

QTEST_GUILESS_MAIN(AsyncTest)
#include "tst_Async.moc"
