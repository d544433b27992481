#include "platform/linux/LocalInstanceChannel.h"

#include <QJsonObject>
#include <QLocalSocket>
#include <QtTest>
#include <latch>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

using namespace scrivel;

namespace {

// Runs work on a thread of its own (a later start blocks in claim() and
// send()) while this thread's event loop serves the listening channel.
template <typename Work>
auto onOtherThread(Work work) {
    std::optional<decltype(work())> result;
    std::unique_ptr<QThread> thread(QThread::create([&] { result = work(); }));
    thread->start();
    // The work ends by itself: every wait in it has a time limit.
    while (!thread->wait(QDeadlineTimer(5)))
        QCoreApplication::processEvents();
    return std::move(*result);
}

// What a later start sees: how its claim went and the answers to its
// requests.
struct LaterStart {
    LocalInstanceChannel::Claim claim = LocalInstanceChannel::Claim::failed;
    QList<bool> answers;
};

LaterStart startAgain(const QString& path, const QList<InstanceRequest>& requests) {
    return onOtherThread([path, requests] {
        LocalInstanceChannel channel(path);
        LaterStart start{channel.claim(), {}};
        for (const InstanceRequest& request : requests)
            start.answers.append(channel.send(request, 5000));
        return start;
    });
}

// Leaves a socket file that nothing listens on, as a killed instance does.
bool leaveStaleSocket(const QString& path) {
    const int fd = ::socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    qstrncpy(address.sun_path, QFile::encodeName(path).constData(), sizeof address.sun_path);
    const bool bound = ::bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0;
    ::close(fd);
    return bound && QFileInfo(path).exists();
}

} // namespace

class LocalInstanceChannelTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void socketPathNeedsAPrivateRuntimeFolder_data();
    void socketPathNeedsAPrivateRuntimeFolder();
    void requestLines_data();
    void requestLines();
    void laterStartsReachTheListeningInstance();
    void staleSocketIsTakenOver();
    void overlongRequestIsDropped();
    void startsAtTheSameMomentListenOnce();

private:
    QTemporaryDir m_dir;
};

void LocalInstanceChannelTest::socketPathNeedsAPrivateRuntimeFolder_data() {
    QTest::addColumn<QString>("folder");
    QTest::addColumn<int>("mode");
    QTest::addColumn<QString>("display");
    QTest::addColumn<QString>("expected"); // a file name, or how the reason ends

    QTest::newRow("private") << "run" << 0700 << "x11-:0"
                             << "scrivel-x11-_0.socket";
    QTest::newRow("Wayland socket path") << "run" << 0700 << "wayland-/run/user/1000/wayland-1"
                                         << "scrivel-wayland-_run_user_1000_wayland-1.socket";
    QTest::newRow("unset") << "" << 0 << "x11-:0"
                           << "XDG_RUNTIME_DIR is unset";
    QTest::newRow("relative") << "relative/run" << 0 << "x11-:0"
                              << "is not an existing folder";
    QTest::newRow("missing") << "missing" << 0 << "x11-:0"
                             << "is not an existing folder";
    QTest::newRow("a file") << "file" << 0600 << "x11-:0"
                            << "is not an existing folder";
    QTest::newRow("open to the group") << "group" << 0750 << "x11-:0"
                                       << "is not private to this user";
    QTest::newRow("open to others") << "others" << 0701 << "x11-:0"
                                    << "is not private to this user";
    QTest::newRow("another user's") << "theirs" << 0700 << "x11-:0"
                                    << "is not private to this user";
    QTest::newRow("too long for a socket") << QString(100, u'd') << 0700 << "x11-:0"
                                           << "is too long a path for a socket";
}

