#pragma once

#include "core/support/JsonValue.h"

#include <QByteArray>

namespace scrivel {

// Writes JSON byte for byte in the forms our documents require. The output
// matches a conventional Foundation-style encoder: compact by default; in
// pretty mode one member per line, two-space indentation and " : " between
// key and value; "/" escaped as "\/" unless turned off; numbers in their
// shortest round-trip form ("0", "0.7", "1e-07").
class JsonWriter {
public:
    struct Options {
        bool pretty = false;
        bool sortKeys = false;
        bool escapeSlashes = true;
    };

    static QByteArray write(const JsonValue& value, Options options);
    static QByteArray write(const JsonValue& value) { return write(value, Options{}); }

    // A JSON string literal for the text, quotes included.
    static QByteArray quoted(const QString& text, bool escapeSlashes = true);
    // The textual form of a JSON number.
    static QByteArray number(double value);
};

} // namespace scrivel
