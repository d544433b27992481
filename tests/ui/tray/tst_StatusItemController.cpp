#include "core/pipeline/RewriteCoordinator.h"
#include "core/presets/PresetStore.h"
#include "platform/linux/NoOpAnnouncer.h"
#include "support/FakeTransformer.h"
#include "support/InMemorySettingsStore.h"
#include "ui/tray/StatusItemController.h"

#include <QMenu>
#include <QtTest>

using namespace scrivel;

class StatusItemControllerTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void menuShowsTheModel() {
        InMemorySettingsStore settings;
        PresetStore store(settings);
        store.seedIfEmpty(false);
        test::FakeTransformer transformer;
        RewriteCoordinator coordinator(transformer);
        NoOpAnnouncer announcer;
        StatusItemController controller(coordinator, store, announcer);
        QTRY_COMPARE(controller.model().statusLine(), QStringLiteral("Status: Fix · Ready"));

        const QList<QAction*> items = controller.menu().actions();
        QStringList titles;
        for (QAction* item : items)
            titles.append(item->isSeparator() ? QStringLiteral("-") : item->text());
        QCOMPARE(titles, (QStringList{"Status: Fix · Ready", "-", "Open Panel", "Preset", "-",
                                      "Settings…", "-", "Quit Scrivel"}));
        QVERIFY(!items[0]->isEnabled());
        QCOMPARE(controller.openPanelAction(), items[2]);
        // Keys that only work in the main window are not shown here.
        QVERIFY(items[5]->shortcut().isEmpty());
        QVERIFY(items[7]->shortcut().isEmpty());
        QCOMPARE(controller.trayIcon().toolTip(), QStringLiteral("Scrivel"));

        // The preset submenu: store order, the active one checked, and a
        // choice moves the check at once.
        QMenu* presets = items[3]->menu();
        QVERIFY(presets);
        QCOMPARE(presets->actions().size(), 3);
        QVERIFY(presets->actions()[0]->isChecked());
        presets->actions()[2]->trigger();
        QCOMPARE(store.activePreset()->id, store.presets()[2].id);
        QVERIFY(!presets->actions()[0]->isChecked() && presets->actions()[2]->isChecked());

        controller.model().applyState(
            OperationUIState::error(QStringLiteral("Timed out. Try again.")));
        QCOMPARE(controller.trayIcon().toolTip(), QStringLiteral("Timed out. Try again."));
        QCOMPARE(controller.menu().actions()[0]->text(),
                 QStringLiteral("Status: Timed out. Try again."));
    }
};

QTEST_MAIN(StatusItemControllerTest)
#include "tst_StatusItemController.moc"
