#include "core/support/JsonWriter.h"

#include <QLocale>
#include <algorithm>
#include <cmath>

namespace scrivel {

namespace {

class Writer {
public:
    explicit Writer(JsonWriter::Options options) : m_options(options) {}

    void value(const JsonValue& v, int depth) {
        if (v.isNull())
            m_out += "null";
        else if (v.isBool())
            m_out += v.toBool() ? "true" : "false";
        else if (v.isNumber())
            m_out += JsonWriter::number(v.toNumber());
        else if (v.isString())
            m_out += JsonWriter::quoted(v.toString(), m_options.escapeSlashes);
        else if (v.isArray())
            array(v.toArray(), depth);
        else
            object(v.toObject(), depth);
    }

    QByteArray take() { return std::move(m_out); }

private:
    void indent(int depth) { m_out.append(depth * 2, ' '); }

    // Pretty printing opens every container with a line break and closes it on
    // its own line, so an empty container prints as "[\n\n]" at the top level.
    void open(char bracket) {
        m_out += bracket;
        if (m_options.pretty)
            m_out += '\n';
    }
    void close(char bracket, int depth) {
        if (m_options.pretty) {
            m_out += '\n';
            indent(depth);
        }
        m_out += bracket;
    }
    void separator(bool& first) {
        if (first)
            first = false;
        else
            m_out += m_options.pretty ? ",\n" : ",";
    }

    void array(const JsonValue::Array& elements, int depth) {
        open('[');
        bool first = true;
        for (const JsonValue& element : elements) {
            separator(first);
            if (m_options.pretty)
                indent(depth + 1);
            value(element, depth + 1);
        }
        close(']', depth);
    }

    void object(const JsonValue::Object& members, int depth) {
        std::vector<const JsonValue::Member*> ordered;
        ordered.reserve(members.size());
        for (const auto& member : members)
            ordered.push_back(&member);
        if (m_options.sortKeys) {
            // Keys compare by their UTF-8 bytes, as a byte-oriented encoder does.
            std::stable_sort(ordered.begin(), ordered.end(), [](const auto* a, const auto* b) {
                return a->first.toUtf8() < b->first.toUtf8();
            });
        }
        open('{');
        bool first = true;
        for (const auto* member : ordered) {
            separator(first);
            if (m_options.pretty)
                indent(depth + 1);
            m_out += JsonWriter::quoted(member->first, m_options.escapeSlashes);
            m_out += m_options.pretty ? " : " : ":";
            value(member->second, depth + 1);
        }
        close('}', depth);
    }

    JsonWriter::Options m_options;
    QByteArray m_out;
};

} // namespace

QByteArray JsonWriter::write(const JsonValue& value, Options options) {
    Writer writer(options);
    writer.value(value, 0);
    return writer.take();
}

QByteArray JsonWriter::quoted(const QString& text, bool escapeSlashes) {
    const QByteArray utf8 = text.toUtf8();
    QByteArray out;
    out.reserve(utf8.size() + 2);
    out += '"';
    for (const char c : utf8) {
        switch (c) {
        case '"':
            out += "\\\"";
            break;
        case '\\':
            out += "\\\\";
            break;
        case '/':
            out += escapeSlashes ? "\\/" : "/";
            break;
        case '\b':
            out += "\\b";
            break;
        case '\f':
            out += "\\f";
            break;
        case '\n':
            out += "\\n";
            break;
        case '\r':
            out += "\\r";
            break;
        case '\t':
            out += "\\t";
            break;
        default:
            if (static_cast<unsigned char>(c) < 0x20) {
                static const char hex[] = "0123456789abcdef";
                out += "\\u00";
                out += hex[(c >> 4) & 0xf];
                out += hex[c & 0xf];
            } else {
                out += c;
            }
        }
    }
    out += '"';
    return out;
}

QByteArray JsonWriter::number(double value) {
    // JSON has no spelling for NaN or infinity; callers never store them, and
    // writing null keeps the document parseable if one slips through.
    if (!std::isfinite(value))
        return "null";
    if (value == 0)
        return "0"; // also for -0.0, which has no use in our documents
    return QByteArray::number(value, 'g', QLocale::FloatingPointShortest);
}

} // namespace scrivel
