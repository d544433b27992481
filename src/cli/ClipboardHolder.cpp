#include "cli/ClipboardHolder.h"

#include "core/desktop/Clipboard.h"
#include "platform/linux/QtClipboard.h"

#include <QClipboard>
#include <QCoreApplication>
#include <QFile>
#include <QGuiApplication>
#include <QTimer>
#include <cstdio>
#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

namespace scrivel::cli::ClipboardHolder {

Outcome copyInBackground(const QString& text) {
    if (qEnvironmentVariableIsEmpty("DISPLAY") && qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY"))
        return Outcome::noDisplay;
    const QByteArray program = QFile::encodeName(QCoreApplication::applicationFilePath());
    int toHelper[2];
    int fromHelper[2];
    if (::pipe(toHelper) != 0)
        return Outcome::failed;
    if (::pipe(fromHelper) != 0) {
        ::close(toHelper[0]);
        ::close(toHelper[1]);
        return Outcome::failed;
    }
    std::fflush(stdout);
    std::fflush(stderr);
    const pid_t child = ::fork();
    if (child == 0) {
        // A fresh process: a Qt GUI cannot be carried across fork() (its X
        // connection is read by a thread that fork() leaves behind).
        ::setsid();
        ::dup2(toHelper[0], STDIN_FILENO);
        ::dup2(fromHelper[1], STDOUT_FILENO);
        const int devNull = ::open("/dev/null", O_WRONLY);
        if (devNull >= 0)
            ::dup2(devNull, STDERR_FILENO);
        ::close(toHelper[0]);
        ::close(toHelper[1]);
        ::close(fromHelper[0]);
        ::close(fromHelper[1]);
        ::execl(program.constData(), "scrivel-cli", serveCommand(), static_cast<char*>(nullptr));
        ::_exit(127);
    }
    ::close(toHelper[0]);
    ::close(fromHelper[1]);
    bool copied = false;
    if (child > 0) {
        const QByteArray bytes = text.toUtf8();
        qsizetype written = 0;
        while (written < bytes.size()) {
            const auto n =
                ::write(toHelper[1], bytes.constData() + written, size_t(bytes.size() - written));
            if (n <= 0)
                break;
            written += n;
        }
        ::close(toHelper[1]);
        toHelper[1] = -1;
        pollfd answer{fromHelper[0], POLLIN, 0};
        char reply[8] = {};
        if (::poll(&answer, 1, 10000) > 0 && ::read(fromHelper[0], reply, 2) == 2)
            copied = reply[0] == 'o' && reply[1] == 'k';
    }
    if (toHelper[1] >= 0)
        ::close(toHelper[1]);
    ::close(fromHelper[0]);
    return copied ? Outcome::copied : Outcome::failed;
}

int serve(int argc, char* argv[]) {
    QGuiApplication app(argc, argv);
    QFile input;
    if (!input.open(stdin, QIODevice::ReadOnly))
        return 1;
    const QString text = QString::fromUtf8(input.readAll());
    QtClipboard clipboard;
    const bool copied = copyToClipboard(clipboard, text);
    std::fputs(copied ? "ok\n" : "no\n", stdout);
    std::fflush(stdout);
    ::close(STDOUT_FILENO);
    if (!copied)
        return 1;
    QClipboard* system = QGuiApplication::clipboard();
    QObject::connect(system, &QClipboard::dataChanged, &app, [system] {
        if (!system->ownsClipboard())
            QCoreApplication::quit();
    });
    QTimer::singleShot(60 * 60 * 1000, &app, &QCoreApplication::quit); // an hour at most
    return app.exec();
}

} // namespace scrivel::cli::ClipboardHolder
