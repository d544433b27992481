#include "core/pipeline/RewriteCoordinator.h"
#include "core/presets/PresetStore.h"
#include "platform/linux/NoOpAnnouncer.h"
#include "support/FakeStatusNotifierWatcher.h"
#include "support/FakeTransformer.h"
#include "support/InMemorySettingsStore.h"
#include "ui/tray/StatusItemController.h"

#include <QApplication>
#include <QDBusConnection>
#include <QMenu>
#include <QSignalSpy>
#include <QtTest>

using namespace scrivel;
using test::FakeStatusNotifierWatcher;

// The tray item where the host is a StatusNotifierWatcher: Qt exports the
// item and its menu over D-Bus, and the host (a double on its own
// connection) draws them and reports the menu's opening and closing.
class StatusNotifierMenuTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() {
        if (QGuiApplication::platformName() != QLatin1String("xcb"))
            QSKIP("needs an X display for Qt's D-Bus tray (scripts/test provides Xvfb)");
        if (!QDBusConnection::sessionBus().isConnected())
            QSKIP("needs a session bus (scripts/test runs one)");
        QVERIFY(m_watcher && m_watcher->isServing());
    }

    void init() {
        m_settings = std::make_unique<InMemorySettingsStore>();
        m_store = std::make_unique<PresetStore>(*m_settings);
        m_store->seedIfEmpty(false);
        m_transformer = std::make_unique<test::FakeTransformer>();
        m_coordinator = std::make_unique<RewriteCoordinator>(*m_transformer);
        m_shortcutLog.clear();
        m_presented = 0;
        m_controller =
            std::make_unique<StatusItemController>(*m_coordinator, *m_store, m_announcer);
        connect(&m_controller->model(), &StatusItemModel::panelRequested, this,
                [this] { ++m_presented; });
        connect(&m_controller->model(), &StatusItemModel::shortcutEnabledChanged, this,
                [this](bool enabled) { m_shortcutLog.append(enabled); });
        m_controller->setExportedMenuBound(std::chrono::milliseconds(300));
        QTRY_VERIFY(!m_watcher->items.isEmpty());
        QTRY_VERIFY(m_controller->isMenuExported());
    }

    void cleanup() {
        m_controller.reset();
        m_watcher->items.clear();
    }

    void itemShowsEveryLookAndTooltip() {
        QTRY_COMPARE(m_watcher->itemToolTip(), QStringLiteral("Scrivel"));
        QSet<QByteArray> icons{m_watcher->itemIcon()};
        StatusItemModel& model = m_controller->model();
        model.applyState(OperationUIState::working());
        QTRY_COMPARE(m_watcher->itemToolTip(), QStringLiteral("Working"));
        icons.insert(m_watcher->itemIcon());
        model.applyState(OperationUIState::success());
        QTRY_COMPARE(m_watcher->itemToolTip(), QStringLiteral("Complete"));
        icons.insert(m_watcher->itemIcon());
        model.applyState(OperationUIState::error(QStringLiteral("Timed out. Try again.")));
        QTRY_COMPARE(m_watcher->itemToolTip(), QStringLiteral("Timed out. Try again."));
        icons.insert(m_watcher->itemIcon());
        // Wand, progress, check mark, triangle: four different pictures.
        QCOMPARE(icons.size(), 4);
    }

    void menuListsThePanelThePresetsAndQuit() {
        const test::DBusMenuNode menu = m_watcher->menuLayout();
        QCOMPARE(menu.childLabels().mid(1),
                 (QStringList{"-", "Open Panel", "Preset", "-", "Settings…", "-", "Quit Scrivel"}));
        QVERIFY(menu.childLabels().first().startsWith("Status: "));
        const test::DBusMenuNode* presets = menu.child(QStringLiteral("Preset"));
        QVERIFY(presets);
        QCOMPARE(presets->childLabels(), (QStringList{"Fix", "Make Concise", "Improve Prompt"}));
        QCOMPARE(presets->children[0].properties.value("toggle-state").toInt(), 1);
        QCOMPARE(presets->children[1].properties.value("toggle-state").toInt(), 0);
    }

    // However the host reports it, the shortcut is paused while the menu is
    // open and always resumed.
    void theShortcutResumesAfterTheMenu_data() {
        QTest::addColumn<QStringList>("events");
        QTest::addColumn<int>("presented");
        QTest::newRow("AboutToShow, closed") << QStringList{"closed"} << 0;
        QTest::newRow("AboutToShow, opened, closed") << QStringList{"opened", "closed"} << 0;
        QTest::newRow("no closed: the bound") << QStringList{} << 0;
        QTest::newRow("Open Panel clicked, no closed") << QStringList{"Open Panel"} << 1;
        QTest::newRow("Open Panel clicked, then closed")
            << QStringList{"Open Panel", "closed"} << 1;
    }
    void theShortcutResumesAfterTheMenu() {
        QFETCH(QStringList, events);
        QFETCH(int, presented);
        const test::DBusMenuNode menu = m_watcher->menuLayout();
        QVERIFY(m_watcher->aboutToShow(0));
        QTRY_COMPARE(m_shortcutLog, QList<bool>{false});
        QVERIFY(m_controller->model().isMenuOpen());
        for (const QString& event : events) {
            if (const test::DBusMenuNode* item = menu.child(event))
                QVERIFY(m_watcher->menuEvent(item->id, QStringLiteral("clicked")));
            else
                QVERIFY(m_watcher->menuEvent(0, event));
        }
        QTRY_COMPARE(m_shortcutLog, (QList<bool>{false, true}));
        QVERIFY(!m_controller->model().isMenuOpen());
        QTRY_COMPARE(m_presented, presented);
        // A late "closed" (or the bound, 300 ms) changes nothing more.
        QSignalSpy shortcutAgain(&m_controller->model(), &StatusItemModel::shortcutEnabledChanged);
        QSignalSpy panelAgain(&m_controller->model(), &StatusItemModel::panelRequested);
        QVERIFY(!shortcutAgain.wait(400));
        QCOMPARE(panelAgain.size(), 0);
    }

public:
    std::unique_ptr<FakeStatusNotifierWatcher> m_watcher;

private:
    std::unique_ptr<InMemorySettingsStore> m_settings;
    std::unique_ptr<PresetStore> m_store;
    std::unique_ptr<test::FakeTransformer> m_transformer;
    std::unique_ptr<RewriteCoordinator> m_coordinator;
    NoOpAnnouncer m_announcer;
    std::unique_ptr<StatusItemController> m_controller;
    QList<bool> m_shortcutLog;
    int m_presented = 0;
};

int main(int argc, char* argv[]) {
    // Qt's D-Bus tray lives in the desktop platform themes, not offscreen.
    if (!qEnvironmentVariableIsEmpty("DISPLAY"))
        qputenv("QT_QPA_PLATFORM", "xcb");
    QApplication app(argc, argv);
    StatusNotifierMenuTest test;
    // The host must be there before the first tray icon: Qt asks once.
    QDBusConnection hostBus =
        QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("tray-host"));
    if (hostBus.isConnected())
        test.m_watcher = std::make_unique<FakeStatusNotifierWatcher>(hostBus);
    const int result = QTest::qExec(&test, argc, argv);
    test.m_watcher.reset();
    return result;
}

#include "tst_StatusNotifierMenu.moc"
