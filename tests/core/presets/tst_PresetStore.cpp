#include "dummy/InMemorySettingsStore.h"
#include "presets/BuiltInPresets.h"
#include "presets/PresetStore.h"

#include <QSignalSpy>
#include <QtTest>

using namespace scrivel;

namespace {

Preset named(const QString& name) {
    Preset preset = builtInPresets(false).at(1);
    preset.id = QUuid::createUuid();
    preset.name = name;
    // Distinct instructions, so that copying the wrong preset shows.
    preset.instructions = QStringLiteral("Rewrite as %1 would.").arg(name);
    return preset;
}

// A store holding presets named by the letters of `names`, the first active.
QList<Preset> lettered(const QString& names) {
    QList<Preset> presets;
    for (const QChar c : names)
        presets.append(named(QString(c)));
    return presets;
}

QString namesOf(const QList<Preset>& presets) {
    QString names;
    for (const Preset& preset : presets)
        names += preset.name;
    return names;
}

void store(InMemorySettingsStore& settings, const QList<Preset>& presets,
           const std::optional<QUuid>& active) {
    settings.setData(PresetStore::presetsKey(), *Preset::encodeList(presets));
    if (active)
        settings.setText(PresetStore::activePresetKey(), Preset::idText(*active));
}

} // namespace

class PresetStoreTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void firstLaunchSeedsTheBuiltIns_data();
    void firstLaunchSeedsTheBuiltIns();
    void seedingLeavesAFilledStoreAlone();
    void loadingFallsBack_data();
    void loadingFallsBack();
    void remove_data();
    void remove();
    void removingTheLastPresetChangesNothing();
    void move_data();
    void move();
    void updateWritesOnlyWhenSomethingChanged();
    void activateIgnoresUnknownIdentifiers();
    void addAppendsWithoutChangingTheActivePreset();
    void newPresetTemplate();
    void unencodableTemperatureKeepsTheStoredList_data();
    void unencodableTemperatureKeepsTheStoredList();
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
    QCOMPARE(presets.activePreset()->name, QStringLiteral("Fix"));
    QCOMPARE(presets.activePreset()->providerID,
             onDevice ? QStringLiteral("onDevice") : QStringLiteral("groq"));
    QCOMPARE(settings.data(PresetStore::presetsKey()), *Preset::encodeList(presets.presets()));
    QCOMPARE(settings.text(PresetStore::activePresetKey()),
             Preset::idText(presets.presets().first().id));
    QCOMPARE(PresetStore(settings).presets(), presets.presets());
}

void PresetStoreTest::seedingLeavesAFilledStoreAlone() {
    InMemorySettingsStore settings;
    const QList<Preset> existing = lettered(QStringLiteral("AB"));
    store(settings, existing, existing[1].id);
    PresetStore presets(settings);
    const int writes = settings.writeCount();
    presets.seedIfEmpty(true);
    QCOMPARE(presets.presets(), existing);
    QCOMPARE(settings.writeCount(), writes);
}

void PresetStoreTest::loadingFallsBack_data() {
    QTest::addColumn<QByteArray>("data");
    QTest::addColumn<QString>("active");
    QTest::addColumn<int>("count");
    QTest::addColumn<int>("activeIndex"); // -1: none

    const QList<Preset> two = lettered(QStringLiteral("AB"));
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
    if (activeIndex < 0) {
        QVERIFY(!presets.activePresetID());
        QVERIFY(!presets.activePreset());
    } else {
        QCOMPARE(presets.activePresetID(), presets.presets()[activeIndex].id);
    }
}

void PresetStoreTest::remove_data() {
    QTest::addColumn<QString>("names");
    QTest::addColumn<int>("activeIndex");
    QTest::addColumn<int>("removeIndex"); // -1: an identifier not in the list
    QTest::addColumn<QString>("remaining");
    QTest::addColumn<QString>("nextName");
    QTest::addColumn<QString>("activeName");

    QTest::newRow("active last preset") << "ABC" << 2 << 2 << "AB"
                                        << "B"
                                        << "B";
    QTest::newRow("active middle preset") << "ABC" << 1 << 1 << "AC"
                                          << "C"
                                          << "C";
    QTest::newRow("active first preset") << "ABC" << 0 << 0 << "BC"
                                         << "B"
                                         << "B";
    QTest::newRow("inactive preset") << "ABC" << 0 << 1 << "AC"
                                     << "C"
                                     << "A";
    QTest::newRow("inactive last preset") << "ABC" << 1 << 2 << "AB"
                                          << "B"
                                          << "B";
    QTest::newRow("unknown identifier") << "ABC" << 1 << -1 << "ABC"
                                        << "A"
                                        << "B";
    QTest::newRow("two presets") << "AB" << 1 << 1 << "A"
                                 << "A"
                                 << "A";
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
    store(settings, initial, initial[activeIndex].id);
    PresetStore presets(settings);

    const QUuid id = removeIndex < 0 ? QUuid::createUuid() : initial[removeIndex].id;
    const std::optional<QUuid> next = presets.remove(id);
    QCOMPARE(namesOf(presets.presets()), remaining);
    QVERIFY(next);
    QCOMPARE(presets.preset(*next)->name, nextName);
    QCOMPARE(presets.activePreset()->name, activeName);
    // What is stored matches what is held.
    PresetStore reloaded(settings);
    QCOMPARE(reloaded.presets(), presets.presets());
    QCOMPARE(reloaded.activePresetID(), presets.activePresetID());
}

