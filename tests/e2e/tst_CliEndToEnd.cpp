#include "presets/PresetPackDocument.h"
#include "support/ScriptedHttpServer.h"

#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>
#include <csignal>
#include <fcntl.h>
#include <termios.h>
#include <unistd.h>

using namespace scrivel;
using test::ScriptedHttpServer;

namespace {

struct Run {
    int exitCode = -1;
    QByteArray out;
    QByteArray err;
};

} // namespace

// The real scrivel-cli binary against the loopback server, with its own
// settings and key files.
class CliEndToEndTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init();
    void listsTheBuiltInsWithTheActiveOneMarked();
    void streamedRewriteToStandardOutput();
    void alreadyCleanPrintsTheInput();
    void rejectedKeyUsesThePanelWording();
    void missingKeyMakesNoConnection();
    void listsModels();
    void keysAreNeverPrinted();
    void interruptCancelsAStalledStream();
    void copyLeavesTheResultOnTheClipboard();
    void copyWithoutADisplayStillSucceeds();
    void exportNeverOverwritesOrTakesAPresetForAFile();
    void presetNamesIgnoreCaseAndDuplicatesAreListed();
    void keyPromptRestoresTheTerminalWhenInterrupted();
    void problemsNameTheirCause_data();
    void problemsNameTheirCause();

private:
    QProcessEnvironment environment(const QString& home) const;
    Run cli(const QStringList& arguments, const QByteArray& input = {},
            const QString& home = QString(),
            const QProcessEnvironment& extra = QProcessEnvironment());
    void addLocalPreset();

    std::unique_ptr<QTemporaryDir> m_home;
    std::unique_ptr<ScriptedHttpServer> m_server;
};

void CliEndToEndTest::init() {
    m_home = std::make_unique<QTemporaryDir>();
    m_server = std::make_unique<ScriptedHttpServer>();
    QVERIFY(m_server->start());
}

QProcessEnvironment CliEndToEndTest::environment(const QString& home) const {
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    const QString root = home.isEmpty() ? m_home->path() : home;
    env.insert(QStringLiteral("XDG_CONFIG_HOME"), root + QStringLiteral("/config"));
    env.insert(QStringLiteral("XDG_DATA_HOME"), root + QStringLiteral("/data"));
    env.insert(QStringLiteral("SCRIVEL_SECRET_STORE"), QStringLiteral("file"));
    // The clipboard helper needs the real display, not the test platform.
    env.remove(QStringLiteral("QT_QPA_PLATFORM"));
    env.remove(QStringLiteral("http_proxy"));
    env.remove(QStringLiteral("HTTP_PROXY"));
    return env;
}

Run CliEndToEndTest::cli(const QStringList& arguments, const QByteArray& input, const QString& home,
                         const QProcessEnvironment& extra) {
    QProcess process;
    QProcessEnvironment env = environment(home);
    for (const QString& name : extra.keys()) {
        if (extra.value(name).isEmpty())
            env.remove(name);
        else
            env.insert(name, extra.value(name));
    }
    process.setProcessEnvironment(env);
    process.start(QStringLiteral(SCRIVEL_CLI_PATH), arguments);
    if (!process.waitForStarted())
        return {};
    process.write(input);
    process.closeWriteChannel();
    // The server lives in this process: keep its event loop turning.
    if (!QTest::qWaitFor([&] { return process.state() == QProcess::NotRunning; }, 20000))
        process.kill();
    Run run;
    run.exitCode = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    run.out = process.readAllStandardOutput();
    run.err = process.readAllStandardError();
    return run;
}

void CliEndToEndTest::addLocalPreset() {
    PresetPackDocument pack;
    pack.name = QStringLiteral("Local");
    PresetPackItem item;
    item.name = QStringLiteral("Local");
    item.providerID = QStringLiteral("custom");
    item.customBaseURL = m_server->url(QStringLiteral("/v1")).toString();
    item.model = QStringLiteral("local-model");
    item.instructions = QStringLiteral("Fix it.");
    pack.presets = {item};
    const QString path = m_home->filePath(QStringLiteral("local.scrivel.json"));
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(*pack.encode());
    file.close();
    const Run imported = cli({"presets", "import", path});
    QCOMPARE(imported.out, QByteArray("Imported 1 preset: 1 added, 0 replaced.\n"));
    QCOMPARE(cli({"presets", "use", "Local"}).exitCode, 0);
}

