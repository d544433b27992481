#include "dummy/InMemorySettingsStore.h"
#include "presets/PresetStore.h"
#include "presets/PresetTransfer.h"
#include "presets/ShippedPacks.h"

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
        failures << title + QStringLiteral(": ") + message;
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
    void exportSelectionNames();
    void emptyStoreExportsNothing();
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
    const QString path = m_dir.filePath(QStringLiteral("all.scrivel.json"));
    m_ui.exportPath = path;
    QVERIFY(PresetTransfer::exportAll(*m_store, m_ui));
    QCOMPARE(m_ui.proposedNames, QStringList{QStringLiteral("Scrivel Presets.scrivel.json")});
    const QByteArray exported = readAll(path);

    // Into a fresh store, then out again: the same bytes.
    InMemorySettingsStore otherSettings;
    PresetStore other(otherSettings);
    m_ui.importPath = path;
    QSignalSpy imported(&PresetTransferNotifier::instance(), &PresetTransferNotifier::didImport);
    const auto first = PresetTransfer::importFromFile(other, m_ui);
    QCOMPARE(first, m_store->presets().first().id);
    QCOMPARE(imported.count(), 1);
    QCOMPARE(imported.first().first().value<std::optional<QUuid>>(), first);
    QCOMPARE(other.presets(), m_store->presets());

    const QString again = m_dir.filePath(QStringLiteral("again.scrivel.json"));
    m_ui.exportPath = again;
    QVERIFY(PresetTransfer::exportAll(other, m_ui));
    QCOMPARE(readAll(again), exported);
    QVERIFY(m_ui.failures.isEmpty());
}

void PresetTransferTest::reimportReplacesInsteadOfDuplicating() {
    const QString path = m_dir.filePath(QStringLiteral("one.scrivel.json"));
    const QUuid id = m_store->presets()[1].id;
    m_ui.exportPath = path;
    QVERIFY(PresetTransfer::exportSelection(*m_store, {id}, m_ui));

    Preset edited = m_store->presets()[1];
    edited.instructions = QStringLiteral("Changed meanwhile.");
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
        pack.presets.append({ids[item[0]],
                             item,
                             QStringLiteral("groq"),
                             {},
                             QStringLiteral("m"),
                             QStringLiteral("i"),
                             {},
                             {},
                             false});

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
    const QString lastE = items.filter(QStringLiteral("e")).value(items.filter("e").size() - 1);
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
    QTest::newRow("not JSON") << QByteArray("name,model\n")
                              << "This file is not a valid Scrivel preset pack.";
    QTest::newRow("unreadable") << QByteArray()
                                << "The pack could not be read. Check the file and try again.";
}

void PresetTransferTest::importFailures() {
    QFETCH(QByteArray, bytes);
    QFETCH(QString, message);
    const QString path = m_dir.filePath(QStringLiteral("bad.json"));
    QFile::remove(path);
    if (!bytes.isEmpty()) {
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(bytes);
    }
    m_ui.importPath = path;
    QCOMPARE(PresetTransfer::importFromFile(*m_store, m_ui), std::nullopt);
    QCOMPARE(m_ui.failures,
             QStringList{QStringLiteral("Couldn\u2019t import presets: ") + message});
    QCOMPARE(m_store->presets().size(), 3);

    m_ui = {};
    QCOMPARE(PresetTransfer::importFromFile(*m_store, m_ui), std::nullopt); // cancelled
    QVERIFY(m_ui.failures.isEmpty());
}

void PresetTransferTest::invalidPackChangesNothing() {
    PresetPackDocument document = m_store->makePackDocument();
    Preset extra = m_store->presets()[0];
    extra.id = QUuid::createUuid();
    extra.name = QStringLiteral("   ");
    document.presets.append(PresetPackDocument::fromPresets({extra}).presets);
    document.presets[0].instructions = QStringLiteral("would replace");
    const int writes = m_settings->writeCount();
    const auto result = m_store->importPack(document, false);
    QVERIFY(!result);
    QCOMPARE(result.error(), PresetPackError::invalidPreset(QStringLiteral("empty name")));
    QCOMPARE(m_settings->writeCount(), writes);
    QVERIFY(m_store->presets()[0].instructions != QLatin1String("would replace"));
}

void PresetTransferTest::proposedFileNames_data() {
    QTest::addColumn<QString>("base");
    QTest::addColumn<QString>("proposed");
    QTest::newRow("plain") << "Fix"
                           << "Fix.scrivel.json";
    QTest::newRow("slash and colon") << " A/B: C \n"
                                     << "A-B- C.scrivel.json";
    QTest::newRow("blank") << "  "
                           << "Presets.scrivel.json";
}

void PresetTransferTest::proposedFileNames() {
    QFETCH(QString, base);
    QFETCH(QString, proposed);
    QCOMPARE(PresetTransfer::proposedFileName(base), proposed);
}

void PresetTransferTest::exportSelectionNames() {
    m_ui.exportPath = std::nullopt; // the user cancels: nothing written
    QVERIFY(!PresetTransfer::exportSelection(*m_store, {m_store->presets()[2].id}, m_ui));
    QVERIFY(!PresetTransfer::exportSelection(
        *m_store, {m_store->presets()[0].id, m_store->presets()[1].id}, m_ui));
    QVERIFY(!PresetTransfer::exportSelection(*m_store, {QUuid::createUuid()}, m_ui));
    QCOMPARE(m_ui.proposedNames,
             QStringList({"Improve Prompt.scrivel.json", "Scrivel Presets.scrivel.json"}));
    QVERIFY(m_ui.failures.isEmpty());
}

void PresetTransferTest::emptyStoreExportsNothing() {
    InMemorySettingsStore settings;
    PresetStore empty(settings);
    m_ui.exportPath = m_dir.filePath(QStringLiteral("never.scrivel.json"));
    QVERIFY(!PresetTransfer::exportAll(empty, m_ui));
    QVERIFY(m_ui.proposedNames.isEmpty());
    QVERIFY(!QFile::exists(*m_ui.exportPath));
}

void PresetTransferTest::failedWritesLeaveTheOldFile() {
    // A read-only folder: the temporary file cannot be created.
    QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("old.scrivel.json"));
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
             QStringLiteral("The pack could not be read. Check the file and try again."));
    QCOMPARE(readAll(path), QByteArray("old contents"));
    QCOMPARE(QDir(folder.path()).entryList(QDir::Files), QStringList{"old.scrivel.json"});
}

QTEST_GUILESS_MAIN(PresetTransferTest)
#include "tst_PresetTransfer.moc"
