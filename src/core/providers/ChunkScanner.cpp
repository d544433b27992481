#include "core/providers/ChunkScanner.h"

#include <QStringDecoder>

namespace scrivel {

namespace {

constexpr int maximumDepth = 32;

// Thrown-free recursive descent: every method returns false when the input
// is not something this scanner decides.
class Scanner {
public:
    explicit Scanner(QByteArrayView json) : m_p(json.data()), m_end(json.data() + json.size()) {}

    ChunkScanner::Result run() {
        skipSpace();
        if (!expect('{'))
            return {};
        // Top level: only "choices" matters.
        bool sawChoices = false;
        Choices choices;
        if (!members([&](QByteArrayView key) {
                if (key == "choices") {
                    if (sawChoices)
                        return false; // duplicates: let the general decoder decide
                    sawChoices = true;
                    return parseChoices(choices);
                }
                // Errors reported inside the stream are rare: the general
                // decoder reads them.
                if (key == "error")
                    return isNullHere();
                if (key == "object")
                    return isNotErrorKind();
                return skipValue(1);
            }))
            return {};
        skipSpace();
        if (m_p != m_end)
            return {};
        if (choices.wrongType)
            return {ChunkScanner::Outcome::wrongType, {}, {}};
        if (!choices.firstText)
            return {ChunkScanner::Outcome::noText, {}, choices.finishReason};
        return {ChunkScanner::Outcome::text, *choices.firstText, choices.finishReason};
    }

private:
    struct Choices {
        bool wrongType = false;
        std::optional<QString> firstText;
        std::optional<QString> finishReason;
    };

    void skipSpace() {
        while (m_p < m_end && (*m_p == ' ' || *m_p == '\t' || *m_p == '\n' || *m_p == '\r'))
            ++m_p;
    }
    bool expect(char c) {
        skipSpace();
        if (m_p >= m_end || *m_p != c)
            return false;
        ++m_p;
        return true;
    }
    bool peek(char c) {
        skipSpace();
        return m_p < m_end && *m_p == c;
    }

    // Calls onMember(key) with the cursor before each member's value.
    template <typename OnMember>
    bool members(OnMember&& onMember) {
        if (peek('}')) {
            ++m_p;
            return true;
        }
        for (;;) {
            skipSpace();
            QByteArrayView key;
            if (!rawString(&key) || !expect(':'))
                return false;
            if (!onMember(key))
                return false;
            skipSpace();
            if (m_p < m_end && *m_p == ',') {
                ++m_p;
                continue;
            }
            return expect('}');
        }
    }

    // A string without escapes that need decoding is returned raw; strings
    // with escapes are accepted only through decodedString.
    bool rawString(QByteArrayView* raw) {
        if (m_p >= m_end || *m_p != '"')
            return false;
        const char* start = ++m_p;
        while (m_p < m_end && *m_p != '"') {
            const auto c = static_cast<unsigned char>(*m_p);
            if (c < 0x20 || c == '\\')
                return false; // keys with escapes are left to the general decoder
            ++m_p;
        }
        if (m_p >= m_end)
            return false;
        *raw = QByteArrayView(start, m_p - start);
        ++m_p;
        return isValidUtf8(*raw);
    }

    bool decodedString(QString* out) {
        if (m_p >= m_end || *m_p != '"')
            return false;
        ++m_p;
        QByteArray bytes;
        const char* runStart = m_p;
        while (m_p < m_end && *m_p != '"') {
            const auto c = static_cast<unsigned char>(*m_p);
            if (c < 0x20)
                return false;
            if (c != '\\') {
                ++m_p;
                continue;
            }
            bytes.append(runStart, m_p - runStart);
            if (++m_p >= m_end)
                return false;
            switch (*m_p) {
            case '"':
                bytes.append('"');
                break;
            case '\\':
                bytes.append('\\');
                break;
            case '/':
                bytes.append('/');
                break;
            case 'b':
                bytes.append('\b');
                break;
            case 'f':
                bytes.append('\f');
                break;
            case 'n':
                bytes.append('\n');
                break;
            case 'r':
                bytes.append('\r');
                break;
            case 't':
                bytes.append('\t');
                break;
            case 'u': {
                char32_t unit;
                if (!hex4(&unit) || unit == 0 || (unit >= 0xD800 && unit <= 0xDFFF))
                    return false; // surrogates and NUL: the general decoder decides
                const QString single{QChar(char16_t(unit))};
                bytes.append(single.toUtf8());
                m_p += 4;
                break;
            }
            default:
                return false;
            }
            runStart = ++m_p;
        }
        if (m_p >= m_end)
            return false;
        bytes.append(runStart, m_p - runStart);
        ++m_p;
        if (!isValidUtf8(bytes))
            return false;
        *out = QString::fromUtf8(bytes);
        return true;
    }

    bool hex4(char32_t* unit) {
        if (m_end - m_p < 5)
            return false;
        char32_t value = 0;
        for (int i = 1; i <= 4; ++i) {
            const char c = m_p[i];
            value <<= 4;
            if (c >= '0' && c <= '9')
                value |= char32_t(c - '0');
            else if (c >= 'a' && c <= 'f')
                value |= char32_t(c - 'a' + 10);
            else if (c >= 'A' && c <= 'F')
                value |= char32_t(c - 'A' + 10);
            else
                return false;
        }
        *unit = value;
        return true;
    }

