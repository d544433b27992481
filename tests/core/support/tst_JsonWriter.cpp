#include "core/support/JsonWriter.h"
#include "support/TestSupport.h"

#include <QtTest>

using namespace scrivel;

class JsonWriterTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void writes_data();
    void writes();
};

void JsonWriterTest::writes_data() {
    QTest::addColumn<JsonValue>("value");
    QTest::addColumn<QString>("options"); // "pretty", "sorted", "raw slashes"
    QTest::addColumn<QByteArray>("expected");

    const auto row = [](const char* name, const JsonValue& value, const QByteArray& expected,
                        const QString& options = {}) {
        QTest::newRow(name) << value << options << expected;
    };
    row("null", JsonValue(), "null");
    row("true", JsonValue(true), "true");
    row("negative zero", JsonValue(-0.0), "0");
    row("integer without a fraction", JsonValue(4096), "4096");
    row("tiny", JsonValue(1e-7), "1e-07");
    row("shortest round trip", JsonValue(1.0 / 3), "0.3333333333333333");
    row("slash escaped", JsonValue(QStringLiteral("a/b")), R"("a\/b")");
    row("slash kept", JsonValue(QStringLiteral("a/b")), R"("a/b")", "raw slashes");
    // Short escapes, other controls as lower-case \u, delete as it is.
    row("escapes", JsonValue(QStringLiteral("\"\\\b\f\n\r\t\x01\x1f\x7f")),
        "\"\\\"\\\\\\b\\f\\n\\r\\t\\u0001\\u001f\x7f\"");
    row("non-ASCII as raw UTF-8", JsonValue(QStringLiteral("caf\u00e9 \u2019 \U0001F600")),
        "\"caf\xc3\xa9 \xe2\x80\x99 \xf0\x9f\x98\x80\"");

    JsonValue object = JsonValue::object();
    object.insert(QStringLiteral("zeta"), 1);
    object.insert(QStringLiteral("alpha"), JsonValue::array().append(true).append(JsonValue()));
    object.insert(QStringLiteral("mid"), JsonValue::object());
    row("member order kept", object, R"({"zeta":1,"alpha":[true,null],"mid":{}})");
    row("members sorted", object, R"({"alpha":[true,null],"mid":{},"zeta":1})", "sorted");

    JsonValue nested = JsonValue::object();
    nested.insert(QStringLiteral("name"), QStringLiteral("A/B"));
    nested.insert(QStringLiteral("list"), JsonValue::array().append(1).append(JsonValue::object()));
    nested.insert(QStringLiteral("empty"), JsonValue::array());
    row("pretty, nested", nested, R"({
  "empty" : [

  ],
  "list" : [
    1,
    {

    }
  ],
  "name" : "A\/B"
})",
        "pretty sorted");
    row("pretty, empty top-level array", JsonValue::array(), "[\n\n]", "pretty");
}

void JsonWriterTest::writes() {
    QFETCH(JsonValue, value);
    QFETCH(QString, options);
    QFETCH(QByteArray, expected);
    JsonWriter::Options chosen;
    chosen.pretty = options.contains(QLatin1String("pretty"));
    chosen.sortKeys = options.contains(QLatin1String("sorted"));
    chosen.escapeSlashes = !options.contains(QLatin1String("raw slashes"));
    const QByteArray actual = JsonWriter::write(value, chosen);
    QVERIFY2(actual == expected, qPrintable(test::printable(actual)));
}

QTEST_GUILESS_MAIN(JsonWriterTest)
#include "tst_JsonWriter.moc"
