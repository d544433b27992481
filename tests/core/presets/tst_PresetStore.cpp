#include "core/presets/BuiltInPresets.h"
#include "core/presets/PresetStore.h"
#include "support/InMemorySettingsStore.h"

#include <QSignalSpy>
#include <QtTest>
#include <functional>

using namespace scrivel;
using namespace Qt::StringLiterals;

// Something done to a store holding the presets it was given.
using Change = std::function<void(PresetStore&, const QList<Preset>&)>;
Q_DECLARE_METATYPE(Change)
Q_DECLARE_METATYPE(scrivel::PresetStoreProblem::Kind)

namespace {

// Presets named by the letters of `names`, each with instructions of its own
// so that copying the wrong preset shows.
QList<Preset> lettered(const QString& names) {
    QList<Preset> presets;
    for (const QChar c : names) {
        Preset preset = builtInPresets(false).at(1);
        preset.id = QUuid::createUuid();
        preset.name = c;
        preset.instructions = u"Rewrite as %1 would."_s.arg(c);
        presets.append(preset);
    }
    return presets;
}

QString namesOf(const QList<Preset>& presets) {
    QString names;
    for (const Preset& preset : presets)
        names += preset.name;
    return names;
}

// Stores the presets with the one at `active` active.
void store(InMemorySettingsStore& settings, const QList<Preset>& presets, int active) {
    settings.setData(PresetStore::presetsKey(), *Preset::encodeList(presets));
    settings.setText(PresetStore::activePresetKey(), Preset::idText(presets[active].id));
}

} // namespace

class PresetStoreTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void firstLaunchSeedsTheBuiltIns_data();
    void firstLaunchSeedsTheBuiltIns();
    void loadingFallsBack_data();
    void loadingFallsBack();
    void changes_data();
    void changes();
    void remove_data();
    void remove();
    void move_data();
    void move();
    void newPresetTemplate();
    void unencodableTemperatureKeepsTheStoredList_data();
    void unencodableTemperatureKeepsTheStoredList();
    void damagedListKeepsWhatReadsAndIsCopiedFirst_data();
    void damagedListKeepsWhatReadsAndIsCopiedFirst();
    void uncopiedListIsNeverWrittenOver();
    void failedWritesKeepTheStateAndAreTriedAgain_data();
    void failedWritesKeepTheStateAndAreTriedAgain();
    void unreadableSettingsAreNotAnEmptyStore();
};

void PresetStoreTest::firstLaunchSeedsTheBuiltIns_data() {
    QTest::addColumn<bool>("onDevice");
    QTest::newRow("on-device model available") << true;
    QTest::newRow("no on-device model") << false;
}

void PresetStoreTest::firstLaunchSeedsTheBuiltIns() {
    QFETCH(bool, onDevice);
    InMemorySettingsStore settings;
    PresetStore presets(settings);
    QVERIFY(!presets.activePreset());
    QSignalSpy listSpy(&presets, &PresetStore::presetsChanged);

    presets.seedIfEmpty(onDevice);
    QCOMPARE(presets.presets().size(), 3);
    QCOMPARE(listSpy.count(), 1);
    QCOMPARE(presets.activePreset()->name, u"Fix"_s);
    QCOMPARE(presets.activePreset()->providerID, onDevice ? u"onDevice"_s : u"groq"_s);
    QCOMPARE(PresetStore(settings).presets(), presets.presets());
    QCOMPARE(settings.text(PresetStore::activePresetKey()),
             Preset::idText(presets.presets().first().id));
}

void PresetStoreTest::loadingFallsBack_data() {
    QTest::addColumn<QByteArray>("data");
    QTest::addColumn<QString>("active");
    QTest::addColumn<int>("count");
    QTest::addColumn<int>("activeIndex"); // -1: none

    QList<Preset> two = lettered(u"AB"_s);
    // Every field set: nothing in a list this version wrote is unknown to it.
    two[1].customBaseURL = u"http://localhost:8080/v1"_s;
    two[1].reasoningEffort = u"low"_s;
    two[1].validatesEdits = true;
    const QByteArray good = *Preset::encodeList(two);
    QTest::newRow("stored active") << good << Preset::idText(two[1].id) << 2 << 1;
    QTest::newRow("active names nothing") << good << Preset::idText(QUuid::createUuid()) << 2 << 0;
    QTest::newRow("active is not a UUID") << good << "yesterday" << 2 << 0;
    QTest::newRow("no active stored") << good << QString() << 2 << 0;
    QTest::newRow("unreadable list")
        << QByteArray("[{\"id\":1}]") << Preset::idText(two[1].id) << 0 << -1;
    QTest::newRow("nothing stored") << QByteArray() << QString() << 0 << -1;
}

