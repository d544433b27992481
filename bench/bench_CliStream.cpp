// Runs the real `scrivel-cli rewrite` against a loopback server that streams a
// reply in many small events, with N and with 4 × N events of the same size,
// and reports the CLI's CPU time (user + system, from wait4) and wall time.
// Each size runs twice: standard error on a pipe (no draft is shown) and on a
// pseudo-terminal (the draft streams in).
//
// The work per event must not grow with the reply: 4 × the events should cost
// about 4 × the time. The ratio is given as measured and with the cost of a
// one-event run (start-up, settings, the connection) taken off both sides; a
// copy of the whole reply per event shows as a net ratio far above 4 (up to
// 16 when the copies dominate).
//
//   bench_CliStream [events] [bytes-per-event] [rounds] [gap-µs]
//   defaults: 2500 events of 52 bytes, best of 5, sent back to back (4 × the
//   events make a 520,000-byte reply in 10,000 events, just under the
//   512 KiB a reply may have). With a gap between events the client reads
//   them one at a time, and the cost of each read hides much of what grows
//   with the reply.

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <algorithm>
#include <arpa/inet.h>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <mutex>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <pty.h>
#include <spawn.h>
#include <string>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

extern char** environ;

namespace {

[[noreturn]] void fail(const std::string& message) {
    std::fprintf(stderr, "bench_CliStream: %s\n", message.c_str());
    std::exit(1);
}

// An OpenAI-compatible event stream, one event a piece: `events` deltas of
// `bytes` characters each, a finishing chunk and [DONE].
std::vector<QByteArray> eventStream(int events, int bytes) {
    static const QByteArray sentence = "Streams arrive in many small pieces, one after another. ";
    QByteArray piece;
    while (piece.size() < bytes)
        piece += sentence;
    piece.truncate(bytes);
    piece.replace(' ', '_'); // the cleaner leaves no trailing blank to trim
    std::vector<QByteArray> stream(size_t(events),
                                   "data: {\"choices\":[{\"index\":0,\"delta\":{\"content\":\"" +
                                       piece + "\"},\"finish_reason\":null}]}\n\n");
    stream.push_back("data: {\"choices\":[{\"index\":0,\"delta\":{},\"finish_reason\":\"stop\"}]}"
                     "\n\ndata: [DONE]\n\n");
    return stream;
}

// A blocking HTTP/1.1 server on 127.0.0.1 in its own thread: every POST to
// …/chat/completions gets the current stream, anything else a 404. One
// request per connection.
class LoopbackServer {
public:
    explicit LoopbackServer(int gapMicroseconds) : m_gapMicroseconds(gapMicroseconds) {
        m_listener = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t length = sizeof address;
        if (m_listener < 0 || ::bind(m_listener, (sockaddr*)&address, sizeof address) != 0 ||
            ::listen(m_listener, 8) != 0 ||
            ::getsockname(m_listener, (sockaddr*)&address, &length) != 0)
            fail("cannot listen on 127.0.0.1");
        m_port = ntohs(address.sin_port);
        m_thread = std::thread([this] { serve(); });
    }
    ~LoopbackServer() {
        m_stopping = true;
        ::shutdown(m_listener, SHUT_RDWR);
        ::close(m_listener);
        m_thread.join();
    }

    int port() const { return m_port; }
    void setStream(std::vector<QByteArray> stream) {
        const std::lock_guard lock(m_mutex);
        m_stream = std::move(stream);
    }

private:
    void serve() {
        while (!m_stopping) {
            const int connection = ::accept4(m_listener, nullptr, nullptr, SOCK_CLOEXEC);
            if (connection < 0)
                continue;
            answer(connection);
            ::close(connection);
        }
    }

