#include "dummy/InMemorySecretStore.h"
#include "providers/APIKeyStore.h"
#include "support/DeferredSecretStore.h"
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
    void operationsTakeEffectInCallOrder_data();
    void operationsTakeEffectInCallOrder();
    void legacyStoreNeverHidesModernKeys_data();
    void legacyStoreNeverHidesModernKeys();
    void keysWithControlCharactersAreRefused_data();
    void keysWithControlCharactersAreRefused();

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
    QTest::newRow("migration save")
        << "read"
        << "modern.write" << true << KeychainError::migrationFailed(-25293);
    QTest::newRow("save") << "save"
                          << "modern.write" << false << KeychainError::saveFailed(-25293);
    QTest::newRow("legacy removal during a delete")
        << "delete"
        << "legacy.remove" << false << KeychainError::deleteFailed(-25293);
    QTest::newRow("delete") << "delete"
                            << "modern.remove" << false << KeychainError::deleteFailed(-25293);
}

void APIKeyStoreTest::failures() {
    QFETCH(QString, operation);
    QFETCH(QString, failing);
    QFETCH(bool, legacyItem);
    QFETCH(KeychainError, error);

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

void APIKeyStoreTest::operationsTakeEffectInCallOrder_data() {
    // Operations on one account, all called at once ("r" read, "d" delete,
    // "s:<key>" save), against a secret store that answers late and, in the
    // second variant, newest call first. Each read must give what it would
    // give had every operation run alone in call order.
    QTest::addColumn<QByteArray>("stored"); // the item before; empty: none
    QTest::addColumn<bool>("cachedFirst");  // the key was read once before
    QTest::addColumn<QStringList>("operations");
    QTest::addColumn<QStringList>("reads"); // each read's key; "-" for none
    QTest::addColumn<QString>("finalKey");  // "-" for none
    for (const bool newestFirst : {false, true}) {
        const QByteArray order = newestFirst ? ", newest answered first" : ", answered in order";
        const auto row = [&](const char* name) -> QTestData& {
            return QTest::newRow(name + order);
        };
        row("slow read, then delete") << QByteArray("old") << false << QStringList{"r", "d", "r"}
                                      << QStringList{"old", "-"} << "-";
        row("slow read, then save") << QByteArray("old") << false << QStringList{"r", "s:new", "r"}
                                    << QStringList{"old", "new"} << "new";
        row("cached key, then save and read")
            << QByteArray("old") << true << QStringList{"s:new", "r"} << QStringList{"new"}
            << "new";
        row("two saves") << QByteArray() << false << QStringList{"s:a", "s:b", "r"}
                         << QStringList{"b"} << "b";
        row("delete, then save") << QByteArray("old") << true << QStringList{"d", "s:new", "r"}
                                 << QStringList{"new"} << "new";
        row("save, delete, read") << QByteArray() << false << QStringList{"s:new", "d", "r"}
                                  << QStringList{"-"} << "-";
    }
}

void APIKeyStoreTest::operationsTakeEffectInCallOrder() {
    QFETCH(QByteArray, stored);
    QFETCH(bool, cachedFirst);
    QFETCH(QStringList, operations);
    QFETCH(QStringList, reads);
    QFETCH(QString, finalKey);
    const bool newestFirst = QByteArray(QTest::currentDataTag()).contains("newest");
    const QString account = QStringLiteral("groq");

    test::DeferredSecretStore modern;
    if (!stored.isEmpty())
        modern.items.insert(account, stored);
    APIKeyStore store(modern, m_legacy, [] { return Future<bool>::ready(true); });
    const auto settle = [&](const std::function<bool()>& done) {
        for (int round = 0; round < 1000 && !done(); ++round) {
            QCoreApplication::processEvents();
            if (modern.pendingCount() > 0)
                modern.answer(newestFirst ? modern.pendingCount() - 1 : 0);
        }
        QVERIFY(done());
    };
    if (cachedFirst) {
        auto first = store.readKey(account);
        std::optional<KeyResult> value;
        first.then(this, [&](KeyResult result) { value = result; });
        settle([&] { return value.has_value(); });
    }

    std::vector<Future<KeyResult>> readFutures;
    std::vector<Future<VoidResult>> writeFutures;
    QList<std::optional<KeyResult>> readResults;
    QList<std::optional<VoidResult>> writeResults;
    readResults.reserve(operations.size());
    writeResults.reserve(operations.size());
    for (const QString& operation : operations) {
        if (operation == QLatin1String("r")) {
            readFutures.push_back(store.readKey(account));
            readResults.append(std::nullopt);
            const qsizetype at = readResults.size() - 1;
            readFutures.back().then(this, [&, at](KeyResult result) { readResults[at] = result; });
        } else {
            writeFutures.push_back(operation == QLatin1String("d")
                                       ? store.deleteKey(account)
                                       : store.saveKey(operation.mid(2), account));
            writeResults.append(std::nullopt);
            const qsizetype at = writeResults.size() - 1;
            writeFutures.back().then(this,
                                     [&, at](VoidResult result) { writeResults[at] = result; });
        }
    }
    settle([&] {
        return std::all_of(readResults.begin(), readResults.end(),
                           [](const auto& r) { return r.has_value(); }) &&
               std::all_of(writeResults.begin(), writeResults.end(),
                           [](const auto& r) { return r.has_value(); });
    });

    for (const auto& result : writeResults)
        QVERIFY(*result);
    QCOMPARE(readResults.size(), reads.size());
    for (qsizetype i = 0; i < reads.size(); ++i) {
        const KeyResult expected =
            reads[i] == QLatin1String("-") ? KeyResult(std::nullopt) : KeyResult(reads[i]);
        QCOMPARE(*readResults[i], expected);
    }
    QCOMPARE(modern.mostOutstandingOnOneAccount, 1);
    // What stays behind: in the secret store, and in the cache of this store.
    QCOMPARE(modern.items.value(account),
             finalKey == QLatin1String("-") ? QByteArray() : finalKey.toUtf8());
    auto later = store.readKey(account);
    std::optional<KeyResult> laterValue;
    later.then(this, [&](KeyResult result) { laterValue = result; });
    settle([&] { return laterValue.has_value(); });
    QCOMPARE(*laterValue,
             finalKey == QLatin1String("-") ? KeyResult(std::nullopt) : KeyResult(finalKey));
}

void APIKeyStoreTest::legacyStoreNeverHidesModernKeys_data() {
    QTest::addColumn<int>("status");
    QTest::newRow("damaged key file") << KeychainError::unreadableStore;
    QTest::newRow("other failure") << -25293;
}

void APIKeyStoreTest::legacyStoreNeverHidesModernKeys() {
    QFETCH(int, status);
    m_legacy.readFailure = status;
    m_legacy.writeFailure = status;
    m_legacy.removeFailure = status;
    m_modern.items.insert(QStringLiteral("groq"), "sk-modern");
    QCOMPARE(read(QStringLiteral("groq")), KeyResult(QStringLiteral("sk-modern")));
    QVERIFY(save(QStringLiteral("sk-new"), QStringLiteral("openai")));
    QCOMPARE(m_modern.items.value(QStringLiteral("openai")), QByteArray("sk-new"));
    // Deleting: a store that cannot be read holds nothing that could come
    // back; any other failure may leave a copy behind, so it is reported.
    const VoidResult deleted = remove(QStringLiteral("openai"));
    QVERIFY(!m_modern.items.contains(QStringLiteral("openai")));
    if (status == KeychainError::unreadableStore)
        QVERIFY(deleted);
    else
        QCOMPARE(deleted, VoidResult(std::unexpected(KeychainError::deleteFailed(status))));
    // Without the modern item the legacy failure is all there is to say.
    QCOMPARE(read(QStringLiteral("xai")),
             KeyResult(std::unexpected(KeychainError::readFailed(status))));
}

void APIKeyStoreTest::keysWithControlCharactersAreRefused_data() {
    QTest::addColumn<QString>("key");
    QTest::addColumn<bool>("refused");
    QTest::newRow("line feed inside") << QStringLiteral("sk-12\n34") << true;
    QTest::newRow("carriage return inside") << QStringLiteral("sk-12\r34") << true;
    QTest::newRow("tab inside") << QStringLiteral("sk\t1234") << true;
    QTest::newRow("NUL inside") << (QStringLiteral("sk") + QChar(0) + QStringLiteral("1")) << true;
    QTest::newRow("C1 control inside") << QStringLiteral("sk\u00851") << true;
    QTest::newRow("line separator inside") << QStringLiteral("sk\u20281") << true;
    QTest::newRow("pasted with a trailing CR LF") << QStringLiteral("sk-1234\r\n") << false;
    QTest::newRow("non-ASCII letters are fine") << QStringLiteral("sk-\u00e9\u00df") << false;
}

void APIKeyStoreTest::keysWithControlCharactersAreRefused() {
    QFETCH(QString, key);
    QFETCH(bool, refused);
    QVERIFY(save(QStringLiteral("sk-old"), QStringLiteral("a")));
    const VoidResult result = save(key, QStringLiteral("a"));
    if (!refused) {
        QVERIFY(result);
        return;
    }
    QCOMPARE(result, VoidResult(std::unexpected(KeychainError::invalidKey())));
    QVERIFY(result.error().saveMessage().contains(QStringLiteral("control character")));
    // Nothing changed: neither the stored item nor the cached key.
    QCOMPARE(m_modern.items.value(QStringLiteral("a")), QByteArray("sk-old"));
    QCOMPARE(read(QStringLiteral("a")), KeyResult(QStringLiteral("sk-old")));
    // A key stored that way by something else is never handed out.
    m_modern.items.insert(QStringLiteral("b"), key.toUtf8());
    QCOMPARE(read(QStringLiteral("b")), KeyResult(std::unexpected(KeychainError::invalidData())));
}

QTEST_GUILESS_MAIN(APIKeyStoreTest)
#include "tst_APIKeyStore.moc"
