#include "support/ProcessRun.h"

#include "core/presets/PresetPackDocument.h"

#include <QDir>
#include <QFile>
#include <QHash>
#include <QProcess>
#include <QStandardPaths>
#include <QTest>
#include <algorithm>

namespace scrivel::test {

QProcessEnvironment scrivelEnvironment(const QString& home) {
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("XDG_CONFIG_HOME"), home + QStringLiteral("/config"));
    env.insert(QStringLiteral("XDG_DATA_HOME"), home + QStringLiteral("/data"));
    env.insert(QStringLiteral("SCRIVEL_SECRET_STORE"), QStringLiteral("file"));
    env.remove(QStringLiteral("QT_QPA_PLATFORM"));
    // An X11 session on the test display, whatever session the tests were
    // started from (the Wayland suites say otherwise themselves).
    env.remove(QStringLiteral("WAYLAND_DISPLAY"));
    env.insert(QStringLiteral("XDG_SESSION_TYPE"), QStringLiteral("x11"));
    env.remove(QStringLiteral("http_proxy"));
    env.remove(QStringLiteral("HTTP_PROXY"));
    return env;
}

ProcessRun runProcess(const QString& program, const QStringList& arguments,
                      const QProcessEnvironment& environment, const QByteArray& input,
                      int timeoutMs) {
    QProcess process;
    process.setProcessEnvironment(environment);
    process.start(program, arguments);
    if (!process.waitForStarted())
        return {};
    process.write(input);
    process.closeWriteChannel();
    if (!QTest::qWaitFor([&] { return process.state() == QProcess::NotRunning; }, timeoutMs)) {
        process.kill();
        process.waitForFinished(1000);
    }
    ProcessRun run;
    run.exitCode = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    run.out = process.readAllStandardOutput();
    run.err = process.readAllStandardError();
    return run;
}

QString writeLocalPresetPack(const QString& folder, const QString& baseURL) {
    PresetPackItem item;
    item.name = QStringLiteral("Local");
    item.providerID = QStringLiteral("custom");
    item.customBaseURL = baseURL;
    item.model = QStringLiteral("local-model");
    item.instructions = QStringLiteral("Fix it.");
    PresetPackDocument pack;
    pack.name = QStringLiteral("Local");
    pack.presets = {item};
    const QString path = QDir(folder).filePath(QStringLiteral("local.scrivel.json"));
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(*pack.encode()) < 0)
        return {};
    return path;
}

bool hasPrograms(std::initializer_list<const char*> programs) {
    return std::ranges::all_of(programs, [](const char* program) {
        return !QStandardPaths::findExecutable(QString::fromLatin1(program)).isEmpty();
    });
}

QByteArray xdotool(const QStringList& arguments) {
    QProcess process;
    process.start(QStringLiteral("xdotool"), arguments);
    process.waitForFinished(10000);
    return process.readAllStandardOutput();
}

void stopProcess(QProcess& process) {
    if (process.state() == QProcess::NotRunning)
        return;
    process.terminate();
    if (!process.waitForFinished(5000)) {
        process.kill();
        process.waitForFinished(5000);
    }
}

std::unique_ptr<QProcess> startWindowManager() {
    auto manager = std::make_unique<QProcess>();
    manager->setProcessChannelMode(QProcess::ForwardedErrorChannel);
    manager->setStandardOutputFile(QProcess::nullDevice());
    // --replace: one that an earlier suite stopped may still be letting go.
    manager->start(QStringLiteral("openbox"),
                   {QStringLiteral("--sm-disable"), QStringLiteral("--replace")});
    if (!manager->waitForStarted())
        return nullptr;
    QByteArray seen;
    // Returns as soon as it manages; the bound only matters on a loaded
    // machine, where its start-up (fonts, theme) can take seconds.
    const bool managing = QTest::qWaitFor(
        [&] {
            QProcess xprop;
            xprop.start(QStringLiteral("xprop"), {"-root", "_NET_SUPPORTING_WM_CHECK"});
            xprop.waitForFinished(2000);
            seen = xprop.readAllStandardOutput().trimmed();
            return manager->state() != QProcess::Running || seen.contains("window id");
        },
        20000);
    if (!managing || manager->state() != QProcess::Running) {
        qWarning().noquote() << "openbox did not start managing windows: it"
                             << (manager->state() == QProcess::Running
                                     ? QStringLiteral("still runs")
                                     : QStringLiteral("exited with %1").arg(manager->exitCode()))
                             << "and the root window says:" << QString::fromLocal8Bit(seen);
        stopProcess(*manager);
        return nullptr;
    }
    return manager;
}

QList<VisibleWindow> visibleWindows(const QStringList& search) {
    QList<VisibleWindow> windows;
    const QByteArray ids = xdotool(QStringList{"search", "--onlyvisible"} + search);
    for (const QByteArray& id : ids.trimmed().split('\n')) {
        if (id.isEmpty())
            continue;
        QHash<QByteArray, int> values;
        const QString window = QString::fromLatin1(id);
        for (const QByteArray& line :
             xdotool({"getwindowgeometry", "--shell", window}).split('\n')) {
            const qsizetype equals = line.indexOf('=');
            if (equals > 0)
                values.insert(line.left(equals), line.mid(equals + 1).toInt());
        }
        windows.append({window, QRect(values.value("X"), values.value("Y"), values.value("WIDTH"),
                                      values.value("HEIGHT"))});
    }
    return windows;
}

} // namespace scrivel::test