    void answer(int connection) {
        QByteArray request;
        char buffer[16384];
        qsizetype headerEnd = -1;
        while (headerEnd < 0) {
            const ssize_t n = ::read(connection, buffer, sizeof buffer);
            if (n <= 0)
                return;
            request.append(buffer, n);
            headerEnd = request.indexOf("\r\n\r\n");
        }
        qsizetype bodyLength = 0;
        for (const QByteArray& line : request.left(headerEnd).split('\n')) {
            if (line.toLower().startsWith("content-length:"))
                bodyLength = line.mid(15).trimmed().toLongLong();
        }
        while (request.size() < headerEnd + 4 + bodyLength) {
            const ssize_t n = ::read(connection, buffer, sizeof buffer);
            if (n <= 0)
                return;
            request.append(buffer, n);
        }
        const bool streams = request.startsWith("POST ") &&
                             request.left(request.indexOf('\n')).contains("/chat/completions");
        if (!streams) {
            writeAll(connection, "HTTP/1.1 404 Not Found\r\nContent-Length: 0\r\n"
                                 "Connection: close\r\n\r\n");
            return;
        }
        std::vector<QByteArray> stream;
        {
            const std::lock_guard lock(m_mutex);
            stream = m_stream;
        }
        // Chunked, as providers stream (an announced length would be held
        // against the limit of a whole response), each event in its own
        // chunk. Without a gap the whole stream goes out in one write and the
        // client reads many events at a time, so that little but the work
        // per event is measured; with a gap the events go out one by one, a
        // moment apart, as a model would send them.
        const int on = 1;
        ::setsockopt(connection, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
        QByteArray pending("HTTP/1.1 200 OK\r\nContent-Type: text/event-stream\r\n"
                           "Transfer-Encoding: chunked\r\nConnection: close\r\n\r\n");
        const timespec gap{0, long(m_gapMicroseconds) * 1000};
        for (const QByteArray& event : stream) {
            pending += QByteArray::number(event.size(), 16) + "\r\n" + event + "\r\n";
            if (m_gapMicroseconds > 0) {
                if (!writeAll(connection, pending))
                    return;
                pending.clear();
                ::nanosleep(&gap, nullptr);
            }
        }
        writeAll(connection, pending + "0\r\n\r\n");
    }

    static bool writeAll(int fd, const QByteArray& bytes) {
        for (qsizetype at = 0; at < bytes.size();) {
            const ssize_t n = ::write(fd, bytes.constData() + at, size_t(bytes.size() - at));
            if (n < 0 && errno == EINTR)
                continue;
            if (n <= 0)
                return false;
            at += n;
        }
        return true;
    }

    const int m_gapMicroseconds;
    int m_listener = -1;
    int m_port = 0;
    std::atomic<bool> m_stopping = false;
    std::mutex m_mutex;
    std::vector<QByteArray> m_stream;
    std::thread m_thread;
};

struct Measured {
    double cpuSeconds = 0;
    double wallSeconds = 0;
};

double seconds(const timeval& t) {
    return double(t.tv_sec) + double(t.tv_usec) / 1e6;
}

// Runs scrivel-cli with arguments, input from inputPath and output to
// outputPath; standard error goes to a pseudo-terminal or a pipe, which a
// second thread drains. Fails the benchmark unless it exits 0.
Measured runCli(const std::vector<std::string>& arguments, const QString& inputPath,
                const QString& outputPath, bool terminal) {
    int readEnd = -1;
    int writeEnd = -1;
    if (terminal) {
        winsize size{};
        size.ws_row = 50;
        size.ws_col = 120;
        if (::openpty(&readEnd, &writeEnd, nullptr, nullptr, &size) != 0)
            fail("no pseudo-terminal");
    } else {
        int fds[2];
        if (::pipe2(fds, O_CLOEXEC) != 0)
            fail("no pipe");
        readEnd = fds[0];
        writeEnd = fds[1];
    }
    ::fcntl(readEnd, F_SETFD, FD_CLOEXEC);
    ::fcntl(writeEnd, F_SETFD, FD_CLOEXEC);

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 0, inputPath.toLocal8Bit().constData(), O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, 1, outputPath.toLocal8Bit().constData(),
                                     O_WRONLY | O_CREAT | O_TRUNC, 0600);
    posix_spawn_file_actions_adddup2(&actions, writeEnd, 2);
    std::vector<char*> argv{const_cast<char*>(SCRIVEL_CLI_PATH)};
    for (const std::string& argument : arguments)
        argv.push_back(const_cast<char*>(argument.c_str()));
    argv.push_back(nullptr);

    std::string captured;
    const auto started = std::chrono::steady_clock::now();
    pid_t pid = 0;
    const int spawned =
        ::posix_spawn(&pid, SCRIVEL_CLI_PATH, &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    ::close(writeEnd);
    if (spawned != 0)
        fail(std::string("cannot start ") + SCRIVEL_CLI_PATH + ": " + std::strerror(spawned));
    // A pseudo-terminal reads EIO once the child has gone; a pipe reads 0.
    std::thread drain([readEnd, &captured] {
        char buffer[65536];
        ssize_t n;
        while ((n = ::read(readEnd, buffer, sizeof buffer)) > 0 || (n < 0 && errno == EINTR)) {
            if (n > 0 && captured.size() < 4096)
                captured.append(buffer, size_t(n));
        }
    });
    int status = 0;
    rusage usage{};
    while (::wait4(pid, &status, 0, &usage) < 0 && errno == EINTR) {
    }
    const auto ended = std::chrono::steady_clock::now();
    drain.join();
    ::close(readEnd);
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0)
        fail("scrivel-cli failed (status " + std::to_string(status) + "): " + captured);
    return {seconds(usage.ru_utime) + seconds(usage.ru_stime),
            std::chrono::duration<double>(ended - started).count()};
}

} // namespace

