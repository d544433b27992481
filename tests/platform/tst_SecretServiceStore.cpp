#include "core/providers/APIKeyStore.h"
#include "platform/linux/FileSecretStore.h"
#include "platform/linux/SecretServiceProbe.h"
#include "platform/linux/SecretServiceStore.h"
#include "support/PrivateKeyring.h"
#include "support/TestSupport.h"

#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

using namespace scrivel;
using test::waitFor;

namespace {

// A read's result: the bytes, "none", or "error <status>".
QString rendered(const std::optional<SecretStore::ReadResult>& result) {
    if (!result)
        return QStringLiteral("no answer");
    if (!*result)
        return QStringLiteral("error %1").arg(result->error());
    return **result ? QString::fromUtf8(***result) : QStringLiteral("none");
}

QString rendered(const std::optional<SecretStore::WriteResult>& result) {
    if (!result)
        return QStringLiteral("no answer");
    return *result ? QStringLiteral("ok") : QStringLiteral("error %1").arg(result->error());
}

QString rendered(const std::optional<APIKeyProviding::KeyResult>& result) {
    if (!result)
        return QStringLiteral("no answer");
    if (!*result)
        return QStringLiteral("error ") + result->error().logDescription();
    return (*result)->value_or(QStringLiteral("none"));
}

} // namespace

// Runs against a real Secret Service: a gnome-keyring on a session bus of
// this suite's own, which it may lock and stop.
class SecretServiceStoreTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void itemLifecycle();
    void keyStoreMovesFileKeysIntoTheSecretService();
    void unansweredJobsTimeOut_data();
    void unansweredJobsTimeOut();
    // Locks the keyring for good: the last test.
    void lockedItemsAreErrorsNeverMissingKeys();
    void cleanupTestCase();

private:
    QString uniqueAccount(const char* name) const {
        return QStringLiteral("test:%1:%2").arg(QLatin1String(name), m_run);
    }

    std::unique_ptr<test::PrivateKeyring> m_keyring;
    const QString m_service = QStringLiteral("com.scrivel.app.tests");
    const QString m_run = QUuid::createUuid().toString(QUuid::WithoutBraces);
};

void SecretServiceStoreTest::initTestCase() {
    m_keyring = std::make_unique<test::PrivateKeyring>();
    const QString problem = m_keyring->start();
    if (problem.startsWith(QLatin1String("needs")))
        QSKIP(qPrintable(problem));
    QVERIFY2(problem.isEmpty(), qPrintable(problem));
    // Before anything in this process (QtKeychain, Qt's own bus) connects.
    qputenv("DBUS_SESSION_BUS_ADDRESS", m_keyring->busAddress().toUtf8());
    SecretServiceProbe probe;
    const auto available = waitFor(probe.isAvailable(), 10000);
    QVERIFY2(available && *available, "no Secret Service answers on the session bus");
}

void SecretServiceStoreTest::cleanupTestCase() {
    m_keyring.reset();
}

void SecretServiceStoreTest::itemLifecycle() {
    SecretServiceStore store(m_service);
    const QString account = uniqueAccount("lifecycle");
    const auto stored = [&](const QString& name) { return waitFor(store.read(name))->value(); };

    auto missing = waitFor(store.read(account));
    QVERIFY(missing && missing->has_value() && !missing->value().has_value());
    QVERIFY(waitFor(store.remove(account))->has_value()); // absent: no failure

    QVERIFY(waitFor(store.write(account, "first"))->has_value());
    QCOMPARE(stored(account), std::optional<QByteArray>("first"));
    // An update, not a duplicate; any bytes survive.
    const QByteArray binary("\x00\xff key \xe2\x80\x99", 10);
    QVERIFY(waitFor(store.write(account, binary))->has_value());
    QCOMPARE(stored(account), std::optional<QByteArray>(binary));
    QCOMPARE(stored(uniqueAccount("other")), std::nullopt); // items are per account

    QVERIFY(waitFor(store.remove(account))->has_value());
    QCOMPARE(stored(account), std::nullopt);
}

