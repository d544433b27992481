#include "core/shortcuts/KeyboardShortcuts.h"
#include "support/FakeHotKeyService.h"
#include "support/InMemorySettingsStore.h"
#include "ui/settings/GlobalShortcutField.h"

#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QtTest>

using namespace scrivel;
using Status = GlobalShortcutStatus;

Q_DECLARE_METATYPE(GlobalShortcutStatus)

class GlobalShortcutFieldTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    // The recorder only where keys are grabbed; elsewhere the desktop's keys
    // or the command to bind, never the stored shortcut.
    void showsWhatTheSessionDelivers_data() {
        QTest::addColumn<GlobalShortcutStatus>("status");
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("change");
        const QString bind = QStringLiteral(
            " Bind the command “scrivel --toggle” to a shortcut in your desktop’s keyboard "
            "settings.");
        QTest::newRow("key grabs") << Status() << QString() << false;
        QTest::newRow("asking the desktop")
            << Status::pending() << QStringLiteral("Asking the desktop for the shortcut…") << false;
        QTest::newRow("desktop's keys")
            << Status::bound("Ctrl+Alt+Return", true) << QStringLiteral("Ctrl+Alt+Return") << true;
        QTest::newRow("desktop without a dialog") << Status::bound("Ctrl+Alt+Return", false)
                                                  << QStringLiteral("Ctrl+Alt+Return") << false;
        QTest::newRow("no keys yet")
            << Status::bound(QString(), true)
            << QStringLiteral("No keys assigned yet: choose them with Change…") << true;
        QTest::newRow("no portal")
            << Status::unavailable(Status::Reason::noPortal)
            << QStringLiteral("This desktop offers apps no global shortcut.") + bind << false;
        QTest::newRow("declined")
            << Status::unavailable(Status::Reason::refused)
            << QStringLiteral("The desktop declined Scrivel’s global shortcut.") + bind << false;
        QTest::newRow("failed")
            << Status::unavailable(Status::Reason::failed)
            << QStringLiteral("The desktop’s shortcut service did not answer.") + bind << false;
    }
    void showsWhatTheSessionDelivers() {
        QFETCH(GlobalShortcutStatus, status);
        QFETCH(QString, text);
        QFETCH(bool, change);
        test::FakeHotKeyService service;
        InMemorySettingsStore settings;
        KeyboardShortcuts shortcuts(settings, service);
        int recordersMade = 0;
        GlobalShortcutField field(shortcuts, [&](QWidget* parent) {
            ++recordersMade;
            return new QLineEdit(QStringLiteral("Ctrl+Alt+Return"), parent);
        });
        field.show();
        // The status may change at any time: from the recorder to the
        // desktop's answer and back.
        service.setStatus(status);
        const bool grabs = status.kind == Status::Kind::keyGrabs;
        QCOMPARE(field.recorder() != nullptr, grabs);
        QCOMPARE(field.statusText()->isVisible(), !grabs);
        if (!grabs)
            QCOMPARE(field.statusText()->text(), text);
        QCOMPARE(field.changeButton()->isVisible(), change);
        if (change) {
            QTest::mouseClick(field.changeButton(), Qt::LeftButton);
            QCOMPARE(service.configureRequests.size(), 1);
        }
        service.setStatus(Status());
        QVERIFY(field.recorder() && field.recorder()->isVisible());
        QVERIFY(!field.statusText()->isVisible() && !field.changeButton()->isVisible());
        QCOMPARE(recordersMade, grabs ? 1 : 2);
    }
};

QTEST_MAIN(GlobalShortcutFieldTest)
#include "tst_GlobalShortcutField.moc"
