#include "core/presets/PresetStore.h"
#include "core/presets/PresetTransfer.h"
#include "core/presets/ShippedPacks.h"
#include "support/InMemorySettingsStore.h"

#include <QDir>
#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>
#include <csignal>
#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

using namespace scrivel;
using namespace Qt::StringLiterals;

namespace {

// Answers the dialogs with fixed paths and records what was shown.
class ScriptedUI : public PresetTransferUI {
public:
    std::optional<QString> importPath;
    std::optional<QString> exportPath;
    QStringList proposedNames;
    QStringList failures;

    std::optional<QString> chooseImportFile() override { return importPath; }
    std::optional<QString> chooseExportFile(const QString& proposed) override {
        proposedNames << proposed;
        return exportPath;
    }
    void showFailure(const QString& title, const QString& message) override {
        failures << title + u": "_s + message;
    }
};

QByteArray readAll(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

class PresetTransferTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init();
    void exportThenImportRoundTrips();
    void reimportReplacesInsteadOfDuplicating();
    void addingAPackTwiceAddsTwoSetsOfCopies();
    void repeatedIdentifiersKeepTheLastVersion_data();
    void repeatedIdentifiersKeepTheLastVersion();
    void importFailures_data();
    void importFailures();
    void invalidPackChangesNothing();
    void proposedFileNames_data();
    void proposedFileNames();
    void exportProposesNames();
    void failedWritesLeaveTheOldFile();

private:
    QTemporaryDir m_dir;
    std::unique_ptr<InMemorySettingsStore> m_settings;
    std::unique_ptr<PresetStore> m_store;
    ScriptedUI m_ui;
};

void PresetTransferTest::init() {
    m_settings = std::make_unique<InMemorySettingsStore>();
    m_store = std::make_unique<PresetStore>(*m_settings);
    m_store->seedIfEmpty(false);
    m_ui = {};
}

void PresetTransferTest::exportThenImportRoundTrips() {
    const QString path = m_dir.filePath(u"all.scrivel.json"_s);
    m_ui.exportPath = path;
    QVERIFY(PresetTransfer::exportAll(*m_store, m_ui));
    QCOMPARE(m_ui.proposedNames, QStringList{u"Scrivel Presets.scrivel.json"_s});
    const QByteArray exported = readAll(path);

    // Into a fresh store, then out again: the same bytes.
    InMemorySettingsStore otherSettings;
    PresetStore other(otherSettings);
    m_ui.importPath = path;
    const auto first = PresetTransfer::importFromFile(other, m_ui);
    QCOMPARE(first, m_store->presets().first().id);
    QCOMPARE(other.presets(), m_store->presets());

    const QString again = m_dir.filePath(u"again.scrivel.json"_s);
    m_ui.exportPath = again;
    QVERIFY(PresetTransfer::exportAll(other, m_ui));
    QCOMPARE(readAll(again), exported);
    QVERIFY(m_ui.failures.isEmpty());
}

void PresetTransferTest::reimportReplacesInsteadOfDuplicating() {
    const QString path = m_dir.filePath(u"one.scrivel.json"_s);
    const QUuid id = m_store->presets()[1].id;
    m_ui.exportPath = path;
    QVERIFY(PresetTransfer::exportSelection(*m_store, {id}, m_ui));

    Preset edited = m_store->presets()[1];
    edited.instructions = u"Changed meanwhile."_s;
    m_store->update(edited);
    const auto active = m_store->activePresetID();

    m_ui.importPath = path;
    QCOMPARE(PresetTransfer::importFromFile(*m_store, m_ui), std::optional(id));
    QCOMPARE(m_store->presets().size(), 3);
    QVERIFY(m_store->presets()[1].instructions.startsWith(QLatin1String("Rewrite the text")));
    QCOMPARE(m_store->activePresetID(), active);
}

void PresetTransferTest::addingAPackTwiceAddsTwoSetsOfCopies() {
    const auto packs = shippedPacks();
    QVERIFY(!packs.isEmpty());
    const auto& pack = packs.first();
    const auto first = PresetTransfer::addShippedPack(*m_store, pack, m_ui);
    const auto second = PresetTransfer::addShippedPack(*m_store, pack, m_ui);
    QCOMPARE(m_store->presets().size(), 3 + 2 * pack.presets.size());
    QVERIFY(first && second && *first != *second);
    QCOMPARE(m_store->presets()[3].name, pack.presets.first().name);
}

void PresetTransferTest::repeatedIdentifiersKeepTheLastVersion_data() {
    // Items named "<id letter><version>"; "e" is the id of a stored preset,
    // "a" and "b" are new.
    QTest::addColumn<QStringList>("items");
    QTest::addColumn<QStringList>("expectedNames"); // the presets after the three built-ins
    QTest::addColumn<int>("added");
    QTest::addColumn<int>("replaced");
    QTest::addColumn<QString>("affected"); // id letters, in order
    QTest::newRow("new id twice") << QStringList{"a1", "a2"} << QStringList{"a2"} << 1 << 0 << "a";
    QTest::newRow("new id twice around another")
        << QStringList{"a1", "b1", "a2"} << QStringList{"a2", "b1"} << 2 << 0 << "ab";
    QTest::newRow("stored id twice") << QStringList{"e1", "e2"} << QStringList{} << 0 << 1 << "e";
    QTest::newRow("stored and new")
        << QStringList{"a1", "e1", "a2", "e2"} << QStringList{"a2"} << 1 << 1 << "ea";
}

void PresetTransferTest::repeatedIdentifiersKeepTheLastVersion() {
    QFETCH(QStringList, items);
    QFETCH(QStringList, expectedNames);
    QFETCH(int, added);
    QFETCH(int, replaced);
    QFETCH(QString, affected);
    const QHash<QChar, QUuid> ids = {
        {u'a', QUuid::createUuid()}, {u'b', QUuid::createUuid()}, {u'e', m_store->presets()[1].id}};
    PresetPackDocument pack;
    for (const QString& item : items)
        pack.presets.append({ids[item[0]], item, u"groq"_s, {}, u"m"_s, u"i"_s, {}, {}, false});

    const auto result = m_store->importPack(pack, false);
    QVERIFY(result);
    QCOMPARE(result->added, added);
    QCOMPARE(result->replaced, replaced);
    QList<QUuid> affectedIDs;
    for (const QChar letter : affected)
        affectedIDs << ids[letter];
    QCOMPARE(result->affectedIDs, affectedIDs);

    const QList<Preset>& presets = m_store->presets();
    QCOMPARE(presets.size(), 3 + expectedNames.size());
    for (qsizetype i = 0; i < expectedNames.size(); ++i)
        QCOMPARE(presets[3 + i].name, expectedNames[i]);
    const QString lastE = items.filter(u"e"_s).value(items.filter("e").size() - 1);
    if (!lastE.isEmpty())
        QCOMPARE(presets[1].name, lastE);
    // What is stored reads back the same.
    PresetStore reopened(*m_settings);
    QCOMPARE(reopened.presets(), presets);
}

void PresetTransferTest::importFailures_data() {
    QTest::addColumn<QByteArray>("bytes"); // empty: a file that cannot be read
    QTest::addColumn<QString>("message");
    QTest::newRow("version 2")
        << QByteArray(R"({"kind":"scrivel.preset-pack","formatVersion":2,"presets":[]})")
        << "This pack uses a format version Scrivel does not support yet.";
    QTest::newRow("unreadable") << QByteArray()
                                << "The pack could not be read. Check the file and try again.";
}

void PresetTransferTest::importFailures() {
    QFETCH(QByteArray, bytes);
    QFETCH(QString, message);
    const QString path = m_dir.filePath(u"bad.json"_s);
    QFile::remove(path);
    if (!bytes.isEmpty()) {
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(bytes);
    }
    m_ui.importPath = path;
    QCOMPARE(PresetTransfer::importFromFile(*m_store, m_ui), std::nullopt);
    QCOMPARE(m_ui.failures, QStringList{u"Couldn\u2019t import presets: "_s + message});
    QCOMPARE(m_store->presets().size(), 3);

    m_ui = {};
    QCOMPARE(PresetTransfer::importFromFile(*m_store, m_ui), std::nullopt); // cancelled
    QVERIFY(m_ui.failures.isEmpty());
}

void PresetTransferTest::invalidPackChangesNothing() {
    PresetPackDocument document = m_store->makePackDocument();
    Preset extra = m_store->presets()[0];
    extra.id = QUuid::createUuid();
    extra.name = u"   "_s;
    document.presets.append(PresetPackDocument::fromPresets({extra}).presets);
    document.presets[0].instructions = u"would replace"_s;
    const int writes = m_settings->writeCount();
    const auto result = m_store->importPack(document, false);
    QVERIFY(!result);
    QCOMPARE(result.error(), PresetPackError::invalidPreset(u"empty name"_s));
    QCOMPARE(m_settings->writeCount(), writes);
    QVERIFY(m_store->presets()[0].instructions != QLatin1String("would replace"));
}

void PresetTransferTest::proposedFileNames_data() {
    QTest::addColumn<QString>("base");
    QTest::addColumn<QString>("proposed");
    QTest::newRow("plain") << u"Fix"_s << u"Fix.scrivel.json"_s;
    QTest::newRow("slash and colon") << u" A/B: C \n"_s << u"A-B- C.scrivel.json"_s;
    QTest::newRow("blank") << u"  "_s << u"Presets.scrivel.json"_s;
}

void PresetTransferTest::proposedFileNames() {
    QFETCH(QString, base);
    QFETCH(QString, proposed);
    QCOMPARE(PresetTransfer::proposedFileName(base), proposed);
}

void PresetTransferTest::exportProposesNames() {
    // One preset proposes its own name, several the collection's; with
    // nothing to export no dialog opens. The user cancels each.
    InMemorySettingsStore settings;
    PresetStore empty(settings);
    const QList<Preset>& presets = m_store->presets();
    QVERIFY(!PresetTransfer::exportSelection(*m_store, {presets[2].id}, m_ui));
    QVERIFY(!PresetTransfer::exportSelection(*m_store, {presets[0].id, presets[1].id}, m_ui));
    QVERIFY(!PresetTransfer::exportSelection(*m_store, {QUuid::createUuid()}, m_ui));
    QVERIFY(!PresetTransfer::exportAll(empty, m_ui));
    QCOMPARE(m_ui.proposedNames,
             QStringList({"Improve Prompt.scrivel.json", "Scrivel Presets.scrivel.json"}));
    QVERIFY(m_ui.failures.isEmpty());
}

void PresetTransferTest::failedWritesLeaveTheOldFile() {
    // A read-only folder: the temporary file cannot be created.
    QTemporaryDir folder;
    const QString path = folder.filePath(u"old.scrivel.json"_s);
    {
        QFile old(path);
        QVERIFY(old.open(QIODevice::WriteOnly));
        old.write("old contents");
    }
    const auto readAndEnter = QFileDevice::ReadOwner | QFileDevice::ExeOwner |
                              QFileDevice::ReadOther | QFileDevice::ExeOther;
    QVERIFY(QFile::setPermissions(folder.path(), readAndEnter));
    // Root ignores permissions, so as root the export runs under an
    // unprivileged effective user (the real user stays root to come back).
    const bool asRoot = ::geteuid() == 0;
    if (asRoot)
        QCOMPARE(::seteuid(65534), 0);
    const bool readOnly = ::faccessat(AT_FDCWD, qPrintable(folder.path()), W_OK, AT_EACCESS) != 0;
    m_ui.exportPath = path;
    const bool exported = PresetTransfer::exportAll(*m_store, m_ui);
    if (asRoot)
        QCOMPARE(::seteuid(0), 0);
    QVERIFY(QFile::setPermissions(folder.path(), readAndEnter | QFileDevice::WriteOwner));
    QVERIFY(readOnly);
    QVERIFY(!exported);
    QCOMPARE(readAll(path), QByteArray("old contents"));
    QCOMPARE(m_ui.failures,
             QStringList{QStringLiteral("Couldn\u2019t import presets: The pack could not be read. "
                                        "Check the file and try again.")});

    // A full disk: a file-size limit makes the write fail part-way, as a full
    // disk would, whoever runs the test.
    const QByteArray large(64 * 1024, 'x');
    rlimit previous{};
    getrlimit(RLIMIT_FSIZE, &previous);
    const auto oldHandler = std::signal(SIGXFSZ, SIG_IGN);
    rlimit limited = previous;
    limited.rlim_cur = 4096;
    QCOMPARE(setrlimit(RLIMIT_FSIZE, &limited), 0);
    const auto failed = PresetTransfer::writeAtomically(path, large);
    setrlimit(RLIMIT_FSIZE, &previous);
    std::signal(SIGXFSZ, oldHandler);
    QVERIFY(!failed);
    QCOMPARE(PresetTransfer::message(failed.error()),
             u"The pack could not be read. Check the file and try again."_s);
    QCOMPARE(readAll(path), QByteArray("old contents"));
    QCOMPARE(QDir(folder.path()).entryList(QDir::Files), QStringList{"old.scrivel.json"});
}

QTEST_GUILESS_MAIN(PresetTransferTest)
#include "tst_PresetTransfer.moc"
