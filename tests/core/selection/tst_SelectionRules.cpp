#include "core/selection/SelectionRules.h"

#include <QtTest>

using namespace scrivel;
using namespace Qt::StringLiterals;

Q_DECLARE_METATYPE(std::optional<DesktopWindow>)
Q_DECLARE_METATYPE(PrimarySelection)
Q_DECLARE_METATYPE(TakenSelection)
Q_DECLARE_METATYPE(PasteKeys)

namespace {

// Windows of two applications: their X connections (resource-id bases)
// differ, and each top-level window is its own frame.
constexpr quint32 editorConnection = 0x400000;
constexpr quint32 otherConnection = 0x600000;
const DesktopWindow editor{0x400005, 0x200010, true, editorConnection};

DesktopWindow window(quint32 id, quint32 topLevel, bool viewable, quint32 connection) {
    return {id, topLevel, viewable, connection};
}

} // namespace

// The decisions of the selection flow: whose selection the panel takes,
// what it takes of it, and which keys paste in which window.
class SelectionRulesTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void whoseSelection_data() {
        QTest::addColumn<std::optional<DesktopWindow>>("focused");
        QTest::addColumn<std::optional<DesktopWindow>>("owner");
        QTest::addColumn<bool>("taken");
        using W = std::optional<DesktopWindow>;
        QTest::newRow("the focused window itself") << W(editor) << W(editor) << true;
        QTest::newRow("a widget inside the focused window")
            << W(editor) << W(window(0x40000a, 0x200010, true, editorConnection)) << true;
        QTest::newRow("a hidden helper window of the focused application")
            << W(editor) << W(window(0x400020, 0x400020, false, editorConnection)) << true;
        QTest::newRow("an old selection in another application")
            << W(editor) << W(window(0x600003, 0x200020, true, otherConnection)) << false;
        QTest::newRow("another window of the same application")
            << W(editor) << W(window(0x400030, 0x200020, true, editorConnection)) << false;
        QTest::newRow("a hidden window of another application")
            << W(editor) << W(window(0x600020, 0x600020, false, otherConnection)) << false;
        QTest::newRow("no selection") << W(editor) << W() << false;
        QTest::newRow("no focused window") << W() << W(editor) << false;
        QTest::newRow("windows nothing is known of")
            << W(window(0, 0, false, 0)) << W(window(0x600020, 0x600020, false, 0)) << false;
    }
    void whoseSelection() {
        QFETCH(std::optional<DesktopWindow>, focused);
        QFETCH(std::optional<DesktopWindow>, owner);
        QFETCH(bool, taken);
        QCOMPARE(SelectionRules::isOwnedByFocusedWindow({focused, owner}), taken);
    }

    void whatIsTaken_data() {
        QTest::addColumn<PrimarySelection>("selection");
        QTest::addColumn<TakenSelection>("taken");
        const auto text = [](const QString& t) {
            return TakenSelection{TakenSelection::Kind::text, t};
        };
        const TakenSelection nothing;
        const TakenSelection tooLong{TakenSelection::Kind::tooLong, {}};
        // The limit is 10 UTF-8 bytes here.
        QTest::newRow("text") << PrimarySelection::ofText(u"teh cat"_s) << text(u"teh cat"_s);
        QTest::newRow("lines and spaces kept")
            << PrimarySelection::ofText(u" a\n b \n"_s) << text(u" a\n b \n"_s);
        QTest::newRow("empty") << PrimarySelection::ofText({}) << nothing;
        QTest::newRow("blank") << PrimarySelection::ofText(u" \n\t\u00a0"_s) << nothing;
        QTest::newRow("not text") << PrimarySelection::notText() << nothing;
        QTest::newRow("over the reader's limit") << PrimarySelection::overLimit() << tooLong;
        QTest::newRow("exactly the limit")
            << PrimarySelection::ofText(u"0123456789"_s) << text(u"0123456789"_s);
        QTest::newRow("one byte over") << PrimarySelection::ofText(u"0123456789!"_s) << tooLong;
        QTest::newRow("five two-byte letters are the limit")
            << PrimarySelection::ofText(u"ééééé"_s) << text(u"ééééé"_s);
        QTest::newRow("six are over it, though only six letters")
            << PrimarySelection::ofText(u"éééééé"_s) << tooLong;
    }
    void whatIsTaken() {
        QFETCH(PrimarySelection, selection);
        QFETCH(TakenSelection, taken);
        QCOMPARE(SelectionRules::take(selection, 10), taken);
    }

    void pasteKeys_data() {
        QTest::addColumn<QStringList>("windowClass");
        QTest::addColumn<PasteKeys>("keys");
        QTest::newRow("a text editor") << QStringList{"gedit", "Gedit"} << PasteKeys::ctrlV;
        QTest::newRow("the test's Tk window")
            << QStringList{"scriveltesteditor", "ScrivelTestEditor"} << PasteKeys::ctrlV;
        QTest::newRow("no class") << QStringList{} << PasteKeys::ctrlV;
        QTest::newRow("GNOME Terminal")
            << QStringList{"gnome-terminal-server", "Gnome-terminal"} << PasteKeys::ctrlShiftV;
        QTest::newRow("Konsole") << QStringList{"konsole", "konsole"} << PasteKeys::ctrlShiftV;
        QTest::newRow("class in other letter case")
            << QStringList{"Alacritty", "Alacritty"} << PasteKeys::ctrlShiftV;
        QTest::newRow("only the instance name listed")
            << QStringList{"kitty", "Kitty Terminal"} << PasteKeys::ctrlShiftV;
        QTest::newRow("xterm has no clipboard key")
            << QStringList{"xterm", "XTerm"} << PasteKeys::none;
        QTest::newRow("rxvt-unicode neither") << QStringList{"urxvt", "URxvt"} << PasteKeys::none;
    }
    void pasteKeys() {
        QFETCH(QStringList, windowClass);
        QFETCH(PasteKeys, keys);
        QCOMPARE(SelectionRules::pasteKeysFor(windowClass), keys);
    }
};

QTEST_GUILESS_MAIN(SelectionRulesTest)
#include "tst_SelectionRules.moc"
