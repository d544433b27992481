#include "core/providers/APIKeyStore.h"
#include "support/DeferredSecretStore.h"
#include "support/InMemorySecretStore.h"
#include "support/TestSupport.h"

#include <QtTest>

using namespace scrivel;

namespace {

using KeyResult = APIKeyProviding::KeyResult;
using VoidResult = APIKeyProviding::VoidResult;

QString rendered(const KeyResult& result) {
    if (!result)
        return QStringLiteral("error ") + result.error().logDescription();
    return result->value_or(QStringLiteral("none"));
}

QString rendered(const VoidResult& result) {
    return result ? QStringLiteral("ok")
                  : QStringLiteral("error ") + result.error().logDescription();
}

// "account=value;account=value" into items.
QHash<QString, QByteArray> items(const QByteArray& listed) {
    QHash<QString, QByteArray> parsed;
    for (const QByteArray& item : listed.split(';')) {
        if (!item.isEmpty())
            parsed.insert(QString::fromUtf8(item.left(item.indexOf('='))),
                          item.mid(item.indexOf('=') + 1));
    }
    return parsed;
}

// The items, sorted, in the form items() reads, with bytes made printable.
QString rendered(const QHash<QString, QByteArray>& items) {
    QStringList shown;
    for (auto it = items.begin(); it != items.end(); ++it)
        shown << it.key() + QLatin1Char('=') + test::printable(it.value());
    shown.sort();
    return shown.join(QLatin1Char(';'));
}

// "<store>[.<call>][=<status>]": calls of that kind, or all, fail.
void fail(InMemorySecretStore& store, const QString& what) {
    const QString call = what.section(QLatin1Char('='), 0, 0).section(QLatin1Char('.'), 1);
    const int status =
        what.contains(QLatin1Char('=')) ? what.section(QLatin1Char('='), 1).toInt() : -25293;
    if (call.isEmpty() || call == QLatin1String("read"))
        store.readFailure = status;
    if (call.isEmpty() || call == QLatin1String("write"))
        store.writeFailure = status;
    if (call.isEmpty() || call == QLatin1String("remove"))
        store.removeFailure = status;
}

// Records the operation's rendered result at the end of results once it
// arrives; until then the entry is null.
template <typename T>
void begin(Future<T> future, QObject* context, QStringList& results) {
    const qsizetype at = results.size();
    results.append(QString());
    // The handle must live on: destroying it would cancel the operation.
    auto held = std::make_shared<Future<T>>(std::move(future));
    held->then(context, [&results, at, held](T value) { results[at] = rendered(value); });
}

} // namespace

class APIKeyStoreTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void scripts_data();
    void scripts();
    void savesAndDeletesAnnounceTheirAccount();
    void refusedKeySentence();
};

