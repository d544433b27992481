#pragma once

#include "support/TextSnapshot.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QString>
#include <functional>
#include <optional>

namespace scrivel {

// Reads a streamed chat completion: bytes in, the reply's text out.
//
// The body is cut into lines at each line feed. A line counts when it is
// valid UTF-8 and, after dropping one trailing carriage return and trimming
// horizontal white space, starts with "data:"; its payload (trimmed again)
// is decoded as a chat chunk and the chunk's text is appended to the reply.
// Empty payloads, "[DONE]" (which does not end the reading), comments,
// event fields and payloads that do not decode are ignored. Bytes after the
// last line feed are dropped when the body ends.
//
// Chunks are processed whole: each byte is looked at a constant number of
// times, so the work is linear in the body.
class ServerSentEventReader {
public:
    static constexpr qsizetype defaultReplyLimit = 524288; // UTF-8 bytes

    explicit ServerSentEventReader(qsizetype replyLimit = defaultReplyLimit);

    // Feeds the next bytes. onText runs after each text appended to the reply.
    // Returns false once the reply has grown past the limit; the reader then
    // ignores everything else.
    bool feed(QByteArrayView bytes, const std::function<void()>& onText = {});
    // The body ended: a partial last line is dropped.
    void finish();

    bool exceededLimit() const { return m_exceeded; }
    const TextAccumulator& reply() const { return m_reply; }
    qsizetype replyUtf8Size() const { return m_replyBytes; }

    // The text of one line, or nothing when the line carries none.
    static std::optional<QString> textOfLine(QByteArrayView line);

private:
    bool appendLine(QByteArrayView line, const std::function<void()>& onText);

    QByteArray m_partialLine;
    TextAccumulator m_reply;
    qsizetype m_replyBytes = 0;
    qsizetype m_replyLimit;
    bool m_exceeded = false;
};

} // namespace scrivel
