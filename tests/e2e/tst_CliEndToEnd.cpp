#include "core/presets/PresetPackDocument.h"
#include "core/presets/PresetStore.h"
#include "platform/linux/QSettingsStore.h"
#include "support/PrivateKeyring.h"
#include "support/ProcessRun.h"
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
using test::ProcessRun;
using test::ScriptedHttpServer;

Q_DECLARE_METATYPE(ScriptedHttpServer::Response)

// The real scrivel-cli binary against the loopback server, with its own
// settings and key files.
class CliEndToEndTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init();
    void rewrites_data();
    void rewrites();
    void statusAndKeysNameTheReasonAndNeverPrintTheKey();
    void listsModels();
    void interruptCancelsAStalledStream();
    void copyLeavesTheResultOnTheClipboard();
    void exportNeverOverwritesOrTakesAPresetForAFile();
    void presetsAreListedAndPickedByNameOrID();
    void keyPromptRestoresTheTerminalWhenInterrupted();
    void problemsNameTheirCause_data();
    void problemsNameTheirCause();
    void damagedPresetsAreCopiedAndToldUntilSaved();
    void unusableSettingsFailTheCommand_data();
    void unusableSettingsFailTheCommand();
    void aLockedKeyringIsNeverNoKey();
    void speaksTheUsersLanguage_data();
    void speaksTheUsersLanguage();

private:
    ProcessRun cli(const QStringList& arguments, const QByteArray& input = {}) {
        return test::runProcess(QStringLiteral(SCRIVEL_CLI_PATH), arguments, m_env, input);
    }
    QString file(const QString& name, const QByteArray& content);
    void addLocalPreset();

    std::unique_ptr<QTemporaryDir> m_home;
    std::unique_ptr<ScriptedHttpServer> m_server;
    QProcessEnvironment m_env;
};

void CliEndToEndTest::init() {
    m_home = std::make_unique<QTemporaryDir>();
    m_env = test::scrivelEnvironment(m_home->path());
    m_server = std::make_unique<ScriptedHttpServer>();
    QVERIFY(m_server->start());
}

QString CliEndToEndTest::file(const QString& name, const QByteArray& content) {
    QFile written(m_home->filePath(name));
    if (!written.open(QIODevice::WriteOnly))
        return {};
    written.write(content);
    return written.fileName();
}

void CliEndToEndTest::addLocalPreset() {
    const QString path =
        test::writeLocalPresetPack(m_home->path(), m_server->url(QStringLiteral("/v1")).toString());
    QCOMPARE(cli({"presets", "import", path}).out,
             QByteArray("Imported 1 preset: 1 added, 0 replaced.\n"));
    QCOMPARE(cli({"presets", "use", "Local"}).exitCode, 0);
}

