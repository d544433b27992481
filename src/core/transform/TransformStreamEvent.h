#pragma once

#include "core/support/TextSnapshot.h"

#include <QString>

namespace scrivel {

// One event of a streamed reply. partial carries the whole reply received so
// far (not a delta); completed carries the final reply and is the last event
// of a successful stream.
class TransformStreamEvent {
public:
    enum class Kind { partial, completed };

    static TransformStreamEvent partial(TextSnapshot text) {
        return TransformStreamEvent(Kind::partial, std::move(text));
    }
    static TransformStreamEvent completed(const QString& text) {
        return TransformStreamEvent(Kind::completed, TextSnapshot(text));
    }

    Kind kind() const { return m_kind; }
    const TextSnapshot& text() const { return m_text; }

    friend bool operator==(const TransformStreamEvent& a, const TransformStreamEvent& b) {
        return a.m_kind == b.m_kind && a.m_text == b.m_text;
    }

private:
    TransformStreamEvent(Kind kind, TextSnapshot text) : m_kind(kind), m_text(std::move(text)) {}

    Kind m_kind;
    TextSnapshot m_text;
};

} // namespace scrivel
