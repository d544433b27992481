#include "dummy/InMemorySecretStore.h"
#include "providers/APIKeyStore.h"
#include "support/TestSupport.h"

#include <QtTest>

using namespace scrivel;

namespace {

template <typename T>
T await(Future<T> future) {
    auto value = test::waitFor(std::move(future));
    if (!value)
        qFatal("the key store never answered");
    return std::move(*value);
}

using KeyResult = APIKeyProviding::KeyResult;
using VoidResult = APIKeyProviding::VoidResult;

} // namespace

class APIKeyStoreTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init();
    void savesTrimmedAndCaches();
    void blankKeyDeletes();
    void invalidItems_data();
    void invalidItems();
    void deletingAMissingKeySucceeds();
    void legacyKeyMovesToTheModernStore();
    void modernKeyRemovesTheLegacyCopy();
    void legacyOnlyWithoutTheModernStore();
    void failures_data();
    void failures();
    void failedSaveLeavesCacheAndFailedDeleteClearsIt();

private:
    KeyResult read(const QString& account) { return await(m_store->readKey(account)); }
    VoidResult save(const QString& key, const QString& account) {
        return await(m_store->saveKey(key, account));
    }
    VoidResult remove(const QString& account) { return await(m_store->deleteKey(account)); }

    InMemorySecretStore m_modern;
    InMemorySecretStore m_legacy;
    bool m_modernAvailable = true;
    std::unique_ptr<APIKeyStore> m_store;
};

void APIKeyStoreTest::init() {
    m_modern = {};
    m_legacy = {};
    m_modernAvailable = true;
    m_store = std::make_unique<APIKeyStore>(
        m_modern, m_legacy, [this] { return Future<bool>::ready(m_modernAvailable); });
}

void APIKeyStoreTest::savesTrimmedAndCaches() {
    QVERIFY(save(QStringLiteral("  sk-123 \n"), QStringLiteral("groq")));
    QCOMPARE(m_modern.items.value(QStringLiteral("groq")), QByteArray("sk-123"));
    QVERIFY(!m_legacy.items.contains(QStringLiteral("groq")));
    const int reads = m_modern.reads;
    QCOMPARE(read(QStringLiteral("groq")), KeyResult(QStringLiteral("sk-123")));
    QCOMPARE(m_modern.reads, reads); // served from the session cache

    // A fresh store (a new process) reads it from the secret store.
    APIKeyStore fresh(m_modern, m_legacy, [] { return Future<bool>::ready(true); });
    QCOMPARE(await(fresh.readKey(QStringLiteral("groq"))), KeyResult(QStringLiteral("sk-123")));
}

void APIKeyStoreTest::blankKeyDeletes() {
    QVERIFY(save(QStringLiteral("sk-1"), QStringLiteral("openai")));
    QVERIFY(save(QStringLiteral("   \n"), QStringLiteral("openai")));
    QVERIFY(!m_modern.items.contains(QStringLiteral("openai")));
    QCOMPARE(read(QStringLiteral("openai")), KeyResult(std::nullopt));
}

void APIKeyStoreTest::invalidItems_data() {
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("not UTF-8") << QByteArray("\xff\xfe\x80");
    QTest::newRow("only white space") << QByteArray(" \t\n");
    QTest::newRow("empty") << QByteArray();
}

void APIKeyStoreTest::invalidItems() {
    QFETCH(QByteArray, bytes);
    m_modern.items.insert(QStringLiteral("xai"), bytes);
    QCOMPARE(read(QStringLiteral("xai")), KeyResult(std::unexpected(KeychainError::invalidData())));
    const int reads = m_modern.reads;
    read(QStringLiteral("xai"));
    QCOMPARE(m_modern.reads, reads + 1); // nothing was cached
}

void APIKeyStoreTest::deletingAMissingKeySucceeds() {
    QVERIFY(remove(QStringLiteral("nothing-here")));
    QCOMPARE(read(QStringLiteral("nothing-here")), KeyResult(std::nullopt));
}

void APIKeyStoreTest::legacyKeyMovesToTheModernStore() {
    m_legacy.items.insert(QStringLiteral("custom:http://localhost:11434/v1"), " old-key\n");
    QCOMPARE(read(QStringLiteral("custom:http://localhost:11434/v1")),
             KeyResult(QStringLiteral("old-key")));
    QCOMPARE(m_modern.items.value(QStringLiteral("custom:http://localhost:11434/v1")),
             QByteArray("old-key"));
    QVERIFY(m_legacy.items.isEmpty());
}