int main(int argc, char* argv[]) {
    const int events = argc > 1 ? std::atoi(argv[1]) : 2500;
    const int bytesPerEvent = argc > 2 ? std::atoi(argv[2]) : 52;
    const int rounds = argc > 3 ? std::atoi(argv[3]) : 5;
    const int gapMicroseconds = argc > 4 ? std::atoi(argv[4]) : 0;
    if (events < 1 || bytesPerEvent < 1 || rounds < 1 || gapMicroseconds < 0 ||
        gapMicroseconds > 999999)
        fail("usage: bench_CliStream [events] [bytes-per-event] [rounds] [gap-µs]");
    if (4LL * events * bytesPerEvent > 524288)
        fail("4 x events x bytes-per-event must stay within a reply's 524,288 bytes");

    QTemporaryDir home;
    if (!home.isValid())
        fail("no temporary folder");
    // The CLI's own settings and file key store, nothing from the desktop,
    // no proxy between it and the loopback server.
    ::setenv("XDG_CONFIG_HOME", QDir(home.path()).filePath("config").toLocal8Bit().constData(), 1);
    ::setenv("XDG_DATA_HOME", QDir(home.path()).filePath("data").toLocal8Bit().constData(), 1);
    ::setenv("SCRIVEL_SECRET_STORE", "file", 1);
    for (const char* name : {"http_proxy", "HTTP_PROXY", "all_proxy", "ALL_PROXY", "SCRIVEL_LOG"})
        ::unsetenv(name);

    LoopbackServer server(gapMicroseconds);
    const QString pack = QDir(home.path()).filePath("bench.scrivel.json");
    const QString input = QDir(home.path()).filePath("input.txt");
    const QString output = QDir(home.path()).filePath("output.txt");
    {
        QFile file(pack);
        const QByteArray json =
            "{\"formatVersion\": 1, \"kind\": \"scrivel.preset-pack\", \"presets\": [{"
            "\"name\": \"Bench\", \"providerID\": \"custom\", \"customBaseURL\": "
            "\"http://127.0.0.1:" +
            QByteArray::number(server.port()) +
            "/v1\", \"model\": \"bench\", \"instructions\": \"Fix it.\", "
            "\"validatesEdits\": false}]}";
        QFile text(input);
        if (!file.open(QIODevice::WriteOnly) || file.write(json) != json.size() ||
            !text.open(QIODevice::WriteOnly) || text.write("Some text to rewrite.\n") < 0)
            fail("cannot write into the temporary folder");
    }
    runCli({"presets", "import", pack.toStdString()}, "/dev/null", output, false);
    const std::vector<std::string> rewrite{"rewrite", "--preset", "Bench", input.toStdString()};

    auto best = [&](int count, bool terminal) {
        server.setStream(eventStream(count, bytesPerEvent));
        Measured least{1e9, 1e9};
        for (int round = 0; round < rounds; ++round) {
            const Measured m = runCli(rewrite, input, output, terminal);
            least.cpuSeconds = std::min(least.cpuSeconds, m.cpuSeconds);
            least.wallSeconds = std::min(least.wallSeconds, m.wallSeconds);
            if (QFileInfo(output).size() < qint64(count) * bytesPerEvent)
                fail("the result is shorter than the streamed reply");
        }
        return least;
    };

    std::printf("scrivel-cli rewrite, %d-byte events %d µs apart, best of %d\n", bytesPerEvent,
                gapMicroseconds, rounds);
    std::printf("stderr    events  reply bytes  cpu s   wall s\n");
    for (const bool terminal : {false, true}) {
        const char* where = terminal ? "terminal" : "pipe";
        const Measured one = best(1, terminal);
        const Measured single = best(events, terminal);
        const Measured quadruple = best(4 * events, terminal);
        for (const auto& [count, m] :
             {std::pair{1, one}, std::pair{events, single}, std::pair{4 * events, quadruple}})
            std::printf("%-8s  %6d  %11lld  %6.3f  %6.3f\n", where, count,
                        static_cast<long long>(count) * bytesPerEvent, m.cpuSeconds, m.wallSeconds);
        const double net1 = std::max(single.cpuSeconds - one.cpuSeconds, 1e-3);
        const double net4 = std::max(quadruple.cpuSeconds - one.cpuSeconds, 1e-3);
        std::printf("%-8s  4x events: cpu x%.2f as measured, x%.2f net of a one-event run "
                    "(linear: 4)\n",
                    where, quadruple.cpuSeconds / single.cpuSeconds, net4 / net1);
    }
    return 0;
}
