#include "core/panel/FixPanelModel.h"
#include "core/presets/PresetStore.h"
#include "core/selection/SelectionHandoff.h"
#include "core/selection/SelectionPreferences.h"
#include "support/FakeSelectionDesktop.h"
#include "support/FakeTransformer.h"
#include "support/InMemoryClipboard.h"
#include "support/InMemorySettingsStore.h"

#include <QSignalSpy>
#include <QtTest>

using namespace scrivel;
using namespace Qt::StringLiterals;
using test::FakeSelectionDesktop;
using test::FakeTransformer;

Q_DECLARE_METATYPE(SelectionScene)
Q_DECLARE_METATYPE(PasteKeys)

namespace {

constexpr SelectionHandoff::Bounds bounds{
    std::chrono::milliseconds(40), std::chrono::milliseconds(150), std::chrono::milliseconds(150),
    std::chrono::milliseconds(5)};

} // namespace

// The panel and the window the user left: when the selection is taken and
// the panel shown, what a slow or hung owner does to it, and when a copied
// result is pasted back.
class SelectionHandoffTest : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<InMemorySettingsStore> m_settings;
    std::unique_ptr<PresetStore> m_presets;
    std::unique_ptr<FakeTransformer> m_transformer;
    std::unique_ptr<RewriteCoordinator> m_coordinator;
    InMemoryClipboard m_clipboard;
    std::unique_ptr<FixPanelModel> m_model;
    std::unique_ptr<SelectionPreferences> m_preferences;
    std::unique_ptr<FakeSelectionDesktop> m_desktop;
    std::unique_ptr<SelectionHandoff> m_handoff;
    // What happened, in order: "shown", "taken", "started", "pasted",
    // "not pasted".
    QStringList m_events;

    void makeHandoff(bool available = true) {
        m_preferences = std::make_unique<SelectionPreferences>(*m_settings, available);
        m_handoff = std::make_unique<SelectionHandoff>(available ? m_desktop.get() : nullptr,
                                                       *m_preferences, *m_model, bounds);
        connect(m_handoff.get(), &SelectionHandoff::selectionTaken, this,
                [this] { m_events << u"taken"_s; });
        connect(m_handoff.get(), &SelectionHandoff::handBackStarted, this,
                [this] { m_events << u"started"_s; });
        connect(m_handoff.get(), &SelectionHandoff::handBackFinished, this,
                [this](bool pasted) { m_events << (pasted ? u"pasted"_s : u"not pasted"_s); });
    }
    void open() {
        m_handoff->openPanel([this] { m_events << u"shown"_s; });
    }
    void takeAndRun(const QString& result) {
        open();
        m_desktop->answer(PrimarySelection::ofText(u"teh cat"_s));
        QTRY_COMPARE(m_model->text(), u"teh cat"_s);
        m_model->run();
        m_transformer->complete(result);
        QTRY_COMPARE(m_model->stage(), PanelStage::copied());
    }