void CliEndToEndTest::rewrites_data() {
    QTest::addColumn<ScriptedHttpServer::Response>("reply");
    QTest::addColumn<QStringList>("arguments"); // FILE: a file holding the input
    QTest::addColumn<QByteArray>("input");
    QTest::addColumn<int>("exitCode");
    QTest::addColumn<QByteArray>("out");
    QTest::addColumn<QByteArray>("err");
    const auto stream = [](const QString& text) {
        return ScriptedHttpServer::eventStream(
            ScriptedHttpServer::dataLine(text) + ScriptedHttpServer::doneLine(), false);
    };
    // Piped: only the final text, though it arrives in pieces.
    QTest::newRow("streamed") << ScriptedHttpServer::eventStream(
                                     ScriptedHttpServer::dataLine("The cat ") +
                                         ScriptedHttpServer::dataLine("sat.") +
                                         ScriptedHttpServer::doneLine(),
                                     true, 11, 5)
                              << QStringList{"rewrite"} << QByteArray("teh cat sat\n") << 0
                              << QByteArray("The cat sat.\n") << QByteArray();
    QTest::newRow("already clean, from a file")
        << stream("Fine as is.") << QStringList{"rewrite", "FILE"} << QByteArray("  Fine as is.\n")
        << 0 << QByteArray("  Fine as is.\n") << QByteArray("No change needed.\n");
    // The app's sentence, then the command that fixes it.
    QTest::newRow("rejected key")
        << ScriptedHttpServer::status(401) << QStringList{"rewrite", "--preset", "Local"}
        << QByteArray("text") << 3 << QByteArray()
        << QByteArray("API key was rejected. Check it in Presets.\nSave a key with: scrivel-cli "
                      "key set custom --base-url URL\n");
    // An empty reply: no request may reach the server.
    QTest::newRow("missing key: no connection")
        << ScriptedHttpServer::Response() << QStringList{"rewrite", "--preset", "make concise"}
        << QByteArray("text") << 3 << QByteArray()
        << QByteArray("Connect this preset to a provider in Presets\n"
                      "Save a key with: scrivel-cli key set groq\n");
    // Replies that cannot be trusted are provider failures: nothing on
    // standard output.
    QTest::newRow("reply cut off")
        << ScriptedHttpServer::eventStream(ScriptedHttpServer::dataLine("The cat"), false)
        << QStringList{"rewrite"} << QByteArray("teh cat sat") << 4 << QByteArray()
        << QByteArray("The connection closed before the reply was complete. Try again.\n");
    QTest::newRow("reply not UTF-8")
        << ScriptedHttpServer::eventStream(ScriptedHttpServer::dataLine("The cat") +
                                               "data: \xff\n\n" + ScriptedHttpServer::doneLine(),
                                           false)
        << QStringList{"rewrite"} << QByteArray("teh cat sat") << 4 << QByteArray()
        << QByteArray("The provider\xe2\x80\x99s reply contained text that isn\xe2\x80\x99t "
                      "valid UTF-8. Try again.\n");
    // The result is printed; the failed copy is only a warning.
    QTest::newRow("copy without a display")
        << stream("Done.") << QStringList{"rewrite", "--copy", "NODISPLAY"} << QByteArray("don")
        << 0 << QByteArray("Done.\n")
        << QByteArray("Not copied: there is no display to hold a clipboard (DISPLAY is not "
                      "set).\n");
}

void CliEndToEndTest::rewrites() {
    QFETCH(ScriptedHttpServer::Response, reply);
    QFETCH(QStringList, arguments);
    QFETCH(QByteArray, input);
    QFETCH(int, exitCode);
    QFETCH(QByteArray, out);
    QFETCH(QByteArray, err);
    addLocalPreset();
    m_server->setHandler([&](const auto&) { return reply; });
    if (arguments.removeAll(QStringLiteral("NODISPLAY"))) {
        m_env.remove(QStringLiteral("DISPLAY"));
        m_env.remove(QStringLiteral("WAYLAND_DISPLAY"));
    }
    const bool fromFile = arguments.contains(QStringLiteral("FILE"));
    arguments.replaceInStrings(QStringLiteral("FILE"), file(QStringLiteral("input.txt"), input));

    const ProcessRun run = cli(arguments, fromFile ? QByteArray() : input);
    QCOMPARE(run.exitCode, exitCode);
    QCOMPARE(run.out, out);
    QCOMPARE(run.err, err.replace("URL", m_server->url(QStringLiteral("/v1")).toEncoded()));
    QCOMPARE(m_server->requests().size(), reply.writes.isEmpty() ? 0 : 1);
    for (const ScriptedHttpServer::Request& request : m_server->requests()) {
        QVERIFY(request.body.contains(input.replace("\n", "\\n")));
        QVERIFY(!request.headers.contains("authorization"));
    }
}

