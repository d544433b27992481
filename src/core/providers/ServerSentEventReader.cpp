#include "core/providers/ServerSentEventReader.h"

#include "core/providers/ChunkScanner.h"
#include "core/providers/StreamChatChunk.h"

#include <cstring>

namespace scrivel {

namespace {

// Strict UTF-8: no overlong forms, no surrogates, nothing above U+10FFFF.
bool isValidUtf8(QByteArrayView bytes) {
    const auto* p = reinterpret_cast<const unsigned char*>(bytes.data());
    const auto* end = p + bytes.size();
    while (p < end) {
        // Plain ASCII, eight bytes at a time.
        while (end - p >= 8) {
            quint64 word;
            std::memcpy(&word, p, 8);
            if (word & 0x8080808080808080ULL)
                break;
            p += 8;
        }
        if (p >= end)
            break;
        const unsigned char c = *p;
        if (c < 0x80) {
            ++p;
            continue;
        }
        int length;
        char32_t minimum;
        char32_t value;
        if ((c & 0xE0) == 0xC0) {
            length = 2, minimum = 0x80, value = c & 0x1F;
        } else if ((c & 0xF0) == 0xE0) {
            length = 3, minimum = 0x800, value = c & 0x0F;
        } else if ((c & 0xF8) == 0xF0) {
            length = 4, minimum = 0x10000, value = c & 0x07;
        } else {
            return false;
        }
        if (end - p < length)
            return false;
        for (int i = 1; i < length; ++i) {
            if ((p[i] & 0xC0) != 0x80)
                return false;
            value = (value << 6) | (p[i] & 0x3F);
        }
        if (value < minimum || value > 0x10FFFF || (value >= 0xD800 && value <= 0xDFFF))
            return false;
        p += length;
    }
    return true;
}

// The length of a horizontal white-space character (tab or a Unicode space
// separator) at the start of bytes, or 0.
qsizetype spaceAtStart(QByteArrayView bytes) {
    if (bytes.isEmpty())
        return 0;
    const auto b = [&](qsizetype i) { return i < bytes.size() ? quint8(bytes[i]) : 0; };
    if (b(0) == ' ' || b(0) == '\t')
        return 1;
    if (b(0) == 0xC2 && b(1) == 0xA0)
        return 2; // U+00A0
    if (b(0) == 0xE1 && b(1) == 0x9A && b(2) == 0x80)
        return 3; // U+1680
    if (b(0) == 0xE2 && b(1) == 0x80 && ((b(2) >= 0x80 && b(2) <= 0x8A) || b(2) == 0xAF))
        return 3; // U+2000..U+200A, U+202F
    if (b(0) == 0xE2 && b(1) == 0x81 && b(2) == 0x9F)
        return 3; // U+205F
    if (b(0) == 0xE3 && b(1) == 0x80 && b(2) == 0x80)
        return 3; // U+3000
    return 0;
}

// The same at the end of bytes.
qsizetype spaceAtEnd(QByteArrayView bytes) {
    for (qsizetype length : {1, 2, 3}) {
        if (bytes.size() >= length && spaceAtStart(bytes.last(length)) == length)
            return length;
    }
    return 0;
}

QByteArrayView trimmedHorizontally(QByteArrayView bytes) {
    while (const qsizetype n = spaceAtStart(bytes))
        bytes = bytes.sliced(n);
    while (const qsizetype n = spaceAtEnd(bytes))
        bytes.chop(n);
    return bytes;
}

qsizetype utf8Length(QStringView text) {
    qsizetype bytes = 0;
    for (qsizetype i = 0; i < text.size(); ++i) {
        const char16_t c = text[i].unicode();
        if (c < 0x80)
            bytes += 1;
        else if (c < 0x800)
            bytes += 2;
        else if (QChar::isHighSurrogate(c) && i + 1 < text.size() &&
                 QChar::isLowSurrogate(text[i + 1].unicode())) {
            bytes += 4;
            ++i;
        } else
            bytes += 3;
    }
    return bytes;
}

} // namespace

ServerSentEventReader::ServerSentEventReader(qsizetype replyLimit, qsizetype lineLimit)
    : m_replyLimit(replyLimit), m_lineLimit(lineLimit < 0 ? replyLimit + lineFraming : lineLimit) {
    m_partialLine.reserve(1024);
}

ServerSentEventReader::Line ServerSentEventReader::readLine(QByteArrayView line) {
    // Everything here works on the bytes: a line is only turned into text
    // once it is known to carry a chunk. Trimming removes whole characters
    // only, so the trimmed line is valid UTF-8 exactly when the line is.
    if (line.endsWith('\r'))
        line.chop(1);
    line = trimmedHorizontally(line);
    if (!line.startsWith("data:"))
        return {};
    if (!isValidUtf8(line))
        return {Line::Kind::invalidText, {}, {}};
    const QByteArrayView payload = trimmedHorizontally(line.sliced(5));
    if (payload.isEmpty())
        return {};
    if (payload == "[DONE]")
        return {Line::Kind::done, {}, {}};
    // The fast scanner settles the usual chunks; the general decoder the rest.
    const ChunkScanner::Result scanned = ChunkScanner::scan(payload);
    Line result;
    std::optional<QString> chunkText;
    switch (scanned.outcome) {
    case ChunkScanner::Outcome::text:
        chunkText = scanned.text;
        result.finishReason = scanned.finishReason;
        break;
    case ChunkScanner::Outcome::noText:
        result.finishReason = scanned.finishReason;
        break;
    case ChunkScanner::Outcome::wrongType:
        return {};
    case ChunkScanner::Outcome::notHandled: {
        const auto chunk = StreamChatChunk::decode(payload);
        if (!chunk)
            return {};
        if (chunk->error) {
            result.kind = Line::Kind::serverError;
            result.text = *chunk->error;
            return result;
        }
        chunkText = chunk->text();
        result.finishReason = chunk->finishReason;
        break;
    }
    }
    if (chunkText && !chunkText->isEmpty()) {
        result.kind = Line::Kind::text;
        result.text = *chunkText;
    }
    return result;
}

std::optional<QString> ServerSentEventReader::textOfLine(QByteArrayView line) {
    Line read = readLine(line);
    if (read.kind != Line::Kind::text)
        return std::nullopt;
    return std::move(read.text);
}

bool ServerSentEventReader::appendLine(QByteArrayView line, const std::function<void()>& onText) {
    if (line.size() > m_lineLimit) {
        m_state = State::tooLarge;
        return false;
    }
    Line read = readLine(line);
    if (read.finishReason)
        m_finishReason = std::move(read.finishReason);
    switch (read.kind) {
    case Line::Kind::nothing:
        return true;
    case Line::Kind::done:
        m_sawDone = true;
        return true;
    case Line::Kind::serverError:
        m_state = State::serverError;
        m_serverMessage = std::move(read.text);
        return false;
    case Line::Kind::invalidText:
        m_state = State::invalidText;
        return false;
    case Line::Kind::text:
        break;
    }
    m_reply.append(read.text);
    m_replyBytes += utf8Length(read.text);
    if (m_replyBytes > m_replyLimit) {
        m_state = State::tooLarge;
        return false;
    }
    if (onText)
        onText();
    return true;
}

bool ServerSentEventReader::feed(QByteArrayView bytes, const std::function<void()>& onText) {
    if (m_state != State::reading)
        return false;
    qsizetype start = 0;
    while (start < bytes.size()) {
        const void* found = std::memchr(bytes.data() + start, '\n', size_t(bytes.size() - start));
        if (!found) {
            // A line that is already too long will never be read.
            if (m_partialLine.size() + (bytes.size() - start) > m_lineLimit) {
                m_partialLine.clear();
                m_state = State::tooLarge;
                return false;
            }
            m_partialLine.append(bytes.data() + start, bytes.size() - start);
            break;
        }
        const qsizetype end = static_cast<const char*>(found) - bytes.data();
        bool ok;
        if (m_partialLine.isEmpty()) {
            ok = appendLine(bytes.sliced(start, end - start), onText);
        } else if (m_partialLine.size() + (end - start) > m_lineLimit) {
            m_partialLine.clear();
            m_state = State::tooLarge;
            ok = false;
        } else {
            m_partialLine.append(bytes.data() + start, end - start);
            ok = appendLine(m_partialLine, onText);
            m_partialLine.resize(0); // keeps the reserved room
        }
        if (!ok)
            return false;
        start = end + 1;
    }
    return true;
}

void ServerSentEventReader::finish() {
    m_partialLine.clear();
}

} // namespace scrivel
