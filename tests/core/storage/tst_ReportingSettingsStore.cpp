#include "core/storage/ReportingSettingsStore.h"
#include "support/InMemorySettingsStore.h"

#include <QSignalSpy>
#include <QtTest>

using namespace scrivel;
using namespace Qt::StringLiterals;

class ReportingSettingsStoreTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void failuresAreToldOncePerRun_data();
    void failuresAreToldOncePerRun();
};

void ReportingSettingsStoreTest::failuresAreToldOncePerRun_data() {
    // Steps: "W" a write that fails, "w" one that works, "C" and "c" the
    // same for a copy; "R" the settings could not be read from the start.
    QTest::addColumn<QString>("steps");
    QTest::addColumn<int>("failedSignals");
    QTest::addColumn<int>("recoveredSignals");
    QTest::addColumn<bool>("failingAtTheEnd");

    QTest::newRow("nothing fails") << u"wwc"_s << 0 << 0 << false;
    QTest::newRow("a run of failures is told once") << u"WWC"_s << 1 << 0 << true;
    QTest::newRow("a write that works ends the run") << u"Ww"_s << 1 << 1 << false;
    QTest::newRow("the next run is told again") << u"WwW"_s << 2 << 1 << true;
    QTest::newRow("a copy that works is not the settings") << u"Wc"_s << 1 << 0 << true;
    QTest::newRow("a failed copy starts a run") << u"wCw"_s << 1 << 1 << false;
    // Already failing when made, so nothing more to tell; the file never
    // becomes readable while the app runs.
    QTest::newRow("unreadable settings") << u"Rwc"_s << 0 << 0 << true;
}

void ReportingSettingsStoreTest::failuresAreToldOncePerRun() {
    QFETCH(QString, steps);
    QFETCH(int, failedSignals);
    QFETCH(int, recoveredSignals);
    QFETCH(bool, failingAtTheEnd);

    InMemorySettingsStore store;
    if (steps.startsWith(u'R'))
        store.setReadError(SettingsStoreError(SettingsStoreError::Kind::unreadable, u"f"_s));
    ReportingSettingsStore reporting(store);
    QSignalSpy failed(&reporting, &ReportingSettingsStore::failed);
    QSignalSpy recovered(&reporting, &ReportingSettingsStore::recovered);
    int copies = 0;
    for (const QChar step : steps) {
        store.setFailingWrites(step == u'W');
        store.setFailingCopies(step == u'C');
        if (step.toLower() == u'w')
            QCOMPARE(bool(reporting.setText(u"k"_s, u"v"_s)),
                     step == u'w' && !steps.startsWith(u'R'));
        else if (step.toLower() == u'c')
            QCOMPARE(bool(reporting.keepCopy(u"p"_s, QByteArray::number(++copies))), step == u'c');
    }
    QCOMPARE(failed.count(), failedSignals);
    QCOMPARE(recovered.count(), recoveredSignals);
    QCOMPARE(reporting.failure().has_value(), failingAtTheEnd);
}

QTEST_GUILESS_MAIN(ReportingSettingsStoreTest)
#include "tst_ReportingSettingsStore.moc"
