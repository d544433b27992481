// Feeds random bodies, cut at random places, to the event-stream reader and
// checks it against the literal byte-by-byte procedure.
#include "core/providers/ServerSentEventReader.h"
#include "support/ReferenceEventReader.h"

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 2)
        return 0;
    // The first byte picks the cut length and the line limit, the second the
    // size limit.
    const qsizetype step = data[0] % 16 + 1;
    const qsizetype lineLimit = data[0] & 0x80 ? -1 : qsizetype(data[0]) * 4 + 8;
    const qsizetype limit = data[1] % 2 ? 524288 : qsizetype(data[1]) + 1;
    const QByteArray body(reinterpret_cast<const char*>(data) + 2, qsizetype(size) - 2);

    scrivel::ServerSentEventReader reader(limit, lineLimit);
    int texts = 0;
    for (qsizetype at = 0; at < body.size(); at += step)
        reader.feed(QByteArrayView(body).sliced(at, std::min(step, body.size() - at)),
                    [&] { ++texts; });
    reader.finish();

    scrivel::test::ReferenceEventReader reference;
    reference.limit = limit;
    reference.lineLimit = lineLimit;
    reference.feed(body);
    if (reader.exceededLimit() != reference.exceeded || texts != reference.texts ||
        (reader.state() == scrivel::ServerSentEventReader::State::serverError) !=
            reference.serverError ||
        (reader.state() == scrivel::ServerSentEventReader::State::invalidText) !=
            reference.invalidText ||
        reader.sawDone() != reference.sawDone || reader.finishReason() != reference.finishReason)
        std::abort();
    if (!reference.exceeded && reader.reply().view() != QStringView(reference.reply))
        std::abort();
    return 0;
}
