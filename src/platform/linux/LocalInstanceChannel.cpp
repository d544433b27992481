#include "platform/linux/LocalInstanceChannel.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QLocalServer>
#include <QLocalSocket>
#include <QLockFile>
#include <QTimer>
#include <memory>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace scrivel {

namespace {

constexpr qsizetype lineLimit = 64 * 1024;
constexpr int idleLimitMs = 10000;

// A display's name as part of a file name: "x11-:0" becomes "x11-_0".
QString fileNamePart(const QString& display) {
    QString part = display;
    for (QChar& c : part) {
        if (!(c.isLetterOrNumber() && c.unicode() < 128) && c != u'-' && c != u'.')
            c = u'_';
    }
    return part.right(48);
}

QByteArray answer(bool ok, const QString& error = {}) {
    QJsonObject object{{QStringLiteral("ok"), ok}};
    if (!ok)
        object.insert(QStringLiteral("error"), error);
    return QJsonDocument(object).toJson(QJsonDocument::Compact) + '\n';
}

} // namespace

std::expected<QString, QString> LocalInstanceChannel::socketPath(const QString& runtimeDir,
                                                                 const QString& display) {
    if (runtimeDir.isEmpty())
        return std::unexpected(QStringLiteral("XDG_RUNTIME_DIR is unset"));
    struct stat folder {};
    if (!QDir::isAbsolutePath(runtimeDir) ||
        ::stat(QFile::encodeName(runtimeDir).constData(), &folder) != 0 || !S_ISDIR(folder.st_mode))
        return std::unexpected(
            QStringLiteral("XDG_RUNTIME_DIR (%1) is not an existing folder").arg(runtimeDir));
    if (folder.st_uid != ::geteuid() || (folder.st_mode & (S_IRWXG | S_IRWXO)) != 0)
        return std::unexpected(
            QStringLiteral("XDG_RUNTIME_DIR (%1) is not private to this user").arg(runtimeDir));
    const QString name =
        QStringLiteral("scrivel-%1.socket")
            .arg(display.isEmpty() ? QStringLiteral("default") : fileNamePart(display));
    const QString path = QDir(QDir::cleanPath(runtimeDir)).filePath(name);
    if (size_t(QFile::encodeName(path).size()) >= sizeof(sockaddr_un::sun_path))
        return std::unexpected(
            QStringLiteral("XDG_RUNTIME_DIR (%1) is too long a path for a socket").arg(runtimeDir));
    return path;
}

LocalInstanceChannel::LocalInstanceChannel(QString path, QObject* parent)
    : QObject(parent), m_path(std::move(path)) {}

LocalInstanceChannel::~LocalInstanceChannel() = default;

LocalInstanceChannel::Claim LocalInstanceChannel::claim() {
    QLockFile lock(m_path + QStringLiteral(".lock"));
    if (!lock.tryLock(5000)) {
        m_error = QStringLiteral("%1 stayed locked").arg(lock.fileName());
        return Claim::failed;
    }
    auto* peer = new QLocalSocket(this);
    peer->connectToServer(m_path);
    if (peer->waitForConnected(2000)) {
        m_peer = peer;
        return Claim::foundRunning;
    }
    const QLocalSocket::LocalSocketError refused = peer->error();
    const QString why = peer->errorString();
    delete peer;
    // No file, or a file nobody listens on: the socket of an instance that
    // has gone. Anything else (an instance too busy to accept) is not taken
    // over.
    if (refused != QLocalSocket::ServerNotFoundError &&
        refused != QLocalSocket::ConnectionRefusedError) {
        m_error = why;
        return Claim::failed;
    }
    QLocalServer::removeServer(m_path);
    m_server = new QLocalServer(this);
    m_server->setSocketOptions(QLocalServer::UserAccessOption);
    if (!m_server->listen(m_path)) {
        m_error = m_server->errorString();
        delete m_server;
        m_server = nullptr;
        return Claim::failed;
    }
    connect(m_server, &QLocalServer::newConnection, this, &LocalInstanceChannel::acceptConnections);
    return Claim::listening;
}

void LocalInstanceChannel::acceptConnections() {
    while (QLocalSocket* connection = m_server->nextPendingConnection()) {
        connect(connection, &QLocalSocket::disconnected, connection, &QObject::deleteLater);
        auto* idle = new QTimer(connection);
        idle->setSingleShot(true);
        connect(idle, &QTimer::timeout, connection, &QLocalSocket::abort);
        idle->start(idleLimitMs);
        auto pending = std::make_shared<QByteArray>();
        connect(connection, &QLocalSocket::readyRead, this, [this, connection, idle, pending] {
            idle->start(idleLimitMs);
            pending->append(connection->readAll());
            qsizetype end;
            while ((end = pending->indexOf('\n')) >= 0 && end <= lineLimit) {
                const QByteArray line = pending->left(end);
                pending->remove(0, end + 1);
                const auto request = InstanceRequest::decode(line);
                if (!request) {
                    connection->write(answer(false, QStringLiteral("not a request")));
                    continue;
                }
                const bool understood = m_handler && m_handler(*request);
                connection->write(understood ? answer(true)
                                             : answer(false, QStringLiteral("unknown command")));
            }
            if (end > lineLimit || pending->size() > lineLimit) {
                pending->clear();
                connection->write(answer(false, QStringLiteral("request too long")));
                connection->disconnectFromServer();
            }
        });
    }
}

bool LocalInstanceChannel::send(const InstanceRequest& request, int timeoutMs) {
    if (!m_peer || m_peer->state() != QLocalSocket::ConnectedState)
        return false;
    const QDeadlineTimer deadline(timeoutMs);
    m_peer->write(request.encode());
    m_peer->flush();
    while (!m_peer->canReadLine()) {
        if (deadline.hasExpired() || !m_peer->waitForReadyRead(int(deadline.remainingTime())))
            return false;
    }
    const QJsonDocument reply = QJsonDocument::fromJson(m_peer->readLine().trimmed());
    return reply.object().value(QStringLiteral("ok")).toBool();
}

} // namespace scrivel