void CliEndToEndTest::listsTheBuiltInsWithTheActiveOneMarked() {
    const Run run = cli({"presets"});
    QCOMPARE(run.exitCode, 0);
    const QList<QByteArray> lines = run.out.trimmed().split('\n');
    QCOMPARE(lines.size(), 3);
    QVERIFY(lines[0].startsWith("* Fix\tGroq \xc2\xb7 openai/gpt-oss-120b\t"));
    QVERIFY(lines[1].startsWith("  Make Concise\t"));
}

void CliEndToEndTest::streamedRewriteToStandardOutput() {
    addLocalPreset();
    m_server->setHandler([](const auto&) {
        return ScriptedHttpServer::eventStream(ScriptedHttpServer::dataLine("The cat ") +
                                                   ScriptedHttpServer::dataLine("sat."),
                                               true, 11, 5);
    });
    const Run run = cli({"rewrite"}, "teh cat sat\n");
    QCOMPARE(run.exitCode, 0);
    QCOMPARE(run.out, QByteArray("The cat sat.\n")); // piped: only the final text
    QCOMPARE(m_server->requests().size(), 1);
    QVERIFY(m_server->requests()[0].body.contains("teh cat sat\\n"));
    QVERIFY(!m_server->requests()[0].headers.contains("authorization"));
}

void CliEndToEndTest::alreadyCleanPrintsTheInput() {
    addLocalPreset();
    m_server->setHandler([](const auto&) {
        return ScriptedHttpServer::eventStream(ScriptedHttpServer::dataLine("Fine as is."), false);
    });
    const QString file = m_home->filePath(QStringLiteral("input.txt"));
    QFile input(file);
    QVERIFY(input.open(QIODevice::WriteOnly));
    input.write("  Fine as is.\n");
    input.close();
    const Run run = cli({"rewrite", file});
    QCOMPARE(run.exitCode, 0);
    QCOMPARE(run.out, QByteArray("  Fine as is.\n"));
    QVERIFY(run.err.contains("No change needed."));
}

void CliEndToEndTest::rejectedKeyUsesThePanelWording() {
    addLocalPreset();
    m_server->setHandler([](const auto&) { return ScriptedHttpServer::status(401); });
    const Run run = cli({"rewrite", "--preset", "Local"}, "text");
    QCOMPARE(run.exitCode, 3);
    QVERIFY(run.out.isEmpty());
    // The app's sentence, then the command that fixes it.
    QCOMPARE(run.err, "API key was rejected. Check it in Presets.\nSave a key with: scrivel-cli "
                      "key set custom --base-url " +
                          m_server->url(QStringLiteral("/v1")).toEncoded() + "\n");
}

void CliEndToEndTest::missingKeyMakesNoConnection() {
    addLocalPreset();
    const Run run = cli({"rewrite", "--preset", "make concise"}, "text");
    QCOMPARE(run.exitCode, 3);
    QCOMPARE(run.err, QByteArray("Connect this preset to a provider in Presets\n"
                                 "Save a key with: scrivel-cli key set groq\n"));
    QVERIFY(m_server->requests().isEmpty());
    const Run ready = cli({"status"});
    QCOMPARE(ready.exitCode, 0);
    QCOMPARE(ready.out, QByteArray("Status: Local \xc2\xb7 Ready\n"));
    QCOMPARE(cli({"presets", "use", "Fix"}).exitCode, 0);
    const Run blocked = cli({"status"});
    QCOMPARE(blocked.exitCode, 3);
    QCOMPARE(blocked.out, QByteArray("Status: Fix \xc2\xb7 Add API key\n"));
    QVERIFY(blocked.err.startsWith("Connect this preset to a provider in Presets\n"));
}

void CliEndToEndTest::listsModels() {
    m_server->setHandler([](const auto&) {
        return ScriptedHttpServer::status(
            200, R"({"data":[{"id":"zeta"},{"id":"whisper-1"},{"id":"alpha"}]})");
    });
    const Run run = cli({"models", "custom", "--base-url", m_server->url("/v1").toString()});
    QCOMPARE(run.exitCode, 0);
    QCOMPARE(run.out, QByteArray("alpha\nzeta\n"));
    QCOMPARE(m_server->requests().first().path, QByteArray("/v1/models"));
    const Run unknown = cli({"models", "nobody"});
    QCOMPARE(unknown.exitCode, 2);
}

