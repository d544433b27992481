#include "core/panel/PanelTextLines.h"

#include <QtTest>

using namespace scrivel;

class PanelTextLinesTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void lineCount_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("lines");

        QTest::newRow("empty") << QString() << 1;
        QTest::newRow("51 bytes") << QString(51, u'a') << 1;
        QTest::newRow("52 bytes") << QString(52, u'a') << 2;
        QTest::newRow("104 bytes") << QString(104, u'a') << 3;
        QTest::newRow("363 bytes") << QString(363, u'a') << 7;
        QTest::newRow("364 bytes") << QString(364, u'a') << 8;
        // Bytes, not characters: 52 × "é" is 104 bytes, 26 emoji are 104.
        QTest::newRow("two-byte letters") << QString(52, QChar(0xE9)) << 3;
        QTest::newRow("emoji") << QStringLiteral("😀").repeated(26) << 3;
        QTest::newRow("three short lines") << QStringLiteral("one\ntwo\nthree") << 3;
        QTest::newRow("CR LF is one break") << QStringLiteral("one\r\ntwo\r\nthree") << 3;
        QTest::newRow("lone CR") << QStringLiteral("a\rb") << 2;
        QTest::newRow("other breaks")
            << QStringLiteral("a\u000Bb\u000Cc\u0085d\u2028e\u2029f") << 6;
        QTest::newRow("many breaks stop at eight") << QString(20, u'\n') << 8;
        QTest::newRow("breaks beyond the short text's length")
            << (QString(300, u'a') + QStringLiteral("\n\n\n\n\n\n\n")) << 8;
    }

    void lineCount() {
        QFETCH(QString, text);
        QFETCH(int, lines);
        QCOMPARE(PanelTextLines::lineCount(text), lines);
    }
};

QTEST_APPLESS_MAIN(PanelTextLinesTest)
#include "tst_PanelTextLines.moc"
