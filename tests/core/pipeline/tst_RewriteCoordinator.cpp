#include "core/pipeline/RewriteCoordinator.h"
#include "core/presets/BuiltInPresets.h"
#include "support/FakeTransformer.h"
#include "support/TestSupport.h"

#include <QElapsedTimer>
#include <QtTest>

using namespace scrivel;
using namespace Qt::StringLiterals;
using test::FakeTransformer;
using Result = RewriteCoordinator::Result;

Q_DECLARE_METATYPE(TransformFailure)
Q_DECLARE_METATYPE(RewriteCoordinator::Result)

namespace {

Preset plainPreset() {
    return builtInPresets(false).at(1); // no edit validation
}

Result fixed(const QString& text) {
    return FixResult::fixed(text);
}

Result failed(const RewriteError& error) {
    return std::unexpected(TransformFailure::rewrite(error));
}

QString describe(const QList<OperationUIState>& states) {
    QStringList parts;
    for (const auto& state : states) {
        const char* names[] = {"idle",         "working", "success",
                               "alreadyClean", "error",   "modelUnavailable"};
        QString part = QString::fromLatin1(names[int(state.kind())]);
        if (state.kind() == OperationUIState::Kind::error)
            part += '(' + state.message() + ')';
        if (state.reason())
            part += '(' + state.reason()->message() + ')';
        parts << part;
    }
    return parts.join(u", "_s);
}

} // namespace

class RewriteCoordinatorTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init();
    void timeoutSeconds_data();
    void timeoutSeconds();
    void replies_data();
    void replies();
    void failures_data();
    void failures();
    void emptyInputSendsNothing();
    void partialTextIsPassedOnInOrder();
    void callerCancellationEndsInIdle();
    void timesOut_data();
    void timesOut();
    void readinessLine_data();
    void readinessLine();
    void prewarmAndReasonWithoutPreset();

private:
    // Starts a run and collects its result and status states.
    void start(const QString& input, const Preset& preset,
               RewriteCoordinator::PartialTextHandler onPartialText = {});

    std::unique_ptr<FakeTransformer> m_fake;
    std::unique_ptr<RewriteCoordinator> m_coordinator;
    QList<OperationUIState> m_states;
    Future<Result> m_future;
    std::optional<Result> m_result;
};

void RewriteCoordinatorTest::init() {
    m_fake = std::make_unique<FakeTransformer>();
    m_coordinator = std::make_unique<RewriteCoordinator>(*m_fake);
    m_coordinator->setTimeoutScale([](int) { return std::chrono::milliseconds(60000); });
    m_states.clear();
    m_result.reset();
    connect(m_coordinator.get(), &RewriteCoordinator::operationStateChanged, this,
            [this](const OperationUIState& state) { m_states.append(state); });
}

void RewriteCoordinatorTest::start(const QString& input, const Preset& preset,
                                   RewriteCoordinator::PartialTextHandler onPartialText) {
    m_future = m_coordinator->rewrite(input, preset, std::move(onPartialText));
    m_future.then(this, [this](Result result) { m_result = result; });
}

void RewriteCoordinatorTest::timeoutSeconds_data() {
    QTest::addColumn<int>("bytes");
    QTest::addColumn<QString>("model");
    QTest::addColumn<QString>("effort"); // "-" for none
    QTest::addColumn<int>("seconds");

    const QString oss = u"openai/gpt-oss-120b"_s;
    QTest::newRow("499 bytes") << 499 << oss << u"-"_s << 25;
    QTest::newRow("500 bytes") << 500 << oss << u"-"_s << 35;
    QTest::newRow("2,499 bytes") << 2499 << oss << u"-"_s << 35;
    QTest::newRow("2,500 bytes") << 2500 << oss << u"-"_s << 60;
    QTest::newRow("high on a reasoning model") << 499 << oss << u"high"_s << 85;
    QTest::newRow("medium on a reasoning model, long text") << 2500 << oss << u"medium"_s << 120;
    QTest::newRow("low adds nothing") << 500 << oss << u"low"_s << 35;
    QTest::newRow("high on another model") << 2499 << u"gpt-4o"_s << u"high"_s << 35;
    QTest::newRow("effort is case-sensitive") << 10 << oss << u"High"_s << 25;
}

