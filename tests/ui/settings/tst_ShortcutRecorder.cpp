#include "core/shortcuts/KeyboardShortcuts.h"
#include "support/FakeHotKeyService.h"
#include "support/InMemorySettingsStore.h"
#include "ui/settings/ShortcutActionBinding.h"
#include "ui/settings/ShortcutRecorder.h"

#include <QAction>
#include <QApplication>
#include <QLineEdit>
#include <QMenu>
#include <QMessageBox>
#include <QPushButton>
#include <QToolButton>
#include <QVBoxLayout>
#include <QtTest>

using namespace scrivel;
using test::FakeHotKeyService;

namespace {

const ShortcutName& rewrite = ShortcutName::rewriteFocusedField();
const Shortcut ctrlAltT{0x11, 6144};

QMessageBox* openAlert() {
    QMessageBox* found = nullptr;
    (void)QTest::qWaitFor([&] {
        for (QWidget* w : QApplication::topLevelWidgets()) {
            if (auto* box = qobject_cast<QMessageBox*>(w); box && box->isVisible())
                found = box;
        }
        return found != nullptr;
    });
    return found;
}

} // namespace

class ShortcutRecorderTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() {
        m_settings = std::make_unique<InMemorySettingsStore>();
        m_service = std::make_unique<FakeHotKeyService>();
        m_shortcuts = std::make_unique<KeyboardShortcuts>(*m_settings, *m_service);
        m_shortcuts->setErrorLineWriter([](const QByteArray&) {});
        m_shortcuts->onKeyUp(rewrite, [] {});
        m_service->takenByOthers.insert(ctrlAltT);

