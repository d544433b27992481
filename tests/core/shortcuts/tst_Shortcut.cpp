#include "core/shortcuts/Shortcut.h"
#include "core/shortcuts/ShortcutKey.h"

#include <QtTest>

using namespace scrivel;

class ShortcutTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void storedForm_data() {
        QTest::addColumn<QByteArray>("json");
        QTest::addColumn<int>("keyCode"); // -1: no shortcut
        QTest::addColumn<int>("modifiers");
        QTest::newRow("default") << QByteArray(R"({"carbonKeyCode":36,"carbonModifiers":6144})")
                                 << 36 << 6144;
        QTest::newRow("members in any order, extras ignored")
            << QByteArray(R"({"x":1,"carbonModifiers":256,"carbonKeyCode":0})") << 0 << 256;
        QTest::newRow("boolean false") << QByteArray("false") << -1 << 0;
        QTest::newRow("missing member") << QByteArray(R"({"carbonKeyCode":36})") << -1 << 0;
        QTest::newRow("fraction") << QByteArray(R"({"carbonKeyCode":36.5,"carbonModifiers":0})")
                                  << -1 << 0;
        QTest::newRow("text number")
            << QByteArray(R"({"carbonKeyCode":"36","carbonModifiers":0})") << -1 << 0;
        QTest::newRow("beyond 32 bits")
            << QByteArray(R"({"carbonKeyCode":36,"carbonModifiers":8589934592})") << -1 << 0;
        QTest::newRow("truncated") << QByteArray("{\"carbonKeyCode\":36,\"carbon") << -1 << 0;
    }
    void storedForm() {
        QFETCH(QByteArray, json);
        QFETCH(int, keyCode);
        QFETCH(int, modifiers);
        const auto decoded = Shortcut::fromJson(json);
        if (keyCode < 0) {
            QVERIFY(!decoded);
            return;
        }
        QVERIFY(decoded);
        QCOMPARE(*decoded, (Shortcut{keyCode, modifiers}));
        QCOMPARE(Shortcut::fromJson(decoded->toJson()), decoded);
        if (json.startsWith(R"({"carbonKeyCode")"))
            QCOMPARE(decoded->toJson(), json);
    }

    void normalizationDropsUnknownBits() {
        // Caps Lock (0x400) and the right-hand variants (0x2000+) are not
        // modifiers of a shortcut.
        QCOMPARE((Shortcut{36, 0x1800 | 0x400 | 0x2000 | 0x1}.normalized()),
                 (Shortcut{36, 0x1800}));
        QCOMPARE(Shortcut::carbonFromEventFlags(0x40000 | 0x80000 | 0x10000), 6144);
        QCOMPARE(Shortcut::eventFlagsFromCarbon(0x100 | 0x200 | 0x20000),
                 0x100000 | 0x20000 | 0x800000);
    }

    void keyMappingRoundTrips_data() {
        QTest::addColumn<int>("carbonKeyCode");
        QTest::addColumn<int>("qtKey");
        QTest::addColumn<bool>("keypad");
        QTest::addColumn<uint>("keysym");
        QTest::newRow("A") << 0x00 << int(Qt::Key_A) << false << 0x61u;
        QTest::newRow("5") << 0x17 << int(Qt::Key_5) << false << 0x35u;
        QTest::newRow("grave") << 0x32 << int(Qt::Key_QuoteLeft) << false << 0x60u;
        QTest::newRow("Return") << 36 << int(Qt::Key_Return) << false << 0xff0du;
        QTest::newRow("forward Delete") << 0x75 << int(Qt::Key_Delete) << false << 0xffffu;
        QTest::newRow("Left") << 0x7B << int(Qt::Key_Left) << false << 0xff51u;
        QTest::newRow("F1") << 0x7A << int(Qt::Key_F1) << false << 0xffbeu;
        QTest::newRow("F20") << 0x5A << int(Qt::Key_F20) << false << 0xffd1u;
        QTest::newRow("keypad 7") << 0x59 << int(Qt::Key_7) << true << 0xffb7u;
        QTest::newRow("keypad Enter") << 0x4C << int(Qt::Key_Enter) << true << 0xff8du;
    }
    void keyMappingRoundTrips() {
        QFETCH(int, carbonKeyCode);
        QFETCH(int, qtKey);
        QFETCH(bool, keypad);
        QFETCH(uint, keysym);
        const auto key = ShortcutKey::forCarbonKeyCode(carbonKeyCode);
        QVERIFY(key);
        QCOMPARE(key->qtKey, qtKey);
        QCOMPARE(key->keypad, keypad);
        QCOMPARE(key->x11Keysym, keysym);
        QCOMPARE(ShortcutKey::forQtKey(qtKey, keypad)->carbonKeyCode, carbonKeyCode);
        QCOMPARE(ShortcutKey::forX11Keysym(keysym)->carbonKeyCode, carbonKeyCode);

        const Shortcut shortcut{carbonKeyCode, Shortcut::control | Shortcut::shift};
        const auto combination = shortcut.qtKeyCombination();
        QVERIFY(combination);
        QCOMPARE(Shortcut::fromQtKey(combination->key(), combination->keyboardModifiers()),
                 shortcut);
    }

    void keyEventsOfTheUsLayout_data() {
        QTest::addColumn<int>("qtKey");
        QTest::addColumn<int>("modifiers");
        QTest::addColumn<int>("carbonKeyCode"); // -1: not a shortcut key
        QTest::addColumn<int>("carbonModifiers");
        const int ctrlShift = int(Qt::ControlModifier | Qt::ShiftModifier);
        QTest::newRow("Ctrl+Shift+1 reports !") << int(Qt::Key_Exclam) << ctrlShift << 0x12 << 4608;
        QTest::newRow("Ctrl+Shift+/ reports ?")
            << int(Qt::Key_Question) << ctrlShift << 0x2C << 4608;
        QTest::newRow("Shift+Tab reports Backtab")
            << int(Qt::Key_Backtab) << ctrlShift << 0x30 << 4608;
        QTest::newRow("Alt+Meta+a")
            << int('a') << int(Qt::AltModifier | Qt::MetaModifier) << 0x00 << 2304;
        QTest::newRow("keypad * is not Ctrl+8")
            << int(Qt::Key_Asterisk) << int(Qt::ControlModifier | Qt::KeypadModifier) << 0x43
            << 4096;
        QTest::newRow("keypad Home (NumLock off)")
            << int(Qt::Key_Home) << int(Qt::ControlModifier | Qt::KeypadModifier) << -1 << 0;
        QTest::newRow("media key") << int(Qt::Key_VolumeUp) << int(Qt::ControlModifier) << -1 << 0;
    }
    void keyEventsOfTheUsLayout() {
        QFETCH(int, qtKey);
        QFETCH(int, modifiers);
        QFETCH(int, carbonKeyCode);
        QFETCH(int, carbonModifiers);
        const auto shortcut = Shortcut::fromQtKey(qtKey, Qt::KeyboardModifiers(modifiers));
        if (carbonKeyCode < 0)
            QVERIFY(!shortcut);
        else
            QCOMPARE(shortcut, (Shortcut{carbonKeyCode, carbonModifiers}));
    }

    void displayedForms_data() {
        QTest::addColumn<int>("keyCode");
        QTest::addColumn<int>("modifiers");
        QTest::addColumn<QString>("native");
        QTest::addColumn<QString>("symbols");
        QTest::newRow("all four in order") << 0x00 << (256 | 512 | 2048 | 4096)
                                           << QStringLiteral("Ctrl+Alt+Shift+Meta+A") << "⌃⌥⇧⌘A";
        QTest::newRow("function modifier")
            << 0x7E << 0x20000 << QStringLiteral("Fn+Up") << "\U0001F310\uFE0E↑";
        QTest::newRow("space") << 0x31 << 256 << QStringLiteral("Meta+Space") << "⌘Space";
        QTest::newRow("keypad digit") << 0x53 << 4096 << QStringLiteral("Ctrl+Num+1") << "⌃1";
        QTest::newRow("unknown key code")
            << 0x66 << 4096 << QStringLiteral("Ctrl+\uFFFD") << "⌃\uFFFD";
    }
    void displayedForms() {
        QFETCH(int, keyCode);
        QFETCH(int, modifiers);
        QFETCH(QString, native);
        QFETCH(QString, symbols);
        const Shortcut shortcut{keyCode, modifiers};
        QCOMPARE(shortcut.nativeText(), native);
        QCOMPARE(shortcut.symbolText(), symbols);
#ifndef Q_OS_MACOS
        QCOMPARE(shortcut.displayText(), native);
#endif
    }
};

QTEST_GUILESS_MAIN(ShortcutTest)
#include "tst_Shortcut.moc"
