#include "core/support/InstallLayout.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

using namespace scrivel;
using namespace Qt::StringLiterals;

// The installed data is found from the executable's folder, with the default
// GNU layout: <prefix>/bin and <prefix>/share/scrivel.
class InstallLayoutTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void dataAndTranslationFolders_data();
    void dataAndTranslationFolders();
};

void InstallLayoutTest::dataAndTranslationFolders_data() {
    QTest::addColumn<QStringList>("folders"); // made under the prefix
    QTest::addColumn<QString>("files");       // one file made under the prefix
    QTest::addColumn<QString>("data");        // relative to the prefix, or empty
    QTest::addColumn<QStringList>("translations");
    QTest::newRow("installed") << QStringList{"bin", "share/scrivel/translations"} << QString()
                               << u"share/scrivel"_s << QStringList{"share/scrivel/translations"};
    QTest::newRow("no translations yet") << QStringList{"bin", "share/scrivel/packs"} << QString()
                                         << u"share/scrivel"_s << QStringList{};
    QTest::newRow("build tree") << QStringList{"bin"} << QString() << QString() << QStringList{};
    QTest::newRow("a file in the data folder's place")
        << QStringList{"bin", "share"} << u"share/scrivel"_s << QString() << QStringList{};
}

void InstallLayoutTest::dataAndTranslationFolders() {
    QFETCH(QStringList, folders);
    QFETCH(QString, files);
    QFETCH(QString, data);
    QFETCH(QStringList, translations);
    QTemporaryDir prefix;
    for (const QString& folder : folders)
        QVERIFY(QDir(prefix.path()).mkpath(folder));
    if (!files.isEmpty()) {
        QFile file(prefix.filePath(files));
        QVERIFY(file.open(QIODevice::WriteOnly));
    }
    const QString bin = prefix.filePath(u"bin"_s);
    QCOMPARE(installedDataDirectory(bin), data.isEmpty() ? QString() : prefix.filePath(data));
    // The installed folder first; the translations compiled in come last.
    QStringList expected;
    for (const QString& folder : translations)
        expected << prefix.filePath(folder);
    expected << u":/translations"_s;
    QCOMPARE(translationDirectories(bin), expected);
    QCOMPARE(installedDataDirectory(QString()), QString());
}

QTEST_GUILESS_MAIN(InstallLayoutTest)
#include "tst_InstallLayout.moc"