void APIKeyStoreTest::modernKeyRemovesTheLegacyCopy() {
    m_modern.items.insert(QStringLiteral("groq"), "new");
    m_legacy.items.insert(QStringLiteral("groq"), "old");
    QCOMPARE(read(QStringLiteral("groq")), KeyResult(QStringLiteral("new")));
    QVERIFY(m_legacy.items.isEmpty());
}

void APIKeyStoreTest::legacyOnlyWithoutTheModernStore() {
    m_modernAvailable = false;
    QVERIFY(save(QStringLiteral("k"), QStringLiteral("groq")));
    QCOMPARE(m_legacy.items.value(QStringLiteral("groq")), QByteArray("k"));
    QCOMPARE(m_modern.writes + m_modern.reads + m_modern.removals, 0);
    QVERIFY(remove(QStringLiteral("groq")));
    QVERIFY(m_legacy.items.isEmpty());
    m_legacy.items.insert(QStringLiteral("openai"), "o");
    QCOMPARE(read(QStringLiteral("openai")), KeyResult(QStringLiteral("o")));
    QCOMPARE(m_modern.reads, 0);
}

void APIKeyStoreTest::failures_data() {
    QTest::addColumn<QString>("operation");
    QTest::addColumn<QString>("failing"); // which store and call fails
    QTest::addColumn<bool>("legacyItem");
    QTest::addColumn<KeychainError>("error");

    QTest::newRow("modern read") << "read"
                                 << "modern.read" << false << KeychainError::readFailed(-25293);
    QTest::newRow("legacy read during migration")
        << "read"
        << "legacy.read" << false << KeychainError::readFailed(-25293);
    QTest::newRow("legacy removal after a modern hit")
        << "read"
        << "legacy.remove" << false << KeychainError::migrationFailed(-25293);
    QTest::newRow("migration save")
        << "read"
        << "modern.write" << true << KeychainError::migrationFailed(-25293);
    QTest::newRow("save") << "save"
                          << "modern.write" << false << KeychainError::saveFailed(-25293);
    QTest::newRow("legacy removal after a save")
        << "save"
        << "legacy.remove" << false << KeychainError::deleteFailed(-25293);
    QTest::newRow("delete") << "delete"
                            << "modern.remove" << false << KeychainError::deleteFailed(-25293);
}

void APIKeyStoreTest::failures() {
    QFETCH(QString, operation);
    QFETCH(QString, failing);
    QFETCH(bool, legacyItem);
    QFETCH(KeychainError, error);

    if (failing == QLatin1String("legacy.remove") && operation == QLatin1String("read"))
        m_modern.items.insert(QStringLiteral("a"), "modern");
    if (legacyItem)
        m_legacy.items.insert(QStringLiteral("a"), "legacy");
    InMemorySecretStore& store = failing.startsWith(QLatin1String("modern")) ? m_modern : m_legacy;
    if (failing.endsWith(QLatin1String(".read")))
        store.readFailure = -25293;
    else if (failing.endsWith(QLatin1String(".write")))
        store.writeFailure = -25293;
    else
        store.removeFailure = -25293;

    VoidResult result;
    if (operation == QLatin1String("read")) {
        const KeyResult key = read(QStringLiteral("a"));
        QVERIFY(!key);
        QCOMPARE(key.error(), error);
        return;
    }
    result = operation == QLatin1String("save") ? save(QStringLiteral("k"), QStringLiteral("a"))
                                                : remove(QStringLiteral("a"));
    QVERIFY(!result);
    QCOMPARE(result.error(), error);
}

void APIKeyStoreTest::failedSaveLeavesCacheAndFailedDeleteClearsIt() {
    QVERIFY(save(QStringLiteral("first"), QStringLiteral("a")));
    m_modern.writeFailure = -25293;
    QVERIFY(!save(QStringLiteral("second"), QStringLiteral("a")));
    QCOMPARE(read(QStringLiteral("a")), KeyResult(QStringLiteral("first")));

    m_modern.removeFailure = -25293;
    QVERIFY(!remove(QStringLiteral("a")));
    m_modern.items.clear();
    QCOMPARE(read(QStringLiteral("a")), KeyResult(std::nullopt)); // not served from the cache
}

QTEST_GUILESS_MAIN(APIKeyStoreTest)
#include "tst_APIKeyStore.moc"
