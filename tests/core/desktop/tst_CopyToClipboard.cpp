#include "core/desktop/Clipboard.h"
#include "support/InMemoryClipboard.h"

#include <QtTest>

using namespace scrivel;

class CopyToClipboardTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void writesOneConcealedLocalItem() {
        InMemoryClipboard clipboard;
        QVERIFY(copyToClipboard(clipboard, QStringLiteral("Hello there.")));
        QCOMPARE(clipboard.written.size(), 1);
        const ClipboardItem& item = clipboard.written.first();
        QCOMPARE(item.plainText, QStringLiteral("Hello there."));
        QVERIFY(item.concealed);
        QVERIFY(item.currentHostOnly);

        clipboard.failWrites = true;
        QVERIFY(!copyToClipboard(clipboard, QStringLiteral("Kept back")));
        QCOMPARE(clipboard.written.size(), 1);
    }
};

QTEST_GUILESS_MAIN(CopyToClipboardTest)
#include "tst_CopyToClipboard.moc"