    // Numbers in plain forms only (no exponent, at most 15 digits).
    bool number() {
        const char* start = m_p;
        if (m_p < m_end && *m_p == '-')
            ++m_p;
        if (m_p >= m_end)
            return false;
        if (*m_p == '0') {
            ++m_p;
        } else if (*m_p >= '1' && *m_p <= '9') {
            while (m_p < m_end && *m_p >= '0' && *m_p <= '9')
                ++m_p;
        } else {
            return false;
        }
        if (m_p < m_end && *m_p == '.') {
            ++m_p;
            const char* digits = m_p;
            while (m_p < m_end && *m_p >= '0' && *m_p <= '9')
                ++m_p;
            if (m_p == digits)
                return false;
        }
        if (m_p < m_end && (*m_p == 'e' || *m_p == 'E'))
            return false;
        return m_p - start <= 16;
    }

    bool literal(QByteArrayView word) {
        if (m_end - m_p < word.size() || QByteArrayView(m_p, word.size()) != word)
            return false;
        m_p += word.size();
        return true;
    }

    bool skipValue(int depth) {
        if (depth > maximumDepth)
            return false;
        skipSpace();
        if (m_p >= m_end)
            return false;
        switch (*m_p) {
        case '{':
            ++m_p;
            return members([&](QByteArrayView) { return skipValue(depth + 1); });
        case '[':
            ++m_p;
            return elements([&] { return skipValue(depth + 1); });
        case '"': {
            QString ignored;
            return decodedString(&ignored);
        }
        case 't':
            return literal("true");
        case 'f':
            return literal("false");
        case 'n':
            return literal("null");
        default:
            return number();
        }
    }

    template <typename OnElement>
    bool elements(OnElement&& onElement) {
        if (peek(']')) {
            ++m_p;
            return true;
        }
        for (;;) {
            if (!onElement())
                return false;
            skipSpace();
            if (m_p < m_end && *m_p == ',') {
                ++m_p;
                continue;
            }
            return expect(']');
        }
    }

    // A top-level "object" member: anything but the text "error" is skipped.
    bool isNotErrorKind() {
        skipSpace();
        if (m_p >= m_end || *m_p != '"')
            return skipValue(1);
        QString kind;
        return decodedString(&kind) && kind != QLatin1String("error");
    }

    bool isNullHere() {
        skipSpace();
        if (literal("null"))
            return true;
        return false;
    }

    bool parseChoices(Choices& choices) {
        if (isNullHere())
            return true;
        skipSpace();
        if (m_p >= m_end || *m_p != '[') {
            choices.wrongType = true;
            return skipValue(1);
        }
        ++m_p;
        bool first = true;
        return elements([&] {
            skipSpace();
            if (m_p >= m_end || *m_p != '{') {
                choices.wrongType = true;
                return skipValue(2);
            }
            ++m_p;
            std::optional<std::optional<QString>> delta, message;
            bool sawDelta = false, sawMessage = false, sawFinishReason = false;
            const bool ok = members([&](QByteArrayView key) {
                if (key == "finish_reason") {
                    if (sawFinishReason)
                        return false;
                    sawFinishReason = true;
                    skipSpace();
                    if (!first || m_p >= m_end || *m_p != '"')
                        return skipValue(3); // only a text counts, and only in the first choice
                    QString reason;
                    if (!decodedString(&reason))
                        return false;
                    choices.finishReason = reason;
                    return true;
                }
                if (key == "delta" || key == "message") {
                    bool& seen = key == "delta" ? sawDelta : sawMessage;
                    if (seen)
                        return false;
                    seen = true;
                    return parseHolder(key == "delta" ? delta : message, choices);
                }
                return skipValue(3);
            });
            if (ok && first && !choices.wrongType) {
                if (delta && *delta)
                    choices.firstText = **delta;
                else if (message && *message)
                    choices.firstText = **message;
            }
            first = false;
            return ok;
        });
    }

    // An object holding an optional "content" text; null or absent is fine.
    bool parseHolder(std::optional<std::optional<QString>>& holder, Choices& choices) {
        if (isNullHere())
            return true;
        skipSpace();
        if (m_p >= m_end || *m_p != '{') {
            choices.wrongType = true;
            return skipValue(3);
        }
        ++m_p;
        holder.emplace(std::nullopt);
        bool sawContent = false;
        return members([&](QByteArrayView key) {
            if (key != "content")
                return skipValue(4);
            if (sawContent)
                return false;
            sawContent = true;
            if (isNullHere())
                return true;
            skipSpace();
            if (m_p >= m_end || *m_p != '"') {
                choices.wrongType = true;
                return skipValue(4);
            }
            QString text;
            if (!decodedString(&text))
                return false;
            *holder = text;
            return true;
        });
    }

    static bool isValidUtf8(QByteArrayView bytes) {
        QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
        for (const char c : bytes) {
            if (static_cast<unsigned char>(c) >= 0x80) {
                const QString decoded = decoder.decode(bytes); // decoding happens here
                return !decoder.hasError();
            }
        }
        return true;
    }

    const char* m_p;
    const char* m_end;
};

} // namespace

ChunkScanner::Result ChunkScanner::scan(QByteArrayView json) {
    return Scanner(json).run();
}

} // namespace scrivel
