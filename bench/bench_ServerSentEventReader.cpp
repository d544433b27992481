// Measures the event-stream reader alone: a reply of N bytes in 10,000
// "data:" events, fed in 1,500-byte network-sized pieces. Reports MB/s of
// body read and shows the time growing linearly with the reply.
//
//   bench_ServerSentEventReader

#include "core/providers/ServerSentEventReader.h"
#include "core/support/JsonWriter.h"

#include <QElapsedTimer>
#include <cstdio>

using namespace scrivel;

namespace {

QByteArray makeBody(qsizetype replyBytes, int events) {
    const qsizetype piece = replyBytes / events;
    const QByteArray line =
        "data: {\"id\":\"c\",\"choices\":[{\"index\":0,\"delta\":{\"content\":" +
        JsonWriter::quoted(QString(piece, QLatin1Char('w'))) + "}}]}\n\n";
    QByteArray body;
    body.reserve(line.size() * events + 16);
    for (int i = 0; i < events; ++i)
        body += line;
    body += "data: [DONE]\n\n";
    return body;
}

double readOnce(const QByteArray& body) {
    ServerSentEventReader reader(qsizetype(1) << 40); // no limit for the measurement
    QElapsedTimer timer;
    timer.start();
    int texts = 0;
    for (qsizetype at = 0; at < body.size(); at += 1500)
        reader.feed(QByteArrayView(body).sliced(at, std::min<qsizetype>(1500, body.size() - at)),
                    [&] { ++texts; });
    reader.finish();
    const double ms = double(timer.nsecsElapsed()) / 1e6;
    if (texts != 10000)
        std::fprintf(stderr, "unexpected event count %d\n", texts);
    return ms;
}

} // namespace

int main() {
    std::printf("reply bytes  body bytes  best ms    MB/s\n");
    double previous = 0;
    for (qsizetype kib : {128, 512, 2048}) {
        const QByteArray body = makeBody(kib * 1024, 10000);
        double best = 1e18;
        for (int round = 0; round < 5; ++round)
            best = std::min(best, readOnce(body));
        std::printf("%11lld  %10lld  %7.2f  %6.1f", static_cast<long long>(kib * 1024),
                    static_cast<long long>(body.size()), best,
                    double(body.size()) / 1e6 / (best / 1000.0));
        if (previous > 0)
            std::printf("   x%.2f time for x4 reply", best / previous);
        std::printf("\n");
        previous = best;
    }
    return 0;
}
