#pragma once

#include "core/support/UnicodeText.h"

#include <QString>
#include <QStringList>

namespace scrivel {

// The verdict of judging a model's reply against the user's input.
struct EditVerdict {
    enum class Kind { accepted, rejected, alreadyClean };

    Kind kind = Kind::alreadyClean;
    // The cleaned text when accepted; the detail code when rejected ("empty",
    // "meta-prefix", "length-delta" or "line-breaks").
    QString text;

    static EditVerdict accepted(const QString& cleaned) { return {Kind::accepted, cleaned}; }
    static EditVerdict rejected(const QString& detail) { return {Kind::rejected, detail}; }
    static EditVerdict alreadyClean() { return {Kind::alreadyClean, {}}; }

    friend bool operator==(const EditVerdict&, const EditVerdict&) = default;
};

// The chatty openings models put before a corrected text, lower-case, in
// their fixed order.
const QStringList& prefaceList();

// Strips surrounding quotes and a leading preface from a reply.
QString cleanOutput(const QString& reply);
// Whether a short paragraph is only a preface ("Here is the corrected text").
bool isPrefaceLine(const QString& text);
// CR LF and lone CR become LF.
QString normalizedLineEndings(const QString& text);
// Line-break characters, a CR LF pair counting once.
qsizetype lineBreakCount(const QString& text);
// Cleans the reply, then accepts it, finds it unchanged, or rejects it as an
// unsafe edit of input.
EditVerdict validateEdit(const QString& reply, const QString& input);

} // namespace scrivel
