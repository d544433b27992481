#include "core/selection/SelectionPreferences.h"
#include "platform/linux/QSettingsStore.h"
#include "support/ProcessRun.h"
#include "support/ScriptedHttpServer.h"
#include "support/X11TestClient.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>

using namespace scrivel;
using namespace Qt::StringLiterals;
using test::ScriptedHttpServer;
using test::xdotool;

namespace {

constexpr xcb_keysym_t returnKeysym = 0xff0d;
constexpr uint16_t ctrlAlt = XCB_MOD_MASK_CONTROL | XCB_MOD_MASK_1;

// What the loopback provider makes of a text: "teh" corrected, a capital
// first letter and a full stop.
QString rewritten(QString text) {
    text.replace(u"teh"_s, u"the"_s);
    text[0] = text[0].toUpper();
    return text + u'.';
}

// The text inside the user message of a chat-completions request.
QString inputOf(const QByteArray& body) {
    const QJsonArray messages = QJsonDocument::fromJson(body).object()[u"messages"_s].toArray();
    const QString content = messages.last().toObject()[u"content"_s].toString();
    const qsizetype start = content.indexOf(u"<input>\n"_s) + 8;
    return content.mid(start, content.lastIndexOf(u"\n</input>"_s) - start);
}

// A Python with Tk, or nothing.
QString tkPython() {
    for (const QString& candidate : {u"python3"_s, u"/usr/bin/python3"_s}) {
        const QString path = QStandardPaths::findExecutable(candidate);
        if (!path.isEmpty() && QProcess::execute(path, {u"-c"_s, u"import tkinter"_s}) == 0)
            return path;
    }
    return {};
}

} // namespace

// The real scrivel under openbox beside real text windows of another
// toolkit (Tk), driven as a user would with xdotool: the text selected in
// the focused window comes into the panel, and the result goes back.
class SelectionEndToEndTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase();
    void init();
    void cleanup();
    void theSelectionComesInAndTheResultGoesBack();
    void withoutReplacingTheWindowIsLeftAlone();
    void aWindowClosedMeanwhileGetsNothing();
    void aSelectionInAnotherWindowIsNotTaken();
    void aHungOwnerDoesNotHoldThePanel();

private:
    struct Editor {
        std::unique_ptr<QProcess> process;
        QString file;
        QString window;
        QString text() const {
            QFile f(file);
            return f.open(QIODevice::ReadOnly) ? QString::fromUtf8(f.readAll()) : QString();
        }
    };

    void startApp(bool replace);
    Editor& openEditor(const QString& title, const QString& text, const QString& geometry,
                       int answerAfterMs = 0);
    // Activates the editor, puts the insertion point at the end and selects
    // the last line (and waits for the selection to be offered, which asks
    // the editor for it).
    void selectLastLine(const Editor& editor, bool waitForOffer = true);
    void pressShortcut() { xdotool({"key", "ctrl+alt+Return"}); }
    bool panelVisible() { return !test::visibleWindows({"--name", "^Scrivel Panel$"}).isEmpty(); }
    // What the panel holds selected, through the clipboard: copied once the
    // panel has taken the clipboard from a client of the test's.
    QByteArray copyFromPanel() {
        test::X11TestClient previous;
        if (!previous.takeSelection("CLIPBOARD"))
            return "(the clipboard could not be taken)";
        xdotool({"key", "ctrl+c"});
        if (!QTest::qWaitFor([&] { return !previous.ownsSelection("CLIPBOARD"); }, 5000))
            return "(nothing copied)";
        return clipboard();
    }
    QByteArray clipboard(const QString& target = u"UTF8_STRING"_s) {
        return test::runProcess(u"xclip"_s, {"-o", "-selection", "clipboard", "-t", target}, m_env,
                                {}, 10000)
            .out;
    }

    QString m_python;
    std::unique_ptr<QProcess> m_windowManager;
    std::unique_ptr<QTemporaryDir> m_home;
    QProcessEnvironment m_env;
    std::unique_ptr<ScriptedHttpServer> m_server;
    std::unique_ptr<QProcess> m_app;
    std::list<Editor> m_editors;
};

void SelectionEndToEndTest::initTestCase() {
    if (qEnvironmentVariableIsEmpty("DISPLAY"))
        QSKIP("needs an X display (scripts/test provides Xvfb)");
    if (!test::hasPrograms({"xdotool", "xclip", "xprop", "openbox"}))
        QSKIP("needs xdotool, xclip, xprop and openbox (scripts/install-deps)");
    m_python = tkPython();
    if (m_python.isEmpty())
        QSKIP("needs Python with Tk (python3-tk)");
    // A real window manager: focus moves the way users know it.
    m_windowManager = test::startWindowManager();
    QVERIFY2(m_windowManager, "openbox did not start");
}

