#include "support/ScriptedHttpServer.h"

#include "core/support/JsonWriter.h"

#include <QPointer>
#include <QTcpSocket>
#include <QTimer>

namespace scrivel::test {

namespace {

QByteArray head(const QByteArray& statusLine, const QList<QByteArray>& fields) {
    return "HTTP/1.1 " + statusLine + "\r\n" + fields.join("\r\n") +
           "\r\nConnection: close\r\n\r\n";
}

} // namespace

ScriptedHttpServer::ScriptedHttpServer(QObject* parent) : QObject(parent) {
    m_handler = [](const Request&) { return status(404); };
    connect(&m_server, &QTcpServer::newConnection, this, [this] {
        while (QTcpSocket* socket = m_server.nextPendingConnection()) {
            socket->setParent(this);
            connect(socket, &QTcpSocket::readyRead, this, [this, socket] { readFrom(socket); });
            connect(socket, &QTcpSocket::disconnected, this, [this, socket] {
                if (!m_closedByServer.remove(socket))
                    ++m_closedByClient;
                m_buffers.remove(socket);
                socket->deleteLater();
            });
        }
    });
}

QUrl ScriptedHttpServer::url(const QString& path) const {
    return QUrl(QStringLiteral("http://127.0.0.1:%1%2").arg(m_server.serverPort()).arg(path));
}

void ScriptedHttpServer::readFrom(QTcpSocket* socket) {
    QByteArray& buffer = m_buffers[socket];
    buffer += socket->readAll();
    for (;;) {
        const qsizetype headEnd = buffer.indexOf("\r\n\r\n");
        if (headEnd < 0)
            return;
        const QList<QByteArray> lines = buffer.left(headEnd).split('\n');
        const QList<QByteArray> first = lines.value(0).trimmed().split(' ');
        Request request{first.value(0), first.value(1), {}, {}};
        for (const QByteArray& line : lines.mid(1)) {
            const qsizetype colon = line.indexOf(':');
            if (colon > 0)
                request.headers.insert(line.left(colon).trimmed().toLower(),
                                       line.mid(colon + 1).trimmed());
        }
        const qsizetype length = request.headers.value("content-length").toLongLong();
        if (buffer.size() < headEnd + 4 + length)
            return;
        request.body = buffer.mid(headEnd + 4, length);
        buffer.remove(0, headEnd + 4 + length);
        m_requests.append(request);
        respond(socket, m_handler(request), 0);
    }
}

void ScriptedHttpServer::respond(QTcpSocket* socket, const Response& response, int index) {
    if (index == response.writes.size()) {
        if (!response.stall) {
            m_closedByServer.insert(socket);
            socket->disconnectFromHost();
        }
        return;
    }
    auto send = [this, guard = QPointer(socket), response, index] {
        if (!guard || guard->state() != QAbstractSocket::ConnectedState)
            return;
        guard->write(response.writes[index].bytes);
        guard->flush();
        respond(guard, response, index + 1);
    };
    if (response.writes[index].delayMs > 0)
        QTimer::singleShot(response.writes[index].delayMs, this, send);
    else
        send();
}

ScriptedHttpServer::Response ScriptedHttpServer::status(int code, const QByteArray& body) {
    return {{{head(QByteArray::number(code) + " Status",
                   {"Content-Type: application/json",
                    "Content-Length: " + QByteArray::number(body.size())}) +
              body}}};
}

ScriptedHttpServer::Response ScriptedHttpServer::redirect(int code, const QByteArray& location) {
    return {{{head(QByteArray::number(code) + " Redirect",
                   {"Location: " + location, "Content-Length: 0"})}}};
}

ScriptedHttpServer::Response ScriptedHttpServer::eventStream(const QByteArray& body, bool chunked,
                                                             int pieceSize, int delayMs) {
    Response response{
        {{head("200 OK", {"Content-Type: text/event-stream",
                          chunked ? QByteArray("Transfer-Encoding: chunked")
                                  : "Content-Length: " + QByteArray::number(body.size())})}}};
    const qsizetype piece = pieceSize > 0 ? pieceSize : qMax<qsizetype>(body.size(), 1);
    for (qsizetype at = 0; at < body.size(); at += piece) {
        const QByteArray part = body.mid(at, piece);
        response.writes.append(
            {chunked ? QByteArray::number(part.size(), 16) + "\r\n" + part + "\r\n" : part,
             delayMs});
    }
    if (chunked)
        response.writes.append({"0\r\n\r\n", delayMs});
    return response;
}

QByteArray ScriptedHttpServer::dataLine(const QString& text, const QByteArray& lineEnd) {
    return "data: {\"choices\":[{\"index\":0,\"delta\":{\"content\":" + JsonWriter::quoted(text) +
           "}}]}" + lineEnd + lineEnd;
}

QByteArray ScriptedHttpServer::doneLine(const QByteArray& lineEnd) {
    return "data: [DONE]" + lineEnd + lineEnd;
}

} // namespace scrivel::test
