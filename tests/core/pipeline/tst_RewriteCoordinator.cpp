#include "pipeline/RewriteCoordinator.h"
#include "presets/BuiltInPresets.h"
#include "support/FakeTransformer.h"
#include "support/TestSupport.h"

#include <QElapsedTimer>
#include <QtTest>

using namespace scrivel;
using test::FakeTransformer;

Q_DECLARE_METATYPE(TransformFailure)
Q_DECLARE_METATYPE(RewriteCoordinator::Result)

namespace {

Preset plainPreset() {
    Preset preset = builtInPresets(false).at(1); // no edit validation
    return preset;
}

Preset validatingPreset() {
    return builtInPresets(false).at(0);
}

QString describe(const QList<OperationUIState>& states) {
    QStringList parts;
    for (const auto& state : states) {
        const char* names[] = {"idle",         "working", "success",
                               "alreadyClean", "error",   "modelUnavailable"};
        QString part = QString::fromLatin1(names[int(state.kind())]);
        if (state.kind() == OperationUIState::Kind::error)
            part += QLatin1Char('(') + state.message() + QLatin1Char(')');
        if (state.reason())
            part += QLatin1Char('(') + state.reason()->message() + QLatin1Char(')');
        parts << part;
    }
    return parts.join(QStringLiteral(", "));
}

} // namespace

class RewriteCoordinatorTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init();
    void timeoutSeconds_data();
    void timeoutSeconds();
    void outcomes_data();
    void outcomes();
    void emptyInputSendsNothing();
    void partialTextIsPassedOnInOrder();
    void neverEndingStreamTimesOut();
    void callerCancellationEndsInIdle();
    void readinessLine_data();
    void readinessLine();
    void prewarmAndReasonWithoutPreset();
    void deadlineCountsTimeAsleep_data();
    void deadlineCountsTimeAsleep();

private:
    // Starts a run and collects its result and status states.
    void start(const QString& input, const Preset& preset);

    std::unique_ptr<FakeTransformer> m_fake;
    std::unique_ptr<RewriteCoordinator> m_coordinator;
    QList<OperationUIState> m_states;
    Future<RewriteCoordinator::Result> m_future;
    std::optional<RewriteCoordinator::Result> m_result;
};

void RewriteCoordinatorTest::init() {
    m_fake = std::make_unique<FakeTransformer>();
    m_coordinator = std::make_unique<RewriteCoordinator>(*m_fake);
    m_coordinator->setTimeoutScale([](int) { return std::chrono::milliseconds(60000); });
    m_states.clear();
    m_result.reset();
    m_coordinator->setUIHandler([this](const OperationUIState& state) { m_states.append(state); });
}

void RewriteCoordinatorTest::start(const QString& input, const Preset& preset) {
    m_future = m_coordinator->rewrite(input, preset);
    m_future.then(this, [this](RewriteCoordinator::Result result) { m_result = result; });
}

void RewriteCoordinatorTest::timeoutSeconds_data() {
    QTest::addColumn<int>("bytes");
    QTest::addColumn<QString>("model");
    QTest::addColumn<QString>("effort"); // "-" for none
    QTest::addColumn<int>("seconds");

    const QString oss = QStringLiteral("openai/gpt-oss-120b");
    QTest::newRow("499 bytes") << 499 << oss << "-" << 25;
    QTest::newRow("500 bytes") << 500 << oss << "-" << 35;
    QTest::newRow("2,499 bytes") << 2499 << oss << "-" << 35;
    QTest::newRow("2,500 bytes") << 2500 << oss << "-" << 60;
    QTest::newRow("high on a reasoning model") << 499 << oss << "high" << 85;
    QTest::newRow("medium on a reasoning model, long text") << 2500 << oss << "medium" << 120;
    QTest::newRow("low adds nothing") << 500 << oss << "low" << 35;
    QTest::newRow("high on another model") << 2499 << "gpt-4o"
                                           << "high" << 35;
    QTest::newRow("effort is case-sensitive") << 10 << oss << "High" << 25;
    QTest::newRow("empty effort") << 10 << oss << "" << 25;
}