void PresetStoreTest::loadingFallsBack() {
    QFETCH(QByteArray, data);
    QFETCH(QString, active);
    QFETCH(int, count);
    QFETCH(int, activeIndex);

    InMemorySettingsStore settings;
    if (!data.isEmpty())
        settings.setData(PresetStore::presetsKey(), data);
    if (!active.isEmpty())
        settings.setText(PresetStore::activePresetKey(), active);
    PresetStore presets(settings);
    QCOMPARE(presets.presets().size(), count);
    QCOMPARE(presets.loadProblem().has_value(), count == 0 && !data.isEmpty());
    if (activeIndex < 0)
        QVERIFY(!presets.activePresetID() && !presets.activePreset());
    else
        QCOMPARE(presets.activePresetID(), presets.presets()[activeIndex].id);
}

void PresetStoreTest::changes_data() {
    // Each row starts from presets A and B, A active.
    QTest::addColumn<QString>("names");
    QTest::addColumn<QString>("activeName");
    QTest::addColumn<QString>("signalCounts"); // presetsChanged, activePresetIDChanged
    QTest::addColumn<bool>("writes");
    QTest::addColumn<Change>("change");

    QTest::newRow("add appends, the active preset stays")
        << u"ABC"_s << u"A"_s << u"1 0"_s << true
        << Change([](auto& s, auto&) { s.add(lettered(u"C"_s)[0]); });
    QTest::newRow("update") << u"AZ"_s << u"A"_s << u"1 0"_s << true
                            << Change([](auto& s, auto& initial) {
                                   Preset renamed = initial[1];
                                   renamed.name = u"Z"_s;
                                   s.update(renamed);
                               });
    QTest::newRow("activate") << u"AB"_s << u"B"_s << u"0 1"_s << true
                              << Change([](auto& s, auto& initial) { s.activate(initial[1].id); });
    QTest::newRow("no active preset: the first stands in")
        << u"AB"_s << u"A"_s << u"0 1"_s << true
        << Change([](auto& s, auto&) { s.setActivePresetID(std::nullopt); });
    // Nothing changes, so nothing is written or announced.
    QTest::newRow("seeding a filled store") << u"AB"_s << u"A"_s << u"0 0"_s << false
                                            << Change([](auto& s, auto&) { s.seedIfEmpty(true); });
    QTest::newRow("update with an identical preset")
        << u"AB"_s << u"A"_s << u"0 0"_s << false
        << Change([](auto& s, auto& initial) { s.update(initial[1]); });
    QTest::newRow("update of an unknown preset")
        << u"AB"_s << u"A"_s << u"0 0"_s << false
        << Change([](auto& s, auto&) { s.update(lettered(u"Z"_s)[0]); });
    QTest::newRow("activate an unknown identifier")
        << u"AB"_s << u"A"_s << u"0 0"_s << false
        << Change([](auto& s, auto&) { s.activate(QUuid::createUuid()); });
}

void PresetStoreTest::changes() {
    QFETCH(Change, change);
    QFETCH(QString, names);
    QFETCH(QString, activeName);
    QFETCH(QString, signalCounts);
    QFETCH(bool, writes);

    InMemorySettingsStore settings;
    const QList<Preset> initial = lettered(u"AB"_s);
    store(settings, initial, 0);
    PresetStore presets(settings);
    QSignalSpy listSpy(&presets, &PresetStore::presetsChanged);
    QSignalSpy activeSpy(&presets, &PresetStore::activePresetIDChanged);
    const int writesBefore = settings.writeCount();

    change(presets, initial);
    QCOMPARE(namesOf(presets.presets()), names);
    QCOMPARE(presets.activePreset()->name, activeName);
    QCOMPARE(u"%1 %2"_s.arg(listSpy.count()).arg(activeSpy.count()), signalCounts);
    QCOMPARE(settings.writeCount() > writesBefore, writes);
    // What is stored matches what is held.
    const PresetStore reloaded(settings);
    QCOMPARE(reloaded.presets(), presets.presets());
    QCOMPARE(reloaded.activePreset()->name, activeName);
    QCOMPARE(settings.contains(PresetStore::activePresetKey()),
             presets.activePresetID().has_value());
}