void CliEndToEndTest::keysAreNeverPrinted() {
    QCOMPARE(cli({"key", "status", "groq"}).out, QByteArray("Groq: no key stored\n"));
    const Run set = cli({"key", "set", "groq"}, "  gsk-secret-123 \n");
    QCOMPARE(set.exitCode, 0);
    QVERIFY(!set.out.contains("gsk-secret-123") && !set.err.contains("gsk-secret-123"));
    QCOMPARE(cli({"key", "status", "groq"}).out, QByteArray("Groq: key stored\n"));
    QVERIFY(cli({"status"}).out.contains("Ready"));
    QCOMPARE(cli({"key", "delete", "groq"}).out, QByteArray("Deleted the key for Groq.\n"));
    QCOMPARE(cli({"key", "status", "groq"}).out, QByteArray("Groq: no key stored\n"));
    QCOMPARE(cli({"key", "delete", "groq"}).out,
             QByteArray("No key stored for Groq; nothing to delete.\n"));
    QCOMPARE(cli({"key", "set", "custom"}).exitCode, 2); // no base URL
}

void CliEndToEndTest::interruptCancelsAStalledStream() {
    addLocalPreset();
    ScriptedHttpServer::Response stall =
        ScriptedHttpServer::eventStream(ScriptedHttpServer::dataLine("partial"), true);
    stall.writes.removeLast();
    stall.stall = true;
    m_server->setHandler([&](const auto&) { return stall; });

    QProcess process;
    process.setProcessEnvironment(environment({}));
    process.start(QStringLiteral(SCRIVEL_CLI_PATH), {"rewrite"});
    QVERIFY(process.waitForStarted());
    process.write("text");
    process.closeWriteChannel();
    QTRY_COMPARE_WITH_TIMEOUT(m_server->requests().size(), 1, 10000);
    QTest::qWait(200); // the partial reply is on its way
    ::kill(pid_t(process.processId()), SIGINT);
    QTRY_VERIFY_WITH_TIMEOUT(process.state() == QProcess::NotRunning, 3000);
    QCOMPARE(process.exitStatus(), QProcess::NormalExit);
    QCOMPARE(process.exitCode(), 130);
    QVERIFY(process.readAllStandardOutput().isEmpty()); // nothing half-written
    QTRY_COMPARE_WITH_TIMEOUT(m_server->connectionsClosedByClient(), 1, 3000);
}

void CliEndToEndTest::copyLeavesTheResultOnTheClipboard() {
    if (qEnvironmentVariableIsEmpty("DISPLAY"))
        QSKIP("needs an X display (scripts/test provides one through xvfb-run)");
    const QString xclip = QStandardPaths::findExecutable(QStringLiteral("xclip"));
    if (xclip.isEmpty())
        QSKIP("needs xclip (installed by scripts/install-deps)");
    addLocalPreset();
    m_server->setHandler([](const auto&) {
        return ScriptedHttpServer::eventStream(ScriptedHttpServer::dataLine("Copied text."), false);
    });
    const Run run = cli({"rewrite", "--copy"}, "copid text");
    QCOMPARE(run.exitCode, 0);
    QCOMPARE(run.out, QByteArray("Copied text.\n"));
    QVERIFY(run.err.contains("Copied."));

    // The command has exited; its background copy still serves the clipboard.
    auto read = [&](const QString& target) {
        QProcess reader;
        reader.start(xclip, {"-selection", "clipboard", "-t", target, "-o"});
        reader.waitForFinished(5000);
        return reader.readAllStandardOutput();
    };
    QCOMPARE(read(QStringLiteral("UTF8_STRING")), QByteArray("Copied text."));
    QVERIFY(read(QStringLiteral("TARGETS")).contains("x-kde-passwordManagerHint"));

    // Another program taking the clipboard ends the background copy.
    QProcess taker;
    taker.start(xclip, {"-selection", "clipboard", "-i"});
    taker.write("other");
    taker.closeWriteChannel();
    taker.waitForFinished(5000);
    QTRY_COMPARE_WITH_TIMEOUT(read(QStringLiteral("UTF8_STRING")), QByteArray("other"), 5000);
}

