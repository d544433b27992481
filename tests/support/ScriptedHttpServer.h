#pragma once

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QObject>
#include <QSet>
#include <QTcpServer>
#include <QUrl>
#include <functional>

class QTcpSocket;

namespace scrivel::test {

// An HTTP/1.1 server on 127.0.0.1 that answers each request from a script,
// byte for byte: bodies split across writes at chosen places, delays
// between writes, stalls and dropped connections. It records every request
// and notices when a client closes its connection.
class ScriptedHttpServer : public QObject {
    Q_OBJECT

public:
    struct Request {
        QByteArray method;
        QByteArray path;
        QHash<QByteArray, QByteArray> headers; // names lower-cased
        QByteArray body;
    };

    struct Write {
        QByteArray bytes;
        int delayMs = 0; // before this write
    };

    // After the last write the server closes the connection, unless it
    // stalls: then it keeps the connection open, silent.
    struct Response {
        QList<Write> writes;
        bool stall = false;
    };

    using Handler = std::function<Response(const Request&)>;

    explicit ScriptedHttpServer(QObject* parent = nullptr);

    // Listens on a free port of 127.0.0.1.
    bool start() { return m_server.listen(QHostAddress::LocalHost, 0); }
    QUrl url(const QString& path = QStringLiteral("/")) const;

    void setHandler(Handler handler) { m_handler = std::move(handler); }

    const QList<Request>& requests() const { return m_requests; }
    int connectionsClosedByClient() const { return m_closedByClient; }

    // Building blocks for scripts.
    static Response status(int code, const QByteArray& body = {});
    static Response redirect(int code, const QByteArray& location);
    // A text/event-stream reply of the given body. chunked selects chunked
    // transfer encoding (otherwise the length is announced); the body is
    // written in pieces of at most pieceSize bytes with delayMs between them.
    static Response eventStream(const QByteArray& body, bool chunked, int pieceSize = 0,
                                int delayMs = 0);
    // "data: {...delta content...}\n\n" for one piece of text.
    static QByteArray dataLine(const QString& text, const QByteArray& lineEnd = "\n");
    // "data: [DONE]\n\n": the end of a whole reply.
    static QByteArray doneLine(const QByteArray& lineEnd = "\n");

private:
    void readFrom(QTcpSocket* socket);
    void respond(QTcpSocket* socket, const Response& response, int index);

    QTcpServer m_server;
    Handler m_handler;
    QList<Request> m_requests;
    QHash<QTcpSocket*, QByteArray> m_buffers;
    QSet<QTcpSocket*> m_closedByServer;
    int m_closedByClient = 0;
};

} // namespace scrivel::test
