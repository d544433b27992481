#include "cli/PresetLookup.h"
#include "support/InMemorySettingsStore.h"

#include <QtTest>

using namespace scrivel;

// How a command line names a preset: by identifier or by name, and what it
// is told when that names none or several.
class PresetLookupTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init();
    void findsOrExplains_data();
    void findsOrExplains();
    void quotesForAShell_data();
    void quotesForAShell();

private:
    Preset add(const QString& name, const QString& model);

    std::unique_ptr<InMemorySettingsStore> m_settings;
    std::unique_ptr<PresetStore> m_store;
    QHash<QString, QUuid> m_ids; // by exact name
};

Preset PresetLookupTest::add(const QString& name, const QString& model) {
    Preset preset;
    preset.id = QUuid::createUuid();
    preset.name = name;
    preset.providerID = QStringLiteral("groq");
    preset.model = model;
    preset.instructions = QStringLiteral("Fix it.");
    m_store->add(preset);
    m_ids.insert(name, preset.id);
    return preset;
}

void PresetLookupTest::init() {
    m_settings = std::make_unique<InMemorySettingsStore>();
    m_store = std::make_unique<PresetStore>(*m_settings);
    m_ids.clear();
    add(QStringLiteral("Fix"), QStringLiteral("m1"));
    add(QStringLiteral("To French"), QStringLiteral("m1"));
    add(QStringLiteral("to french"), QString());
    // A name that reads as an identifier but names no preset's identifier.
    add(QStringLiteral("00000000-0000-0000-0000-0000000000AB"), QStringLiteral("m1"));
}

void PresetLookupTest::findsOrExplains_data() {
    QTest::addColumn<QString>("word");  // "ID:<name>" stands for that preset's identifier
    QTest::addColumn<QString>("found"); // the exact name, or empty
    QTest::addColumn<bool>("named");
    QTest::addColumn<QStringList>("told"); // what the message holds when none is found
    QTest::newRow("name") << "Fix"
                          << "Fix" << true << QStringList();
    QTest::newRow("name in another case") << "fIX"
                                          << "Fix" << true << QStringList();
    QTest::newRow("identifier") << "ID:Fix"
                                << "Fix" << true << QStringList();
    QTest::newRow("identifier in lower case") << "id:Fix"
                                              << "Fix" << true << QStringList();
    QTest::newRow("identifier text naming no identifier, but a name")
        << "00000000-0000-0000-0000-0000000000ab"
        << "00000000-0000-0000-0000-0000000000AB" << true << QStringList();
    QTest::newRow("one of two of the same name, by identifier")
        << "ID:to french"
        << "to french" << true << QStringList();
    QTest::newRow("nothing of that name")
        << "Nope" << QString() << false
        << QStringList{"No preset \"Nope\". See 'scrivel-cli presets'."};
    QTest::newRow("a name two presets share, in any case")
        << "TO FRENCH" << QString() << true
        << QStringList{"2 presets are named \"TO FRENCH\"; give the id of the one you mean:",
                       "\n  ID:To French  To French (Groq \u00B7 m1)",
                       "\n  ID:to french  to french (Groq)"};
}

void PresetLookupTest::findsOrExplains() {
    QFETCH(QString, word);
    QFETCH(QString, found);
    QFETCH(bool, named);
    QFETCH(QStringList, told);
    const auto expand = [&](QString text) {
        for (auto it = m_ids.cbegin(); it != m_ids.cend(); ++it) {
            text.replace(QStringLiteral("ID:") + it.key(), Preset::idText(it.value()));
            text.replace(QStringLiteral("id:") + it.key(), Preset::idText(it.value()).toLower());
        }
        return text;
    };
    word = expand(word);

    const auto preset = cli::findPreset(*m_store, word);
    QCOMPARE(cli::namesPreset(*m_store, word), named);
    if (!found.isEmpty()) {
        QVERIFY2(preset, qPrintable(preset.error()));
        QCOMPARE(preset->id, m_ids.value(found));
        return;
    }
    QVERIFY(!preset);
    for (const QString& part : told)
        QVERIFY2(preset.error().contains(expand(part)), qPrintable(preset.error()));
}

void PresetLookupTest::quotesForAShell_data() {
    QTest::addColumn<QString>("word");
    QTest::addColumn<QString>("quoted");
    QTest::newRow("plain") << "Fix"
                           << "Fix";
    QTest::newRow("URL") << "http://localhost:11434/v1"
                         << "http://localhost:11434/v1";
    QTest::newRow("space") << "Make Concise"
                           << "'Make Concise'";
    QTest::newRow("apostrophe") << "Ann's"
                                << "'Ann'\\''s'";
    QTest::newRow("shell characters") << "a$b;c"
                                      << "'a$b;c'";
    QTest::newRow("empty") << ""
                           << "''";
}

void PresetLookupTest::quotesForAShell() {
    QFETCH(QString, word);
    QFETCH(QString, quoted);
    QCOMPARE(cli::shellQuoted(word), quoted);
}

QTEST_GUILESS_MAIN(PresetLookupTest)
#include "tst_PresetLookup.moc"
