#pragma once

#include "core/providers/ServerSentEventReader.h"

#include <QByteArray>
#include <QString>
#include <optional>

namespace scrivel::test {

// The event-stream reading procedure done the slow, literal way: one byte at
// a time into a line buffer, a line cut at every line feed. The real reader
// must give the same reply and the same verdicts on the size limits, server
// failures, lines that are not UTF-8, "[DONE]" and the finish reason.
struct ReferenceEventReader {
    QByteArray line;
    QString reply;
    qsizetype replyBytes = 0;
    qsizetype limit = ServerSentEventReader::defaultReplyLimit;
    qsizetype lineLimit = -1; // < 0: limit plus the reader's framing room
    bool exceeded = false;
    bool serverError = false;
    bool invalidText = false;
    bool sawDone = false;
    std::optional<QString> finishReason;
    int texts = 0;

    void feed(const QByteArray& bytes) {
        const qsizetype maximumLine =
            lineLimit < 0 ? limit + ServerSentEventReader::lineFraming : lineLimit;
        for (const char byte : bytes) {
            if (exceeded || serverError || invalidText)
                return;
            if (byte != '\n') {
                line.append(byte);
                if (line.size() > maximumLine)
                    exceeded = true;
                continue;
            }
            const QByteArray complete = line;
            line.clear();
            const auto read = ServerSentEventReader::readLine(complete);
            if (read.finishReason)
                finishReason = read.finishReason;
            if (read.kind == ServerSentEventReader::Line::Kind::serverError) {
                serverError = true;
            } else if (read.kind == ServerSentEventReader::Line::Kind::invalidText) {
                invalidText = true;
            } else if (read.kind == ServerSentEventReader::Line::Kind::done) {
                sawDone = true;
            } else if (read.kind == ServerSentEventReader::Line::Kind::text) {
                reply += read.text;
                replyBytes += read.text.toUtf8().size();
                if (replyBytes > limit)
                    exceeded = true;
                else
                    ++texts;
            }
        }
    }
};

} // namespace scrivel::test