void LocalInstanceChannelTest::socketPathNeedsAPrivateRuntimeFolder() {
    QFETCH(QString, folder);
    QFETCH(int, mode);
    QFETCH(QString, display);
    QFETCH(QString, expected);

    QString runtimeDir = folder;
    if (!folder.isEmpty() && !folder.startsWith(QLatin1String("relative"))) {
        runtimeDir = m_dir.filePath(folder);
        if (folder == QLatin1String("file")) {
            QFile file(runtimeDir);
            QVERIFY(file.open(QIODevice::WriteOnly));
        } else if (mode != 0) {
            QVERIFY(QDir().mkpath(runtimeDir));
        }
        if (mode != 0)
            QCOMPARE(::chmod(QFile::encodeName(runtimeDir).constData(), mode_t(mode)), 0);
    }
    if (folder == QLatin1String("theirs")) {
        // A private folder of someone else: handed over when this runs as
        // root, else root's own home.
        if (::geteuid() == 0)
            QCOMPARE(::chown(QFile::encodeName(runtimeDir).constData(), 65534, 65534), 0);
        else
            runtimeDir = QStringLiteral("/root");
    }

    const auto path = LocalInstanceChannel::socketPath(runtimeDir, display);
    if (expected.endsWith(QLatin1String(".socket"))) {
        QVERIFY2(path.has_value(), qPrintable(path.error()));
        QCOMPARE(*path, runtimeDir + QLatin1Char('/') + expected);
        return;
    }
    QVERIFY(!path.has_value());
    QVERIFY2(path.error().endsWith(expected), qPrintable(path.error()));
    // The folder is named, so the user knows which one to fix.
    if (!runtimeDir.isEmpty())
        QVERIFY2(path.error().contains(runtimeDir), qPrintable(path.error()));
}

void LocalInstanceChannelTest::requestLines_data() {
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<QString>("command"); // empty: not a request
    QTest::addColumn<QJsonObject>("data");

    QTest::newRow("command") << QByteArray("{\"command\":\"toggle\"}") << "toggle" << QJsonObject();
    QTest::newRow("with data") << QByteArray(
                                      " {\"command\":\"activate\",\"activationToken\":\"a b\"}\r\n")
                               << "activate" << QJsonObject{{"activationToken", "a b"}};
    QTest::newRow("unknown command is still a request")
        << QByteArray("{\"command\":\"raise\",\"v\":2}") << "raise" << QJsonObject{{"v", 2}};
    QTest::newRow("empty line") << QByteArray() << "" << QJsonObject();
    QTest::newRow("bare word") << QByteArray("toggle") << "" << QJsonObject();
    QTest::newRow("empty command") << QByteArray("{\"command\":\"\"}") << "" << QJsonObject();
    QTest::newRow("number command") << QByteArray("{\"command\":1}") << "" << QJsonObject();
    QTest::newRow("no command") << QByteArray("{\"cmd\":\"toggle\"}") << "" << QJsonObject();
    QTest::newRow("array") << QByteArray("[\"toggle\"]") << "" << QJsonObject();
}

void LocalInstanceChannelTest::requestLines() {
    QFETCH(QByteArray, line);
    QFETCH(QString, command);
    QFETCH(QJsonObject, data);

    const auto request = InstanceRequest::decode(line);
    QCOMPARE(request.has_value(), !command.isEmpty());
    if (!request)
        return;
    QCOMPARE(request->command, command);
    QCOMPARE(request->data, data);
    // What is sent is one line that reads back the same.
    const QByteArray encoded = request->encode();
    QCOMPARE(encoded.count('\n'), 1);
    QVERIFY(encoded.endsWith('\n'));
    const auto again = InstanceRequest::decode(encoded);
    QVERIFY(again);
    QCOMPARE(again->command, command);
    QCOMPARE(again->data, data);
}

void LocalInstanceChannelTest::laterStartsReachTheListeningInstance() {
    const QString path = m_dir.filePath(QStringLiteral("reach.socket"));
    auto first = std::make_unique<LocalInstanceChannel>(path);
    QList<InstanceRequest> received;
    first->setHandler([&](const InstanceRequest& request) {
        received.append(request);
        return request.command != QLatin1String("unknown");
    });
    QCOMPARE(first->claim(), LocalInstanceChannel::Claim::listening);
    // Only this user may connect.
    QCOMPARE(QFileInfo(path).permissions() &
                 (QFile::ReadGroup | QFile::WriteGroup | QFile::ReadOther | QFile::WriteOther),
             QFile::Permissions());

    const QJsonObject token{{"activationToken", "xyz"}};
    const LaterStart later =
        startAgain(path, {{"toggle", {}}, {"unknown", {}}, {"activate", token}});
    QCOMPARE(later.claim, LocalInstanceChannel::Claim::foundRunning);
    QCOMPARE(later.answers, (QList<bool>{true, false, true}));
    QCOMPARE(received.size(), 3);
    QCOMPARE(received[0].command, QStringLiteral("toggle"));
    QCOMPARE(received[2].command, QStringLiteral("activate"));
    QCOMPARE(received[2].data, token);

    // Once the first has closed its channel, the next start listens.
    first.reset();
    QVERIFY(!QFileInfo::exists(path));
    QCOMPARE(startAgain(path, {}).claim, LocalInstanceChannel::Claim::listening);
}