        m_window = std::make_unique<QWidget>();
        m_menu = new QMenu(QStringLiteral("File"), m_window.get());
        m_menu->addAction(QStringLiteral("&Quit Scrivel"))
            ->setShortcut(QKeySequence(QStringLiteral("Ctrl+Q")));
        auto* layout = new QVBoxLayout(m_window.get());
        m_recorder = new ShortcutRecorder(*m_shortcuts, rewrite, [this](const Shortcut& s) {
            return ShortcutActionBinding::menuItemUsing(QList{m_menu}, s);
        });
        m_next = new QLineEdit;
        layout->addWidget(m_recorder);
        layout->addWidget(m_next);
        m_window->show();
        QApplication::setActiveWindow(m_window.get());
        QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
        m_next->setFocus();
        m_recorder->setFocus(Qt::TabFocusReason);
        QTRY_VERIFY(m_recorder->model().isRecording());
    }

    void cleanup() {
        m_window.reset();
        m_shortcuts.reset();
    }

    void recordsAndClears() {
        QVERIFY(m_shortcuts->isRecorderActive());
        QCOMPARE(m_recorder->text(), QStringLiteral("Press Shortcut…"));
        QTest::keyClick(m_recorder, Qt::Key_K, Qt::ControlModifier | Qt::ShiftModifier);
        QCOMPARE(m_recorder->text(), QStringLiteral("Ctrl+Shift+K"));
        QVERIFY(!m_shortcuts->isRecorderActive());
        QVERIFY(m_service->isRegistered(Shortcut{0x28, 4608}));

        QAction* clear = m_recorder->actions().first();
        QVERIFY(clear->isVisible());
        clear->trigger();
        QCOMPARE(m_recorder->text(), QString());
        QCOMPARE(m_settings->boolean(rewrite.settingsKey()), std::optional(false));
        QVERIFY(m_service->registered().isEmpty());
    }

    void currentShortcutIsRecordedNotFired() {
        // Recording lets the grab go: the combination reaches the field.
        QVERIFY(!m_service->isRegistered(Shortcut{36, 6144}));
        QTest::keyClick(m_recorder, Qt::Key_Return, Qt::ControlModifier | Qt::AltModifier);
        QVERIFY(!m_recorder->model().isRecording());
        QCOMPARE(m_recorder->text(), QStringLiteral("Ctrl+Alt+Return"));
        QVERIFY(m_service->isRegistered(Shortcut{36, 6144}));
    }

    void clearButtonClearsRightAfterRecording() {
        QTest::keyClick(m_recorder, Qt::Key_K, Qt::ControlModifier | Qt::ShiftModifier);
        QTest::mouseClick(m_next, Qt::LeftButton); // recording is over, focus elsewhere
        QVERIFY(m_next->hasFocus());
        QToolButton* clear = nullptr;
        for (QToolButton* button : m_recorder->findChildren<QToolButton*>())
            if (button->defaultAction() == m_recorder->actions().first())
                clear = button;
        QVERIFY(clear && clear->isVisible());
        QTest::mouseClick(clear, Qt::LeftButton);
        QVERIFY(!m_recorder->model().isRecording());
        QCOMPARE(m_recorder->text(), QString());
        QCOMPARE(m_shortcuts->shortcut(rewrite), std::nullopt);
        // A click on the field itself records.
        QTest::mouseClick(m_next, Qt::LeftButton);
        QTest::mouseClick(m_recorder, Qt::LeftButton, {}, QPoint(8, m_recorder->height() / 2));
        QVERIFY(m_recorder->model().isRecording());
    }

    void escapeKeepsAndTabMovesOn() {
        QTest::keyClick(m_recorder, Qt::Key_Escape);
        QVERIFY(!m_recorder->model().isRecording());
        QCOMPARE(m_recorder->text(), QStringLiteral("Ctrl+Alt+Return"));

        m_recorder->setFocus(Qt::TabFocusReason);
        QVERIFY(m_recorder->model().isRecording());
        QTest::keyClick(m_recorder, Qt::Key_Tab);
        QTRY_VERIFY(m_next->hasFocus());
        QVERIFY(!m_shortcuts->isRecorderActive());
        QCOMPARE(m_recorder->text(), QStringLiteral("Ctrl+Alt+Return"));
    }

    void combinationsInUseRaiseAnAlert() {
        // A menu item's: refused, recording goes on.
        QTest::keyClick(m_recorder, Qt::Key_Q, Qt::ControlModifier);
        QMessageBox* box = openAlert();
        QVERIFY(box);
        QVERIFY2(box->text().contains(QStringLiteral("“Quit Scrivel”")), qPrintable(box->text()));
        box->button(QMessageBox::Ok)->click();
        QCOMPARE(m_shortcuts->shortcut(rewrite), std::optional(Shortcut{36, 6144}));

        // Another client's: OK by default, or Use Anyway.
        QTest::keyClick(m_recorder, Qt::Key_T, Qt::ControlModifier | Qt::AltModifier);
        box = openAlert();
        QVERIFY(box);
        QCOMPARE(box->buttons().size(), 2);
        QCOMPARE(box->defaultButton()->text(), QStringLiteral("OK"));
        for (QAbstractButton* button : box->buttons())
            if (button->text() == QStringLiteral("Use Anyway"))
                button->click();
        QCOMPARE(m_shortcuts->shortcut(rewrite), std::optional(ctrlAltT));
        QCOMPARE(m_recorder->text(), QStringLiteral("Ctrl+Alt+T"));
    }

    void boundActionFollowsTheShortcut() {
        QMenu tray;
        QAction* openPanel = tray.addAction(QStringLiteral("Open Panel"));
        ShortcutActionBinding::bind(openPanel, *m_shortcuts, rewrite);
        ShortcutActionBinding::bind(openPanel, *m_shortcuts, rewrite); // replaces, not doubles
        QCOMPARE(openPanel->shortcut(), QKeySequence(QStringLiteral("Ctrl+Alt+Return")));
        m_shortcuts->setShortcut(ctrlAltT, rewrite);
        QCOMPARE(openPanel->shortcut(), QKeySequence(QStringLiteral("Ctrl+Alt+T")));
        m_shortcuts->setShortcut(std::nullopt, rewrite);
        QVERIFY(openPanel->shortcut().isEmpty());
        // Only grabbed keys are promised: not where the desktop binds the
        // shortcut, nor where there is none.
        m_shortcuts->setShortcut(ctrlAltT, rewrite);
        m_service->setStatus(GlobalShortcutStatus::bound(QStringLiteral("Super+Space"), true));
        QVERIFY(openPanel->shortcut().isEmpty());
        m_service->setStatus(
            GlobalShortcutStatus::unavailable(GlobalShortcutStatus::Reason::noPortal));
        QVERIFY(openPanel->shortcut().isEmpty());
        m_service->setStatus(GlobalShortcutStatus());
        QCOMPARE(openPanel->shortcut(), QKeySequence(QStringLiteral("Ctrl+Alt+T")));
        m_shortcuts->setShortcut(std::nullopt, rewrite);

        // The bound item shows the shortcut; it does not compete for it. Items in
        // submenus do.
        m_shortcuts->setShortcut(ctrlAltT, rewrite);
        QMenu* sub = tray.addMenu(QStringLiteral("Presets"));
        QCOMPARE(ShortcutActionBinding::menuItemUsing(QList{&tray}, ctrlAltT), std::nullopt);
        sub->addAction(QStringLiteral("&Rock && Roll"))
            ->setShortcut(QKeySequence(QStringLiteral("Ctrl+Alt+T")));
        QCOMPARE(ShortcutActionBinding::menuItemUsing(QList{&tray}, ctrlAltT),
                 std::optional(QStringLiteral("Rock & Roll")));
        // The whole application's menus: the test window's File menu too.
        QCOMPARE(ShortcutActionBinding::applicationMenuItemUsing(Shortcut{0x0C, 4096}),
                 std::optional(QStringLiteral("Quit Scrivel")));
    }

private:
    std::unique_ptr<InMemorySettingsStore> m_settings;
    std::unique_ptr<FakeHotKeyService> m_service;
    std::unique_ptr<KeyboardShortcuts> m_shortcuts;
    std::unique_ptr<QWidget> m_window;
    ShortcutRecorder* m_recorder = nullptr;
    QLineEdit* m_next = nullptr;
    QMenu* m_menu = nullptr;
};

QTEST_MAIN(ShortcutRecorderTest)
#include "tst_ShortcutRecorder.moc"
