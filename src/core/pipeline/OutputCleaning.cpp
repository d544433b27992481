#include "core/pipeline/OutputCleaning.h"

#include "core/support/GraphemeBreaks.h"

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

namespace scrivel {

namespace {

bool isLineBreakScalar(char32_t c) {
    return c == 0x0A || c == 0x0B || c == 0x0C || c == 0x0D || c == 0x85 || c == 0x2028 ||
           c == 0x2029;
}

bool isCarriageReturnLineFeed(QStringView text, qsizetype position) {
    return position > 0 && position < text.size() && text[position - 1] == u'\r' &&
           text[position] == u'\n';
}

// The UTF-16 offset just past the first `count` grapheme clusters.
qsizetype offsetAfterGraphemes(const QString& text, qsizetype count) {
    GraphemeBreaks breaks(text);
    qsizetype position = 0;
    for (qsizetype i = 0; i < count; ++i) {
        const qsizetype next = breaks.next();
        if (next < 0)
            return text.size();
        position = next;
    }
    return position;
}

bool isGraphemeBoundary(const QString& text, qsizetype position) {
    return GraphemeBreaks(text).isBoundary(position);
}

// Prefix and suffix tests by whole characters: a quote carrying a combining
// mark is a different character from the quote itself.
bool hasPrefixCharacters(const QString& text, QStringView prefix) {
    return text.startsWith(prefix) && isGraphemeBoundary(text, prefix.size());
}

bool hasSuffixCharacters(const QString& text, QStringView suffix) {
    return text.endsWith(suffix) && isGraphemeBoundary(text, text.size() - suffix.size());
}

QString unquote(const QString& text) {
    if (graphemeCount(text) < 2)
        return text;
    const bool straight = hasPrefixCharacters(text, u"\"") && hasSuffixCharacters(text, u"\"");
    const bool curly = hasPrefixCharacters(text, u"\u201C") && hasSuffixCharacters(text, u"\u201D");
    if (!straight && !curly)
        return text;
    // Both quotes are single UTF-16 units standing as characters of their own.
    return trimmedWhitespaceAndNewlines(text.mid(1, text.size() - 2));
}

// The prefaces, longest (in characters) first; equal lengths keep list order.
const QStringList& prefacesLongestFirst() {
    static const QStringList sorted = [] {
        // Sorted by (length, list position) rather than with stable_sort,
        // whose temporary buffer clang's libstdc++ headers flag as deprecated.
        const QStringList& list = prefaceList();
        std::vector<std::pair<qsizetype, qsizetype>> order;
        for (qsizetype i = 0; i < list.size(); ++i)
            order.emplace_back(-graphemeCount(list[i]), i);
        std::sort(order.begin(), order.end());
        QStringList sorted;
        for (const auto& [negativeLength, index] : order)
            sorted.append(list[index]);
        return sorted;
    }();
    return sorted;
}

bool startsWithAnyPreface(const QString& lowered) {
    const QStringList& prefaces = prefaceList();
    return std::any_of(prefaces.begin(), prefaces.end(), [&](const QString& preface) {
        return hasPrefixCharacters(lowered, preface);
    });
}

// The first two line feeds that are characters of their own. The LF of a
// CR LF pair belongs to the CR's character, so "\r\n\n" holds no blank line.
qsizetype indexOfBlankLine(const QString& text) {
    for (qsizetype at = text.indexOf(u"\n\n"); at >= 0; at = text.indexOf(u"\n\n", at + 1)) {
        if (at == 0 || text.at(at - 1) != QLatin1Char('\r'))
            return at;
    }
    return -1;
}

qsizetype utf8Length(const QString& text) {
    return text.toUtf8().size();
}

} // namespace

const QStringList& prefaceList() {
    static const QStringList list = {
        QStringLiteral("here is the corrected text:"),
        QStringLiteral("here is the corrected text"),
        QStringLiteral("here's the corrected text:"),
        QStringLiteral("here's the corrected text"),
        QStringLiteral("here is the fixed text:"),
        QStringLiteral("here is the fixed text"),
        QStringLiteral("here is the revised text:"),
        QStringLiteral("here is the revised text"),
        QStringLiteral("here is the corrected version:"),
        QStringLiteral("here is the corrected version"),
        QStringLiteral("here's the corrected version:"),
        QStringLiteral("here's the corrected version"),
        QStringLiteral("corrected text:"),
        QStringLiteral("the corrected text is:"),
        QStringLiteral("the corrected text:"),
        QStringLiteral("i've corrected the text:"),
        QStringLiteral("i have corrected the text:"),
        QStringLiteral("i've corrected the text"),
        QStringLiteral("i have corrected the text"),
    };
    return list;
}

QString cleanOutput(const QString& reply) {
    QString text = trimmedWhitespaceAndNewlines(reply);
    if (text.isEmpty())
        return text;
    text = unquote(text);

    const QString lowered = text.toLower();
    for (const QString& preface : prefacesLongestFirst()) {
        if (!hasPrefixCharacters(lowered, preface))
            continue;
        // Lower-casing can change lengths, so the preface's length is counted
        // in characters and removed from the original text.
        text = trimmedWhitespaceAndNewlines(
            text.mid(offsetAfterGraphemes(text, graphemeCount(preface))));
        if (hasPrefixCharacters(text, u":"))
            text = trimmedWhitespaceAndNewlines(text.mid(1));
        break;
    }

    const qsizetype blankLine = indexOfBlankLine(text);
    if (blankLine >= 0) {
        const QString head = trimmedWhitespaceAndNewlines(text.left(blankLine));
        const QString tail = trimmedWhitespaceAndNewlines(text.mid(blankLine + 2));
        if (isPrefaceLine(head) && !tail.isEmpty())
            text = tail;
    }
    return unquote(text);
}

bool isPrefaceLine(const QString& text) {
    const QString lowered = text.toLower();
    if (graphemeCount(lowered) >= 121)
        return false;
    return startsWithAnyPreface(lowered) || lowered.contains(QStringLiteral("corrected text")) ||
           lowered.contains(QStringLiteral("fixed text"));
}

QString normalizedLineEndings(const QString& text) {
    QString normalized = text;
    normalized.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
    normalized.replace(QLatin1Char('\r'), QLatin1Char('\n'));
    return normalized;
}

qsizetype lineBreakCount(const QString& text) {
    // Every line-break scalar is a control character, which always starts a
    // character of its own; only the LF of a CR LF pair joins the CR before
    // it. So counting scalars, less one per CR LF pair, counts characters.
    // None of the line-break scalars lies outside the BMP.
    qsizetype count = 0;
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (isLineBreakScalar(text[i].unicode()) && !isCarriageReturnLineFeed(text, i))
            ++count;
    }
    return count;
}

EditVerdict validateEdit(const QString& reply, const QString& input) {
    const QString cleaned = cleanOutput(reply);
    if (cleaned.isEmpty())
        return EditVerdict::rejected(QStringLiteral("empty"));
    if (normalizedLineEndings(cleaned) == normalizedLineEndings(input))
        return EditVerdict::alreadyClean();
    if (startsWithAnyPreface(cleaned.toLower()))
        return EditVerdict::rejected(QStringLiteral("meta-prefix"));

    const qsizetype in = utf8Length(input);
    const qsizetype out = utf8Length(cleaned);
    if (in >= 1 && std::abs(double(out) - double(in)) / double(in) > 0.35)
        return EditVerdict::rejected(QStringLiteral("length-delta"));

    const qsizetype a = lineBreakCount(input);
    const qsizetype b = lineBreakCount(cleaned);
    if ((a > 0 || b > 0) && std::abs(a - b) >= 2)
        return EditVerdict::rejected(QStringLiteral("line-breaks"));
    return EditVerdict::accepted(cleaned);
}

} // namespace scrivel
