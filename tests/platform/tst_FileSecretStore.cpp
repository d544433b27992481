#include "dummy/InMemorySecretStore.h"
#include "linux/FileSecretStore.h"
#include "providers/APIKeyStore.h"
#include "providers/KeychainError.h"
#include "support/TestSupport.h"

#include <QFile>
#include <QLockFile>
#include <QSaveFile>
#include <QTemporaryDir>
#include <QtTest>
#include <atomic>
#include <thread>

using namespace scrivel;
using test::waitFor;

class FileSecretStoreTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void damagedFileIsReportedOnceAndLeftAlone();
    void damagedFileNeverHidesModernKeys();
    void concurrentChangeIsReadBeforeWriting();
};

namespace {

void writeFile(const QString& path, const QByteArray& bytes) {
    QSaveFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(bytes);
    QVERIFY(file.commit());
}

} // namespace

void FileSecretStoreTest::damagedFileIsReportedOnceAndLeftAlone() {
    QTemporaryDir dir;
    FileSecretStore store(dir.path());
    QStringList reported;
    store.setDamageHandler([&](const QString& path) { reported << path; });
    writeFile(store.filePath(), "not json");

    const auto read = waitFor(store.read(QStringLiteral("groq")));
    QCOMPARE(*read, SecretStore::ReadResult(std::unexpected(KeychainError::unreadableStore)));
    QCOMPARE(*waitFor(store.write(QStringLiteral("groq"), "k")),
             SecretStore::WriteResult(std::unexpected(KeychainError::unreadableStore)));
    QVERIFY(!waitFor(store.remove(QStringLiteral("groq")))->has_value());
    QCOMPARE(reported, QStringList{store.filePath()});

    QFile check(store.filePath());
    QVERIFY(check.open(QIODevice::ReadOnly));
    QCOMPARE(check.readAll(), QByteArray("not json"));

    // A value that is not text is damage too, not an empty key.
    FileSecretStore other(dir.path());
    other.setDamageHandler([&](const QString& path) { reported << path; });
    writeFile(other.filePath(), R"({"groq": 7})");
    QVERIFY(!waitFor(other.read(QStringLiteral("groq")))->has_value());
    QCOMPARE(reported.size(), 2);
}

void FileSecretStoreTest::damagedFileNeverHidesModernKeys() {
    QTemporaryDir dir;
    FileSecretStore legacy(dir.path());
    legacy.setDamageHandler([](const QString&) {});
    writeFile(legacy.filePath(), "not json");
    InMemorySecretStore modern;
    modern.items.insert(QStringLiteral("groq"), "sk-in-the-secret-service");
    APIKeyStore keys(modern, legacy, [] { return Future<bool>::ready(true); });

    QCOMPARE(*waitFor(keys.readKey(QStringLiteral("groq"))),
             APIKeyProviding::KeyResult(QStringLiteral("sk-in-the-secret-service")));
    QVERIFY(*waitFor(keys.saveKey(QStringLiteral("sk-2"), QStringLiteral("openai"))));
    QVERIFY(*waitFor(keys.deleteKey(QStringLiteral("openai"))));
    QVERIFY(!modern.items.contains(QStringLiteral("openai")));
}

void FileSecretStoreTest::concurrentChangeIsReadBeforeWriting() {
    // Another process holds the lock while it adds its own key; a change made
    // here meanwhile waits, reads that key and keeps it.
    QTemporaryDir dir;
    FileSecretStore store(dir.path());
    QVERIFY(waitFor(store.write(QStringLiteral("first"), "1"))->has_value());
    const QString path = store.filePath();

    std::atomic<bool> locked = false;
    std::thread other([&] {
        QLockFile lock(path + QStringLiteral(".lock"));
        if (!lock.lock())
            return;
        locked = true;
        std::this_thread::sleep_for(std::chrono::milliseconds(150));
        QSaveFile file(path);
        if (file.open(QIODevice::WriteOnly)) {
            file.write(R"({"first":")" + QByteArray("1").toBase64() + R"(","other":")" +
                       QByteArray("2").toBase64() + R"("})");
            file.commit();
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    });
    while (!locked)
        std::this_thread::yield();
    const auto written = waitFor(store.write(QStringLiteral("mine"), "3"));
    other.join();
    QVERIFY(written && written->has_value());

    FileSecretStore reopened(dir.path());
    for (const auto& [account, value] :
         {std::pair{"first", "1"}, std::pair{"other", "2"}, std::pair{"mine", "3"}}) {
        const auto read = waitFor(reopened.read(QString::fromLatin1(account)));
        QCOMPARE(read->value(), std::optional<QByteArray>(value));
    }
}

QTEST_GUILESS_MAIN(FileSecretStoreTest)
#include "tst_FileSecretStore.moc"