void SelectionEndToEndTest::cleanupTestCase() {
    if (m_windowManager)
        test::stopProcess(*m_windowManager);
}

void SelectionEndToEndTest::init() {
    m_home = std::make_unique<QTemporaryDir>();
    m_env = test::scrivelEnvironment(m_home->path());
    m_server = std::make_unique<ScriptedHttpServer>();
    QVERIFY(m_server->start());
    m_server->setHandler([](const ScriptedHttpServer::Request& request) {
        const QString result = rewritten(inputOf(request.body));
        return ScriptedHttpServer::eventStream(
            ScriptedHttpServer::dataLine(result) + ScriptedHttpServer::doneLine(), true);
    });
    const QString pack =
        test::writeLocalPresetPack(m_home->path(), m_server->url(u"/v1"_s).toString());
    const QString cli = QStringLiteral(SCRIVEL_CLI_PATH);
    QCOMPARE(test::runProcess(cli, {"presets", "import", pack}, m_env).exitCode, 0);
    QCOMPARE(test::runProcess(cli, {"presets", "use", "Local"}, m_env).exitCode, 0);
}

void SelectionEndToEndTest::cleanup() {
    if (m_app)
        test::stopProcess(*m_app);
    m_app.reset();
    for (Editor& editor : m_editors)
        test::stopProcess(*editor.process);
    m_editors.clear();
}

void SelectionEndToEndTest::startApp(bool replace) {
    {
        QSettingsStore settings(m_home->filePath(u"config/Scrivel/Scrivel.conf"_s));
        QVERIFY(settings.setBoolean(u"scrivel.panel.has-seen"_s, true));
        QVERIFY(settings.setBoolean(SelectionPreferences::replaceSelectionKey(), replace));
    }
    m_app = std::make_unique<QProcess>();
    m_app->setProcessEnvironment(m_env);
    m_app->setProcessChannelMode(QProcess::ForwardedChannels);
    m_app->start(QStringLiteral(SCRIVEL_APP_PATH), {});
    QVERIFY(m_app->waitForStarted());
    // Ready once it holds the shortcut.
    test::X11TestClient probe;
    QTRY_VERIFY_WITH_TIMEOUT(probe.isHeldElsewhere(returnKeysym, ctrlAlt), 15000);
}

SelectionEndToEndTest::Editor& SelectionEndToEndTest::openEditor(const QString& title,
                                                                 const QString& text,
                                                                 const QString& geometry,
                                                                 int answerAfterMs) {
    Editor& editor = m_editors.emplace_back();
    editor.file = m_home->filePath(title + u".txt"_s);
    QFile file(editor.file);
    if (file.open(QIODevice::WriteOnly))
        file.write(text.toUtf8());
    file.close();
    editor.process = std::make_unique<QProcess>();
    editor.process->setProcessChannelMode(QProcess::ForwardedChannels);
    // Beside this suite's source.
    const QString script = QStringLiteral(SCRIVEL_TEST_DATA_DIR "/../e2e/tk_text_window.py");
    editor.process->start(m_python,
                          {script, title, editor.file, geometry, QString::number(answerAfterMs)});
    (void)QTest::qWaitFor(
        [&] {
            editor.window = QString::fromLatin1(
                xdotool({"search", "--onlyvisible", "--name", u"^%1$"_s.arg(title)}).trimmed());
            return !editor.window.isEmpty();
        },
        10000);
    return editor;
}

void SelectionEndToEndTest::selectLastLine(const Editor& editor, bool waitForOffer) {
    QVERIFY2(!editor.window.isEmpty(), "the editor window did not show");
    xdotool({"windowactivate", "--sync", editor.window});
    test::X11TestClient probe;
    const xcb_window_t before = probe.selectionOwner("PRIMARY");
    xdotool({"key", "ctrl+End", "shift+Home"});
    if (!waitForOffer) {
        // The keys are handled once the editor owns the selection.
        QTRY_VERIFY(probe.selectionOwner("PRIMARY") != before);
        return;
    }
    QTRY_VERIFY(
        !test::runProcess(u"xclip"_s, {"-o", "-selection", "primary"}, m_env).out.isEmpty());
}

