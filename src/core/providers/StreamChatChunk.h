#pragma once

#include <QByteArrayView>
#include <QList>
#include <QString>
#include <optional>

namespace scrivel {

// One "data:" payload of a streamed chat completion. A chunk carries its
// text in the first choice's delta or, with some servers, in its message;
// a server that fails after answering 200 sends an error object instead.
struct StreamChatChunk {
    struct Choice {
        std::optional<std::optional<QString>> deltaContent;   // outer: delta present
        std::optional<std::optional<QString>> messageContent; // outer: message present
    };

    std::optional<QList<Choice>> choices;
    // The first choice's "finish_reason" when it is a text ("stop",
    // "length", ...); anything else reads as absent.
    std::optional<QString> finishReason;
    // Set when the server reports a failure inside the stream: a non-null
    // "error" member, or an object whose "object" is "error". Holds the
    // server's own message (for the debug log only), possibly empty. Such a
    // chunk carries no text.
    std::optional<QString> error;

    // Nothing when the payload is not JSON or a known member has the wrong
    // type; unknown members are ignored.
    static std::optional<StreamChatChunk> decode(QByteArrayView payload);

    // The first choice's delta content, else its message content, else nothing.
    std::optional<QString> text() const;
};

} // namespace scrivel