void APIKeyStoreTest::scripts_data() {
    // Each operation is called without waiting for the one before: "r:<account>"
    // reads, "s:<account>=<key>" saves, "d:<account>" deletes. Before the
    // others run, everything called so far settles: "|" just waits,
    // "restart" makes a new store over the same secret stores (a new
    // process), "wipe" empties both secret stores behind the store's back,
    // "+<store>:<account>=<key>" adds an item behind its back,
    // "!<store>[.<call>][=<status>]" makes calls of that store fail (status
    // -25293 unless given; 0 heals them), "!no modern" makes the modern store
    // unusable and "!hourly moves" lets a failed move be tried again only an
    // hour later (otherwise on the very next read).
    QTest::addColumn<QString>("answers"); // "at once", or deferred "in order" / "newest first"
    QTest::addColumn<QByteArray>("modern");
    QTest::addColumn<QByteArray>("legacy");
    QTest::addColumn<QStringList>("operations");
    QTest::addColumn<QStringList>("results");
    QTest::addColumn<QString>("stores"); // "<modern> | <legacy>" at the end
    using L = QStringList;
    const auto row = [](const QByteArray& name, const QString& answers, const QByteArray& modern,
                        const QByteArray& legacy, const L& operations, const L& results,
                        const QString& stores) {
        QTest::newRow(name.constData())
            << answers << modern << legacy << operations << results << stores;
    };

    const QString now = QStringLiteral("at once");
    row("saves trimmed; a new process reads it", now, "", "",
        {"s:groq=  sk-123 \n", "restart", "r:groq"}, {"ok", "sk-123"}, "groq=sk-123 | ");
    row("later reads come from the cache", now, "", "", {"s:a=first", "wipe", "r:a"},
        {"ok", "first"}, " | ");
    row("a blank key deletes", now, "openai=sk-1", "", {"s:openai=   \n", "r:openai"},
        {"ok", "none"}, " | ");
    row("deleting a missing key succeeds", now, "", "", {"d:a", "r:a"}, {"ok", "none"}, " | ");
    row("an item that is not UTF-8", now, "xai=\xff\xfe", "", {"r:xai"}, {"error invalidData"},
        R"(xai=\xff\xfe | )");
    row("an item of white space", now, "xai= \t\n", "", {"r:xai"}, {"error invalidData"},
        R"(xai= \x09\x0a | )");
    row("an item with a control character inside", now, "b=sk\t1", "", {"r:b"},
        {"error invalidData"}, R"(b=sk\x091 | )");
    row("a legacy key moves to the modern store", now, "", "custom:x= old-key\n", {"r:custom:x"},
        {"old-key"}, "custom:x=old-key | ");
    row("a modern key removes the legacy copy", now, "groq=new", "groq=old", {"r:groq"}, {"new"},
        "groq=new | ");
    row("without the modern store: the legacy store only", now, "openai=m", "openai=o",
        {"!no modern", "r:openai", "s:groq=k", "d:openai"}, {"o", "ok", "ok"}, "openai=m | groq=k");

    // Failures, each with the error its operation reports.
    row("modern read", now, "", "", {"!modern.read", "r:a"}, {"error readFailed(-25293)"}, " | ");
    row("legacy read during the migration", now, "", "", {"!legacy.read", "r:a"},
        {"error readFailed(-25293)"}, " | ");
    // A modern store that cannot be read is an error, never a missing key:
    // nothing is read from the legacy store or moved out of it.
    row("locked modern store", now, "", "a=legacy", {"!modern.read=-25315", "r:a", "r:a"},
        {"error readFailed(-25315)", "error readFailed(-25315)"}, " | a=legacy");
    row("save", now, "", "", {"!modern.write", "s:a=k"}, {"error saveFailed(-25293)"}, " | ");
    row("delete", now, "a=k", "", {"!modern.remove", "d:a"}, {"error deleteFailed(-25293)"},
        "a=k | ");
    row("legacy removal during a delete", now, "", "a=k", {"!legacy.remove", "d:a"},
        {"error deleteFailed(-25293)"}, " | a=k");
    row("a failed save keeps the cached key", now, "", "",
        {"s:a=first", "!modern.write", "s:a=second", "r:a"},
        {"ok", "error saveFailed(-25293)", "first"}, "a=first | ");
    row("a failed delete still forgets the cached key", now, "", "",
        {"s:a=first", "!modern.remove", "d:a", "wipe", "r:a"},
        {"ok", "error deleteFailed(-25293)", "none"}, " | ");
    // A legacy key that cannot be moved is still read; a later read, save
    // or delete, or the next process, settles it.
    row("a failed move still gives the key", now, "", "a=legacy", {"!modern.write", "r:a"},
        {"legacy"}, " | a=legacy");
    row("a later read moves it", now, "", "a=legacy",
        {"!modern.write", "r:a", "!modern.write=0", "r:a"}, {"legacy", "legacy"}, "a=legacy | ");
    row("not before the retry interval; the next process does", now, "", "a=legacy",
        {"!hourly moves", "!modern.write", "r:a", "!modern.write=0", "r:a", "|", "restart", "r:a"},
        {"legacy", "legacy", "legacy"}, "a=legacy | ");
    row("a key saved elsewhere meanwhile wins", now, "", "a=legacy",
        {"!modern.write", "r:a", "!modern.write=0", "+modern:a=newer", "r:a", "|", "r:a"},
        {"legacy", "legacy", "newer"}, "a=newer | ");
    row("a save settles it", now, "", "a=legacy",
        {"!modern.write", "r:a", "!modern.write=0", "s:a=new", "r:a"}, {"legacy", "ok", "new"},
        "a=new | ");
    row("a delete settles it", now, "", "a=legacy",
        {"!modern.write", "r:a", "!modern.write=0", "d:a", "r:a"}, {"legacy", "ok", "none"}, " | ");
    // A legacy store that fails never hides the modern store's keys. Deleting:
    // a store that cannot be read holds nothing that could come back; any
    // other failure may leave a copy behind, so it is reported.
    row("a damaged legacy key file", now, "groq=sk-modern", "",
        {"!legacy=-25295", "r:groq", "s:openai=sk-new", "d:openai", "r:xai"},
        {"sk-modern", "ok", "ok", "error readFailed(-25295)"}, "groq=sk-modern | ");
    row("another legacy failure", now, "groq=sk-modern", "",
        {"!legacy", "r:groq", "s:openai=sk-new", "d:openai", "r:xai"},
        {"sk-modern", "ok", "error deleteFailed(-25293)", "error readFailed(-25293)"},
        "groq=sk-modern | ");
    // Keys that could not go into a header as they are change nothing.
    const auto refused = [&](const QByteArray& name, const QString& key) {
        row(name, now, "", "", {"s:a=sk-old", "s:a=" + key, "r:a"},
            {"ok", "error invalidKey", "sk-old"}, "a=sk-old | ");
    };
    refused("line feed inside", QStringLiteral("sk-12\n34"));
    refused("C1 control inside", QStringLiteral("sk\u00851"));
    refused("line separator inside", QStringLiteral("sk\u20281"));
    row("pasted with a trailing CR LF", now, "", "", {"s:a=sk-1234\r\n"}, {"ok"}, "a=sk-1234 | ");
    row("non-ASCII letters are fine", now, "", "", {"s:a=sk-\u00e9"}, {"ok"},
        R"(a=sk-\xc3\xa9 | )");

    // Operations on one account take effect in call order, against a secret
    // store that answers late, in order or newest call first: each read
    // gives what it would had every operation run alone in call order.
    for (const char* answers : {"in order", "newest first"}) {
        const QByteArray tag = QByteArray(", ") + answers;
        row("slow read, then delete" + tag, answers, "a=old", "", {"r:a", "d:a", "r:a"},
            {"old", "ok", "none"}, " | ");
        row("slow read, then save" + tag, answers, "a=old", "", {"r:a", "s:a=new", "r:a"},
            {"old", "ok", "new"}, "a=new | ");
        row("cached key, then save and read" + tag, answers, "a=old", "",
            {"r:a", "|", "s:a=new", "r:a"}, {"old", "ok", "new"}, "a=new | ");
        row("two saves" + tag, answers, "", "", {"s:a=x", "s:a=y", "r:a"}, {"ok", "ok", "y"},
            "a=y | ");
        row("cached key, then delete and save" + tag, answers, "a=old", "",
            {"r:a", "|", "d:a", "s:a=new", "r:a"}, {"old", "ok", "ok", "new"}, "a=new | ");
        row("save, delete, read" + tag, answers, "", "", {"s:a=new", "d:a", "r:a"},
            {"ok", "ok", "none"}, " | ");
    }
}

