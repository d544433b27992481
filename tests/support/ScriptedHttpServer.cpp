#include "support/ScriptedHttpServer.h"

#include "support/JsonWriter.h"

#include <QPointer>
#include <QTcpSocket>
#include <QTimer>

namespace scrivel::test {

ScriptedHttpServer::ScriptedHttpServer(QObject* parent) : QObject(parent) {
    connect(&m_server, &QTcpServer::newConnection, this, &ScriptedHttpServer::accept);
    m_handler = [](const Request&) { return status(404); };
}

bool ScriptedHttpServer::start() {
    return m_server.listen(QHostAddress::LocalHost, 0);
}

QUrl ScriptedHttpServer::url(const QString& path) const {
    return QUrl(QStringLiteral("http://127.0.0.1:%1%2").arg(port()).arg(path));
}

void ScriptedHttpServer::accept() {
    while (QTcpSocket* socket = m_server.nextPendingConnection()) {
        socket->setParent(this);
        connect(socket, &QTcpSocket::readyRead, this, [this, socket] { readFrom(socket); });
        connect(socket, &QTcpSocket::disconnected, this, [this, socket] {
            if (!m_serverClosing.value(socket))
                ++m_closedByClient;
            m_buffers.remove(socket);
            socket->deleteLater();
        });
    }
}

void ScriptedHttpServer::readFrom(QTcpSocket* socket) {
    QByteArray& buffer = m_buffers[socket];
    buffer += socket->readAll();
    for (;;) {
        const qsizetype headEnd = buffer.indexOf("\r\n\r\n");
        if (headEnd < 0)
            return;
        const QList<QByteArray> lines = buffer.left(headEnd).split('\n');
        Request request;
        const QList<QByteArray> first = lines.value(0).trimmed().split(' ');
        request.method = first.value(0);
        request.path = first.value(1);
        for (qsizetype i = 1; i < lines.size(); ++i) {
            const qsizetype colon = lines[i].indexOf(':');
            if (colon > 0)
                request.headers.insert(lines[i].left(colon).trimmed().toLower(),
                                       lines[i].mid(colon + 1).trimmed());
        }
        const qsizetype length = request.headers.value("content-length").toLongLong();
        if (buffer.size() < headEnd + 4 + length)
            return;
        request.body = buffer.mid(headEnd + 4, length);
        buffer.remove(0, headEnd + 4 + length);
        m_requests.append(request);
        Q_EMIT requestReceived();
        respond(socket, m_handler(request), 0);
    }
}

void ScriptedHttpServer::respond(QTcpSocket* socket, const Response& response, int index) {
    QPointer<QTcpSocket> guard(socket);
    if (index >= response.writes.size()) {
        if (response.closeAfter && !response.stall && guard) {
            m_serverClosing[socket] = true;
            socket->disconnectFromHost();
        }
        return;
    }
    const Write& write = response.writes[index];
    auto send = [this, guard, response, index] {
        if (!guard || guard->state() != QAbstractSocket::ConnectedState)
            return;
        guard->write(response.writes[index].bytes);
        guard->flush();
        respond(guard, response, index + 1);
    };
    if (write.delayMs > 0)
        QTimer::singleShot(write.delayMs, this, send);
    else
        send();
}

ScriptedHttpServer::Response ScriptedHttpServer::status(int code, const QByteArray& body,
                                                        const QList<QByteArray>& extraHeaders) {
    QByteArray head = "HTTP/1.1 " + QByteArray::number(code) + " Status\r\n";
    for (const QByteArray& header : extraHeaders)
        head += header + "\r\n";
    head += "Content-Type: application/json\r\nContent-Length: " + QByteArray::number(body.size()) +
            "\r\nConnection: close\r\n\r\n";
    return Response{{Write{head + body, 0}}, true, false};
}

ScriptedHttpServer::Response ScriptedHttpServer::redirect(int code, const QByteArray& location) {
    return status(code, {}, {"Location: " + location});
}

ScriptedHttpServer::Response ScriptedHttpServer::eventStream(const QByteArray& body, bool chunked,
                                                             int pieceSize, int delayMs) {
    QByteArray head = "HTTP/1.1 200 OK\r\nContent-Type: text/event-stream\r\n";
    head += chunked ? QByteArray("Transfer-Encoding: chunked\r\n")
                    : "Content-Length: " + QByteArray::number(body.size()) + "\r\n";
    head += "Connection: close\r\n\r\n";
    Response response;
    response.writes.append({head, 0});
    const int piece = pieceSize > 0 ? pieceSize : int(qMax<qsizetype>(body.size(), 1));
    for (qsizetype at = 0; at < body.size(); at += piece) {
        const QByteArray part = body.mid(at, piece);
        const QByteArray framed =
            chunked ? QByteArray::number(part.size(), 16) + "\r\n" + part + "\r\n" : part;
        response.writes.append({framed, delayMs});
    }
    if (chunked)
        response.writes.append({"0\r\n\r\n", delayMs});
    return response;
}

QByteArray ScriptedHttpServer::dataLine(const QString& text, const QByteArray& lineEnd) {
    return "data: {\"choices\":[{\"index\":0,\"delta\":{\"content\":" + JsonWriter::quoted(text) +
           "}}]}" + lineEnd + lineEnd;
}

} // namespace scrivel::test
