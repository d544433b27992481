#include "core/providers/APIKeyStore.h"
#include "platform/linux/FileSecretStore.h"
#include "platform/linux/SecretServiceProbe.h"
#include "platform/linux/SecretServiceStore.h"
#include "support/TestSupport.h"

#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

using namespace scrivel;
using test::waitFor;

// Runs against the real Secret Service on the session bus. scripts/test
// provides one: a private D-Bus session with a pre-unlocked gnome-keyring.
class SecretServiceStoreTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void itemLifecycle();
    void keyStoreMovesFileKeysIntoTheSecretService();

private:
    QString uniqueAccount(const char* name) const {
        return QStringLiteral("test:%1:%2").arg(QLatin1String(name), m_run);
    }

    const QString m_service = QStringLiteral("com.scrivel.app.tests");
    const QString m_run = QUuid::createUuid().toString(QUuid::WithoutBraces);
};

void SecretServiceStoreTest::initTestCase() {
    if (qEnvironmentVariableIsEmpty("DBUS_SESSION_BUS_ADDRESS"))
        QSKIP("needs a session bus with a Secret Service (run through scripts/test)");
    SecretServiceProbe probe;
    const auto available = waitFor(probe.isAvailable(), 10000);
    QVERIFY2(available && *available, "no Secret Service answers on the session bus");
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

QTEST_GUILESS_MAIN(SecretServiceStoreTest)
#include "tst_SecretServiceStore.moc"
