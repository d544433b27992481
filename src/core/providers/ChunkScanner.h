#pragma once

#include <QByteArrayView>
#include <QString>
#include <optional>

namespace scrivel {

// A fast reader for the one thing the event stream needs from a chunk: the
// text of its first choice. It parses strictly valid JSON in one pass
// without building a document. Anything unusual (duplicate members that
// matter, very deep nesting, escapes of control characters or lone
// surrogates, unusual numbers, invalid JSON, and every error object a
// server sends mid-stream) is not decided here: the result
// is notHandled and the caller falls back to the general decoder, so both
// always agree.
class ChunkScanner {
public:
    enum class Outcome { text, noText, wrongType, notHandled };

    struct Result {
        Outcome outcome = Outcome::notHandled;
        QString text;
        // The first choice's finish_reason when it is a text.
        std::optional<QString> finishReason;
    };

    static Result scan(QByteArrayView json);
};

} // namespace scrivel
