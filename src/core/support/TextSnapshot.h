#pragma once

#include <QString>
#include <QStringView>
#include <memory>

namespace scrivel {

// An immutable text that may share its storage with a longer, growing text.
//
// A streamed reply is reported as "the whole text so far" many times over. If
// every report were an independent QString, each append by the producer would
// copy the whole reply while a consumer still held the previous report, and a
// long reply would cost quadratic time. A TextAccumulator appends in place to
// one buffer, and each snapshot names a prefix of that buffer; prefixes never
// change, so a snapshot stays valid and cheap to copy.
class TextSnapshot {
public:
    TextSnapshot() = default;
    TextSnapshot(const QString& text);
    TextSnapshot(const char*) = delete;

    qsizetype size() const { return m_size; }
    bool isEmpty() const { return m_size == 0; }
    // Valid until the next change of the owning accumulator's buffer; take a
    // fresh view each time instead of keeping one.
    QStringView view() const;
    QString toString() const;

    // True when other is known to be a prefix of this text without comparing
    // characters (both come from the same accumulator).
    bool extends(const TextSnapshot& other) const;

    friend bool operator==(const TextSnapshot& a, const TextSnapshot& b);

private:
    friend class TextAccumulator;
    TextSnapshot(std::shared_ptr<QString> buffer, qsizetype size)
        : m_buffer(std::move(buffer)), m_size(size) {}

    std::shared_ptr<QString> m_buffer;
    qsizetype m_size = 0;
};

// The producer side: an append-only text that hands out snapshots.
class TextAccumulator {
public:
    TextAccumulator() : m_buffer(std::make_shared<QString>()) {}

    void append(QStringView text) { m_buffer->append(text); }
    qsizetype size() const { return m_buffer->size(); }
    QStringView view() const { return QStringView(*m_buffer); }
    TextSnapshot snapshot() const { return TextSnapshot(m_buffer, m_buffer->size()); }

private:
    std::shared_ptr<QString> m_buffer;
};

} // namespace scrivel
