// Measures the whole client: a reply of N bytes in 10,000 chunks served as
// a chunked event stream over loopback, read to completion through
// OpenAICompatibleProvider. Reports MB/s and shows linear growth.
//
//   bench_OpenAICompatibleClient

#include "core/providers/APIKeyStore.h"
#include "core/providers/OpenAICompatibleProvider.h"
#include "core/providers/ProviderCatalog.h"
#include "core/support/JsonWriter.h"
#include "support/InMemorySecretStore.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QLoggingCategory>
#include <QTcpServer>
#include <QTcpSocket>
#include <cstdio>

using namespace scrivel;

namespace {

// Answers every connection with the same prepared response.
class CannedServer : public QTcpServer {
public:
    QByteArray response;

protected:
    void incomingConnection(qintptr handle) override {
        auto* socket = new QTcpSocket(this);
        socket->setSocketDescriptor(handle);
        connect(socket, &QTcpSocket::readyRead, socket, [this, socket] {
            if (!socket->readAll().contains("\r\n\r\n"))
                return;
            socket->write(response);
            socket->disconnectFromHost();
        });
        connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
    }
};

QByteArray makeResponse(qsizetype replyBytes, int events, qsizetype* bodyBytes) {
    const qsizetype piece = replyBytes / events;
    const QByteArray line = "data: {\"choices\":[{\"delta\":{\"content\":" +
                            JsonWriter::quoted(QString(piece, QLatin1Char('w'))) + "}}]}\n\n";
    const QByteArray chunk = QByteArray::number(line.size(), 16) + "\r\n" + line + "\r\n";
    QByteArray response = "HTTP/1.1 200 OK\r\nContent-Type: text/event-stream\r\n"
                          "Transfer-Encoding: chunked\r\nConnection: close\r\n\r\n";
    response.reserve(response.size() + chunk.size() * events + 8);
    for (int i = 0; i < events; ++i)
        response += chunk;
    const QByteArray done = "data: [DONE]\n\n";
    response += QByteArray::number(done.size(), 16) + "\r\n" + done + "\r\n0\r\n\r\n";
    *bodyBytes = line.size() * events + done.size();
    return response;
}

double runOnce(OpenAICompatibleProvider& provider) {
    QElapsedTimer timer;
    timer.start();
    TransformStream stream = provider.streamCompletion({"m", "i", "text", {}, {}});
    bool done = false;
    int partials = 0;
    QObject context;
    stream.subscribe(
        &context,
        [&](const TransformStreamEvent& event) {
            if (event.kind() == TransformStreamEvent::Kind::partial)
                ++partials;
        },
        [&](std::optional<TransformFailure> failure) {
            if (failure)
                std::fprintf(stderr, "stream failed\n");
            done = true;
        });
    while (!done)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    if (partials != 10000)
        std::fprintf(stderr, "unexpected partial count %d\n", partials);
    return double(timer.nsecsElapsed()) / 1e6;
}

} // namespace

int main(int argc, char* argv[]) {
    QCoreApplication app(argc, argv);
    QLoggingCategory::setFilterRules(QStringLiteral("com.scrivel.*=false")); // measure, not log
    CannedServer server;
    server.listen(QHostAddress::LocalHost);
    InMemorySecretStore modern, legacy;
    APIKeyStore keys(modern, legacy, [] { return Future<bool>::ready(true); });
    const auto endpoint = *resolveEndpoint(
        customProviderID(), QStringLiteral("http://127.0.0.1:%1/v1").arg(server.serverPort()));
    OpenAICompatibleProvider provider(endpoint, keys);

    std::printf("reply bytes  body bytes  best ms    MB/s\n");
    double previous = 0;
    for (qsizetype kib : {128, 512}) {
        qsizetype bodyBytes = 0;
        server.response = makeResponse(kib * 1024, 10000, &bodyBytes);
        double best = 1e18;
        for (int round = 0; round < 5; ++round)
            best = std::min(best, runOnce(provider));
        std::printf("%11lld  %10lld  %7.2f  %6.1f", static_cast<long long>(kib * 1024),
                    static_cast<long long>(bodyBytes), best,
                    double(bodyBytes) / 1e6 / (best / 1000.0));
        if (previous > 0)
            std::printf("   x%.2f time for x4 reply", best / previous);
        std::printf("\n");
        previous = best;
    }
    return 0;
}