void SelectionEndToEndTest::theSelectionComesInAndTheResultGoesBack() {
    startApp(true);
    Editor& editor =
        openEditor(u"Editor A"_s, u"Keep this line.\nteh café sat"_s, u"420x160+40+60"_s);
    selectLastLine(editor);
    xdotool({"mousemove", "200", "150"});
    pressShortcut();
    QTRY_VERIFY_WITH_TIMEOUT(panelVisible(), 10000);
    // In the panel and selected whole.
    QCOMPARE(copyFromPanel(), "teh café sat"_ba);

    xdotool({"key", "Return"});
    // The editor holds the result in place of its selection, and the panel
    // is gone.
    QTRY_COMPARE_WITH_TIMEOUT(editor.text(), u"Keep this line.\nThe café sat."_s, 10000);
    QCOMPARE(inputOf(m_server->requests().value(0).body), u"teh café sat"_s);
    QTRY_VERIFY(!panelVisible());
    // The clipboard keeps the result, concealed as always.
    QCOMPARE(clipboard(), "The café sat."_ba);
    QVERIFY(clipboard(u"TARGETS"_s).contains("x-kde-passwordManagerHint"));
}

void SelectionEndToEndTest::withoutReplacingTheWindowIsLeftAlone() {
    startApp(false);
    Editor& editor = openEditor(u"Editor A"_s, u"Keep this line.\nteh cat"_s, u"420x160+40+60"_s);
    selectLastLine(editor);
    pressShortcut();
    QTRY_VERIFY_WITH_TIMEOUT(panelVisible(), 10000);
    xdotool({"key", "Return"});
    QTRY_COMPARE_WITH_TIMEOUT(clipboard(), "The cat."_ba, 10000);
    // A paste would have come within the focus bound of the copy.
    QVERIFY(!QTest::qWaitFor(
        [&] { return !panelVisible() || editor.text() != u"Keep this line.\nteh cat"_s; }, 1000));
}

void SelectionEndToEndTest::aWindowClosedMeanwhileGetsNothing() {
    m_server->setHandler([](const ScriptedHttpServer::Request& request) {
        return ScriptedHttpServer::eventStream(
            ScriptedHttpServer::dataLine(rewritten(inputOf(request.body))) +
                ScriptedHttpServer::doneLine(),
            true, 0, 2000); // answers after 2 s
    });
    startApp(true);
    Editor& editor = openEditor(u"Editor A"_s, u"teh cat"_s, u"420x160+40+60"_s);
    selectLastLine(editor);
    pressShortcut();
    QTRY_VERIFY_WITH_TIMEOUT(panelVisible(), 10000);
    xdotool({"key", "Return"});
    test::stopProcess(*editor.process);
    // Nowhere to paste: the panel stays with its result, which is on the
    // clipboard for a paste by hand.
    QTRY_COMPARE_WITH_TIMEOUT(clipboard(), "The cat."_ba, 10000);
    QVERIFY(panelVisible());
    xdotool({"key", "ctrl+a"});
    QCOMPARE(copyFromPanel(), "The cat."_ba);
}

void SelectionEndToEndTest::aSelectionInAnotherWindowIsNotTaken() {
    startApp(true);
    Editor& focused = openEditor(u"Editor A"_s, u"teh cat"_s, u"420x160+40+60"_s);
    Editor& other = openEditor(u"Editor B"_s, u"an old selection"_s, u"420x160+600+60"_s);
    selectLastLine(other);
    QVERIFY(!focused.window.isEmpty());
    xdotool({"windowactivate", "--sync", focused.window});
    pressShortcut();
    QTRY_VERIFY_WITH_TIMEOUT(panelVisible(), 10000);
    // Empty: typed at the end, what is typed is all there is.
    xdotool({"key", "ctrl+End"});
    xdotool({"type", "mine"});
    xdotool({"key", "ctrl+a"});
    QCOMPARE(copyFromPanel(), "mine"_ba);
}

void SelectionEndToEndTest::aHungOwnerDoesNotHoldThePanel() {
    startApp(true);
    // Asked for its selection, this one stops for 4 s.
    Editor& editor = openEditor(u"Editor A"_s, u"teh cat"_s, u"420x160+40+60"_s, 4000);
    selectLastLine(editor, false);
    QElapsedTimer clock;
    clock.start();
    pressShortcut();
    QTRY_VERIFY_WITH_TIMEOUT(panelVisible(), 10000);
    QVERIFY2(clock.elapsed() < 3000, "the panel waited for the hung window");
    xdotool({"type", "mine"});
    // Once the window has answered, the panel holds what was typed.
    QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(editor.file + u".answered"_s), 10000);
    xdotool({"key", "ctrl+a"});
    QCOMPARE(copyFromPanel(), "mine"_ba);
}

QTEST_GUILESS_MAIN(SelectionEndToEndTest)
#include "tst_SelectionEndToEnd.moc"