void PresetStoreTest::remove_data() {
    QTest::addColumn<QString>("names");
    QTest::addColumn<int>("activeIndex");
    QTest::addColumn<int>("removeIndex"); // -1: an identifier not in the list
    QTest::addColumn<QString>("remaining");
    QTest::addColumn<QString>("nextName");
    QTest::addColumn<QString>("activeName");

    QTest::newRow("active last preset") << u"ABC"_s << 2 << 2 << u"AB"_s << u"B"_s << u"B"_s;
    QTest::newRow("active middle preset") << u"ABC"_s << 1 << 1 << u"AC"_s << u"C"_s << u"C"_s;
    QTest::newRow("active first preset") << u"ABC"_s << 0 << 0 << u"BC"_s << u"B"_s << u"B"_s;
    QTest::newRow("inactive preset") << u"ABC"_s << 0 << 1 << u"AC"_s << u"C"_s << u"A"_s;
    QTest::newRow("inactive last preset") << u"ABC"_s << 1 << 2 << u"AB"_s << u"B"_s << u"B"_s;
    QTest::newRow("unknown identifier") << u"ABC"_s << 1 << -1 << u"ABC"_s << u"A"_s << u"B"_s;
    QTest::newRow("the only preset stays") << u"A"_s << 0 << 0 << u"A"_s << u"A"_s << u"A"_s;
}

void PresetStoreTest::remove() {
    QFETCH(QString, names);
    QFETCH(int, activeIndex);
    QFETCH(int, removeIndex);
    QFETCH(QString, remaining);
    QFETCH(QString, nextName);
    QFETCH(QString, activeName);

    InMemorySettingsStore settings;
    const QList<Preset> initial = lettered(names);
    store(settings, initial, activeIndex);
    PresetStore presets(settings);
    const int writes = settings.writeCount();

    const QUuid id = removeIndex < 0 ? QUuid::createUuid() : initial[removeIndex].id;
    const std::optional<QUuid> next = presets.remove(id);
    QCOMPARE(namesOf(presets.presets()), remaining);
    QVERIFY(next);
    QCOMPARE(presets.preset(*next)->name, nextName);
    QCOMPARE(presets.activePreset()->name, activeName);
    if (names.size() == 1)
        QCOMPARE(settings.writeCount(), writes);
    const PresetStore reloaded(settings);
    QCOMPARE(reloaded.presets(), presets.presets());
    QCOMPARE(reloaded.activePresetID(), presets.activePresetID());
}

void PresetStoreTest::move_data() {
    QTest::addColumn<QList<int>>("sources");
    QTest::addColumn<int>("destination");
    QTest::addColumn<QString>("result");

    QTest::newRow("first to end") << QList<int>{0} << 5 << "BCDEA";
    QTest::newRow("last to front") << QList<int>{4} << 0 << "EABCD";
    QTest::newRow("down by one needs destination + 2") << QList<int>{1} << 3 << "ACBDE";
    QTest::newRow("onto itself") << QList<int>{1} << 1 << "ABCDE";
    QTest::newRow("just after itself") << QList<int>{1} << 2 << "ABCDE";
    QTest::newRow("up by one") << QList<int>{3} << 2 << "ABDCE";
    QTest::newRow("several, order kept") << QList<int>{0, 2} << 4 << "BDACE";
    QTest::newRow("several given out of order") << QList<int>{3, 0} << 2 << "BADCE";
    QTest::newRow("destination past the end") << QList<int>{0} << 99 << "BCDEA";
}

void PresetStoreTest::move() {
    QFETCH(QList<int>, sources);
    QFETCH(int, destination);
    QFETCH(QString, result);

    InMemorySettingsStore settings;
    store(settings, lettered(u"ABCDE"_s), 2);
    PresetStore presets(settings);
    presets.move(sources, destination);
    QCOMPARE(namesOf(presets.presets()), result);
    QCOMPARE(presets.activePreset()->name, u"C"_s); // identity, not position
    QCOMPARE(namesOf(PresetStore(settings).presets()), result);
}

void PresetStoreTest::newPresetTemplate() {
    // A copy of the given preset, else of the active one, else of the built-in
    // Fix: under a new name and identifier, and without edit validation.
    const auto expectCopyOf = [](const Preset& copy, Preset source) {
        QVERIFY(!copy.id.isNull() && copy.id != source.id);
        source.id = copy.id;
        source.name = u"New Preset"_s;
        source.validatesEdits = false;
        QCOMPARE(copy, source);
    };
    InMemorySettingsStore settings;
    PresetStore empty(settings);
    expectCopyOf(empty.newPresetTemplate(), builtInPresets(false).first());

    Preset source = lettered(u"S"_s)[0];
    source.customBaseURL = u"http://localhost:1234/v1"_s;
    source.reasoningEffort = u"high"_s;
    source.validatesEdits = true;
    expectCopyOf(empty.newPresetTemplate(source), source);

    const QList<Preset> initial = lettered(u"AB"_s);
    store(settings, initial, 1);
    expectCopyOf(PresetStore(settings).newPresetTemplate(), initial[1]);
}

