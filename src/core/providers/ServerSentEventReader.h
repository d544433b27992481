#pragma once

#include "core/support/TextSnapshot.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QString>
#include <functional>
#include <optional>

namespace scrivel {

// Reads a streamed chat completion: bytes in, the reply's text out.
//
// The body is cut into lines at each line feed. A line counts when, after
// dropping one trailing carriage return and trimming horizontal white space,
// it starts with "data:"; its payload (trimmed again) is decoded as a chat
// chunk and the chunk's text is appended to the reply. Empty payloads,
// comments, event fields and payloads that do not decode are ignored.
// "[DONE]" is noted but does not end the reading. Bytes after the last line
// feed are dropped when the body ends.
//
// Two kinds of data line end the reading, because the reply can no longer
// be trusted whatever text came before: one that reports a server failure,
// and one that is not valid UTF-8 (dropping it would leave a hole in the
// text). Other lines that are not valid UTF-8 are ignored.
//
// A reply is complete once the stream said so: a "[DONE]" line, or a chunk
// whose first choice names a finish reason. The last such reason is kept, so
// a reply cut at the token budget can be told from a finished one; a body
// that ends with neither was cut off.
//
// A line may not grow past the reply limit plus room for its framing, so a
// body without line feeds cannot grow memory without bound.
//
// Chunks are processed whole: each byte is looked at a constant number of
// times, so the work is linear in the body.
class ServerSentEventReader {
public:
    static constexpr qsizetype defaultReplyLimit = 524288; // UTF-8 bytes
    // Room for a line's JSON framing beyond the text it may carry.
    static constexpr qsizetype lineFraming = 65536;

    enum class State { reading, tooLarge, serverError, invalidText };

    // What one line carries.
    struct Line {
        enum class Kind { nothing, text, done, serverError, invalidText };
        Kind kind = Kind::nothing;
        // The text, or the server's own message of a failure (for the log).
        QString text;
        // The first choice's finish reason, when the chunk names one.
        std::optional<QString> finishReason;
    };

    // lineLimit < 0 means the reply limit plus lineFraming.
    explicit ServerSentEventReader(qsizetype replyLimit = defaultReplyLimit,
                                   qsizetype lineLimit = -1);

    // Feeds the next bytes. onText runs after each text appended to the reply.
    // Returns false once the reading has stopped (the reply or a line grew
    // past its limit, the server reported a failure, or a data line was not
    // UTF-8); the reader then ignores everything else.
    bool feed(QByteArrayView bytes, const std::function<void()>& onText = {});
    // The body ended: a partial last line is dropped.
    void finish();

    State state() const { return m_state; }
    bool exceededLimit() const { return m_state == State::tooLarge; }
    // The server's own message when it reported a failure.
    const QString& serverMessage() const { return m_serverMessage; }
    // The last finish reason the first choice named ("stop", "length", ...).
    const std::optional<QString>& finishReason() const { return m_finishReason; }
    // Whether a "[DONE]" line came.
    bool sawDone() const { return m_sawDone; }
    // Whether the stream said that the reply ended: "[DONE]" or a finish
    // reason.
    bool isComplete() const { return m_sawDone || m_finishReason.has_value(); }
    const TextAccumulator& reply() const { return m_reply; }
    qsizetype replyUtf8Size() const { return m_replyBytes; }
    qsizetype lineLimit() const { return m_lineLimit; }

    static Line readLine(QByteArrayView line);
    // The text of one line, or nothing when the line carries none.
    static std::optional<QString> textOfLine(QByteArrayView line);

private:
    bool appendLine(QByteArrayView line, const std::function<void()>& onText);

    QByteArray m_partialLine;
    TextAccumulator m_reply;
    qsizetype m_replyBytes = 0;
    qsizetype m_replyLimit;
    qsizetype m_lineLimit;
    State m_state = State::reading;
    QString m_serverMessage;
    std::optional<QString> m_finishReason;
    bool m_sawDone = false;
};

} // namespace scrivel