void RewriteCoordinatorTest::timeoutSeconds() {
    QFETCH(int, bytes);
    QFETCH(QString, model);
    QFETCH(QString, effort);
    QFETCH(int, seconds);

    Preset preset = plainPreset();
    preset.model = model;
    if (effort != QLatin1String("-"))
        preset.reasoningEffort = effort;
    // Multi-byte text: sizes are UTF-8 bytes, not characters.
    const QString input = test::textOfUtf8Bytes(bytes, QStringLiteral("\u00e9"));
    QCOMPARE(input.toUtf8().size(), bytes);
    QCOMPARE(RewriteCoordinator::timeoutSeconds(input, preset), seconds);
}

void RewriteCoordinatorTest::outcomes_data() {
    QTest::addColumn<bool>("validates");
    QTest::addColumn<QString>("input");
    QTest::addColumn<QStringList>("partials");
    QTest::addColumn<QString>("completed"); // null: stream ends without it
    QTest::addColumn<std::optional<TransformFailure>>("failure");
    QTest::addColumn<RewriteCoordinator::Result>("result");
    QTest::addColumn<QString>("states");

    const auto rewriteError = [](const RewriteError& e) {
        return RewriteCoordinator::Result(std::unexpected(TransformFailure::rewrite(e)));
    };
    const auto none = std::optional<TransformFailure>();
    const QString unsafe = QStringLiteral("The provider returned an unsafe edit. Try again.");

    QTest::newRow("fixed, trimmed")
        << false << "teh cat" << QStringList{"the", "the cat"} << "\n the cat \n"
        << none << RewriteCoordinator::Result(FixResult::fixed("the cat")) << "working, success";
    QTest::newRow("latest partial without completion")
        << false << "teh cat" << QStringList{"the", "the cat"} << QString() << none
        << RewriteCoordinator::Result(FixResult::fixed("the cat")) << "working, success";
    QTest::newRow("equal after trimming")
        << false << "  same text\n"
        << QStringList{} << "same text" << none
        << RewriteCoordinator::Result(FixResult::alreadyClean()) << "working, alreadyClean";
    QTest::newRow("no preface stripping without validation")
        << false << "x" << QStringList{} << "Here is the corrected text: y" << none
        << RewriteCoordinator::Result(FixResult::fixed("Here is the corrected text: y"))
        << "working, success";
    QTest::newRow("no events at all")
        << false << "x" << QStringList{} << QString() << none
        << rewriteError(RewriteError::modelFailed("Empty model response"))
        << "working, error(Empty model response)";
    QTest::newRow("white-space reply")
        << false << "x" << QStringList{} << " \n " << none
        << rewriteError(RewriteError::outputRejected("empty")) << "working, error(" + unsafe + ")";
    QTest::newRow("validated and cleaned")
        << true << "This sentense has a typo." << QStringList{}
        << "Here is the corrected text: This sentence has a typo." << none
        << RewriteCoordinator::Result(FixResult::fixed("This sentence has a typo."))
        << "working, success";
    QTest::newRow("validation finds it unchanged")
        << true << "Fine." << QStringList{"Fine."} << "\"Fine.\"" << none
        << RewriteCoordinator::Result(FixResult::alreadyClean()) << "working, alreadyClean";
    QTest::newRow("validation rejects")
        << true << "Short." << QStringList{} << "A much, much longer reply." << none
        << rewriteError(RewriteError::outputRejected("length-delta"))
        << "working, error(" + unsafe + ")";
    QTest::newRow("missing key")
        << false << "x" << QStringList{} << QString()
        << std::optional(TransformFailure::rewrite(
               RewriteError::modelUnavailable(UnavailableReason::missingAPIKey())))
        << rewriteError(RewriteError::modelUnavailable(UnavailableReason::missingAPIKey()))
        << "working, modelUnavailable(Connect this preset to a provider in Presets)";
    QTest::newRow("input too large")
        << false << "x" << QStringList{} << QString()
        << std::optional(TransformFailure::rewrite(RewriteError::inputTooLarge()))
        << rewriteError(RewriteError::inputTooLarge())
        << "working, error(Text is too long for this provider)";
    QTest::newRow("provider failure after partial text")
        << false << "x" << QStringList{"y"} << QString()
        << std::optional(TransformFailure::rewrite(
               RewriteError::modelFailed("The provider returned error 429.")))
        << rewriteError(RewriteError::modelFailed("The provider returned error 429."))
        << "working, error(The provider returned error 429.)";
    QTest::newRow("unclassified failure")
        << false << "x" << QStringList{"y"} << QString()
        << std::optional(TransformFailure::other("connection reset"))
        << rewriteError(RewriteError::modelFailed(QStringLiteral("Couldn\u2019t fix this text")))
        << QStringLiteral("working, error(Couldn\u2019t fix this text)");
    QTest::newRow("cancelled below")
        << false << "x" << QStringList{} << QString()
        << std::optional(TransformFailure::cancelled())
        << RewriteCoordinator::Result(std::unexpected(TransformFailure::cancelled()))
        << "working, idle";
    QTest::newRow("cancelled as a rewrite error")
        << false << "x" << QStringList{} << QString()
        << std::optional(TransformFailure::rewrite(RewriteError::cancelled()))
        << RewriteCoordinator::Result(std::unexpected(TransformFailure::cancelled()))
        << "working, idle";
}

