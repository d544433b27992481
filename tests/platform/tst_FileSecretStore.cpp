#include "core/providers/KeychainError.h"
#include "platform/linux/FileSecretStore.h"
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

namespace {

void writeFile(const QString& path, const QByteArray& bytes) {
    QSaveFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(bytes);
    QVERIFY(file.commit());
}

QByteArray readFile(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

std::optional<QByteArray> value(FileSecretStore& store, const QString& account) {
    const auto read = waitFor(store.read(account));
    return read && read->has_value() ? read->value() : std::optional<QByteArray>("failed");
}

} // namespace

class FileSecretStoreTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void fileIsPrivateAndSharedBetweenInstances();
    void damagedFileIsReportedOnceAndLeftAlone_data();
    void damagedFileIsReportedOnceAndLeftAlone();
    void concurrentChangeIsReadBeforeWriting();
};

void FileSecretStoreTest::fileIsPrivateAndSharedBetweenInstances() {
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("nested/credentials"));
    FileSecretStore store(path);
    QVERIFY(waitFor(store.write(QStringLiteral("a"), "1"))->has_value());
    QVERIFY(waitFor(store.write(QStringLiteral("b"), "2"))->has_value());
    // Nothing for group or others; the owner may enter the directory and read
    // and write the file.
    const auto groupAndOthers = QFileDevice::ReadGroup | QFileDevice::WriteGroup |
                                QFileDevice::ExeGroup | QFileDevice::ReadOther |
                                QFileDevice::WriteOther | QFileDevice::ExeOther;
    const auto owner = QFileDevice::ReadOwner | QFileDevice::WriteOwner;
    QCOMPARE(QFile::permissions(path) & (groupAndOthers | owner | QFileDevice::ExeOwner),
             owner | QFileDevice::ExeOwner);
    QCOMPARE(QFile::permissions(store.filePath()) &
                 (groupAndOthers | owner | QFileDevice::ExeOwner),
             owner);

    FileSecretStore reopened(path);
    QCOMPARE(value(reopened, QStringLiteral("a")), std::optional<QByteArray>("1"));
    QCOMPARE(value(reopened, QStringLiteral("b")), std::optional<QByteArray>("2"));
}

void FileSecretStoreTest::damagedFileIsReportedOnceAndLeftAlone_data() {
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("not JSON") << QByteArray("not json");
    // A value that is not text is damage too, not an empty key.
    QTest::newRow("value not text") << QByteArray(R"({"groq": 7})");
}

void FileSecretStoreTest::damagedFileIsReportedOnceAndLeftAlone() {
    QFETCH(QByteArray, content);
    QTemporaryDir dir;
    FileSecretStore store(dir.path());
    QStringList reported;
    store.setDamageHandler([&](const QString& path) { reported << path; });
    writeFile(store.filePath(), content);

    const auto unreadable = std::unexpected(KeychainError::unreadableStore);
    QCOMPARE(*waitFor(store.read(QStringLiteral("groq"))), SecretStore::ReadResult(unreadable));
    // Not an empty store that a write would then overwrite.
    QCOMPARE(*waitFor(store.write(QStringLiteral("groq"), "k")),
             SecretStore::WriteResult(unreadable));
    QCOMPARE(*waitFor(store.remove(QStringLiteral("groq"))), SecretStore::WriteResult(unreadable));
    QCOMPARE(reported, QStringList{store.filePath()});
    QCOMPARE(readFile(store.filePath()), content);
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
    for (const auto& [account, expected] :
         {std::pair{"first", "1"}, std::pair{"other", "2"}, std::pair{"mine", "3"}})
        QCOMPARE(value(reopened, QString::fromLatin1(account)),
                 std::optional<QByteArray>(expected));
}

QTEST_GUILESS_MAIN(FileSecretStoreTest)
#include "tst_FileSecretStore.moc"
