#include "core/editor/MainWindowModel.h"
#include "core/presets/PresetStore.h"
#include "core/providers/ProviderCatalog.h"
#include "support/InMemorySettingsStore.h"

#include <QtTest>

using namespace scrivel;

class MainWindowModelTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init();
    void addCopiesTheSelectedOrTheActivePreset_data();
    void addCopiesTheSelectedOrTheActivePreset();
    void deletionAsksThenSelectsWhatTheStoreNames();
    void theLastPresetIsNeverDeleted();
    void exportSelectedOnlyForAPreset();
    void openingPreparesTheSelection();
    void importSelectsTheFirstAffectedPreset();
    void movingByOne_data();
    void movingByOne();
    void sidebarSubtitle_data();
    void sidebarSubtitle();

private:
    std::unique_ptr<InMemorySettingsStore> m_settings;
    std::unique_ptr<PresetStore> m_store;
    std::unique_ptr<MainWindowModel> m_model;
};

void MainWindowModelTest::init() {
    m_settings = std::make_unique<InMemorySettingsStore>();
    m_store = std::make_unique<PresetStore>(*m_settings);
    m_store->seedIfEmpty(false);
    QVERIFY(m_store->presets().size() >= 3);
    m_model = std::make_unique<MainWindowModel>(*m_store);
}

void MainWindowModelTest::addCopiesTheSelectedOrTheActivePreset_data() {
    QTest::addColumn<int>("selectedIndex"); // -1: nothing, -2: settings
    QTest::addColumn<int>("activeIndex");
    QTest::addColumn<int>("sourceIndex");
    QTest::newRow("selected wins") << 2 << 1 << 2;
    QTest::newRow("nothing selected: active") << -1 << 1 << 1;
    QTest::newRow("settings selected: active") << -2 << 2 << 2;
}

void MainWindowModelTest::addCopiesTheSelectedOrTheActivePreset() {
    QFETCH(int, selectedIndex);
    QFETCH(int, activeIndex);
    QFETCH(int, sourceIndex);
    const QList<Preset> before = m_store->presets();
    m_store->activate(before[activeIndex].id);
    if (selectedIndex >= 0)
        m_model->setSelection(MainSidebarItem::preset(before[selectedIndex].id));
    else if (selectedIndex == -2)
        m_model->setSelection(MainSidebarItem::settings());

    const QUuid added = m_model->addPreset();
    QCOMPARE(m_store->presets().size(), before.size() + 1);
    const Preset copy = m_store->presets().last();
    QCOMPARE(copy.id, added);
    QCOMPARE(copy.name, QStringLiteral("New Preset"));
    QCOMPARE(copy.instructions, before[sourceIndex].instructions);
    QCOMPARE(copy.providerID, before[sourceIndex].providerID);
    QCOMPARE(m_model->selection(), MainSidebarItem::preset(added));
    QCOMPARE(m_store->activePresetID(), before[activeIndex].id);
}

void MainWindowModelTest::deletionAsksThenSelectsWhatTheStoreNames() {
    const QList<Preset> before = m_store->presets();
    m_model->setSelection(MainSidebarItem::preset(before[1].id));
    m_model->requestDeletionOfSelection();
    QVERIFY(m_model->isShowingDeleteConfirmation());
    QCOMPARE(m_model->presetPendingDeletion()->id, before[1].id);
    QCOMPARE(MainWindowModel::deleteConfirmationMessage(*m_model->presetPendingDeletion()),
             QStringLiteral("“%1” will be permanently deleted.").arg(before[1].name));
    m_model->cancelDeletion();
    QCOMPARE(m_store->presets().size(), before.size());

    m_model->requestDeletion(before[1].id);
    m_model->confirmDeletion();
    QVERIFY(!m_model->isShowingDeleteConfirmation());
    QCOMPARE(m_store->presets().size(), before.size() - 1);
    QVERIFY(!m_store->preset(before[1].id));
    QVERIFY(m_model->selection() && m_model->selection()->isPreset());
    QVERIFY(m_store->preset(m_model->selection()->presetID()));
}

void MainWindowModelTest::theLastPresetIsNeverDeleted() {
    while (m_store->presets().size() > 1)
        m_store->remove(m_store->presets().last().id);
    const Preset last = m_store->presets().first();
    m_model->setSelection(MainSidebarItem::preset(last.id));
    QVERIFY(!m_model->canDeleteSelection());
    m_model->requestDeletion(last.id);
    m_model->confirmDeletion();
    QCOMPARE(m_store->presets(), QList<Preset>{last});
    QCOMPARE(m_model->selection(), MainSidebarItem::preset(last.id));
}