void RewriteCoordinatorTest::timeoutSeconds() {
    QFETCH(int, bytes);
    QFETCH(QString, model);
    QFETCH(QString, effort);
    QFETCH(int, seconds);

    Preset preset = plainPreset();
    preset.model = model;
    if (effort != "-"_L1)
        preset.reasoningEffort = effort;
    // Multi-byte text: sizes are UTF-8 bytes, not characters.
    QCOMPARE(RewriteCoordinator::timeoutSeconds(test::textOfUtf8Bytes(bytes, u"\u00e9"_s), preset),
             seconds);
}

void RewriteCoordinatorTest::replies_data() {
    QTest::addColumn<bool>("validates");
    QTest::addColumn<QString>("input");
    QTest::addColumn<QStringList>("partials");
    QTest::addColumn<QString>("completed"); // null: the stream ends without it
    QTest::addColumn<Result>("result");
    QTest::addColumn<QString>("state"); // after "working"

    const QString unsafe = u"error(The provider returned an unsafe edit. Try again.)"_s;
    const QStringList none;
    const auto clean = Result(FixResult::alreadyClean());

    QTest::newRow("fixed, trimmed") << false << u"teh cat"_s << QStringList{"the", "the cat"}
                                    << u"\n the cat \n"_s << fixed(u"the cat"_s) << u"success"_s;
    QTest::newRow("latest partial without completion")
        << false << u"teh cat"_s << QStringList{"the", "the cat"} << QString()
        << fixed(u"the cat"_s) << u"success"_s;
    QTest::newRow("equal after trimming")
        << false << u"  same text\n"_s << none << u"same text"_s << clean << u"alreadyClean"_s;
    QTest::newRow("no preface stripping without validation")
        << false << u"x"_s << none << u"Here is the corrected text: y"_s
        << fixed(u"Here is the corrected text: y"_s) << u"success"_s;
    QTest::newRow("no events at all")
        << false << u"x"_s << none << QString()
        << failed(RewriteError::modelFailed(u"Empty model response"_s))
        << u"error(Empty model response)"_s;
    QTest::newRow("white-space reply")
        << false << u"x"_s << none << u" \n "_s << failed(RewriteError::outputRejected(u"empty"_s))
        << unsafe;
    QTest::newRow("validated and cleaned")
        << true << u"This sentense has a typo."_s << none
        << u"Here is the corrected text: This sentence has a typo."_s
        << fixed(u"This sentence has a typo."_s) << u"success"_s;
    QTest::newRow("validation finds it unchanged") << true << u"Fine."_s << QStringList{"Fine."}
                                                   << u"\"Fine.\""_s << clean << u"alreadyClean"_s;
    QTest::newRow("validation rejects")
        << true << u"Short."_s << none << u"A much, much longer reply."_s
        << failed(RewriteError::outputRejected(u"length-delta"_s)) << unsafe;
}

void RewriteCoordinatorTest::replies() {
    QFETCH(bool, validates);
    QFETCH(QString, input);
    QFETCH(QStringList, partials);
    QFETCH(QString, completed);
    QFETCH(Result, result);
    QFETCH(QString, state);

    start(input, validates ? builtInPresets(false).at(0) : plainPreset());
    QCOMPARE(m_fake->calls.size(), 1);
    QCOMPARE(m_fake->last().text, input); // the untrimmed input goes to the provider
    m_fake->partials(partials);
    if (!completed.isNull())
        m_fake->complete(completed);
    else
        m_fake->last().writer.finish();
    QTRY_VERIFY(m_result.has_value());
    QVERIFY(*m_result == result);
    QCOMPARE(describe(m_states), "working, " + state);
}

