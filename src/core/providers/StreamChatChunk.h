#pragma once

#include <QByteArrayView>
#include <QList>
#include <QString>
#include <optional>

namespace scrivel {

// One "data:" payload of a streamed chat completion. A chunk carries its
// text in the first choice's delta or, with some servers, in its message.
struct StreamChatChunk {
    struct Choice {
        std::optional<std::optional<QString>> deltaContent;   // outer: delta present
        std::optional<std::optional<QString>> messageContent; // outer: message present
    };

    std::optional<QList<Choice>> choices;

    // Nothing when the payload is not JSON or a known member has the wrong
    // type; unknown members are ignored.
    static std::optional<StreamChatChunk> decode(QByteArrayView payload);

    // The first choice's delta content, else its message content, else nothing.
    std::optional<QString> text() const;
};

} // namespace scrivel
