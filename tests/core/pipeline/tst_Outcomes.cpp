#include "pipeline/FixResult.h"
#include "pipeline/OperationUIState.h"
#include "pipeline/RewriteError.h"
#include "pipeline/TransformStreamEvent.h"
#include "pipeline/UnavailableReason.h"

#include <QtTest>

using namespace scrivel;

Q_DECLARE_METATYPE(UnavailableReason)
Q_DECLARE_METATYPE(RewriteError)
Q_DECLARE_METATYPE(OperationUIState)

class OutcomesTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void reasonMessages_data();
    void reasonMessages();
    void errorWording_data();
    void errorWording();
    void equality();
};

void OutcomesTest::reasonMessages_data() {
    QTest::addColumn<UnavailableReason>("reason");
    QTest::addColumn<QString>("message");

    QTest::newRow("modelNotReady")
        << UnavailableReason::modelNotReady(QStringLiteral("Model not ready")) << "Model not ready";
    QTest::newRow("misconfigured")
        << UnavailableReason::misconfigured(QStringLiteral("Choose a model in Presets"))
        << "Choose a model in Presets";
    QTest::newRow("other") << UnavailableReason::other(QStringLiteral("Busy")) << "Busy";
    QTest::newRow("missingAPIKey")
        << UnavailableReason::missingAPIKey() << "Connect this preset to a provider in Presets";
    QTest::newRow("keychainError")
        << UnavailableReason::keychainError()
        << QStringLiteral("Couldn\u2019t access the API key in Keychain");
    QTest::newRow("rejectedAPIKey")
        << UnavailableReason::rejectedAPIKey() << "API key was rejected. Check it in Presets.";
}

void OutcomesTest::reasonMessages() {
    QFETCH(UnavailableReason, reason);
    QFETCH(QString, message);
    QCOMPARE(reason.message(), message);
}

void OutcomesTest::errorWording_data() {
    QTest::addColumn<RewriteError>("error");
    QTest::addColumn<QString>("panel");
    QTest::addColumn<OperationUIState>("status");

    const QString unsafe = QStringLiteral("The provider returned an unsafe edit. Try again.");
    for (const char* detail : {"empty", "meta-prefix", "length-delta", "line-breaks"})
        QTest::addRow("outputRejected(%s)", detail)
            << RewriteError::outputRejected(QString::fromLatin1(detail)) << unsafe
            << OperationUIState::error(unsafe);
    const auto missingKey = UnavailableReason::missingAPIKey();
    QTest::newRow("modelUnavailable(missingAPIKey)")
        << RewriteError::modelUnavailable(missingKey)
        << "Connect this preset to a provider in Presets"
        << OperationUIState::modelUnavailable(missingKey);
    const auto noModel =
        UnavailableReason::misconfigured(QStringLiteral("Choose a model in Presets"));
    QTest::newRow("modelUnavailable(misconfigured)")
        << RewriteError::modelUnavailable(noModel) << "Choose a model in Presets"
        << OperationUIState::modelUnavailable(noModel);
    QTest::newRow("modelFailed") << RewriteError::modelFailed(
                                        QStringLiteral("Empty model response"))
                                 << "Empty model response"
                                 << OperationUIState::error(QStringLiteral("Empty model response"));
    QTest::newRow("emptyInput") << RewriteError::emptyInput() << "Enter some text."
                                << OperationUIState::error(QStringLiteral("No text to fix"));
    QTest::newRow("inputTooLarge")
        << RewriteError::inputTooLarge() << "This text is too long for the provider."
        << OperationUIState::error(QStringLiteral("Text is too long for this provider"));
    QTest::newRow("cancelled") << RewriteError::cancelled() << "Cancelled. Try again."
                               << OperationUIState::idle();
    QTest::newRow("timeout") << RewriteError::timeout() << "Timed out. Try again."
                             << OperationUIState::error(QStringLiteral("Timed out. Try again."));
}

void OutcomesTest::errorWording() {
    QFETCH(RewriteError, error);
    QFETCH(QString, panel);
    QFETCH(OperationUIState, status);
    QCOMPARE(error.panelMessage(), panel);
    QVERIFY(OperationUIState::forError(error) == status);
}

void OutcomesTest::equality() {
    const auto model =
        UnavailableReason::misconfigured(QStringLiteral("Choose a model in Presets"));
    const auto url =
        UnavailableReason::misconfigured(QStringLiteral("Set a custom Base URL in Presets"));
    QVERIFY(!(model == url));
    QVERIFY(!(UnavailableReason::other(QStringLiteral("x")) ==
              UnavailableReason::modelNotReady(QStringLiteral("x"))));
    QVERIFY(UnavailableReason::missingAPIKey() == UnavailableReason::missingAPIKey());

    QVERIFY(!(RewriteError::outputRejected(QStringLiteral("empty")) ==
              RewriteError::outputRejected(QStringLiteral("line-breaks"))));
    QVERIFY(!(RewriteError::modelUnavailable(model) == RewriteError::modelUnavailable(url)));
    QVERIFY(!(OperationUIState::error(QStringLiteral("a")) ==
              OperationUIState::error(QStringLiteral("b"))));

    QVERIFY(FixResult::alreadyClean() == FixResult::alreadyClean());
    QVERIFY(!(FixResult::fixed(QStringLiteral("a")) == FixResult::fixed(QStringLiteral("b"))));
    QVERIFY(!(FixResult::fixed(QString()) == FixResult::alreadyClean()));

    QVERIFY(TransformStreamEvent::completed(QStringLiteral("x")) ==
            TransformStreamEvent::completed(QStringLiteral("x")));
    QVERIFY(!(TransformStreamEvent::partial(TextSnapshot(QStringLiteral("x"))) ==
              TransformStreamEvent::completed(QStringLiteral("x"))));
}

QTEST_GUILESS_MAIN(OutcomesTest)
#include "tst_Outcomes.moc"