void RewriteCoordinatorTest::outcomes() {
    QFETCH(bool, validates);
    QFETCH(QString, input);
    QFETCH(QStringList, partials);
    QFETCH(QString, completed);
    QFETCH(std::optional<TransformFailure>, failure);
    QFETCH(RewriteCoordinator::Result, result);
    QFETCH(QString, states);

    start(input, validates ? validatingPreset() : plainPreset());
    QCOMPARE(m_fake->calls.size(), 1);
    QCOMPARE(m_fake->last().text, input); // the untrimmed input goes to the provider
    m_fake->partials(partials);
    if (failure)
        m_fake->fail(*failure);
    else if (!completed.isNull())
        m_fake->complete(completed);
    else
        m_fake->last().writer.finish();

    QTRY_VERIFY(m_result.has_value());
    QVERIFY(*m_result == result);
    QCOMPARE(describe(m_states), states);
    QVERIFY(m_fake->last().writer.isClosed());
}

void RewriteCoordinatorTest::emptyInputSendsNothing() {
    start(QStringLiteral(" \n\t\u3000"), plainPreset());
    QTRY_VERIFY(m_result.has_value());
    QVERIFY(*m_result == RewriteCoordinator::Result(std::unexpected(
                             TransformFailure::rewrite(RewriteError::emptyInput()))));
    QVERIFY(m_states.isEmpty());
    QVERIFY(m_fake->calls.isEmpty());
}

void RewriteCoordinatorTest::partialTextIsPassedOnInOrder() {
    QStringList seen;
    m_future = m_coordinator->rewrite(QStringLiteral("abc"), plainPreset(),
                                      [&](const TextSnapshot& text) { seen << text.toString(); });
    m_future.then(this, [this](RewriteCoordinator::Result result) { m_result = result; });
    m_fake->partials({QStringLiteral("A"), QStringLiteral("AB"), QStringLiteral("ABC")});
    QTRY_COMPARE(seen.size(), 3); // shown as it arrives, before the stream ends
    QVERIFY(!m_result);
    m_fake->complete(QStringLiteral("ABC"));
    QTRY_VERIFY(m_result.has_value());
    QCOMPARE(seen, QStringList({QStringLiteral("A"), QStringLiteral("AB"), QStringLiteral("ABC")}));
}

void RewriteCoordinatorTest::neverEndingStreamTimesOut() {
    QList<int> asked;
    m_coordinator->setTimeoutScale([&](int seconds) {
        asked << seconds;
        return std::chrono::milliseconds(seconds);
    });
    start(QStringLiteral("x"), plainPreset());
    m_fake->partials({QStringLiteral("partial")});
    QTRY_VERIFY(m_result.has_value());
    QVERIFY(*m_result == RewriteCoordinator::Result(
                             std::unexpected(TransformFailure::rewrite(RewriteError::timeout()))));
    QCOMPARE(asked, QList<int>({25}));
    QCOMPARE(describe(m_states), QStringLiteral("working, error(Timed out. Try again.)"));
    QVERIFY(m_fake->last().writer.isCancelled()); // the reader was stopped
}

void RewriteCoordinatorTest::callerCancellationEndsInIdle() {
    start(QStringLiteral("x"), plainPreset());
    m_fake->partials({QStringLiteral("y")});
    QTest::qWait(5);
    m_future.cancel();
    QVERIFY(m_fake->last().writer.isCancelled());
    m_fake->complete(QStringLiteral("late")); // ignored
    QTest::qWait(20);
    QVERIFY(!m_result); // a cancellation, not a RewriteError
    QCOMPARE(describe(m_states), QStringLiteral("working, idle"));
}

