#include "providers/ServerSentEventReader.h"

#include "providers/StreamChatChunk.h"

#include <QStringDecoder>
#include <cstring>

namespace scrivel {

namespace {

// Spaces, tabs and the other Unicode space separators; not line breaks.
bool isHorizontalWhiteSpace(QChar c) {
    return c == QLatin1Char('\t') || c.category() == QChar::Separator_Space;
}

QStringView trimmedHorizontally(QStringView text) {
    qsizetype begin = 0;
    qsizetype end = text.size();
    while (begin < end && isHorizontalWhiteSpace(text[begin]))
        ++begin;
    while (end > begin && isHorizontalWhiteSpace(text[end - 1]))
        --end;
    return text.mid(begin, end - begin);
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

ServerSentEventReader::ServerSentEventReader(qsizetype replyLimit) : m_replyLimit(replyLimit) {
    m_partialLine.reserve(1024);
}

std::optional<QString> ServerSentEventReader::textOfLine(QByteArrayView line) {
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    QString decoded = decoder.decode(line);
    if (decoder.hasError())
        return std::nullopt;
    QStringView text(decoded);
    if (text.endsWith(QLatin1Char('\r')))
        text.chop(1);
    text = trimmedHorizontally(text);
    if (!text.startsWith(QLatin1String("data:")))
        return std::nullopt;
    const QStringView payload = trimmedHorizontally(text.mid(5));
    if (payload.isEmpty() || payload == QLatin1String("[DONE]"))
        return std::nullopt;
    const auto chunk = StreamChatChunk::decode(payload.toUtf8());
    if (!chunk)
        return std::nullopt;
    auto chunkText = chunk->text();
    if (!chunkText || chunkText->isEmpty())
        return std::nullopt;
    return chunkText;
}

bool ServerSentEventReader::appendLine(QByteArrayView line, const std::function<void()>& onText) {
    const auto text = textOfLine(line);
    if (!text)
        return true;
    m_reply.append(*text);
    m_replyBytes += utf8Length(*text);
    if (m_replyBytes > m_replyLimit) {
        m_exceeded = true;
        return false;
    }
    if (onText)
        onText();
    return true;
}

bool ServerSentEventReader::feed(QByteArrayView bytes, const std::function<void()>& onText) {
    if (m_exceeded)
        return false;
    qsizetype start = 0;
    while (start < bytes.size()) {
        const void* found = std::memchr(bytes.data() + start, '\n', size_t(bytes.size() - start));
        if (!found) {
            m_partialLine.append(bytes.data() + start, bytes.size() - start);
            break;
        }
        const qsizetype end = static_cast<const char*>(found) - bytes.data();
        bool ok;
        if (m_partialLine.isEmpty()) {
            ok = appendLine(bytes.sliced(start, end - start), onText);
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