void CliEndToEndTest::statusAndKeysNameTheReasonAndNeverPrintTheKey() {
    addLocalPreset();
    const ProcessRun ready = cli({"status"});
    QCOMPARE(ready.exitCode, 0);
    QCOMPARE(ready.out, QByteArray("Status: Local \xc2\xb7 Ready\n"));
    QCOMPARE(cli({"presets", "use", "Fix"}).exitCode, 0);
    const ProcessRun blocked = cli({"status"});
    QCOMPARE(blocked.exitCode, 3);
    QCOMPARE(blocked.out, QByteArray("Status: Fix \xc2\xb7 Add API key\n"));
    QVERIFY(blocked.err.startsWith("Connect this preset to a provider in Presets\n"));

    QCOMPARE(cli({"key", "status", "groq"}).out, QByteArray("Groq: no key stored\n"));
    const ProcessRun set = cli({"key", "set", "groq"}, "  gsk-secret-123 \n");
    QCOMPARE(set.exitCode, 0);
    QVERIFY(!set.out.contains("gsk-secret-123") && !set.err.contains("gsk-secret-123"));
    QCOMPARE(cli({"key", "status", "groq"}).out, QByteArray("Groq: key stored\n"));
    QCOMPARE(cli({"status"}).out, QByteArray("Status: Fix \xc2\xb7 Ready\n"));
    QCOMPARE(cli({"key", "delete", "groq"}).out, QByteArray("Deleted the key for Groq.\n"));
    QCOMPARE(cli({"key", "status", "groq"}).out, QByteArray("Groq: no key stored\n"));
    QCOMPARE(cli({"key", "delete", "groq"}).out,
             QByteArray("No key stored for Groq; nothing to delete.\n"));
    QCOMPARE(cli({"key", "set", "custom"}).exitCode, 2); // no base URL
}

void CliEndToEndTest::listsModels() {
    m_server->setHandler([](const auto&) {
        return ScriptedHttpServer::status(
            200, R"({"data":[{"id":"zeta"},{"id":"whisper-1"},{"id":"alpha"}]})");
    });
    const ProcessRun run = cli({"models", "custom", "--base-url", m_server->url("/v1").toString()});
    QCOMPARE(run.exitCode, 0);
    QCOMPARE(run.out, QByteArray("alpha\nzeta\n"));
    QCOMPARE(m_server->requests().first().path, QByteArray("/v1/models"));
    QCOMPARE(cli({"models", "nobody"}).exitCode, 2);
}

void CliEndToEndTest::interruptCancelsAStalledStream() {
    addLocalPreset();
    ScriptedHttpServer::Response stall =
        ScriptedHttpServer::eventStream(ScriptedHttpServer::dataLine("partial"), true);
    stall.writes.removeLast();
    stall.stall = true;
    m_server->setHandler([&](const auto&) { return stall; });

    QProcess process;
    process.setProcessEnvironment(m_env);
    process.start(QStringLiteral(SCRIVEL_CLI_PATH), {"rewrite"});
    QVERIFY(process.waitForStarted());
    process.write("text");
    process.closeWriteChannel();
    QTRY_COMPARE_WITH_TIMEOUT(m_server->requests().size(), 1, 10000);
    // Paces the interrupt: the partial reply, already sent, is read first.
    QTest::qWait(200);
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
        return ScriptedHttpServer::eventStream(
            ScriptedHttpServer::dataLine("Copied text.") + ScriptedHttpServer::doneLine(), false);
    });
    const ProcessRun run = cli({"rewrite", "--copy"}, "copid text");
    QCOMPARE(run.exitCode, 0);
    QCOMPARE(run.out, QByteArray("Copied text.\n"));
    QCOMPARE(run.err, QByteArray("Copied.\n"));

    // The command has exited; its background copy still serves the clipboard.
    const auto read = [&](const QString& target) {
        return test::runProcess(xclip, {"-selection", "clipboard", "-t", target, "-o"}, m_env).out;
    };
    QCOMPARE(read(QStringLiteral("UTF8_STRING")), QByteArray("Copied text."));
    QVERIFY(read(QStringLiteral("TARGETS")).contains("x-kde-passwordManagerHint"));
    // Another program taking the clipboard ends the background copy.
    test::runProcess(xclip, {"-selection", "clipboard", "-i"}, m_env, "other");
    QTRY_COMPARE_WITH_TIMEOUT(read(QStringLiteral("UTF8_STRING")), QByteArray("other"), 5000);
}