void RewriteCoordinatorTest::readinessLine_data() {
    QTest::addColumn<bool>("hasPreset");
    QTest::addColumn<std::optional<UnavailableReason>>("reason");
    QTest::addColumn<QString>("line");

    const QString dot = QStringLiteral(" \u00B7 ");
    QTest::newRow("ready") << true << std::optional<UnavailableReason>()
                           << "Status: Make Concise" + dot + "Ready";
    QTest::newRow("missing key") << true << std::optional(UnavailableReason::missingAPIKey())
                                 << "Status: Make Concise" + dot + "Add API key";
    QTest::newRow("rejected key") << true << std::optional(UnavailableReason::rejectedAPIKey())
                                  << "Status: Make Concise" + dot + "Add API key";
    QTest::newRow("keychain error") << true << std::optional(UnavailableReason::keychainError())
                                    << "Status: Make Concise" + dot + "Unavailable";
    QTest::newRow("not ready") << true
                               << std::optional(UnavailableReason::modelNotReady("Model not ready"))
                               << "Status: Make Concise" + dot + "Unavailable";
    QTest::newRow("no preset") << false << std::optional<UnavailableReason>()
                               << "Status: No preset" + dot + "Unavailable";
}

void RewriteCoordinatorTest::readinessLine() {
    QFETCH(bool, hasPreset);
    QFETCH(std::optional<UnavailableReason>, reason);
    QFETCH(QString, line);
    m_fake->reason = reason;
    std::optional<QString> received;
    Future<QString> future = m_coordinator->readinessLine(hasPreset ? std::optional(plainPreset())
                                                                    : std::optional<Preset>());
    future.then(this, [&](QString text) { received = text; });
    QTRY_VERIFY(received.has_value());
    QCOMPARE(*received, line);
}

void RewriteCoordinatorTest::prewarmAndReasonWithoutPreset() {
    m_coordinator->prewarm(std::nullopt);
    QVERIFY(m_fake->prewarmed.isEmpty());
    m_coordinator->prewarm(plainPreset());
    QCOMPARE(m_fake->prewarmed.size(), 1);

    std::optional<std::optional<UnavailableReason>> reason;
    auto future = m_coordinator->unavailableReason(std::nullopt);
    future.then(this, [&](std::optional<UnavailableReason> r) { reason = r; });
    QTRY_VERIFY(reason.has_value());
    QCOMPARE(*reason, std::optional(UnavailableReason::misconfigured("Add a preset in Presets")));
}

void RewriteCoordinatorTest::deadlineCountsTimeAsleep_data() {
    // The deadline clock is the timer's clock plus the time spent asleep, as
    // the boot-time clock is; the timer's own clock stops during suspend.
    QTest::addColumn<int>("asleepMs");
    QTest::addColumn<bool>("timedOutOnWake");
    QTest::newRow("slept past the deadline") << 61000 << true;
    QTest::newRow("slept for most of it") << 59000 << false;
}

void RewriteCoordinatorTest::deadlineCountsTimeAsleep() {
    QFETCH(int, asleepMs);
    QFETCH(bool, timedOutOnWake);
    QElapsedTimer awake;
    awake.start();
    qint64 asleep = 0;
    m_coordinator->setDeadlineClock(
        [&] { return std::chrono::milliseconds(awake.elapsed() + asleep); });
    m_coordinator->setTimeoutScale([](int) { return std::chrono::milliseconds(60000); });
    start(QStringLiteral("x"), plainPreset());
    m_fake->partials({QStringLiteral("partial")});

    asleep += asleepMs;
    m_coordinator->checkDeadlines(); // the machine woke up
    QTest::qWait(10);
    QCOMPARE(m_result.has_value(), timedOutOnWake);
    if (timedOutOnWake) {
        QVERIFY(*m_result == RewriteCoordinator::Result(std::unexpected(
                                 TransformFailure::rewrite(RewriteError::timeout()))));
        QCOMPARE(describe(m_states), QStringLiteral("working, error(Timed out. Try again.)"));
        QVERIFY(m_fake->last().writer.isCancelled());
        return;
    }
    // The rest of the time-out is what is left on the deadline clock, not a
    // fresh minute.
    QTRY_VERIFY_WITH_TIMEOUT(m_result.has_value(), 20000);
    QVERIFY(awake.elapsed() < 30000);
    QVERIFY(*m_result == RewriteCoordinator::Result(
                             std::unexpected(TransformFailure::rewrite(RewriteError::timeout()))));
}

QTEST_GUILESS_MAIN(RewriteCoordinatorTest)
#include "tst_RewriteCoordinator.moc"