void CliEndToEndTest::copyWithoutADisplayStillSucceeds() {
    addLocalPreset();
    m_server->setHandler([](const auto&) {
        return ScriptedHttpServer::eventStream(ScriptedHttpServer::dataLine("Done."), false);
    });
    QProcessEnvironment noDisplay;
    noDisplay.insert(QStringLiteral("DISPLAY"), QString());
    noDisplay.insert(QStringLiteral("WAYLAND_DISPLAY"), QString());
    const Run run = cli({"rewrite", "--copy"}, "don", {}, noDisplay);
    QCOMPARE(run.exitCode, 0); // the result was printed
    QCOMPARE(run.out, QByteArray("Done.\n"));
    QVERIFY(run.err.contains("Not copied: there is no display"));
}

void CliEndToEndTest::exportNeverOverwritesOrTakesAPresetForAFile() {
    QDir::setCurrent(m_home->path());
    // "Fix" names a preset: not taken as the file name.
    const Run lone = cli({"presets", "export", "Fix"});
    QCOMPARE(lone.exitCode, 2);
    QVERIFY(lone.err.contains("scrivel-cli presets export Fix FILE"));
    QVERIFY(!QFile::exists(m_home->filePath(QStringLiteral("Fix"))));

    const QString path = m_home->filePath(QStringLiteral("mine.scrivel.json"));
    QFile existing(path);
    QVERIFY(existing.open(QIODevice::WriteOnly));
    existing.write("keep me");
    existing.close();
    for (const QStringList& arguments :
         {QStringList{"presets", "export", path}, QStringList{"presets", "export", "Fix", path}}) {
        const Run refused = cli(arguments);
        QCOMPARE(refused.exitCode, 1);
        QVERIFY(refused.err.contains("Add --force"));
        QVERIFY(existing.open(QIODevice::ReadOnly));
        QCOMPARE(existing.readAll(), QByteArray("keep me"));
        existing.close();
    }
    QCOMPARE(cli({"presets", "export", "Fix", path, "--force"}).exitCode, 0);
    QVERIFY(existing.open(QIODevice::ReadOnly));
    const auto pack = PresetPackDocument::decode(existing.readAll());
    QVERIFY(pack);
    QCOMPARE(pack->presets.size(), 1);
    QCOMPARE(pack->presets[0].name, QStringLiteral("Fix"));

    // A folder gets the proposed file name.
    QCOMPARE(cli({"presets", "export", "make concise", m_home->path()}).exitCode, 0);
    QVERIFY(QFile::exists(m_home->filePath(QStringLiteral("Make Concise.scrivel.json"))));
}

void CliEndToEndTest::presetNamesIgnoreCaseAndDuplicatesAreListed() {
    QCOMPARE(cli({"presets", "add-pack", "translation"}).out,
             QByteArray("Added 4 presets from Translation.\n"));
    QCOMPARE(cli({"presets", "use", "to french"}).out, QByteArray("Active preset: To French\n"));
    QCOMPARE(cli({"presets", "add-pack", "Translation"}).exitCode, 0);
    const QList<QByteArray> lines = cli({"presets"}).out.split('\n');
    QList<QByteArray> ids;
    for (const QByteArray& line : lines) {
        if (line.contains("To French"))
            ids << line.split('\t').last();
    }
    QCOMPARE(ids.size(), 2);
    for (const QString& name : {QStringLiteral("To French"), QStringLiteral("to FRENCH")}) {
        const Run ambiguous = cli({"presets", "use", name});
        QCOMPARE(ambiguous.exitCode, 2);
        QVERIFY(ambiguous.err.contains(ids[0]) && ambiguous.err.contains(ids[1]));
        QCOMPARE(cli({"rewrite", "--preset", name}, "text").exitCode, 2);
    }
    QCOMPARE(cli({"presets", "use", QString::fromLatin1(ids[1])}).exitCode, 0);
    QVERIFY(cli({"presets"}).out.contains("* To French\t"));
}