void PresetStoreTest::unencodableTemperatureKeepsTheStoredList_data() {
    QTest::addColumn<double>("temperature");
    QTest::newRow("NaN") << qQNaN();
    QTest::newRow("infinity") << qInf();
    QTest::newRow("negative infinity") << -qInf();
}

void PresetStoreTest::unencodableTemperatureKeepsTheStoredList() {
    QFETCH(double, temperature);
    InMemorySettingsStore settings;
    const QList<Preset> initial = lettered(u"AB"_s);
    store(settings, initial, 0);
    const std::optional<QByteArray> before = settings.data(PresetStore::presetsKey());
    PresetStore presets(settings);

    Preset odd = initial[1];
    odd.temperature = temperature;
    presets.update(odd);
    presets.activate(initial[1].id); // the active preset is still written
    QCOMPARE(settings.data(PresetStore::presetsKey()), before);
    QVERIFY(before && !before->contains("null"));
    QCOMPARE(settings.text(PresetStore::activePresetKey()), Preset::idText(initial[1].id));
    QCOMPARE(PresetStore(settings).presets(), initial);
}

void PresetStoreTest::damagedListKeepsWhatReadsAndIsCopiedFirst_data() {
    QTest::addColumn<QByteArray>("data");
    QTest::addColumn<QString>("kept");
    QTest::addColumn<PresetStoreProblem::Kind>("kind");
    QTest::addColumn<int>("unreadable");

    const QByteArray good = *Preset::encodeList(lettered(u"ABC"_s));
    const auto edited = [&good](const QByteArray& before, const QByteArray& after) {
        QByteArray data = good;
        return data.replace(before, after);
    };
    QTest::newRow("one wrong-typed field")
        << edited("\"name\":\"B\"", "\"name\":[\"B\"]") << u"AC"_s
        << PresetStoreProblem::Kind::presetsUnreadable << 1;
    QTest::newRow("one preset not JSON") << edited("\"name\":\"B\"", "\"name\" \"B\"") << u"AC"_s
                                         << PresetStoreProblem::Kind::presetsUnreadable << 1;
    // Names made of the characters that delimit JSON: reading a damaged list
    // element by element must follow strings.
    const QByteArray tricky = *Preset::encodeList(lettered(u"{],"_s));
    QTest::newRow("cut off inside the last preset")
        << tricky.left(tricky.lastIndexOf("instructions")) << u"{]"_s
        << PresetStoreProblem::Kind::presetsUnreadable << 1;
    QTest::newRow("cut off after a whole preset")
        << tricky.left(tricky.lastIndexOf("},{") + 1) << u"{]"_s
        << PresetStoreProblem::Kind::presetsUnreadable << 0;
    QTest::newRow("unknown field from a newer version")
        << edited("\"name\":\"C\"", "\"name\":\"C\",\"tone\":{\"level\":[2]}") << u"ABC"_s
        << PresetStoreProblem::Kind::newerFields << 0;
    QTest::newRow("a newer version changed a field's type")
        << edited("\"temperature\":0", "\"temperature\":{\"value\":0}") << QString()
        << PresetStoreProblem::Kind::presetsUnreadable << 3;
    QTest::newRow("not an array") << "{\"presets\":" + good + "}" << QString()
                                  << PresetStoreProblem::Kind::presetsUnreadable << 0;
    QTest::newRow("not JSON") << QByteArray("\x01\xff garbage") << QString()
                              << PresetStoreProblem::Kind::presetsUnreadable << 0;
}

void PresetStoreTest::damagedListKeepsWhatReadsAndIsCopiedFirst() {
    QFETCH(QByteArray, data);
    QFETCH(QString, kept);
    QFETCH(PresetStoreProblem::Kind, kind);
    QFETCH(int, unreadable);

    InMemorySettingsStore settings;
    settings.setData(PresetStore::presetsKey(), data);
    PresetStore presets(settings);
    QCOMPARE(namesOf(presets.presets()), kept);
    QVERIFY(presets.loadProblem());
    QCOMPARE(presets.loadProblem()->kind(), kind);
    QCOMPARE(presets.loadProblem()->unreadable(), unreadable);
    QCOMPARE(presets.loadProblem()->kept(), kept.size());
    // The copy holds the stored bytes, unchanged, and the message names it.
    QCOMPARE(settings.copies().values(), QList<QByteArray>{data});
    QCOMPARE(presets.loadProblem()->path(), settings.copies().firstKey());
    QVERIFY(presets.loadProblem()->message().contains(settings.copies().firstKey()));

    // Seeding replaces the list only when nothing in it could be read.
    presets.seedIfEmpty(false);
    if (kept.isEmpty()) {
        QCOMPARE(PresetStore(settings).presets(), presets.presets());
        QCOMPARE(presets.presets().size(), 3);
    } else {
        QCOMPARE(settings.data(PresetStore::presetsKey()), data);
        QCOMPARE(namesOf(presets.presets()), kept);
    }
    QCOMPARE(settings.copies().size(), 1);
}