void SecretServiceStoreTest::keyStoreMovesFileKeysIntoTheSecretService() {
    QTemporaryDir dir;
    SecretServiceStore modern(m_service);
    FileSecretStore legacy(dir.path());
    SecretServiceProbe probe;
    APIKeyStore keys(modern, legacy, [&] { return probe.isAvailable(); });
    const QString account = uniqueAccount("migration");

    QVERIFY(waitFor(legacy.write(account, "legacy-key-123"))->has_value());
    QCOMPARE(waitFor(keys.readKey(account))->value(), std::optional<QString>("legacy-key-123"));
    QCOMPARE(waitFor(modern.read(account))->value(), std::optional<QByteArray>("legacy-key-123"));
    QCOMPARE(waitFor(legacy.read(account))->value(), std::nullopt);

    // With the Secret Service present, no key lands in the file.
    const QString other = uniqueAccount("plain");
    QVERIFY(waitFor(keys.saveKey(QStringLiteral(" secret-value-456 "), other))->has_value());
    QFile file(legacy.filePath());
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QByteArray onDisk = file.readAll();
    QVERIFY(!onDisk.contains("secret-value-456"));
    QVERIFY(!onDisk.contains(QByteArray("secret-value-456").toBase64()));

    QVERIFY(waitFor(keys.deleteKey(account))->has_value());
    QVERIFY(waitFor(keys.deleteKey(other))->has_value());
    QCOMPARE(waitFor(modern.read(other))->value(), std::nullopt);
}

void SecretServiceStoreTest::unansweredJobsTimeOut_data() {
    QTest::addColumn<QString>("call");
    QTest::newRow("read") << "read";
    QTest::newRow("write") << "write";
    QTest::newRow("remove") << "remove";
}

void SecretServiceStoreTest::unansweredJobsTimeOut() {
    QFETCH(QString, call);
    SecretServiceStore store(m_service);
    store.setJobTimeout(std::chrono::milliseconds(300));
    const QString account = uniqueAccount("unanswered");
    m_keyring->setPaused(true);
    QString result;
    if (call == QLatin1String("read"))
        result = rendered(waitFor(store.read(account), 5000));
    else if (call == QLatin1String("write"))
        result = rendered(waitFor(store.write(account, "k"), 5000));
    else
        result = rendered(waitFor(store.remove(account), 5000));
    m_keyring->setPaused(false);
    QCOMPARE(result, QStringLiteral("error %1").arg(SecretServiceStore::interactionNotAllowed));
    // Once the service answers again, so does the store.
    QVERIFY(waitFor(store.remove(account), 10000).has_value());
}

void SecretServiceStoreTest::lockedItemsAreErrorsNeverMissingKeys() {
    SecretServiceStore store(m_service);
    QTemporaryDir dir;
    FileSecretStore file(dir.path());
    const QString inKeyring = uniqueAccount("locked");
    const QString inFile = uniqueAccount("file-only");
    const QString nowhere = uniqueAccount("nowhere");
    QCOMPARE(rendered(waitFor(store.write(inKeyring, "sk-keyring"))), QStringLiteral("ok"));
    QCOMPARE(rendered(waitFor(file.write(inFile, "sk-file"))), QStringLiteral("ok"));
    QVERIFY(m_keyring->lockDefaultCollection());

    // The unlock prompt cannot be shown, so nothing gets unlocked: the item
    // that is there cannot be read, nor removed; a missing one is missing.
    const QString locked = QStringLiteral("error %1").arg(SecretServiceStore::locked);
    QCOMPARE(rendered(waitFor(store.read(inKeyring), 10000)), locked);
    QCOMPARE(rendered(waitFor(store.remove(inKeyring), 10000)), locked);
    QCOMPARE(rendered(waitFor(store.read(nowhere), 10000)), QStringLiteral("none"));
    QVERIFY(rendered(waitFor(store.write(nowhere, "sk-new"), 10000)).startsWith("error"));

    // Through the key store: the locked key is an error, never "no key"; a
    // key in the file is read though it cannot move into the locked keyring.
    APIKeyStore keys(store, file, [] { return Future<bool>::ready(true); });
    QCOMPARE(rendered(waitFor(keys.readKey(inKeyring), 10000)),
             QStringLiteral("error readFailed(%1)").arg(SecretServiceStore::locked));
    QCOMPARE(rendered(waitFor(keys.readKey(inFile), 10000)), QStringLiteral("sk-file"));
    QCOMPARE(rendered(waitFor(file.read(inFile))), QStringLiteral("sk-file"));
}

QTEST_GUILESS_MAIN(SecretServiceStoreTest)
#include "tst_SecretServiceStore.moc"
