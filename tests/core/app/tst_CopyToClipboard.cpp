#include "app/Clipboard.h"
#include "dummy/InMemoryClipboard.h"

#include <QtTest>

using namespace scrivel;

class CopyToClipboardTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void writesOneConcealedLocalItem_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("refuse");
        QTest::newRow("plain") << QStringLiteral("Hello there.") << false;
        QTest::newRow("empty") << QString() << false;
        QTest::newRow("refused") << QStringLiteral("Kept back") << true;
    }
    void writesOneConcealedLocalItem() {
        QFETCH(QString, text);
        QFETCH(bool, refuse);
        InMemoryClipboard clipboard;
        clipboard.failWrites = refuse;
        QCOMPARE(copyToClipboard(clipboard, text), !refuse);
        QCOMPARE(clipboard.written.size(), refuse ? 0 : 1);
        if (refuse)
            return;
        const ClipboardItem& item = clipboard.written.first();
        QCOMPARE(item.plainText, text);
        QVERIFY(item.concealed);
        QVERIFY(item.currentHostOnly);
    }
};

QTEST_GUILESS_MAIN(CopyToClipboardTest)
#include "tst_CopyToClipboard.moc"