void CliEndToEndTest::keyPromptRestoresTheTerminalWhenInterrupted() {
    const int master = ::posix_openpt(O_RDWR | O_NOCTTY);
    QVERIFY(master >= 0 && ::grantpt(master) == 0 && ::unlockpt(master) == 0);
    const int terminal = ::open(::ptsname(master), O_RDWR | O_NOCTTY);
    QVERIFY(terminal >= 0);
    const auto echoing = [&] {
        termios mode{};
        ::tcgetattr(terminal, &mode);
        return (mode.c_lflag & ECHO) != 0;
    };
    QVERIFY(echoing());

    QProcess process;
    process.setProcessEnvironment(environment({}));
    process.setChildProcessModifier([terminal] { ::dup2(terminal, STDIN_FILENO); });
    process.start(QStringLiteral(SCRIVEL_CLI_PATH), {"key", "set", "groq"});
    QVERIFY(process.waitForStarted());
    QByteArray prompt;
    QTRY_VERIFY_WITH_TIMEOUT(
        (prompt += process.readAllStandardError()).contains("API key for Groq:"), 10000);
    QTRY_VERIFY(!echoing()); // typing is hidden while the prompt waits
    ::kill(pid_t(process.processId()), SIGINT);
    QTRY_VERIFY_WITH_TIMEOUT(process.state() == QProcess::NotRunning, 5000);
    QCOMPARE(process.exitCode(), 130);
    QVERIFY(echoing());
    ::close(terminal);
    ::close(master);
}

void CliEndToEndTest::problemsNameTheirCause_data() {
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QByteArray>("input");
    QTest::addColumn<int>("exitCode");
    QTest::addColumn<QByteArray>("said");
    const QByteArray noValidatesEdits =
        R"({"kind":"scrivel.preset-pack","formatVersion":1,"presets":[{"name":"A",)"
        R"("providerID":"groq","model":"m","instructions":"i"}]})";
    QTest::newRow("pack member missing")
        << QStringList{"presets", "import", "FILE"} << noValidatesEdits << 1
        << QByteArray("not a valid Scrivel preset pack.\npreset 1 of 1: missing member "
                      "\"validatesEdits\"\n");
    QTest::newRow("plain http to another host")
        << QStringList{"models", "custom", "--base-url", "http://192.168.1.20:8080/v1"}
        << QByteArray() << 2 << QByteArray("only for servers on this computer");
    QTest::newRow("no key for models")
        << QStringList{"models", "groq"} << QByteArray() << 3
        << QByteArray("Enter an API key to connect.\nSave a key with: scrivel-cli key set groq\n");
    QTest::newRow("help for a command")
        << QStringList{"help", "rewrite"} << QByteArray() << 0
        << QByteArray("Usage: scrivel-cli rewrite [options] [FILE]\n");
    QTest::newRow("no command") << QStringList{} << QByteArray() << 2
                                << QByteArray("Usage: scrivel-cli <command>");
    QTest::newRow("unknown command")
        << QStringList{"fly"} << QByteArray() << 2 << QByteArray("Unknown command \"fly\".");
    QTest::newRow("unknown preset") << QStringList{"rewrite", "--preset", "Nope"} << QByteArray()
                                    << 2 << QByteArray("No preset \"Nope\".");
    QTest::newRow("unknown option") << QStringList{"rewrite", "--fast"} << QByteArray() << 2
                                    << QByteArray("Usage: scrivel-cli rewrite");
    QTest::newRow("version") << QStringList{"--version"} << QByteArray() << 0
                             << QByteArray("scrivel-cli ");
    QTest::newRow("empty input") << QStringList{"rewrite"} << QByteArray() << 2
                                 << QByteArray("Enter some text.");
    QTest::newRow("model to choose") << QStringList{"presets", "edit", "Fix", "--model", " "}
                                     << QByteArray() << 2 << QByteArray("Give a model");
}

void CliEndToEndTest::problemsNameTheirCause() {
    QFETCH(QStringList, arguments);
    QFETCH(QByteArray, input);
    QFETCH(int, exitCode);
    QFETCH(QByteArray, said);
    const QString file = m_home->filePath(QStringLiteral("input.scrivel.json"));
    if (!input.isEmpty()) {
        QFile pack(file);
        QVERIFY(pack.open(QIODevice::WriteOnly));
        pack.write(input);
    }
    arguments.replaceInStrings(QStringLiteral("FILE"), file);
    const Run run = cli(arguments);
    QCOMPARE(run.exitCode, exitCode);
    QVERIFY2((run.out + run.err).contains(said), run.out + run.err);
    QVERIFY(!run.out.contains("help-all"));
}

QTEST_GUILESS_MAIN(CliEndToEndTest)
#include "tst_CliEndToEnd.moc"
