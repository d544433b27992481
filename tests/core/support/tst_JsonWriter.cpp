#include "support/JsonWriter.h"
#include "support/TestSupport.h"

#include <QtTest>

using namespace scrivel;

class JsonWriterTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void scalars_data();
    void scalars();
    void memberOrderIsKept();
    void prettyPrinting_data();
    void prettyPrinting();
};

void JsonWriterTest::scalars_data() {
    QTest::addColumn<JsonValue>("value");
    QTest::addColumn<bool>("escapeSlashes");
    QTest::addColumn<QByteArray>("expected");

    QTest::newRow("null") << JsonValue() << true << QByteArray("null");
    QTest::newRow("true") << JsonValue(true) << true << QByteArray("true");
    QTest::newRow("zero is written without a fraction")
        << JsonValue(0.0) << true << QByteArray("0");
    QTest::newRow("negative zero") << JsonValue(-0.0) << true << QByteArray("0");
    QTest::newRow("shortest fraction") << JsonValue(0.7) << true << QByteArray("0.7");
    QTest::newRow("integer") << JsonValue(4096) << true << QByteArray("4096");
    QTest::newRow("tiny") << JsonValue(1e-7) << true << QByteArray("1e-07");
    QTest::newRow("third") << JsonValue(1.0 / 3) << true << QByteArray("0.3333333333333333");
    QTest::newRow("slash escaped")
        << JsonValue(QStringLiteral("a/b")) << true << QByteArray(R"("a\/b")");
    QTest::newRow("slash kept") << JsonValue(QStringLiteral("a/b")) << false
                                << QByteArray(R"("a/b")");
    QTest::newRow("quotes and backslash") << JsonValue(QStringLiteral("say \"hi\" \\ bye")) << true
                                          << QByteArray(R"("say \"hi\" \\ bye")");
    QTest::newRow("short escapes")
        << JsonValue(QStringLiteral("\b\f\n\r\t")) << true << QByteArray(R"("\b\f\n\r\t")");
    QTest::newRow("other control characters as lower-case \\u")
        << JsonValue(QString(QChar(0x01)) + QChar(0x1f)) << true << QByteArray(R"("\u0001\u001f")");
    QTest::newRow("delete is not escaped")
        << JsonValue(QString(QChar(0x7f))) << true << QByteArray("\"\x7f\"");
    QTest::newRow("non-ASCII as raw UTF-8")
        << JsonValue(QStringLiteral("caf\u00e9 \u2019 \U0001F600")) << true
        << QByteArray("\"caf\xc3\xa9 \xe2\x80\x99 \xf0\x9f\x98\x80\"");
}

void JsonWriterTest::scalars() {
    QFETCH(JsonValue, value);
    QFETCH(bool, escapeSlashes);
    QFETCH(QByteArray, expected);
    JsonWriter::Options options;
    options.escapeSlashes = escapeSlashes;
    const QByteArray actual = JsonWriter::write(value, options);
    QVERIFY2(actual == expected, qPrintable(test::printable(actual)));
}

void JsonWriterTest::memberOrderIsKept() {
    JsonValue object = JsonValue::object();
    object.insert(QStringLiteral("zeta"), 1);
    object.insert(QStringLiteral("alpha"), JsonValue::array().append(true).append(JsonValue()));
    object.insert(QStringLiteral("mid"), JsonValue::object());

    QCOMPARE(JsonWriter::write(object), QByteArray(R"({"zeta":1,"alpha":[true,null],"mid":{}})"));

    JsonWriter::Options sorted;
    sorted.sortKeys = true;
    QCOMPARE(JsonWriter::write(object, sorted),
             QByteArray(R"({"alpha":[true,null],"mid":{},"zeta":1})"));
}

void JsonWriterTest::prettyPrinting_data() {
    QTest::addColumn<JsonValue>("value");
    QTest::addColumn<QByteArray>("expected");

    JsonValue nested = JsonValue::object();
    nested.insert(QStringLiteral("name"), QStringLiteral("A/B"));
    nested.insert(QStringLiteral("list"), JsonValue::array().append(1).append(JsonValue::object()));
    nested.insert(QStringLiteral("empty"), JsonValue::array());
    QTest::newRow("nested, sorted") << nested
                                    << QByteArray("{\n"
                                                  "  \"empty\" : [\n"
                                                  "\n"
                                                  "  ],\n"
                                                  "  \"list\" : [\n"
                                                  "    1,\n"
                                                  "    {\n"
                                                  "\n"
                                                  "    }\n"
                                                  "  ],\n"
                                                  "  \"name\" : \"A\\/B\"\n"
                                                  "}");
    QTest::newRow("empty top-level array") << JsonValue::array() << QByteArray("[\n\n]");
    QTest::newRow("scalar") << JsonValue(QStringLiteral("x")) << QByteArray("\"x\"");
}

void JsonWriterTest::prettyPrinting() {
    QFETCH(JsonValue, value);
    QFETCH(QByteArray, expected);
    JsonWriter::Options options;
    options.pretty = true;
    options.sortKeys = true;
    const QByteArray actual = JsonWriter::write(value, options);
    QVERIFY2(actual == expected, qPrintable(test::printable(actual)));
}

QTEST_GUILESS_MAIN(JsonWriterTest)
#include "tst_JsonWriter.moc"
