#include "core/desktop/Clipboard.h"
#include "platform/linux/QtClipboard.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QMimeData>
#include <QProcess>
#include <QStandardPaths>
#include <QtTest>
#include <iostream>

using namespace scrivel;

namespace {

const char* serveFlag = "--serve-clipboard";

// Child mode: write the text given on the command line to the X11 clipboard,
// say so, and keep the clipboard (X11 needs its owner alive) until stdin
// closes.
int serveClipboard(int argc, char* argv[]) {
    qputenv("QT_QPA_PLATFORM", "xcb");
    QGuiApplication app(argc, argv);
    QtClipboard clipboard;
    const bool written = copyToClipboard(clipboard, QString::fromUtf8(argv[2]));
    std::cout << (written ? "written" : "failed") << std::endl;
    QSocketNotifier stdinClosed(0, QSocketNotifier::Read);
    QObject::connect(&stdinClosed, &QSocketNotifier::activated, &app, &QCoreApplication::quit);
    return app.exec();
}

} // namespace

class QtClipboardTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void concealedTextInProcess();
    void anotherProcessSeesTextAndMarkers();
};

void QtClipboardTest::concealedTextInProcess() {
    const QString text = QStringLiteral("Zeile 1\nZ\u00e9ile 2 \U0001F600");
    QtClipboard clipboard;
    QVERIFY(copyToClipboard(clipboard, text));
    const QMimeData* mime = QGuiApplication::clipboard()->mimeData();
    QVERIFY(mime);
    QCOMPARE(mime->text(), text);
    QCOMPARE(mime->data(QStringLiteral("x-kde-passwordManagerHint")), QByteArray("secret"));
    QVERIFY(mime->hasFormat(QStringLiteral("application/x-nspasteboard-concealed-type")));
    QCOMPARE(mime->data(QStringLiteral("application/x-nspasteboard-concealed-type")), QByteArray());

    // A plain write replaces the whole item: no marker survives.
    QVERIFY(clipboard.write(ClipboardItem{QStringLiteral("public"), false, false}));
    QVERIFY(!QGuiApplication::clipboard()->mimeData()->hasFormat(
        QStringLiteral("x-kde-passwordManagerHint")));
}

void QtClipboardTest::anotherProcessSeesTextAndMarkers() {
    if (qEnvironmentVariableIsEmpty("DISPLAY"))
        QSKIP("needs an X display (scripts/test provides one through xvfb-run)");
    const QString xclip = QStandardPaths::findExecutable(QStringLiteral("xclip"));
    if (xclip.isEmpty())
        QSKIP("needs xclip (installed by scripts/install-deps)");

    const QString text = QStringLiteral("Copied across processes \u2014 caf\u00e9");
    QProcess owner;
    owner.start(QCoreApplication::applicationFilePath(), {QString::fromLatin1(serveFlag), text});
    QVERIFY(owner.waitForStarted());
    QTRY_VERIFY_WITH_TIMEOUT(owner.canReadLine(), 10000);
    QCOMPARE(owner.readLine().trimmed(), QByteArray("written"));

    auto readClipboard = [&](const QString& target) {
        QProcess reader;
        reader.start(xclip, {QStringLiteral("-selection"), QStringLiteral("clipboard"),
                             QStringLiteral("-t"), target, QStringLiteral("-o")});
        // The owner answers the selection request from its event loop, which
        // runs in the other process; this one just waits.
        reader.waitForFinished(10000);
        return reader.readAllStandardOutput();
    };
    const QByteArray targets = readClipboard(QStringLiteral("TARGETS"));
    QVERIFY2(targets.contains("x-kde-passwordManagerHint"), targets.constData());
    QVERIFY2(targets.contains("application/x-nspasteboard-concealed-type"), targets.constData());
    QVERIFY2(targets.contains("UTF8_STRING") || targets.contains("text/plain"),
             targets.constData());
    QCOMPARE(readClipboard(QStringLiteral("UTF8_STRING")), text.toUtf8());
    QCOMPARE(readClipboard(QStringLiteral("x-kde-passwordManagerHint")), QByteArray("secret"));

    owner.closeWriteChannel();
    QVERIFY(owner.waitForFinished(10000));
}

int main(int argc, char* argv[]) {
    if (argc == 3 && qstrcmp(argv[1], serveFlag) == 0)
        return serveClipboard(argc, argv);
    QGuiApplication app(argc, argv);
    QtClipboardTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_QtClipboard.moc"