void LocalInstanceChannelTest::staleSocketIsTakenOver() {
    const QString path = m_dir.filePath(QStringLiteral("stale.socket"));
    QVERIFY(leaveStaleSocket(path));
    LocalInstanceChannel channel(path);
    int toggles = 0;
    channel.setHandler([&](const InstanceRequest&) { return ++toggles > 0; });
    QCOMPARE(channel.claim(), LocalInstanceChannel::Claim::listening);
    const LaterStart later = startAgain(path, {{"toggle", {}}});
    QCOMPARE(later.claim, LocalInstanceChannel::Claim::foundRunning);
    QCOMPARE(later.answers, QList<bool>{true});
    QCOMPARE(toggles, 1);
}

void LocalInstanceChannelTest::overlongRequestIsDropped() {
    const QString path = m_dir.filePath(QStringLiteral("long.socket"));
    LocalInstanceChannel channel(path);
    int requests = 0;
    channel.setHandler([&](const InstanceRequest&) { return ++requests > 0; });
    QCOMPARE(channel.claim(), LocalInstanceChannel::Claim::listening);

    const QByteArray reply = onOtherThread([path] {
        QLocalSocket socket;
        socket.connectToServer(path);
        if (!socket.waitForConnected(2000))
            return QByteArray("not connected");
        socket.write("{\"command\":\"toggle\",\"pad\":\"" + QByteArray(70 * 1024, 'x'));
        QByteArray answer;
        while (socket.waitForReadyRead(5000))
            answer += socket.readAll();
        answer += socket.readAll();
        return socket.state() == QLocalSocket::UnconnectedState ? answer : "still connected";
    });
    QCOMPARE(reply, QByteArray("{\"error\":\"request too long\",\"ok\":false}\n"));
    QCOMPARE(requests, 0);
    // The channel goes on serving.
    QCOMPARE(startAgain(path, {{"toggle", {}}}).answers, QList<bool>{true});
    QCOMPARE(requests, 1);
}

void LocalInstanceChannelTest::startsAtTheSameMomentListenOnce() {
    // Without the lock, both may find no socket, and the second to listen
    // removes the first one's socket.
    for (int round = 0; round < 20; ++round) {
        const QString path = m_dir.filePath(QStringLiteral("race%1.socket").arg(round));
        QSemaphore go;
        std::latch bothClaimed(2);
        std::array<LocalInstanceChannel::Claim, 2> claims{};
        std::array<std::unique_ptr<QThread>, 2> starts;
        for (size_t i = 0; i < 2; ++i) {
            starts[i].reset(QThread::create([&go, &bothClaimed, &claims, path, i] {
                LocalInstanceChannel channel(path);
                go.acquire();
                claims[i] = channel.claim();
                // Stay listening until the other start has looked.
                bothClaimed.arrive_and_wait();
            }));
            starts[i]->start();
        }
        go.release(2);
        for (auto& start : starts)
            QVERIFY(start->wait(15000));
        const QList<LocalInstanceChannel::Claim> claimed{claims[0], claims[1]};
        QVERIFY2(claimed.count(LocalInstanceChannel::Claim::listening) == 1 &&
                     claimed.count(LocalInstanceChannel::Claim::foundRunning) == 1,
                 qPrintable(QStringLiteral("round %1").arg(round)));
    }
}

QTEST_GUILESS_MAIN(LocalInstanceChannelTest)
#include "tst_LocalInstanceChannel.moc"
