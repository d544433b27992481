#include "cli/Terminal.h"

#include <QCoreApplication>
#include <QFile>
#include <QSocketNotifier>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <iterator>
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

void writeProblem(const QString& message, const QString& hint) {
    write(stderr, message + QStringLiteral("\n"));
    if (!hint.isEmpty())
        write(stderr, hint + QStringLiteral("\n"));
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

namespace {

// The terminal's settings while a secret is typed, so that a signal handler
// can put them back: a shell such as dash leaves a terminal without echo as
// the program left it.
termios savedTerminal{};
termios quietTerminal{};
volatile sig_atomic_t terminalIsQuiet = 0;
constexpr int secretSignals[] = {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGTSTP};
struct sigaction previousActions[std::size(secretSignals)];
// "Cancelled." in the user's language, made before the handlers go in: the
// handler itself may not translate.
char cancelledLine[256] = "\nCancelled.\n"; // English until then: not translated

void writeRaw(const char* text) {
    [[maybe_unused]] const auto written = ::write(STDERR_FILENO, text, std::strlen(text));
}

void installSecretHandlers();

// Only async-signal-safe calls: tcsetattr, write, sigaction, raise, _exit.
void secretSignalHandler(int signal) {
    if (terminalIsQuiet)
        ::tcsetattr(STDIN_FILENO, TCSANOW, &savedTerminal);
    if (signal == SIGTSTP) {
        // Stop with the terminal restored; hide the typing again on resume.
        struct sigaction defaultAction {};
        defaultAction.sa_handler = SIG_DFL;
        ::sigaction(SIGTSTP, &defaultAction, nullptr);
        sigset_t stop;
        sigemptyset(&stop);
        sigaddset(&stop, SIGTSTP);
        ::sigprocmask(SIG_UNBLOCK, &stop, nullptr);
        ::raise(SIGTSTP);
        installSecretHandlers();
        if (terminalIsQuiet)
            ::tcsetattr(STDIN_FILENO, TCSANOW, &quietTerminal);
        return;
    }
    if (signal == SIGINT) {
        writeRaw(cancelledLine);
        ::_exit(130);
    }
    writeRaw("\n");
    struct sigaction defaultAction {};
    defaultAction.sa_handler = SIG_DFL;
    ::sigaction(signal, &defaultAction, nullptr);
    ::raise(signal);
    ::_exit(128 + signal);
}

void installSecretHandlers() {
    struct sigaction action {};
    action.sa_handler = secretSignalHandler;
    action.sa_flags = SA_RESTART; // a stop and resume must not end the read
    sigemptyset(&action.sa_mask);
    for (const int signal : secretSignals)
        ::sigaction(signal, &action, nullptr);
}

} // namespace

std::optional<QString> readSecretLine(const QString& prompt) {
    const bool terminal = isTerminal(stdin) && ::tcgetattr(STDIN_FILENO, &savedTerminal) == 0;
    if (terminal) {
        const QByteArray cancelled =
            "\n" + QCoreApplication::translate("CliApplication", "Cancelled.").toUtf8() + "\n";
        if (cancelled.size() < qsizetype(sizeof cancelledLine))
            std::memcpy(cancelledLine, cancelled.constData(), size_t(cancelled.size()) + 1);
        write(stderr, prompt);
        for (size_t i = 0; i < std::size(secretSignals); ++i)
            ::sigaction(secretSignals[i], nullptr, &previousActions[i]);
        installSecretHandlers();
        quietTerminal = savedTerminal;
        quietTerminal.c_lflag &= ~tcflag_t(ECHO);
        terminalIsQuiet = 1;
        ::tcsetattr(STDIN_FILENO, TCSANOW, &quietTerminal);
    }
    QByteArray line;
    int c;
    while ((c = std::fgetc(stdin)) != EOF && c != '\n')
        line.append(char(c));
    if (terminal) {
        ::tcsetattr(STDIN_FILENO, TCSANOW, &savedTerminal);
        terminalIsQuiet = 0;
        for (size_t i = 0; i < std::size(secretSignals); ++i)
            ::sigaction(secretSignals[i], &previousActions[i], nullptr);
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