void PresetStoreTest::removingTheLastPresetChangesNothing() {
    InMemorySettingsStore settings;
    const QList<Preset> one = lettered(QStringLiteral("A"));
    store(settings, one, one[0].id);
    PresetStore presets(settings);
    const int writes = settings.writeCount();
    QCOMPARE(presets.remove(one[0].id), std::optional<QUuid>(one[0].id));
    QCOMPARE(presets.presets(), one);
    QCOMPARE(settings.writeCount(), writes);
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
    const QList<Preset> initial = lettered(QStringLiteral("ABCDE"));
    store(settings, initial, initial[2].id);
    PresetStore presets(settings);
    presets.move(sources, destination);
    QCOMPARE(namesOf(presets.presets()), result);
    QCOMPARE(presets.activePreset()->name, QStringLiteral("C")); // identity, not position
    QCOMPARE(namesOf(PresetStore(settings).presets()), result);
}

void PresetStoreTest::updateWritesOnlyWhenSomethingChanged() {
    InMemorySettingsStore settings;
    const QList<Preset> initial = lettered(QStringLiteral("AB"));
    store(settings, initial, initial[0].id);
    PresetStore presets(settings);
    QSignalSpy spy(&presets, &PresetStore::presetsChanged);
    const int writes = settings.writeCount();

    presets.update(initial[1]); // identical
    QCOMPARE(settings.writeCount(), writes);
    QCOMPARE(spy.count(), 0);

    Preset unknown = initial[1];
    unknown.id = QUuid::createUuid();
    unknown.name = QStringLiteral("Z");
    presets.update(unknown); // no such preset
    QCOMPARE(settings.writeCount(), writes);
    QCOMPARE(namesOf(presets.presets()), QStringLiteral("AB"));

    Preset changed = initial[1];
    changed.temperature.reset();
    presets.update(changed);
    QVERIFY(settings.writeCount() > writes);
    QCOMPARE(spy.count(), 1);
    QCOMPARE(presets.presets()[1], changed);
    QCOMPARE(PresetStore(settings).presets()[1], changed);
}

void PresetStoreTest::activateIgnoresUnknownIdentifiers() {
    InMemorySettingsStore settings;
    const QList<Preset> initial = lettered(QStringLiteral("AB"));
    store(settings, initial, initial[0].id);
    PresetStore presets(settings);
    QSignalSpy spy(&presets, &PresetStore::activePresetIDChanged);

    presets.activate(QUuid::createUuid());
    QCOMPARE(presets.activePresetID(), initial[0].id);
    QCOMPARE(spy.count(), 0);

    presets.activate(initial[1].id);
    QCOMPARE(presets.activePresetID(), initial[1].id);
    QCOMPARE(spy.count(), 1);
    QCOMPARE(settings.text(PresetStore::activePresetKey()), Preset::idText(initial[1].id));

    presets.setActivePresetID(std::nullopt);
    QVERIFY(!settings.contains(PresetStore::activePresetKey()));
    QCOMPARE(presets.activePreset()->name, QStringLiteral("A")); // the first stands in
}

void PresetStoreTest::addAppendsWithoutChangingTheActivePreset() {
    InMemorySettingsStore settings;
    const QList<Preset> initial = lettered(QStringLiteral("AB"));
    store(settings, initial, initial[1].id);
    PresetStore presets(settings);
    presets.add(named(QStringLiteral("C")));
    QCOMPARE(namesOf(presets.presets()), QStringLiteral("ABC"));
    QCOMPARE(presets.activePreset()->name, QStringLiteral("B"));
    QCOMPARE(namesOf(PresetStore(settings).presets()), QStringLiteral("ABC"));
}

void PresetStoreTest::newPresetTemplate() {
    InMemorySettingsStore settings;
    PresetStore empty(settings);
    const Preset fallback = empty.newPresetTemplate();
    const Preset fix = builtInPresets(false).first();
    QCOMPARE(fallback.name, QStringLiteral("New Preset"));
    QCOMPARE(fallback.providerID, QStringLiteral("groq"));
    QCOMPARE(fallback.instructions, fix.instructions);
    QVERIFY(!fallback.validatesEdits); // cleared even though "Fix" sets it
    QCOMPARE(fallback.temperature, fix.temperature);

    Preset source = named(QStringLiteral("Source"));
    source.customBaseURL = QStringLiteral("http://localhost:1234/v1");
    source.reasoningEffort = QStringLiteral("high");
    source.validatesEdits = true;
    const Preset copy = empty.newPresetTemplate(source);
    QVERIFY(copy.id != source.id && !copy.id.isNull());
    QCOMPARE(copy.name, QStringLiteral("New Preset"));
    QCOMPARE(copy.customBaseURL, source.customBaseURL);
    QCOMPARE(copy.reasoningEffort, source.reasoningEffort);
    QCOMPARE(copy.model, source.model);
    QVERIFY(!copy.validatesEdits);

    const QList<Preset> initial = lettered(QStringLiteral("AB"));
    store(settings, initial, initial[1].id);
    PresetStore filled(settings);
    QCOMPARE(filled.newPresetTemplate().instructions, QStringLiteral("Rewrite as B would."));
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
    const QList<Preset> initial = lettered(QStringLiteral("AB"));
    store(settings, initial, initial[0].id);
    const std::optional<QByteArray> before = settings.data(PresetStore::presetsKey());
    PresetStore presets(settings);

    Preset odd = initial[1];
    odd.temperature = temperature;
    presets.update(odd);
    presets.activate(initial[1].id);
    QCOMPARE(settings.data(PresetStore::presetsKey()), before);
    QVERIFY(before && !before->contains("null"));
    QCOMPARE(settings.text(PresetStore::activePresetKey()), Preset::idText(initial[1].id));
    QCOMPARE(PresetStore(settings).presets(), initial);
}

QTEST_GUILESS_MAIN(PresetStoreTest)
#include "tst_PresetStore.moc"
