#include "core/presets/BuiltInPresets.h"
#include "core/presets/Preset.h"
#include "platform/linux/QSettingsStore.h"

#include <QTemporaryDir>
#include <QtTest>
#include <functional>
#include <sys/stat.h>
#include <unistd.h>

using namespace scrivel;
using namespace Qt::StringLiterals;

// Makes the situation in a folder and returns the settings file's path.
using Situation = std::function<QString(const QDir& folder)>;
Q_DECLARE_METATYPE(Situation)
Q_DECLARE_METATYPE(scrivel::SettingsStoreError::Kind)

namespace {

// Root reads and writes past any permission, so while one of these lives the
// suite runs as "nobody" when it was started as root (as in CI's containers).
class AsOrdinaryUser {
public:
    AsOrdinaryUser() : m_dropped(::geteuid() == 0 && ::seteuid(65534) == 0) {}
    ~AsOrdinaryUser() {
        if (m_dropped)
            (void)::seteuid(0);
    }
    bool isOrdinary() const { return ::geteuid() != 0; }

private:
    bool m_dropped;
};

QByteArray contents(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(unreadable)");
}

QString writeFile(const QString& path, const QByteArray& bytes, int mode) {
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        return {};
    file.close();
    ::chmod(QFile::encodeName(path).constData(), mode);
    return path;
}

const QByteArray stored = "[General]\nscrivel.active-preset=kept\n";

} // namespace

class QSettingsStoreTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void valuesRoundTripThroughTheFile_data();
    void valuesRoundTripThroughTheFile();
    void otherTypesAndRemovedKeysReadAsNothing();
    void failuresAreReported_data();
    void failuresAreReported();
    void aFailedWriteIsTriedAgain();
    void copiesAreKeptOnceBesideTheSettings();

private:
    QTemporaryDir m_dir;
};

void QSettingsStoreTest::valuesRoundTripThroughTheFile_data() {
    QTest::addColumn<QByteArray>("data");

    QList<Preset> presets = builtInPresets(false);
    presets[0].name = QStringLiteral("Caf\u00e9 \u201Cquotes\u201D / slash = \\ ; # [x]");
    presets[0].customBaseURL = QStringLiteral("http://localhost:8080/v1/");
    QTest::newRow("preset list JSON") << *Preset::encodeList(presets);
    QTest::newRow("empty list") << QByteArray("[]");
    QByteArray binary;
    for (int i = 0; i < 256; ++i)
        binary.append(char(i));
    QTest::newRow("every byte value") << binary;
    QTest::newRow("text that looks like a marker") << QByteArray("@ByteArray(x)\n@Variant(");
}

void QSettingsStoreTest::valuesRoundTripThroughTheFile() {
    QFETCH(QByteArray, data);
    const QString path = m_dir.filePath(QStringLiteral("roundtrip.ini"));
    {
        QSettingsStore settings(path);
        settings.setData(QStringLiteral("scrivel.presets"), data);
        settings.setText(QStringLiteral("scrivel.active-preset"),
                         QStringLiteral("@text, with = signs"));
        settings.setBoolean(QStringLiteral("scrivel.panel.has-seen"), true);
    }
    // A fresh instance reads what the first one wrote to disk.
    QSettingsStore reread(path);
    QCOMPARE(reread.data(QStringLiteral("scrivel.presets")), std::optional<QByteArray>(data));
    QCOMPARE(reread.text(QStringLiteral("scrivel.active-preset")),
             std::optional<QString>(QStringLiteral("@text, with = signs")));
    QCOMPARE(reread.boolean(QStringLiteral("scrivel.panel.has-seen")), std::optional<bool>(true));
}

void QSettingsStoreTest::otherTypesAndRemovedKeysReadAsNothing() {
    const QString path = m_dir.filePath(QStringLiteral("types.ini"));
    QSettingsStore settings(path);
    settings.setText(QStringLiteral("t"), QStringLiteral("true"));
    settings.setData(QStringLiteral("d"), QByteArray("abc"));
    settings.setText(QStringLiteral("removed"), QStringLiteral("x"));
    settings.remove(QStringLiteral("removed"));
    QSettingsStore reread(path);
    QCOMPARE(reread.data(QStringLiteral("t")), std::nullopt);
    QCOMPARE(reread.boolean(QStringLiteral("removed")), std::nullopt);
    QCOMPARE(reread.text(QStringLiteral("d")), std::nullopt);
    QCOMPARE(reread.text(QStringLiteral("removed")), std::nullopt);
}

