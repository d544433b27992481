#pragma once

#include <QString>

namespace scrivel {

// The value of a successful rewrite: a changed text, or nothing to change.
class FixResult {
public:
    enum class Kind { fixed, alreadyClean };

    static FixResult fixed(const QString& text) { return FixResult(Kind::fixed, text); }
    static FixResult alreadyClean() { return FixResult(Kind::alreadyClean, {}); }

    Kind kind() const { return m_kind; }
    // The final text of fixed; empty for alreadyClean.
    const QString& text() const { return m_text; }

    friend bool operator==(const FixResult& a, const FixResult& b) {
        return a.m_kind == b.m_kind && a.m_text == b.m_text;
    }

private:
    FixResult(Kind kind, QString text) : m_kind(kind), m_text(std::move(text)) {}

    Kind m_kind;
    QString m_text;
};

} // namespace scrivel