void RewriteCoordinatorTest::failures_data() {
    QTest::addColumn<TransformFailure>("failure"); // after some partial text
    QTest::addColumn<Result>("result");
    QTest::addColumn<QString>("state"); // after "working"

    const auto missingKey = RewriteError::modelUnavailable(UnavailableReason::missingAPIKey());
    const auto status429 = RewriteError::modelFailed(u"The provider returned error 429."_s);
    const auto rewrite = [](const RewriteError& e) { return TransformFailure::rewrite(e); };
    const auto cancelled = Result(std::unexpected(TransformFailure::cancelled()));

    QTest::newRow("missing key")
        << rewrite(missingKey) << failed(missingKey)
        << u"modelUnavailable(Connect this preset to a provider in Presets)"_s;
    QTest::newRow("input too large")
        << rewrite(RewriteError::inputTooLarge()) << failed(RewriteError::inputTooLarge())
        << u"error(Text is too long for this provider)"_s;
    QTest::newRow("provider failure")
        << rewrite(status429) << failed(status429) << u"error(The provider returned error 429.)"_s;
    QTest::newRow("unclassified failure")
        << TransformFailure::other(u"connection reset"_s)
        << failed(RewriteError::modelFailed(u"Couldn\u2019t fix this text"_s))
        << u"error(Couldn\u2019t fix this text)"_s;
    QTest::newRow("cancelled below") << TransformFailure::cancelled() << cancelled << u"idle"_s;
    QTest::newRow("cancelled as a rewrite error")
        << rewrite(RewriteError::cancelled()) << cancelled << u"idle"_s;
}

void RewriteCoordinatorTest::failures() {
    QFETCH(TransformFailure, failure);
    QFETCH(Result, result);
    QFETCH(QString, state);
    start(u"x"_s, plainPreset());
    m_fake->partials({u"y"_s});
    m_fake->fail(failure);
    QTRY_VERIFY(m_result.has_value());
    QVERIFY(*m_result == result);
    QCOMPARE(describe(m_states), "working, " + state);
    QVERIFY(m_fake->last().writer.isClosed());
}

void RewriteCoordinatorTest::emptyInputSendsNothing() {
    start(u" \n\t\u3000"_s, plainPreset());
    QTRY_VERIFY(m_result.has_value());
    QVERIFY(*m_result == failed(RewriteError::emptyInput()));
    QVERIFY(m_states.isEmpty());
    QVERIFY(m_fake->calls.isEmpty());
}

void RewriteCoordinatorTest::partialTextIsPassedOnInOrder() {
    QStringList seen;
    start(u"abc"_s, plainPreset(), [&](const TextSnapshot& text) { seen << text.toString(); });
    m_fake->partials({u"A"_s, u"AB"_s, u"ABC"_s});
    QTRY_COMPARE(seen, QStringList({u"A"_s, u"AB"_s, u"ABC"_s})); // before the stream ends
    QVERIFY(!m_result);
    m_fake->complete(u"ABC"_s);
    QTRY_VERIFY(m_result.has_value());
    QCOMPARE(seen.size(), 3);
}

void RewriteCoordinatorTest::callerCancellationEndsInIdle() {
    start(u"x"_s, plainPreset());
    m_fake->partials({u"y"_s});
    test::deliverPostedEvents();
    m_future.cancel();
    QVERIFY(m_fake->last().writer.isCancelled());
    m_fake->complete(u"late"_s); // ignored
    test::deliverPostedEvents();
    QVERIFY(!m_result); // a cancellation, not a RewriteError
    QCOMPARE(describe(m_states), u"working, idle"_s);
}

