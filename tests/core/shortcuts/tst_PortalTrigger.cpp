#include "core/shortcuts/PortalTrigger.h"

#include <QtTest>

using namespace scrivel;

class PortalTriggerTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void storedShortcutsBecomeTriggers_data() {
        QTest::addColumn<int>("keyCode");
        QTest::addColumn<int>("modifiers");
        QTest::addColumn<QString>("trigger");
        const int ctrlAlt = Shortcut::control | Shortcut::option;
        QTest::newRow("the default") << 0x24 << ctrlAlt << QStringLiteral("CTRL+ALT+Return");
        QTest::newRow("letter, lower case")
            << 0x28 << (Shortcut::control | Shortcut::shift) << QStringLiteral("CTRL+SHIFT+k");
        QTest::newRow("Command is the Super key")
            << 0x31 << int(Shortcut::command) << QStringLiteral("LOGO+space");
        QTest::newRow("all four, in order")
            << 0x12 << (Shortcut::command | Shortcut::shift | Shortcut::option | Shortcut::control)
            << QStringLiteral("CTRL+ALT+SHIFT+LOGO+1");
        QTest::newRow("punctuation by name")
            << 0x21 << ctrlAlt << QStringLiteral("CTRL+ALT+bracketleft");
        QTest::newRow("function key") << 0x60 << 0 << QStringLiteral("F5");
        QTest::newRow("keypad digit") << 0x59 << ctrlAlt << QStringLiteral("CTRL+ALT+KP_7");
        QTest::newRow("keypad enter") << 0x4C << ctrlAlt << QStringLiteral("CTRL+ALT+KP_Enter");
        QTest::newRow("page up") << 0x74 << ctrlAlt << QStringLiteral("CTRL+ALT+Page_Up");
        QTest::newRow("unknown bits dropped")
            << 0x24 << (ctrlAlt | 0x4000) << QStringLiteral("CTRL+ALT+Return");
        QTest::newRow("Fn cannot be offered")
            << 0x24 << (ctrlAlt | Shortcut::function) << QString();
        QTest::newRow("unknown key") << 0x0A << ctrlAlt << QString();
    }
    void storedShortcutsBecomeTriggers() {
        QFETCH(int, keyCode);
        QFETCH(int, modifiers);
        QFETCH(QString, trigger);
        const auto made = PortalTrigger::fromShortcut(Shortcut{keyCode, modifiers});
        QCOMPARE(made.value_or(QString()), trigger);
        QCOMPARE(made.has_value(), !trigger.isEmpty());
    }
};

QTEST_GUILESS_MAIN(PortalTriggerTest)
#include "tst_PortalTrigger.moc"
