#include "support/ProcessRun.h"

#include <QImage>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>

using namespace scrivel;
using test::xdotool;

// The real scrivel's main window under a real window manager (openbox, as a
// desktop has one), driven with the pointer and keys as a user does.
class MainWindowEndToEndTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase();
    void init();
    void cleanup();
    void aDraggedPresetKeepsItsRowAndStaysSelected();

private:
    test::ProcessRun run(const QString& program, const QStringList& arguments) {
        return test::runProcess(program, arguments, m_env, {}, 10000);
    }
    // The presets as the CLI lists them: "* " marks the active one.
    QStringList presets();
    QImage screen();
    // The selected sidebar row's band (its top and height) in the column x,
    // between top and bottom; empty when no row there is selected.
    std::optional<std::pair<int, int>> selectedBand(int x, int top, int bottom);

    std::unique_ptr<QProcess> m_windowManager;
    std::unique_ptr<QTemporaryDir> m_home;
    std::unique_ptr<QProcess> m_app;
    QProcessEnvironment m_env;
};

void MainWindowEndToEndTest::initTestCase() {
    if (qEnvironmentVariableIsEmpty("DISPLAY"))
        QSKIP("needs an X display (scripts/test provides Xvfb)");
    if (!test::hasPrograms({"xdotool", "openbox", "xprop", "import"}))
        QSKIP("needs xdotool, openbox, xprop and ImageMagick (scripts/install-deps)");
    m_windowManager = test::startWindowManager();
    QVERIFY2(m_windowManager, "openbox did not start");
}

void MainWindowEndToEndTest::cleanupTestCase() {
    if (m_windowManager)
        test::stopProcess(*m_windowManager);
}

void MainWindowEndToEndTest::init() {
    m_home = std::make_unique<QTemporaryDir>();
    m_env = test::scrivelEnvironment(m_home->path());
    m_app = std::make_unique<QProcess>();
    m_app->setProcessEnvironment(m_env);
    m_app->setProcessChannelMode(QProcess::ForwardedChannels);
    m_app->start(QStringLiteral(SCRIVEL_APP_PATH), {});
    QVERIFY(m_app->waitForStarted());
    // The first start greets with the panel; it goes away with the toggle.
    QVERIFY(QTest::qWaitFor(
        [this] {
            return !test::visibleWindows({"--name", "^Scrivel Panel$"}).isEmpty();
        },
        10000));
    QCOMPARE(run(SCRIVEL_APP_PATH, {"--toggle"}).exitCode, 0);
}

void MainWindowEndToEndTest::cleanup() {
    if (m_app)
        test::stopProcess(*m_app);
}

QStringList MainWindowEndToEndTest::presets() {
    QStringList lines;
    for (const QByteArray& line : run(SCRIVEL_CLI_PATH, {"presets"}).out.split('\n'))
        if (!line.isEmpty())
            lines.append(QString::fromUtf8(line.left(line.indexOf('\t'))));
    return lines;
}

QImage MainWindowEndToEndTest::screen() {
    return QImage::fromData(run("import", {"-window", "root", "png:-"}).out, "PNG");
}

std::optional<std::pair<int, int>> MainWindowEndToEndTest::selectedBand(int x, int top,
                                                                        int bottom) {
    const QImage shot = screen();
    // The selection is the one strongly blue stretch of the sidebar.
    auto selected = [&](int y) {
        const QRgb pixel = shot.pixel(x, y);
        return qBlue(pixel) > 150 && qBlue(pixel) - qRed(pixel) > 80;
    };
    for (int y = qMax(0, top); y < qMin(bottom, shot.height()); ++y) {
        if (!selected(y))
            continue;
        int end = y;
        while (end + 1 < shot.height() && selected(end + 1))
            ++end;
        if (end - y >= 15)
            return std::pair(y, end - y + 1);
        y = end;
    }
    return std::nullopt;
}

void MainWindowEndToEndTest::aDraggedPresetKeepsItsRowAndStaysSelected() {
    QCOMPARE(presets(), QStringList({"* Fix", "  Make Concise", "  Improve Prompt"}));
    // A second start opens the main window of the running one, on the
    // active preset.
    QCOMPARE(run(SCRIVEL_APP_PATH, {}).exitCode, 0);
    QRect window;
    QString windowID;
    QVERIFY(QTest::qWaitFor(
        [&] {
            for (const auto& found : test::visibleWindows({"--name", "^Scrivel$"})) {
                if (found.geometry.width() >= 720) {
                    windowID = found.id;
                    window = found.geometry;
                }
            }
            return !window.isEmpty();
        },
        5000));
    // The keys below go to it once the window manager has given it the focus.
    QTRY_COMPARE(xdotool({"getwindowfocus"}).trimmed(), windowID.toLatin1());

    // The rows, measured on the screen from the selected first one.
    const int x = window.left() + 6;
    std::optional<std::pair<int, int>> band;
    QVERIFY(QTest::qWaitFor(
        [&] { return (band = selectedBand(x, window.top() - 80, window.top() + 300)).has_value(); },
        5000));
    const auto [firstTop, rowHeight] = *band;
    auto rowCentre = [&](int row) { return firstTop + row * rowHeight + rowHeight / 2; };
    const QString column = QString::number(window.left() + 60);

    // Fix goes below Improve Prompt, dragged in small steps as a hand does.
    xdotool({"mousemove", column, QString::number(rowCentre(0)), "mousedown", "1"});
    for (int y = rowCentre(0); y <= rowCentre(2) + rowHeight / 4; y += 6) {
        xdotool({"mousemove", column, QString::number(y)});
        QTest::qWait(20); // paces the drag as a hand moves
    }
    QTest::qWait(200); // paces the drop: a hand rests before it lets go
    xdotool({"mouseup", "1"});

    QTRY_COMPARE(presets(), QStringList({"  Make Concise", "  Improve Prompt", "* Fix"}));
    // The dragged preset is still selected, in its new place (once drawn).
    const auto selectedRowIs = [&](int row) {
        band = selectedBand(x, window.top() - 80, window.top() + 300);
        return band && qAbs(band->first - (firstTop + row * rowHeight)) <= 2;
    };
    (void)QTest::qWaitFor([&] { return selectedRowIs(2); }, 5000);
    QVERIFY2(band, "no row is selected");
    QVERIFY2(qAbs(band->first - (firstTop + 2 * rowHeight)) <= 2,
             qPrintable(QStringLiteral("the selected row is at %1, not at %2")
                            .arg(band->first)
                            .arg(firstTop + 2 * rowHeight)));
    // Every row is there: each one, picked and used, is the expected preset.
    const QStringList order{"Make Concise", "Improve Prompt", "Fix"};
    for (int row = 0; row < order.size(); ++row) {
        xdotool({"mousemove", column, QString::number(rowCentre(row)), "click", "1"});
        QTRY_VERIFY2(selectedRowIs(row), qPrintable(order[row]));
        xdotool({"key", "ctrl+u"});
        QTRY_VERIFY2(presets().contains(QStringLiteral("* ") + order[row]), qPrintable(order[row]));
    }
}

QTEST_GUILESS_MAIN(MainWindowEndToEndTest)
#include "tst_MainWindowEndToEnd.moc"