void MainWindowModelTest::exportSelectedOnlyForAPreset() {
    const auto offered = [this](const std::optional<MainSidebarItem>& selection) {
        m_model->setSelection(selection);
        return m_model->canExportSelected();
    };
    QVERIFY(offered(MainSidebarItem::preset(m_store->presets().first().id)));
    QVERIFY(!offered(MainSidebarItem::settings()));
    QVERIFY(!offered(std::nullopt));
    QVERIFY(!offered(MainSidebarItem::preset(QUuid::createUuid()))); // a preset that is gone
}

void MainWindowModelTest::openingPreparesTheSelection() {
    const QList<Preset> presets = m_store->presets();
    m_store->activate(presets[2].id);
    m_model->prepareSelection(false);
    QCOMPARE(m_model->selection(), MainSidebarItem::preset(presets[2].id));
    m_model->setSelection(MainSidebarItem::preset(presets[1].id));
    m_model->prepareSelection(false);
    QCOMPARE(m_model->selection(), MainSidebarItem::preset(presets[1].id));
    m_model->prepareSelection(true);
    QCOMPARE(m_model->selection(), MainSidebarItem::settings());
    m_model->prepareSelection(false);
    QCOMPARE(m_model->selection(), MainSidebarItem::preset(presets[2].id));
    // On one preset ("Open Presets…" after a failed run), whatever was shown.
    m_model->prepareSelection(presets[0].id);
    QCOMPARE(m_model->selection(), MainSidebarItem::preset(presets[0].id));
    m_model->prepareSelection(QUuid::createUuid()); // gone: the rule above
    QCOMPARE(m_model->selection(), MainSidebarItem::preset(presets[0].id));
}

void MainWindowModelTest::importSelectsTheFirstAffectedPreset() {
    const QList<Preset> presets = m_store->presets();
    m_model->setSelection(MainSidebarItem::preset(presets[0].id));
    m_model->didImport(QUuid::createUuid()); // names nothing in the store
    QCOMPARE(m_model->selection(), MainSidebarItem::preset(presets[0].id));
    m_model->didImport(std::nullopt);
    QCOMPARE(m_model->selection(), MainSidebarItem::preset(presets[0].id));
    m_model->didImport(presets[2].id);
    QCOMPARE(m_model->selection(), MainSidebarItem::preset(presets[2].id));
}

void MainWindowModelTest::movingByOne_data() {
    QTest::addColumn<int>("index");
    QTest::addColumn<int>("step");
    QTest::addColumn<QList<int>>("order"); // the old indices, in the new order; empty: no move
    QTest::newRow("first up") << 0 << -1 << QList<int>();
    QTest::newRow("first down") << 0 << 1 << QList<int>{1, 0, 2};
    QTest::newRow("middle up") << 1 << -1 << QList<int>{1, 0, 2};
    QTest::newRow("middle down") << 1 << 1 << QList<int>{0, 2, 1};
    QTest::newRow("last up") << 2 << -1 << QList<int>{0, 2, 1};
    QTest::newRow("last down") << 2 << 1 << QList<int>();
}

void MainWindowModelTest::movingByOne() {
    QFETCH(int, index);
    QFETCH(int, step);
    QFETCH(QList<int>, order);
    const QList<Preset> before = m_store->presets();
    const QUuid id = before[index].id;
    m_model->setSelection(MainSidebarItem::preset(id));
    QCOMPARE(m_model->canMove(id, step), !order.isEmpty());
    m_model->move(id, step);
    QList<Preset> expected;
    for (int old : order)
        expected.append(before[old]);
    QCOMPARE(m_store->presets(), order.isEmpty() ? before : expected);
    // The moved preset stays selected.
    QCOMPARE(m_model->selection(), MainSidebarItem::preset(id));
}

void MainWindowModelTest::sidebarSubtitle_data() {
    QTest::addColumn<QString>("providerID");
    QTest::addColumn<QString>("modelName");
    QTest::addColumn<QString>("subtitle");
    const QString openai = QStringLiteral("openai");
    QTest::newRow("cloud with model") << openai << QStringLiteral("gpt-4o") << "OpenAI · gpt-4o";
    QTest::newRow("cloud without model") << openai << QString() << "OpenAI";
    QTest::newRow("on device ignores model")
        << QStringLiteral("onDevice") << QStringLiteral("x") << "On Device";
}

void MainWindowModelTest::sidebarSubtitle() {
    QFETCH(QString, providerID);
    QFETCH(QString, modelName);
    QFETCH(QString, subtitle);
    Preset preset;
    preset.providerID = providerID;
    preset.model = modelName;
    QCOMPARE(MainWindowModel::sidebarSubtitle(preset), subtitle);
}

QTEST_GUILESS_MAIN(MainWindowModelTest)
#include "tst_MainWindowModel.moc"
