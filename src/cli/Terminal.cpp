#include "Terminal.h"

#include <QFile>
#include <QSocketNotifier>
#include <csignal>
#include <fcntl.h>
#include <termios.h>
#include <unistd.h>

namespace scrivel::cli::Terminal {

namespace {

int interruptPipe[2] = {-1, -1};

void signalHandler(int) {
    const char byte = 1;
    // Only async-signal-safe work here: the event loop does the rest.
    [[maybe_unused]] const auto written = ::write(interruptPipe[1], &byte, 1);
}

} // namespace

bool isTerminal(FILE* stream) {
    return ::isatty(fileno(stream)) == 1;
}

void write(FILE* stream, const QString& text) {
    const QByteArray bytes = text.toUtf8();
    std::fwrite(bytes.constData(), 1, size_t(bytes.size()), stream);
    std::fflush(stream);
}

std::optional<QByteArray> readAll(const QString& pathOrDash) {
    QFile file;
    if (pathOrDash.isEmpty() || pathOrDash == QLatin1String("-")) {
        if (!file.open(stdin, QIODevice::ReadOnly))
            return std::nullopt;
    } else {
        file.setFileName(pathOrDash);
        if (!file.open(QIODevice::ReadOnly))
            return std::nullopt;
    }
    const QByteArray bytes = file.readAll();
    if (file.error() != QFileDevice::NoError)
        return std::nullopt;
    return bytes;
}

std::optional<QString> readSecretLine(const QString& prompt) {
    const bool terminal = isTerminal(stdin);
    termios saved{};
    if (terminal) {
        write(stderr, prompt);
        tcgetattr(STDIN_FILENO, &saved);
        termios quiet = saved;
        quiet.c_lflag &= ~tcflag_t(ECHO);
        tcsetattr(STDIN_FILENO, TCSANOW, &quiet);
    }
    QByteArray line;
    int c;
    while ((c = std::fgetc(stdin)) != EOF && c != '\n')
        line.append(char(c));
    if (terminal) {
        tcsetattr(STDIN_FILENO, TCSANOW, &saved);
        write(stderr, QStringLiteral("\n"));
    }
    if (line.isEmpty() && c == EOF)
        return std::nullopt;
    return QString::fromUtf8(line);
}

void onInterrupt(std::function<void()> handler) {
    if (interruptPipe[0] < 0) {
        if (::pipe(interruptPipe) != 0)
            return;
        ::fcntl(interruptPipe[1], F_SETFL, O_NONBLOCK);
        std::signal(SIGINT, signalHandler);
        std::signal(SIGTERM, signalHandler);
    }
    auto* notifier = new QSocketNotifier(interruptPipe[0], QSocketNotifier::Read);
    QObject::connect(notifier, &QSocketNotifier::activated, notifier,
                     [notifier, handler = std::move(handler)] {
                         char byte;
                         [[maybe_unused]] const auto read = ::read(interruptPipe[0], &byte, 1);
                         handler();
                         Q_UNUSED(notifier);
                     });
}

} // namespace scrivel::cli::Terminal
