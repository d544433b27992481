#include "core/presets/BuiltInPresets.h"
#include "core/presets/Preset.h"
#include "platform/linux/QSettingsStore.h"

#include <QTemporaryDir>
#include <QtTest>

using namespace scrivel;

class QSettingsStoreTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void valuesRoundTripThroughTheFile_data();
    void valuesRoundTripThroughTheFile();
    void otherTypesAndRemovedKeysReadAsNothing();

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

QTEST_GUILESS_MAIN(QSettingsStoreTest)
#include "tst_QSettingsStore.moc"
