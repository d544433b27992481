#pragma once

#include "providers/ServerSentEventReader.h"

#include <QByteArray>
#include <QString>
#include <optional>

namespace scrivel::test {

// The event-stream reading procedure done the slow, literal way: one byte at
// a time into a line buffer, a line cut at every line feed. The real reader
// must give the same reply and the same verdict on the size limit.
struct ReferenceEventReader {
    QByteArray line;
    QString reply;
    qsizetype replyBytes = 0;
    qsizetype limit = ServerSentEventReader::defaultReplyLimit;
    bool exceeded = false;
    int texts = 0;

    void feed(const QByteArray& bytes) {
        for (const char byte : bytes) {
            if (exceeded)
                return;
            line.append(byte);
            const qsizetype feedAt = line.indexOf('\n');
            if (feedAt < 0)
                continue;
            const QByteArray complete = line.left(feedAt);
            line.remove(0, feedAt + 1);
            if (const auto text = ServerSentEventReader::textOfLine(complete)) {
                reply += *text;
                replyBytes += text->toUtf8().size();
                if (replyBytes > limit)
                    exceeded = true;
                else
                    ++texts;
            }
        }
    }
};

} // namespace scrivel::test