void APIKeyStoreTest::scripts() {
    QFETCH(QString, answers);
    QFETCH(QByteArray, modern);
    QFETCH(QByteArray, legacy);
    QFETCH(QStringList, operations);
    QFETCH(QStringList, results);
    QFETCH(QString, stores);

    InMemorySecretStore immediate;
    test::DeferredSecretStore deferred;
    const bool late = answers != QLatin1String("at once");
    QHash<QString, QByteArray>& modernItems = late ? deferred.items : immediate.items;
    SecretStore& modernStore = late ? static_cast<SecretStore&>(deferred) : immediate;
    InMemorySecretStore legacyStore;
    modernItems = items(modern);
    legacyStore.items = items(legacy);
    bool modernAvailable = true;
    std::chrono::milliseconds moveRetryInterval{0};
    const auto makeStore = [&] {
        auto made = std::make_unique<APIKeyStore>(modernStore, legacyStore, [&modernAvailable] {
            return Future<bool>::ready(modernAvailable);
        });
        made->setMoveRetryInterval(moveRetryInterval);
        return made;
    };
    std::unique_ptr<APIKeyStore> store = makeStore();
    QStringList actual;
    QObject context; // goes first: nothing arrives once the test has ended
    // Until every result is in, and then some: work nobody waits for (a
    // retried move) ends too.
    const auto settle = [&] {
        for (int round = 0, quiet = 0; round < 1000 && quiet < 20; ++round) {
            QCoreApplication::processEvents();
            if (deferred.pendingCount() > 0)
                deferred.answer(
                    answers == QLatin1String("newest first") ? deferred.pendingCount() - 1 : 0);
            quiet = actual.contains(QString()) || deferred.pendingCount() > 0 ? 0 : quiet + 1;
        }
        QVERIFY2(!actual.contains(QString()), "an operation never ended");
    };

    for (const QString& operation : operations) {
        const QString account = operation.mid(2).section(QLatin1Char('='), 0, 0);
        if (operation.startsWith(QLatin1String("r:"))) {
            begin(store->readKey(account), &context, actual);
        } else if (operation.startsWith(QLatin1String("d:"))) {
            begin(store->deleteKey(account), &context, actual);
        } else if (operation.startsWith(QLatin1String("s:"))) {
            begin(store->saveKey(operation.section(QLatin1Char('='), 1), account), &context,
                  actual);
        } else {
            settle();
            if (operation == QLatin1String("restart"))
                store = makeStore();
            if (operation == QLatin1String("wipe")) {
                modernItems.clear();
                legacyStore.items.clear();
            }
            if (operation.startsWith(QLatin1Char('+'))) {
                const QString item = operation.section(QLatin1Char(':'), 1);
                (operation.startsWith(QLatin1String("+modern")) ? modernItems : legacyStore.items)
                    .insert(item.section(QLatin1Char('='), 0, 0),
                            item.section(QLatin1Char('='), 1).toUtf8());
            }
            if (operation == QLatin1String("!hourly moves")) {
                moveRetryInterval = std::chrono::hours(1);
                store->setMoveRetryInterval(moveRetryInterval);
            } else if (operation == QLatin1String("!no modern"))
                modernAvailable = false;
            else if (operation.startsWith(QLatin1Char('!')))
                fail(operation.startsWith(QLatin1String("!modern")) ? immediate : legacyStore,
                     operation.mid(1));
        }
    }
    settle();
    QCOMPARE(actual, results);
    QCOMPARE(rendered(modernItems) + QStringLiteral(" | ") + rendered(legacyStore.items), stores);
    if (late)
        QCOMPARE(deferred.mostOutstandingOnOneAccount, 1);
}

