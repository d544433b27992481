#include "core/editor/PresetConnectionState.h"
#include "core/pipeline/FixResult.h"
#include "core/pipeline/OperationUIState.h"
#include "core/providers/KeychainError.h"
#include "core/providers/ProviderConnectionFailure.h"
#include "core/storage/KeyStorePlace.h"
#include "core/transform/RewriteError.h"
#include "core/transform/TransformStreamEvent.h"
#include "core/transform/UnavailableReason.h"

#include <QtTest>

using namespace scrivel;
using namespace Qt::StringLiterals;

Q_DECLARE_METATYPE(UnavailableReason)
Q_DECLARE_METATYPE(RewriteError)
Q_DECLARE_METATYPE(OperationUIState)
Q_DECLARE_METATYPE(ProviderConnectionFailure)

class OutcomesTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void reasonMessages_data();
    void reasonMessages();
    void errorWording_data();
    void errorWording();
    void connectionFailureSentences_data();
    void connectionFailureSentences();
    void keyStoreFailuresNameTheStoreInUse_data();
    void keyStoreFailuresNameTheStoreInUse();
};

Q_DECLARE_METATYPE(KeyStorePlace)

void OutcomesTest::keyStoreFailuresNameTheStoreInUse_data() {
    QTest::addColumn<KeyStorePlace>("place");
    QTest::addColumn<QString>("editorSentence");
    QTest::addColumn<QString>("reasonSentence");
    QTest::addColumn<QString>("noAnswerSentence");
    QTest::newRow("keyring")
        << KeyStorePlace::desktopKeyring
        << u"Couldn\u2019t access the API key in the desktop\u2019s keyring."_s
        << u"Couldn\u2019t access the API key in the desktop\u2019s keyring"_s
        << u"The desktop\u2019s keyring didn\u2019t answer in time. Unlock it and "
           u"try again."_s;
    QTest::newRow("key file")
        << KeyStorePlace::privateKeyFile
        << u"Couldn\u2019t access the API key in Scrivel\u2019s key file."_s
        << u"Couldn\u2019t access the API key in Scrivel\u2019s key file"_s
        << u"Scrivel\u2019s key file couldn\u2019t be read in time. Try again."_s;
}

void OutcomesTest::keyStoreFailuresNameTheStoreInUse() {
    QFETCH(KeyStorePlace, place);
    QFETCH(QString, editorSentence);
    QFETCH(QString, reasonSentence);
    QFETCH(QString, noAnswerSentence);
    setCurrentKeyStorePlace(place);
    const auto failure = ProviderConnectionFailure::of(ProviderConnectionFailure::Kind::keychain);
    QCOMPARE(failure.message(), editorSentence);
    QCOMPARE(KeychainError::saveFailed(-1).saveMessage(), editorSentence);
    QCOMPARE(UnavailableReason::keychainError().message(), reasonSentence);
    QCOMPARE(failure.rewriteError(QStringLiteral("Groq")).panelMessage(), reasonSentence);
    QCOMPARE(PresetConnectionState::noAnswerMessage(), noAnswerSentence);
    setCurrentKeyStorePlace(KeyStorePlace::desktopKeyring);
}

void OutcomesTest::reasonMessages_data() {
    QTest::addColumn<UnavailableReason>("reason");
    QTest::addColumn<QString>("message");

    QTest::newRow("other carries its sentence") << UnavailableReason::other(u"Busy"_s) << "Busy";
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

    const QString unsafe = u"The provider returned an unsafe edit. Try again."_s;
    QTest::newRow("outputRejected") << RewriteError::outputRejected(u"line-breaks"_s) << unsafe
                                    << OperationUIState::error(unsafe);
    const auto missingKey = UnavailableReason::missingAPIKey();
    QTest::newRow("modelUnavailable(missingAPIKey)")
        << RewriteError::modelUnavailable(missingKey)
        << "Connect this preset to a provider in Presets"
        << OperationUIState::modelUnavailable(missingKey);
    const auto noModel = UnavailableReason::misconfigured(u"Choose a model in Presets"_s);
    QTest::newRow("modelUnavailable(misconfigured)")
        << RewriteError::modelUnavailable(noModel) << "Choose a model in Presets"
        << OperationUIState::modelUnavailable(noModel);
    QTest::newRow("modelFailed") << RewriteError::modelFailed(u"Empty model response"_s)
                                 << "Empty model response"
                                 << OperationUIState::error(u"Empty model response"_s);
    QTest::newRow("emptyInput") << RewriteError::emptyInput() << "Enter some text."
                                << OperationUIState::error(u"No text to fix"_s);
    QTest::newRow("inputTooLarge")
        << RewriteError::inputTooLarge() << "This text is too long for the provider."
        << OperationUIState::error(u"Text is too long for this provider"_s);
    QTest::newRow("cancelled") << RewriteError::cancelled() << "Cancelled. Try again."
                               << OperationUIState::idle();
    QTest::newRow("timeout") << RewriteError::timeout() << "Timed out. Try again."
                             << OperationUIState::error(u"Timed out. Try again."_s);
}

void OutcomesTest::errorWording() {
    QFETCH(RewriteError, error);
    QFETCH(QString, panel);
    QFETCH(OperationUIState, status);
    QCOMPARE(error.panelMessage(), panel);
    QVERIFY(OperationUIState::forError(error) == status);
}

void OutcomesTest::connectionFailureSentences_data() {
    QTest::addColumn<ProviderConnectionFailure>("failure");
    QTest::addColumn<QString>("sentence");
    using K = ProviderConnectionFailure::Kind;
    const auto of = [](K kind) { return ProviderConnectionFailure::of(kind); };
    QTest::newRow("status") << ProviderConnectionFailure::status(502)
                            << "The provider returned error 502.";
    QTest::newRow("invalidEndpoint")
        << of(K::invalidEndpoint) << "Enter a valid provider base URL.";
    QTest::newRow("missingCredential")
        << of(K::missingCredential) << "Enter an API key to connect.";
    QTest::newRow("unauthorized") << of(K::unauthorized)
                                  << "The API key was rejected. Check it and try again.";
    QTest::newRow("forbidden") << of(K::forbidden)
                               << QStringLiteral(
                                      "This API key doesn\u2019t have access to the provider.");
    QTest::newRow("notFound") << of(K::notFound)
                              << QStringLiteral("Models weren\u2019t found. Check that the base "
                                                "URL includes the API version, such as /v1.");
    QTest::newRow("timedOut") << of(K::timedOut) << "The provider timed out. Try again.";
    QTest::newRow("network") << of(K::network)
                             << QStringLiteral("Couldn\u2019t reach the provider. Check the URL "
                                               "and your connection.");
    QTest::newRow("invalidResponse")
        << of(K::invalidResponse) << "The provider returned an invalid model list.";
    QTest::newRow("emptyModels") << of(K::emptyModels) << "The provider returned no models.";
    QTest::newRow("responseTooLarge")
        << of(K::responseTooLarge) << "The provider response was too large.";
    QTest::newRow("interruptedReply")
        << of(K::interruptedReply)
        << "The connection closed before the reply was complete. Try again.";
    QTest::newRow("unreadableReply")
        << of(K::unreadableReply)
        << u"The provider\u2019s reply contained text that isn\u2019t valid UTF-8. Try again."_s;
}

void OutcomesTest::connectionFailureSentences() {
    QFETCH(ProviderConnectionFailure, failure);
    QFETCH(QString, sentence);
    QCOMPARE(failure.message(), sentence);
}

QTEST_GUILESS_MAIN(OutcomesTest)
#include "tst_Outcomes.moc"