void CliEndToEndTest::exportNeverOverwritesOrTakesAPresetForAFile() {
    QDir::setCurrent(m_home->path());
    // "Fix" names a preset: not taken as the file name.
    const ProcessRun lone = cli({"presets", "export", "Fix"});
    QCOMPARE(lone.exitCode, 2);
    QVERIFY(lone.err.contains("scrivel-cli presets export Fix FILE"));
    QVERIFY(!QFile::exists(m_home->filePath(QStringLiteral("Fix"))));

    const QString path = file(QStringLiteral("mine.scrivel.json"), "keep me");
    const auto content = [&] {
        QFile existing(path);
        return existing.open(QIODevice::ReadOnly) ? existing.readAll() : QByteArray();
    };
    for (const QStringList& arguments :
         {QStringList{"presets", "export", path}, QStringList{"presets", "export", "Fix", path}}) {
        const ProcessRun refused = cli(arguments);
        QCOMPARE(refused.exitCode, 1);
        QVERIFY(refused.err.contains("Add --force"));
        QCOMPARE(content(), QByteArray("keep me"));
    }
    QCOMPARE(cli({"presets", "export", "Fix", path, "--force"}).exitCode, 0);
    const auto pack = PresetPackDocument::decode(content());
    QVERIFY(pack);
    QCOMPARE(pack->presets.size(), 1);
    QCOMPARE(pack->presets[0].name, QStringLiteral("Fix"));

    // A folder gets the proposed file name.
    QCOMPARE(cli({"presets", "export", "make concise", m_home->path()}).exitCode, 0);
    QVERIFY(QFile::exists(m_home->filePath(QStringLiteral("Make Concise.scrivel.json"))));
}

void CliEndToEndTest::presetsAreListedAndPickedByNameOrID() {
    const ProcessRun listed = cli({"presets"});
    QCOMPARE(listed.exitCode, 0);
    const QList<QByteArray> builtIns = listed.out.trimmed().split('\n');
    QCOMPARE(builtIns.size(), 3);
    QVERIFY(builtIns[0].startsWith("* Fix\tGroq \xc2\xb7 openai/gpt-oss-120b\t"));
    QVERIFY(builtIns[1].startsWith("  Make Concise\t"));
    QCOMPARE(cli({"presets", "add-pack", "translation"}).out,
             QByteArray("Added 4 presets from Translation.\n"));
    QCOMPARE(cli({"presets", "use", "to french"}).out, QByteArray("Active preset: To French\n"));
    QCOMPARE(cli({"presets", "add-pack", "Translation"}).exitCode, 0);
    QList<QByteArray> ids;
    for (const QByteArray& line : cli({"presets"}).out.split('\n')) {
        if (line.contains("To French"))
            ids << line.split('\t').last();
    }
    QCOMPARE(ids.size(), 2);
    // What an ambiguous name is told is the lookup suite's; here, that it
    // stops the command.
    QCOMPARE(cli({"presets", "use", "To French"}).exitCode, 2);
    QCOMPARE(cli({"rewrite", "--preset", "To French"}, "text").exitCode, 2);
    QCOMPARE(cli({"presets", "use", QString::fromLatin1(ids[1])}).exitCode, 0);
    QVERIFY(cli({"presets"}).out.contains("* To French\t"));
}

void CliEndToEndTest::keyPromptRestoresTheTerminalWhenInterrupted() {
    const int master = ::posix_openpt(O_RDWR | O_NOCTTY);
    QVERIFY(master >= 0 && ::grantpt(master) == 0 && ::unlockpt(master) == 0);
    const int terminal = ::open(::ptsname(master), O_RDWR | O_NOCTTY);
    QVERIFY(terminal >= 0);
    auto closeBoth = qScopeGuard([&] {
        ::close(terminal);
        ::close(master);
    });
    const auto echoing = [&] {
        termios mode{};
        ::tcgetattr(terminal, &mode);
        return (mode.c_lflag & ECHO) != 0;
    };
    QVERIFY(echoing());

    QProcess process;
    process.setProcessEnvironment(m_env);
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
    arguments.replaceInStrings(QStringLiteral("FILE"), file("input.scrivel.json", input));
    const ProcessRun run = cli(arguments);
    QCOMPARE(run.exitCode, exitCode);
    QVERIFY2((run.out + run.err).contains(said), run.out + run.err);
    QVERIFY(!run.out.contains("help-all"));
}

