#include "support/Future.h"
#include "support/Stream.h"
#include "support/TextSnapshot.h"

#include <QtTest>
#include <memory>

using namespace scrivel;

class AsyncTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void futureDeliversLaterNotInsideResolve();
    void futureResolvedBeforeThenStillDelivers();
    void cancellingStopsDeliveryAndTellsTheProducer_data();
    void cancellingStopsDeliveryAndTellsTheProducer();
    void detachedFutureRunsToItsEnd();
    void cancelAfterDeliveryIsHarmless();
    void streamDeliversEventsInOrderThenEnd();
    void streamBuffersUntilSubscribed();
    void streamFailureArrivesAfterEvents();
    void streamCancelledFromInsideACallback();
    void streamCancelledByDroppingTheHandle();
    void snapshotsShareAGrowingBuffer();
};

void AsyncTest::futureDeliversLaterNotInsideResolve() {
    Promise<int> promise;
    Future<int> future = promise.future();
    int received = 0;
    future.then(this, [&](int value) { received = value; });
    promise.resolve(7);
    QCOMPARE(received, 0);
    QTRY_COMPARE(received, 7);
    promise.resolve(8); // a second value is ignored
    QTest::qWait(5);
    QCOMPARE(received, 7);
    QVERIFY(future.isDelivered());
}

void AsyncTest::futureResolvedBeforeThenStillDelivers() {
    Future<QString> future = Future<QString>::ready(QStringLiteral("done"));
    QString received;
    future.then(this, [&](QString value) { received = value; });
    QTRY_COMPARE(received, QStringLiteral("done"));
}

void AsyncTest::cancellingStopsDeliveryAndTellsTheProducer_data() {
    QTest::addColumn<QString>("how");
    QTest::newRow("cancel()") << "cancel";
    QTest::newRow("handle destroyed") << "destroy";
    QTest::newRow("context destroyed") << "context";
    QTest::newRow("cancelled after resolve, before delivery") << "late";
}

void AsyncTest::cancellingStopsDeliveryAndTellsTheProducer() {
    QFETCH(QString, how);
    Promise<int> promise;
    int producerHeard = 0;
    promise.onCancel([&] { ++producerHeard; });
    auto future = std::make_unique<Future<int>>(promise.future());
    auto context = std::make_unique<QObject>();
    bool delivered = false;
    future->then(context.get(), [&](int) { delivered = true; });

    if (how == QLatin1String("late"))
        promise.resolve(1);
    if (how == QLatin1String("cancel") || how == QLatin1String("late"))
        future->cancel();
    else if (how == QLatin1String("destroy"))
        future.reset();
    else
        context.reset();

    QCOMPARE(promise.isCancelled(), true);
    promise.resolve(2);
    QTest::qWait(10);
    QVERIFY(!delivered);
    QCOMPARE(producerHeard, 1); // exactly once, however it was cancelled
    bool lateHandlerRan = false;
    promise.onCancel([&] { lateHandlerRan = true; }); // runs at once once cancelled
    QVERIFY(lateHandlerRan);
}

void AsyncTest::detachedFutureRunsToItsEnd() {
    Promise<int> promise;
    int received = 0;
    promise.future().detach(this, [&](int value) { received = value; });
    QVERIFY(!promise.isCancelled());
    promise.resolve(3);
    QTRY_COMPARE(received, 3);
}

void AsyncTest::cancelAfterDeliveryIsHarmless() {
    Promise<int> promise;
    int cancels = 0;
    promise.onCancel([&] { ++cancels; });
    Future<int> future = promise.future();
    int received = 0;
    future.then(this, [&](int value) { received = value; });
    promise.resolve(4);
    QTRY_COMPARE(received, 4);
    future.cancel();
    QCOMPARE(cancels, 0);
    QVERIFY(!promise.isCancelled());
}

void AsyncTest::streamDeliversEventsInOrderThenEnd() {
    StreamWriter<int, QString> writer;
    Stream<int, QString> stream = writer.stream();
    QList<int> events;
    std::optional<std::optional<QString>> end;
    stream.subscribe(
        this, [&](int e) { events.append(e); },
        [&](std::optional<QString> error) {
            QCOMPARE(events.size(), 3); // the end comes after every event
            end = error;
        });
    writer.push(1);
    writer.push(2);
    QVERIFY(events.isEmpty()); // never inside push()
    QTRY_COMPARE(events, QList<int>({1, 2}));
    writer.push(3);
    writer.finish();
    writer.push(4); // after the end: ignored
    QTRY_VERIFY(end.has_value());
    QCOMPARE(*end, std::optional<QString>());
    QCOMPARE(events, QList<int>({1, 2, 3}));
    QVERIFY(stream.isDone());
}

void AsyncTest::streamBuffersUntilSubscribed() {
    StreamWriter<int, QString> writer;
    Stream<int, QString> stream = writer.stream();
    for (int i = 0; i < 1000; ++i)
        writer.push(i);
    writer.finish();
    QTest::qWait(5);
    int count = 0;
    bool ended = false;
    stream.subscribe(
        this, [&](int e) { QCOMPARE(e, count++); }, [&](std::optional<QString>) { ended = true; });
    QTRY_VERIFY(ended);
    QCOMPARE(count, 1000);
}

void AsyncTest::streamFailureArrivesAfterEvents() {
    StreamWriter<int, QString> writer;
    Stream<int, QString> stream = writer.stream();
    QList<int> events;
    std::optional<QString> failure;
    stream.subscribe(
        this, [&](int e) { events.append(e); },
        [&](std::optional<QString> error) { failure = error; });
    writer.push(5);
    writer.fail(QStringLiteral("dropped"));
    writer.finish(); // the first end wins
    QTRY_COMPARE(failure, std::optional<QString>(QStringLiteral("dropped")));
    QCOMPARE(events, QList<int>({5}));
}

void AsyncTest::streamCancelledFromInsideACallback() {
    StreamWriter<int, QString> writer;
    auto stream = std::make_unique<Stream<int, QString>>(writer.stream());
    bool producerHeard = false;
    writer.onCancel([&] { producerHeard = true; });
    QList<int> events;
    bool ended = false;
    stream->subscribe(
        this,
        [&](int e) {
            events.append(e);
            if (e == 2)
                stream.reset(); // the consumer stops listening mid-flush
        },
        [&](std::optional<QString>) { ended = true; });
    for (int i = 1; i <= 4; ++i)
        writer.push(i);
    writer.finish();
    QTRY_VERIFY(producerHeard);
    QTest::qWait(10);
    QCOMPARE(events, QList<int>({1, 2}));
    QVERIFY(!ended);
    QVERIFY(writer.isCancelled());
}

void AsyncTest::streamCancelledByDroppingTheHandle() {
    StreamWriter<int, QString> writer;
    bool producerHeard = false;
    writer.onCancel([&] { producerHeard = true; });
    {
        Stream<int, QString> stream = writer.stream();
        writer.push(1);
    }
    QVERIFY(producerHeard);
    QVERIFY(writer.isClosed());
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
    QVERIFY(TextSnapshot().isEmpty());
    QCOMPARE(TextSnapshot().toString(), QString());
}

QTEST_GUILESS_MAIN(AsyncTest)
#include "tst_Async.moc"
