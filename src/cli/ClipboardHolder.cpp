#include "ClipboardHolder.h"

#include "app/Clipboard.h"
#include "linux/QtClipboard.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QTimer>
#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

namespace scrivel::cli::ClipboardHolder {

bool copyInBackground(const QString& text) {
    if (!qobject_cast<QGuiApplication*>(QCoreApplication::instance()))
        return false;
    QtClipboard clipboard;
    if (!copyToClipboard(clipboard, text))
        return false;
    std::fflush(stdout);
    std::fflush(stderr);
    const pid_t child = ::fork();
    if (child < 0)
        return false;
    if (child > 0)
        return true; // the caller exits; the child serves the clipboard

    // The child: detach from the terminal and serve until the clipboard is
    // taken over (or an hour has passed).
    ::setsid();
    const int devNull = ::open("/dev/null", O_RDWR);
    if (devNull >= 0) {
        ::dup2(devNull, STDIN_FILENO);
        ::dup2(devNull, STDOUT_FILENO);
        ::dup2(devNull, STDERR_FILENO);
    }
    QClipboard* system = QGuiApplication::clipboard();
    QObject::connect(system, &QClipboard::dataChanged, system, [system] {
        if (!system->ownsClipboard())
            QCoreApplication::quit();
    });
    QTimer::singleShot(60 * 60 * 1000, system, &QCoreApplication::quit);
    QCoreApplication::exec();
    ::_exit(0);
}

} // namespace scrivel::cli::ClipboardHolder