void RewriteCoordinatorTest::timesOut_data() {
    // The deadline clock is the timer's clock plus the time spent asleep, as
    // the boot-time clock is; the timer's own clock stops during suspend.
    QTest::addColumn<int>("scaledMs"); // what the 25 seconds of a short text become
    QTest::addColumn<int>("asleepMs");
    QTest::addColumn<bool>("timedOutOnWake");
    QTest::newRow("a stream that never ends") << 1000 << 0 << false;
    QTest::newRow("slept past the deadline") << 60000 << 61000 << true;
    // The rest of the time-out is what is left on the deadline clock, not a
    // fresh minute.
    QTest::newRow("slept for most of it") << 60000 << 59000 << false;
}

void RewriteCoordinatorTest::timesOut() {
    QFETCH(int, scaledMs);
    QFETCH(int, asleepMs);
    QFETCH(bool, timedOutOnWake);
    QElapsedTimer awake;
    awake.start();
    qint64 asleep = 0;
    m_coordinator->setDeadlineClock(
        [&] { return std::chrono::milliseconds(awake.elapsed() + asleep); });
    QList<int> asked;
    m_coordinator->setTimeoutScale([&](int seconds) {
        asked << seconds;
        return std::chrono::milliseconds(scaledMs);
    });
    start(u"x"_s, plainPreset());
    m_fake->partials({u"partial"_s});

    asleep += asleepMs;
    m_coordinator->checkDeadlines(); // the machine woke up
    test::deliverPostedEvents();
    QCOMPARE(m_result.has_value(), timedOutOnWake);
    QTRY_VERIFY_WITH_TIMEOUT(m_result.has_value(), 20000);
    QVERIFY(awake.elapsed() < 30000);
    QCOMPARE(asked, QList<int>{25});
    QVERIFY(*m_result == failed(RewriteError::timeout()));
    QCOMPARE(describe(m_states), u"working, error(Timed out. Try again.)"_s);
    QVERIFY(m_fake->last().writer.isCancelled()); // the reader was stopped
}

void RewriteCoordinatorTest::readinessLine_data() {
    QTest::addColumn<bool>("hasPreset");
    QTest::addColumn<std::optional<UnavailableReason>>("reason");
    QTest::addColumn<QString>("line");
    using R = std::optional<UnavailableReason>;

    QTest::newRow("ready") << true << R() << u"Status: Make Concise \u00B7 Ready"_s;
    QTest::newRow("missing key") << true << R(UnavailableReason::missingAPIKey())
                                 << u"Status: Make Concise \u00B7 Add API key"_s;
    QTest::newRow("rejected key") << true << R(UnavailableReason::rejectedAPIKey())
                                  << u"Status: Make Concise \u00B7 Add API key"_s;
    QTest::newRow("keychain error") << true << R(UnavailableReason::keychainError())
                                    << u"Status: Make Concise \u00B7 Unavailable"_s;
    QTest::newRow("not ready") << true << R(UnavailableReason::modelNotReady(u"Model not ready"_s))
                               << u"Status: Make Concise \u00B7 Unavailable"_s;
    QTest::newRow("no preset") << false << R() << u"Status: No preset \u00B7 Unavailable"_s;
}

void RewriteCoordinatorTest::readinessLine() {
    QFETCH(bool, hasPreset);
    QFETCH(std::optional<UnavailableReason>, reason);
    QFETCH(QString, line);
    m_fake->reason = reason;
    const auto preset = hasPreset ? std::optional(plainPreset()) : std::nullopt;
    QCOMPARE(test::waitFor(m_coordinator->readinessLine(preset)), std::optional(line));
}

void RewriteCoordinatorTest::prewarmAndReasonWithoutPreset() {
    m_coordinator->prewarm(std::nullopt);
    QVERIFY(m_fake->prewarmed.isEmpty());
    m_coordinator->prewarm(plainPreset());
    QCOMPARE(m_fake->prewarmed.size(), 1);
    QCOMPARE(test::waitFor(m_coordinator->unavailableReason(std::nullopt)),
             std::optional(
                 std::optional(UnavailableReason::misconfigured(u"Add a preset in Presets"_s))));
}

QTEST_GUILESS_MAIN(RewriteCoordinatorTest)
#include "tst_RewriteCoordinator.moc"