private Q_SLOTS:
    void init() {
        m_settings = std::make_unique<InMemorySettingsStore>();
        m_presets = std::make_unique<PresetStore>(*m_settings);
        m_presets->seedIfEmpty(false);
        m_presets->activate(m_presets->presets()[1].id); // no edit validation
        m_transformer = std::make_unique<FakeTransformer>();
        m_coordinator = std::make_unique<RewriteCoordinator>(*m_transformer);
        m_model = std::make_unique<FixPanelModel>(*m_presets, *m_coordinator, m_clipboard);
        m_desktop = std::make_unique<FakeSelectionDesktop>();
        m_events.clear();
        makeHandoff();
    }

    void theSelectionIsInThePanelWhenItShows() {
        open();
        QCOMPARE(m_desktop->readLimits, QList<qsizetype>{200000});
        QVERIFY(m_events.isEmpty()); // waiting for the text
        QVERIFY(m_desktop->answer(PrimarySelection::ofText(u"teh café\n"_s)));
        QTRY_COMPARE(m_events, (QStringList{u"shown"_s, u"taken"_s}));
        QCOMPARE(m_model->text(), u"teh café\n"_s);
        QCOMPARE(m_model->stage(), PanelStage::input());
        QCOMPARE(m_handoff->source(), m_desktop->currentScene.focused);
    }

    void otherwiseThePanelShowsAtOnce_data() {
        QTest::addColumn<SelectionScene>("scene");
        QTest::addColumn<bool>("takeSetting");
        QTest::addColumn<bool>("available");
        QTest::addColumn<int>("sceneReads");
        const SelectionScene own = FakeSelectionDesktop::selectionInFocusedWindow();
        SelectionScene elsewhere = own;
        elsewhere.owner = DesktopWindow{0x600003, 0x200020, true, 0x600000};
        QTest::newRow("selection elsewhere") << elsewhere << true << true << 1;
        QTest::newRow("no selection") << SelectionScene{own.focused, {}} << true << true << 1;
        QTest::newRow("setting off") << own << false << true << 0;
        QTest::newRow("not an X11 session") << own << true << false << 0;
    }
    void otherwiseThePanelShowsAtOnce() {
        QFETCH(SelectionScene, scene);
        QFETCH(bool, takeSetting);
        QFETCH(bool, available);
        QFETCH(int, sceneReads);
        m_desktop->currentScene = scene;
        m_settings->setBoolean(SelectionPreferences::takeSelectionKey(), takeSetting);
        makeHandoff(available);
        open();
        QCOMPARE(m_events, QStringList{u"shown"_s});
        QCOMPARE(m_desktop->sceneReads, sceneReads);
        QCOMPARE(m_desktop->readCount(), 0);
    }

    void aSlowOwnerOnlyFillsAnUntouchedPanel_data() {
        QTest::addColumn<bool>("userTypes");
        QTest::newRow("untouched") << false;
        QTest::newRow("typed in meanwhile") << true;
    }
    void aSlowOwnerOnlyFillsAnUntouchedPanel() {
        QFETCH(bool, userTypes);
        open();
        QTRY_COMPARE(m_events, QStringList{u"shown"_s}); // after the grace
        QVERIFY(m_handoff->isReading());
        if (userTypes)
            m_model->setText(u"mine"_s);
        m_desktop->answer(PrimarySelection::ofText(u"teh cat"_s));
        QTRY_VERIFY(!m_handoff->isReading());
        QCOMPARE(m_model->text(), userTypes ? u"mine"_s : u"teh cat"_s);
        QCOMPARE(m_events.contains(u"taken"_s), !userTypes);
    }

    void aHungOwnerIsGivenUp() {
        open();
        QTRY_COMPARE(m_events, QStringList{u"shown"_s});
        QTRY_VERIFY(m_desktop->latestReadCancelled());
        QVERIFY(!m_handoff->isReading());
        QVERIFY(m_model->text().isEmpty());
    }

    void whatTheOwnerGaveDecidesThePanel_data() {
        QTest::addColumn<PrimarySelection>("selection");
        QTest::addColumn<PanelStage>("stage");
        QTest::newRow("too long") << PrimarySelection::overLimit()
                                  << PanelStage::failure(
                                         u"This text is too long for the provider."_s, false);
        QTest::newRow("not text") << PrimarySelection::notText() << PanelStage::input();
        QTest::newRow("blank") << PrimarySelection::ofText(u"  \n"_s) << PanelStage::input();
    }
    void whatTheOwnerGaveDecidesThePanel() {
        QFETCH(PrimarySelection, selection);
        QFETCH(PanelStage, stage);
        open();
        m_desktop->answer(selection);
        QTRY_COMPARE(m_events, QStringList{u"shown"_s});
        QCOMPARE(m_model->text(), QString());
        QCOMPARE(m_model->stage(), stage);
        QVERIFY(!m_handoff->source());
    }

    void closingThePanelDropsTheRead() {
        open();
        m_handoff->panelDidClose();
        QVERIFY(m_desktop->latestReadCancelled());
        QVERIFY(!m_handoff->isReading());
        QVERIFY(m_events.isEmpty());
    }

    void theResultGoesBack_data() {
        QTest::addColumn<bool>("replace");
        QTest::addColumn<QStringList>("windowClass");
        QTest::addColumn<bool>("gone");
        QTest::addColumn<std::optional<int>>("focusAfter");
        QTest::addColumn<QList<PasteKeys>>("typed");
        QTest::addColumn<QStringList>("events");
        const QStringList editor{u"gedit"_s, u"Gedit"_s};
        const QStringList taken{u"shown"_s, u"taken"_s};
        QTest::newRow("pasted") << true << editor << false << std::optional(2)
                                << QList{PasteKeys::ctrlV}
                                << taken + QStringList{u"started"_s, u"pasted"_s};
        QTest::newRow("into a terminal")
            << true << QStringList{u"konsole"_s, u"konsole"_s} << false << std::optional(1)
            << QList{PasteKeys::ctrlShiftV} << taken + QStringList{u"started"_s, u"pasted"_s};
        QTest::newRow("setting off")
            << false << editor << false << std::optional(1) << QList<PasteKeys>{} << taken;
        QTest::newRow("window gone")
            << true << editor << true << std::optional(1) << QList<PasteKeys>{} << taken;
        QTest::newRow("no paste key there") << true << QStringList{u"xterm"_s, u"XTerm"_s} << false
                                            << std::optional(1) << QList<PasteKeys>{} << taken;
        QTest::newRow("focus refused")
            << true << editor << false << std::optional<int>() << QList<PasteKeys>{}
            << taken + QStringList{u"started"_s, u"not pasted"_s};
    }
    void theResultGoesBack() {
        QFETCH(bool, replace);
        QFETCH(QStringList, windowClass);
        QFETCH(bool, gone);
        QFETCH(std::optional<int>, focusAfter);
        QFETCH(QList<PasteKeys>, typed);
        QFETCH(QStringList, events);
        m_preferences->setReplaceSelection(replace);
        m_desktop->currentClass = windowClass;
        if (gone)
            m_desktop->gone.append(m_desktop->currentScene.focused->id);
        m_desktop->takesFocusAfterChecks = focusAfter;
        takeAndRun(u"The cat."_s);
        // The decision is taken on the next turn of the event loop; a
        // hand-back then ends within the focus bound.
        QCoreApplication::processEvents();
        QTRY_COMPARE(m_events, events);
        QVERIFY(!m_handoff->isHandingBack());
        QCOMPARE(m_desktop->typed, typed);
        const bool asked = events.contains(u"started"_s);
        QCOMPARE(m_desktop->activated.size(), asked ? 1 : 0);
    }

    void aTypedTextIsNotPastedAnywhere() {
        m_preferences->setReplaceSelection(true);
        m_desktop->currentScene.owner.reset();
        open();
        m_model->setText(u"teh cat"_s);
        m_model->run();
        m_transformer->complete(u"The cat."_s);
        QTRY_COMPARE(m_model->stage(), PanelStage::copied());
        QCoreApplication::processEvents();
        QVERIFY(m_desktop->activated.isEmpty());
        QCOMPARE(m_events, QStringList{u"shown"_s});
    }

    void aPanelClosedWhileHandingBackTypesNothing() {
        m_preferences->setReplaceSelection(true);
        m_desktop->takesFocusAfterChecks = 4;
        takeAndRun(u"The cat."_s);
        QTRY_VERIFY(m_handoff->isHandingBack());
        m_handoff->panelDidClose();
        QVERIFY(!m_handoff->isHandingBack());
        QVERIFY(m_desktop->typed.isEmpty());
        QVERIFY(!m_events.contains(u"pasted"_s) && !m_events.contains(u"not pasted"_s));
    }
};

QTEST_GUILESS_MAIN(SelectionHandoffTest)
#include "tst_SelectionHandoff.moc"
