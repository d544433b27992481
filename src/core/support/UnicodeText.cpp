#include "core/support/UnicodeText.h"

#include "core/support/GraphemeBreaks.h"

namespace scrivel {

namespace {

// Unicode White_Space: what a "white space and newlines" trim removes.
bool isUnicodeWhiteSpace(char32_t c) {
    return (c >= 0x09 && c <= 0x0D) || c == 0x20 || c == 0x85 || c == 0xA0 || c == 0x1680 ||
           (c >= 0x2000 && c <= 0x200A) || c == 0x2028 || c == 0x2029 || c == 0x202F ||
           c == 0x205F || c == 0x3000;
}

} // namespace

QString trimmedWhitespaceAndNewlines(const QString& text) {
    // Work on code points so characters outside the BMP are judged whole.
    const auto codePointBefore = [&](qsizetype end, qsizetype* start) {
        const QChar low = text.at(end - 1);
        if (low.isLowSurrogate() && end >= 2 && text.at(end - 2).isHighSurrogate()) {
            *start = end - 2;
            return QChar::surrogateToUcs4(text.at(end - 2), low);
        }
        *start = end - 1;
        return char32_t(low.unicode());
    };
    qsizetype begin = 0;
    while (begin < text.size()) {
        const QChar c = text.at(begin);
        if (c.isHighSurrogate() || !isUnicodeWhiteSpace(c.unicode()))
            break; // no White_Space character lies outside the BMP
        ++begin;
    }
    qsizetype end = text.size();
    while (end > begin) {
        qsizetype start = 0;
        if (!isUnicodeWhiteSpace(codePointBefore(end, &start)))
            break;
        end = start;
    }
    if (begin == 0 && end == text.size())
        return text;
    return text.mid(begin, end - begin);
}

qsizetype graphemeCount(QStringView text) {
    return GraphemeBreaks::count(text);
}

} // namespace scrivel