void CliEndToEndTest::damagedPresetsAreCopiedAndToldUntilSaved() {
    QCOMPARE(cli({"presets"}).exitCode, 0); // the built-ins, stored
    const QString folder = m_home->filePath(QStringLiteral("config/Scrivel"));
    QByteArray damaged;
    {
        QSettingsStore settings(folder + QStringLiteral("/Scrivel.conf"));
        damaged = settings.data(PresetStore::presetsKey()).value_or(QByteArray());
        damaged.replace("\"name\":\"Make Concise\"", "\"name\":false");
        QVERIFY(settings.setData(PresetStore::presetsKey(), damaged));
    }
    const auto copies = [&] {
        return QDir(folder).entryList({QStringLiteral("presets-backup-*.json")}, QDir::Files);
    };

    // Every command that reads the presets says it, in one line naming the
    // one copy, until the list is saved again.
    for (const QStringList& arguments : {QStringList{"presets"}, QStringList{"status"},
                                         QStringList{"presets", "use", "Improve Prompt"}}) {
        const ProcessRun run = cli(arguments);
        QVERIFY2(copies().size() == 1, qPrintable(copies().join(u' ')));
        QCOMPARE(run.err.left(run.err.indexOf('\n') + 1),
                 "Scrivel could read only 2 of your 3 stored presets. The stored presets were "
                 "copied, unchanged, to " +
                     QFile::encodeName(folder + u'/' + copies().value(0)) + ".\n");
    }
    QFile copy(folder + u'/' + copies().value(0));
    QVERIFY(copy.open(QIODevice::ReadOnly));
    QCOMPARE(copy.readAll(), damaged);
    const ProcessRun listed = cli({"presets"});
    QCOMPARE(listed.exitCode, 0);
    QVERIFY(listed.out.startsWith("  Fix\t") && listed.out.contains("* Improve Prompt\t"));

    QCOMPARE(cli({"presets", "edit", "Fix", "--model", "m"}).exitCode, 0);
    QCOMPARE(cli({"presets"}).err, QByteArray());
}

void CliEndToEndTest::unusableSettingsFailTheCommand_data() {
    QTest::addColumn<bool>("settingsFileIsAFolder"); // else the folder is a file
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QByteArray>("said");
    const QByteArray unsaved =
        "Scrivel couldn’t save your settings to HOME/config/Scrivel/Scrivel.conf.\n";
    const QByteArray unread =
        "Scrivel couldn’t read your settings from HOME/config/Scrivel/Scrivel.conf.\n";
    QTest::newRow("use, where the folder is a file")
        << false << QStringList{"presets", "use", "Fix"} << unsaved;
    QTest::newRow("add a pack, where the folder is a file")
        << false << QStringList{"presets", "add-pack", "Translation"} << unsaved;
    QTest::newRow("list, where the file is a folder") << true << QStringList{"presets"} << unread;
    QTest::newRow("status, where the file is a folder") << true << QStringList{"status"} << unread;
    QTest::newRow("rewrite, where the file is a folder")
        << true << QStringList{"rewrite", "--preset", "Fix"} << unread;
}

void CliEndToEndTest::unusableSettingsFailTheCommand() {
    QFETCH(bool, settingsFileIsAFolder);
    QFETCH(QStringList, arguments);
    QFETCH(QByteArray, said);
    const QString folder = m_home->filePath(QStringLiteral("config/Scrivel"));
    if (settingsFileIsAFolder)
        QVERIFY(QDir().mkpath(folder + QStringLiteral("/Scrivel.conf")));
    else
        QVERIFY(QDir().mkpath(m_home->filePath(QStringLiteral("config"))) &&
                !file(QStringLiteral("config/Scrivel"), "").isEmpty());

    const ProcessRun run = cli(arguments, "text");
    QCOMPARE(run.exitCode, 1);
    QCOMPARE(run.out, QByteArray()); // nothing reported as done
    QVERIFY2(run.err.endsWith(said.replace("HOME", QFile::encodeName(m_home->path()))), run.err);
}