void QSettingsStoreTest::failuresAreReported_data() {
    QTest::addColumn<Situation>("situation");
    QTest::addColumn<bool>("readable");
    QTest::addColumn<SettingsStoreError::Kind>("writeError");

    const auto unwritable = SettingsStoreError::Kind::unwritable;
    const auto unreadable = SettingsStoreError::Kind::unreadable;
    QTest::newRow("read-only folder") << Situation([](const QDir& folder) {
        folder.mkdir(u"Scrivel"_s);
        ::chmod(QFile::encodeName(folder.filePath(u"Scrivel"_s)).constData(), 0555);
        return folder.filePath(u"Scrivel/Scrivel.conf"_s);
    }) << true << unwritable;
    QTest::newRow("read-only file") << Situation([](const QDir& folder) {
        return writeFile(folder.filePath(u"Scrivel.conf"_s), stored, 0444);
    }) << true << unwritable;
    QTest::newRow("file where the folder belongs") << Situation([](const QDir& folder) {
        writeFile(folder.filePath(u"Scrivel"_s), "", 0666);
        return folder.filePath(u"Scrivel/Scrivel.conf"_s);
    }) << true << unwritable;
    QTest::newRow("unreadable file") << Situation([](const QDir& folder) {
        return writeFile(folder.filePath(u"Scrivel.conf"_s), stored, 0);
    }) << false << unreadable;
    QTest::newRow("folder where the file belongs") << Situation([](const QDir& folder) {
        folder.mkpath(u"Scrivel.conf/x"_s);
        return folder.filePath(u"Scrivel.conf"_s);
    }) << false << unreadable;
    // Written by a writable file's owner, but not parsable: writing would
    // drop what could not be parsed.
    QTest::newRow("file that does not parse") << Situation([](const QDir& folder) {
        return writeFile(folder.filePath(u"Scrivel.conf"_s),
                         "[General\nscrivel.active-preset=kept\n", 0666);
    }) << false << unreadable;
}

void QSettingsStoreTest::failuresAreReported() {
    QFETCH(Situation, situation);
    QFETCH(bool, readable);
    QFETCH(SettingsStoreError::Kind, writeError);

    QTemporaryDir dir;
    ::chmod(QFile::encodeName(dir.path()).constData(), 0777);
    const QString path = situation(QDir(dir.path()));
    const QByteArray before = contents(path);
    {
        AsOrdinaryUser user;
        QVERIFY2(user.isOrdinary(), "could not leave root to test permissions");
        QSettingsStore settings(path);
        QCOMPARE(settings.readError().has_value(), !readable);
        if (!readable)
            QCOMPARE(*settings.readError(),
                     SettingsStoreError(SettingsStoreError::Kind::unreadable, path));
        const auto written = settings.setText(u"scrivel.active-preset"_s, u"new"_s);
        QVERIFY(!written);
        QCOMPARE(written.error(), SettingsStoreError(writeError, path));
        QVERIFY(written.error().message().contains(path));
        QVERIFY(!settings.setBoolean(u"scrivel.panel.has-seen"_s, true));
        // Held in memory for the next attempt.
        if (readable)
            QCOMPARE(settings.text(u"scrivel.active-preset"_s), u"new"_s);
    }
    QCOMPARE(contents(path), before);
}

void QSettingsStoreTest::aFailedWriteIsTriedAgain() {
    QTemporaryDir dir;
    const QString blocker = dir.filePath(u"Scrivel"_s);
    const QString path = dir.filePath(u"Scrivel/Scrivel.conf"_s);
    writeFile(blocker, "", 0666);
    QSettingsStore settings(path);
    QVERIFY(!settings.setText(u"first"_s, u"1"_s));
    QVERIFY(!settings.setText(u"second"_s, u"2"_s));

    // Once the folder can be made, the next write stores everything held.
    QVERIFY(QFile::remove(blocker));
    QVERIFY(settings.setText(u"third"_s, u"3"_s));
    const QSettingsStore reread(path);
    QCOMPARE(reread.text(u"first"_s), u"1"_s);
    QCOMPARE(reread.text(u"second"_s), u"2"_s);
    QCOMPARE(reread.text(u"third"_s), u"3"_s);
}

void QSettingsStoreTest::copiesAreKeptOnceBesideTheSettings() {
    QTemporaryDir dir;
    ::chmod(QFile::encodeName(dir.path()).constData(), 0777);
    QSettingsStore settings(dir.filePath(u"Scrivel/Scrivel.conf"_s));
    const QByteArray damaged = "[{\"id\":\"x\"},\n\xff";
    const auto first = settings.keepCopy(u"presets-backup"_s, damaged);
    QVERIFY(first);
    QCOMPARE(QFileInfo(*first).absolutePath(), dir.filePath(u"Scrivel"_s));
    QVERIFY2(QRegularExpression(u"^presets-backup-\\d{4}-\\d\\d-\\d\\d-\\d{6}\\.json$"_s)
                 .match(QFileInfo(*first).fileName())
                 .hasMatch(),
             qPrintable(*first));
    QCOMPARE(contents(*first), damaged);

    // The same data again (found at the next start) is not copied twice;
    // other data gets a file of its own, even within the same second.
    QCOMPARE(settings.keepCopy(u"presets-backup"_s, damaged), first);
    const auto second = settings.keepCopy(u"presets-backup"_s, damaged + "x");
    QVERIFY(second && *second != *first);
    QCOMPARE(contents(*second), damaged + "x");
    QCOMPARE(QDir(dir.filePath(u"Scrivel"_s)).entryList(QDir::Files).size(), 2);

    ::chmod(QFile::encodeName(dir.filePath(u"Scrivel"_s)).constData(), 0555);
    AsOrdinaryUser user;
    QVERIFY(user.isOrdinary());
    const auto refused = settings.keepCopy(u"presets-backup"_s, "other");
    QVERIFY(!refused);
    QCOMPARE(refused.error().kind(), SettingsStoreError::Kind::unwritable);
    QCOMPARE(QFileInfo(refused.error().path()).absolutePath(), dir.filePath(u"Scrivel"_s));
}

QTEST_GUILESS_MAIN(QSettingsStoreTest)
#include "tst_QSettingsStore.moc"