void PresetStoreTest::uncopiedListIsNeverWrittenOver() {
    const QByteArray damaged = Preset::encodeList(lettered(u"A"_s))->chopped(1) + ",{\"id\":7}]";
    InMemorySettingsStore settings;
    settings.setData(PresetStore::presetsKey(), damaged);
    settings.setFailingCopies(true);
    PresetStore presets(settings);
    QCOMPARE(presets.loadProblem()->kind(), PresetStoreProblem::Kind::copyFailed);

    // Changes stay in memory and the stored list as it was, until a copy
    // can be made; the active identifier is not the list and is written.
    presets.add(lettered(u"B"_s)[0]);
    QCOMPARE(namesOf(presets.presets()), u"AB"_s);
    QCOMPARE(settings.data(PresetStore::presetsKey()), damaged);
    QVERIFY(presets.saveError());
    QCOMPARE(presets.saveError()->kind(), SettingsStoreError::Kind::unwritable);
    presets.activate(presets.presets()[1].id);
    QVERIFY(presets.saveError());

    settings.setFailingCopies(false);
    presets.add(lettered(u"C"_s)[0]);
    QCOMPARE(settings.copies().values(), QList<QByteArray>{damaged});
    QCOMPARE(namesOf(PresetStore(settings).presets()), u"ABC"_s);
    QVERIFY(!presets.saveError());
}

void PresetStoreTest::failedWritesKeepTheStateAndAreTriedAgain_data() {
    QTest::addColumn<Change>("change");
    QTest::addColumn<QString>("names");
    QTest::addColumn<QString>("activeName");
    QTest::newRow("add") << Change([](auto& s, auto&) { s.add(lettered(u"C"_s)[0]); }) << u"ABC"_s
                         << u"A"_s;
    QTest::newRow("activate") << Change([](auto& s, auto& initial) { s.activate(initial[1].id); })
                              << u"AB"_s << u"B"_s;
    QTest::newRow("remove the active preset")
        << Change([](auto& s, auto& initial) { s.remove(initial[0].id); }) << u"B"_s << u"B"_s;
    QTest::newRow("move") << Change([](auto& s, auto&) { s.move({0}, 2); }) << u"BA"_s << u"A"_s;
}

void PresetStoreTest::failedWritesKeepTheStateAndAreTriedAgain() {
    QFETCH(Change, change);
    QFETCH(QString, names);
    QFETCH(QString, activeName);

    InMemorySettingsStore settings;
    const QList<Preset> initial = lettered(u"AB"_s);
    store(settings, initial, 0);
    PresetStore presets(settings);
    settings.setFailingWrites(true);
    change(presets, initial);
    QVERIFY(presets.saveError());
    QCOMPARE(namesOf(presets.presets()), names);
    QCOMPARE(presets.activePreset()->name, activeName);
    QCOMPARE(namesOf(PresetStore(settings).presets()), u"AB"_s); // nothing stored

    // The next change writes everything held, not only itself.
    settings.setFailingWrites(false);
    Preset renamed = presets.presets().last();
    renamed.name += u"!"_s;
    presets.update(renamed);
    QVERIFY(!presets.saveError());
    const PresetStore reloaded(settings);
    QCOMPARE(reloaded.presets(), presets.presets());
    QCOMPARE(reloaded.activePreset()->name, presets.activePreset()->name);
}

void PresetStoreTest::unreadableSettingsAreNotAnEmptyStore() {
    InMemorySettingsStore settings;
    store(settings, lettered(u"AB"_s), 0);
    settings.setReadError(
        SettingsStoreError(SettingsStoreError::Kind::unreadable, u"/home/u/Scrivel.conf"_s));
    const int writes = settings.writeCount();
    PresetStore presets(settings);
    presets.seedIfEmpty(true);
    QVERIFY(presets.presets().isEmpty());
    QCOMPARE(settings.writeCount(), writes);
    QVERIFY(!presets.loadProblem());
}

QTEST_GUILESS_MAIN(PresetStoreTest)
#include "tst_PresetStore.moc"