void CliEndToEndTest::aLockedKeyringIsNeverNoKey() {
    test::PrivateKeyring keyring;
    const QString problem = keyring.start();
    if (problem.startsWith(QLatin1String("needs")))
        QSKIP(qPrintable(problem));
    QVERIFY2(problem.isEmpty(), qPrintable(problem));
    m_env.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), keyring.busAddress());
    m_env.remove(QStringLiteral("SCRIVEL_SECRET_STORE"));
    addLocalPreset();
    const QString url = m_server->url(QStringLiteral("/v1")).toString();
    m_server->setHandler([](const auto&) { return ScriptedHttpServer::status(401); });
    QCOMPARE(cli({"key", "set", "custom", "--base-url", url}, "sk-local").exitCode, 0);
    QCOMPARE(cli({"key", "set", "groq"}, "gsk-remote").exitCode, 0);
    QVERIFY(keyring.lockDefaultCollection());

    // Each names the key store, exits 1 and sends nothing: the local
    // server takes a key, but is never asked without it.
    const QByteArray keychain =
        "Couldn\xe2\x80\x99t access the API key in the desktop\xe2\x80\x99s keyring";
    const QList<QStringList> commands = {{"key", "status", "groq"},
                                         {"status"},
                                         {"rewrite"},
                                         {"rewrite", "--preset", "Make Concise"},
                                         {"models", "custom", "--base-url", url}};
    for (const QStringList& command : commands) {
        const ProcessRun run = cli(command, "teh cat");
        QVERIFY2(run.err.startsWith(keychain), qPrintable(command.join(' ') + ": " + run.err));
        QVERIFY2(run.err.contains("running and unlocked"), run.err);
        QCOMPARE(run.exitCode, 1);
        QVERIFY(!run.out.contains("no key"));
    }
    QCOMPARE(m_server->requests().size(), 0);
}

void CliEndToEndTest::speaksTheUsersLanguage_data() {
    QTest::addColumn<QStringList>("environment");
    QTest::addColumn<QString>("unknown");
    QTest::addColumn<QString>("usage");
    QTest::addColumn<QString>("packs");
    const QString german =
        QStringLiteral("Keine Voreinstellung „Nope“. Siehe „scrivel-cli presets“.");
    const QString english = QStringLiteral("No preset \"Nope\". See 'scrivel-cli presets'.");
    const QString germanUsage = QStringLiteral("Aufruf: scrivel-cli <Befehl> [Optionen]");
    const QString englishUsage = QStringLiteral("Usage: scrivel-cli <command> [options]");
    QTest::newRow("LANGUAGE=de") << QStringList{"LANGUAGE=de"} << german << germanUsage
                                 << "Voreinstellungen";
    QTest::newRow("LANG=de_DE.UTF-8")
        << QStringList{"LANG=de_DE.UTF-8"} << german << germanUsage << "Voreinstellungen";
    QTest::newRow("LANG=C.UTF-8") << QStringList{"LANG=C.UTF-8"} << english << englishUsage
                                  << "presets";
    QTest::newRow("no translation: English")
        << QStringList{"LANG=fr_FR.UTF-8"} << english << englishUsage << "presets";
}

void CliEndToEndTest::speaksTheUsersLanguage() {
    QFETCH(QStringList, environment);
    QFETCH(QString, unknown);
    QFETCH(QString, usage);
    QFETCH(QString, packs);
    for (const char* name : {"LANGUAGE", "LC_ALL", "LC_MESSAGES", "LANG"})
        m_env.remove(QString::fromLatin1(name));
    for (const QString& setting : environment)
        m_env.insert(setting.section(u'=', 0, 0), setting.section(u'=', 1));

    const ProcessRun missing = cli({"presets", "use", "Nope"});
    QCOMPARE(missing.exitCode, 2);
    QCOMPARE(QString::fromUtf8(missing.err).trimmed(), unknown);
    const ProcessRun help = cli({});
    QVERIFY2(QString::fromUtf8(help.err).startsWith(usage), help.err.constData());
    // A plural from the pack list: "3 presets", "3 Voreinstellungen".
    const ProcessRun listed = cli({"presets", "packs"});
    QCOMPARE(listed.exitCode, 0);
    QVERIFY2(QString::fromUtf8(listed.out)
                 .contains(QRegularExpression(QStringLiteral("\\t\\d+ %1\\.").arg(packs))),
             listed.out.constData());
}

QTEST_GUILESS_MAIN(CliEndToEndTest)

#include "tst_CliEndToEnd.moc"
