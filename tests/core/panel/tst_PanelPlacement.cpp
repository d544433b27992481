#include "core/panel/PanelPlacement.h"

#include <QtTest>

using namespace scrivel;

Q_DECLARE_METATYPE(QList<PanelScreen>)

namespace {

// A 1280 × 800 screen with a 32 px top bar, and a second one to its right.
const PanelScreen primary{{0, 0, 1280, 800}, {0, 32, 1280, 768}};
const PanelScreen secondary{{1280, 0, 1920, 1080}, {1280, 0, 1920, 1040}};
const QSize panel(440, 120);

} // namespace

class PanelPlacementTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void originNextTo_data() {
        QTest::addColumn<QPoint>("point");
        QTest::addColumn<QSize>("size");
        QTest::addColumn<QList<PanelScreen>>("screens");
        QTest::addColumn<QPoint>("origin");

        const QList<PanelScreen> both{primary, secondary};
        QTest::newRow("beside the pointer")
            << QPoint(600, 300) << panel << both << QPoint(576, 312);
        // Pulled in with 8 px margins; the area's bottom is 800 and its right 1280.
        QTest::newRow("bottom-right corner")
            << QPoint(1279, 799) << panel << QList<PanelScreen>{primary} << QPoint(832, 672);
        QTest::newRow("top-left corner, below the top bar")
            << QPoint(0, 0) << panel << both << QPoint(8, 40);
        QTest::newRow("right edge of the second screen")
            << QPoint(3199, 100) << panel << both << QPoint(2752, 112);
        QTest::newRow("outside every screen: the primary")
            << QPoint(-500, 5000) << panel << both << QPoint(8, 672);
        // Larger than the area: the right bound and the top win.
        QTest::newRow("taller than the area")
            << QPoint(100, 100) << QSize(440, 900) << QList<PanelScreen>{primary} << QPoint(76, 40);
        QTest::newRow("wider than the area") << QPoint(100, 100) << QSize(1400, 120)
                                             << QList<PanelScreen>{primary} << QPoint(-128, 112);
        QTest::newRow("no screen at all")
            << QPoint(300, 300) << panel << QList<PanelScreen>{} << QPoint(-448, 8);
    }

    void originNextTo() {
        QFETCH(QPoint, point);
        QFETCH(QSize, size);
        QFETCH(QList<PanelScreen>, screens);
        QFETCH(QPoint, origin);
        QCOMPARE(PanelPlacement::originNextTo(point, size, screens), origin);
    }

    void originKeepingInside_data() {
        QTest::addColumn<QRect>("frame");
        QTest::addColumn<QList<PanelScreen>>("screens");
        QTest::addColumn<QPoint>("origin");

        const QList<PanelScreen> both{primary, secondary};
        QTest::newRow("fits: stays") << QRect(576, 312, 440, 300) << both << QPoint(576, 312);
        QTest::newRow("fits to the margin: stays")
            << QRect(576, 592, 440, 200) << both << QPoint(576, 592);
        // Opened at the bottom edge and grown from 120 to 330 px.
        QTest::newRow("grown past the bottom: moves up by as much")
            << QRect(576, 672, 440, 330) << both << QPoint(576, 462);
        QTest::newRow("grown past the second screen's bottom")
            << QRect(2000, 900, 440, 300) << both << QPoint(2000, 732);
        QTest::newRow("taller than the area: top stays below the bar")
            << QRect(576, 672, 440, 1000) << both << QPoint(576, 40);
        QTest::newRow("past the right edge")
            << QRect(1000, 100, 440, 120) << QList<PanelScreen>{primary} << QPoint(832, 100);
        QTest::newRow("dragged off every screen: back onto the primary")
            << QRect(-900, 700, 440, 200) << both << QPoint(8, 592);
    }

    void originKeepingInside() {
        QFETCH(QRect, frame);
        QFETCH(QList<PanelScreen>, screens);
        QFETCH(QPoint, origin);
        QCOMPARE(PanelPlacement::originKeepingInside(frame, screens), origin);
    }

    void centredAnchorIsAboveTheMiddleOfThePrimaryArea() {
        // Area 0,32 1280×768: middle (640, 416), 15 % of 768 above it.
        QCOMPARE(PanelPlacement::centredAnchor({primary, secondary}), QPoint(640, 301));
        QCOMPARE(PanelPlacement::centredAnchor({}), QPoint(0, 0));
    }
};

QTEST_APPLESS_MAIN(PanelPlacementTest)
#include "tst_PanelPlacement.moc"