void APIKeyStoreTest::savesAndDeletesAnnounceTheirAccount() {
    InMemorySecretStore modern;
    InMemorySecretStore legacy;
    legacy.items = items("old=legacy-key");
    APIKeyStore store(modern, legacy, [] { return Future<bool>::ready(true); });
    QStringList changed;
    connect(&store, &APIKeyStore::keyChanged, this,
            [&](const QString& account) { changed << account; });

    const auto done = [](auto future) {
        return rendered(test::waitFor(std::move(future)).value());
    };
    QCOMPARE(done(store.readKey(QStringLiteral("old"))), QStringLiteral("legacy-key"));
    QCOMPARE(done(store.saveKey(QStringLiteral("sk-1"), QStringLiteral("a"))),
             QStringLiteral("ok"));
    QCOMPARE(done(store.saveKey(QStringLiteral("sk\t1"), QStringLiteral("b"))),
             QStringLiteral("error invalidKey"));
    modern.writeFailure = -25293;
    QCOMPARE(done(store.saveKey(QStringLiteral("sk-2"), QStringLiteral("c"))),
             QStringLiteral("error saveFailed(-25293)"));
    QCOMPARE(done(store.deleteKey(QStringLiteral("a"))), QStringLiteral("ok"));
    // Reads (the legacy key's move included) and a key refused before
    // anything was stored change nothing; a failed save may have.
    QCOMPARE(changed, (QStringList{"a", "c", "a"}));
}

void APIKeyStoreTest::refusedKeySentence() {
    QCOMPARE(KeychainError::invalidKey().saveMessage(),
             QStringLiteral("This API key contains a line break or another control character. "
                            "Paste the key again without them."));
}

QTEST_GUILESS_MAIN(APIKeyStoreTest)
#include "tst_APIKeyStore.moc"
