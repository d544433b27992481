#include "core/panel/PanelTextLines.h"

#include <algorithm>

namespace scrivel::PanelTextLines {

namespace {

bool isLineBreak(char32_t scalar) {
    return (scalar >= 0x0A && scalar <= 0x0D) || scalar == 0x85 || scalar == 0x2028 ||
           scalar == 0x2029;
}

// The UTF-8 length of the text, counted only up to the point where more bytes
// could not change the line count.
qsizetype utf8BytesUpTo(QStringView text, qsizetype enough) {
    qsizetype bytes = 0;
    for (qsizetype i = 0; i < text.size() && bytes < enough; ++i) {
        const char16_t unit = text[i].unicode();
        if (unit < 0x80) {
            bytes += 1;
        } else if (unit < 0x800) {
            bytes += 2;
        } else if (QChar::isHighSurrogate(unit) && i + 1 < text.size() &&
                   QChar::isLowSurrogate(text[i + 1].unicode())) {
            bytes += 4;
            ++i;
        } else {
            bytes += 3;
        }
    }
    return bytes;
}

int lineBreaksIn(QStringView text, int enough) {
    int breaks = 0;
    for (qsizetype i = 0; i < text.size() && breaks < enough; ++i) {
        const char16_t unit = text[i].unicode();
        if (!isLineBreak(unit))
            continue;
        // CR LF is one character: its first scalar is the CR.
        if (unit == u'\r' && i + 1 < text.size() && text[i + 1] == u'\n')
            ++i;
        ++breaks;
    }
    return breaks;
}

} // namespace

int lineCount(QStringView text) {
    if (text.isEmpty())
        return minimumLines;
    const qsizetype bytes = utf8BytesUpTo(text, qsizetype(maximumLines - 1) * bytesPerLine);
    const int byBytes = int(bytes / bytesPerLine) + 1;
    if (byBytes >= maximumLines)
        return maximumLines;
    // Fewer than 364 bytes means fewer than 364 characters, so the first
    // 2,000 characters are the whole text.
    const int byBreaks = lineBreaksIn(text, maximumLines - 1) + 1;
    return std::clamp(std::max(byBytes, byBreaks), minimumLines, maximumLines);
}

} // namespace scrivel::PanelTextLines
