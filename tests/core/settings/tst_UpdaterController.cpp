#include "core/settings/UpdaterController.h"

#include <QtTest>

using namespace scrivel;

namespace {

const QString validFeed = QStringLiteral("https://updates.scrivel.app/appcast.xml");
// 32 bytes.
const QString validKey = QStringLiteral("AAECAwQFBgcICQoLDA0ODxAREhMUFRYXGBkaGxwdHh8=");

struct FakeFramework : UpdateFramework {
    struct Log {
        int made = 0;
        int checks = 0;
        bool canCheck = true;
        bool automatic = false;
    };
    explicit FakeFramework(Log& log) : log(log) { ++log.made; }
    bool canCheckForUpdates() const override { return log.canCheck; }
    void checkForUpdates() override { ++log.checks; }
    bool automaticallyChecksForUpdates() const override { return log.automatic; }
    void setAutomaticallyChecksForUpdates(bool checks) override { log.automatic = checks; }
    Log& log;
};

UpdaterController::FrameworkFactory factoryFor(FakeFramework::Log& log) {
    return [&log] { return std::make_unique<FakeFramework>(log); };
}

} // namespace

class UpdaterControllerTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void isConfigured_data() {
        QTest::addColumn<QString>("feed");
        QTest::addColumn<QString>("key");
        QTest::addColumn<bool>("configured");
        auto key = [](int bytes, auto encoding) {
            return QString::fromLatin1(QByteArray(bytes, char(0xfb)).toBase64(encoding));
        };
        const auto standard = QByteArray::Base64Encoding;

        QTest::newRow("valid") << validFeed << validKey << true;
        QTest::newRow("surrounding white space") << " \n" + validFeed + "\t"
                                                 << "\n" + validKey + " " << true;
        QTest::newRow("upper-case scheme and host")
            << "HTTPS://Updates.Scrivel.App/appcast.xml" << validKey << true;
        QTest::newRow("no key") << validFeed << QString() << false;
        QTest::newRow("no feed") << QString() << validKey << false;
        QTest::newRow("http") << "http://updates.scrivel.app/appcast.xml" << validKey << false;
        QTest::newRow("not a URL") << "https://updates scrivel/app cast" << validKey << false;
        QTest::newRow("user") << "https://me@updates.scrivel.app/appcast.xml" << validKey << false;
        QTest::newRow("empty user")
            << "https://@updates.scrivel.app/appcast.xml" << validKey << false;
        QTest::newRow("fragment") << validFeed + "#latest" << validKey << false;
        QTest::newRow("empty fragment") << validFeed + "#" << validKey << false;
        QTest::newRow("no host") << "https:///appcast.xml" << validKey << false;
        QTest::newRow("documentation domain")
            << "https://example.com/appcast.xml" << validKey << false;
        QTest::newRow("under the documentation domain")
            << "https://updates.EXAMPLE.com/appcast.xml" << validKey << false;
        QTest::newRow("a domain merely ending like it")
            << "https://myexample.com/appcast.xml" << validKey << true;
        QTest::newRow("localhost") << "https://localhost/appcast.xml" << validKey << false;
        QTest::newRow("IPv4 loopback") << "https://127.0.0.1/appcast.xml" << validKey << false;
        QTest::newRow("IPv6 loopback") << "https://[::1]/appcast.xml" << validKey << false;
        QTest::newRow("no path") << "https://updates.scrivel.app" << validKey << false;
        QTest::newRow("root path") << "https://updates.scrivel.app/" << validKey << false;
        QTest::newRow("key of 31 bytes") << validFeed << key(31, standard) << false;
        QTest::newRow("key of 33 bytes") << validFeed << key(33, standard) << false;
        QTest::newRow("key not Base64")
            << validFeed << "not base64 at all, not even close!!!!!!!!!" << false;
        QTest::newRow("URL-safe alphabet")
            << validFeed << key(32, QByteArray::Base64UrlEncoding) << false;
        QTest::newRow("key without padding") << validFeed << validKey.chopped(1) << false;
    }
    void isConfigured() {
        QFETCH(QString, feed);
        QFETCH(QString, key);
        QFETCH(bool, configured);
        QCOMPARE(UpdaterController::isConfigured(feed, key), configured);
    }

    void unconfiguredNeverMakesAController() {
        // The build this suite runs in sets neither value.
        QVERIFY(!UpdaterController().isConfigured());
        FakeFramework::Log log;
        UpdaterController updater(QStringLiteral("http://updates.scrivel.app/appcast.xml"),
                                  validKey, factoryFor(log));
        updater.startIfConfigured();
        updater.checkForUpdates();
        updater.setAutomaticallyChecks(true);
        QCOMPARE(log.made, 0);
        QVERIFY(!updater.hasController());
        QVERIFY(!updater.canCheckForUpdates());
    }

    void configuredMakesOneControllerOnFirstUse() {
        FakeFramework::Log log;
        UpdaterController updater(validFeed, validKey, factoryFor(log));
        QVERIFY(!updater.hasController());
        QVERIFY(!updater.automaticallyChecks()); // no controller: false

        log.automatic = true; // the framework's stored preference
        updater.startIfConfigured();
        updater.startIfConfigured();
        QCOMPARE(log.made, 1);
        QVERIFY(updater.automaticallyChecks());

        updater.setAutomaticallyChecks(false);
        QVERIFY(!log.automatic);

        updater.checkForUpdates();
        QCOMPARE(log.checks, 1);
        log.canCheck = false; // a check is already running
        QVERIFY(!updater.canCheckForUpdates());
        updater.checkForUpdates();
        QCOMPARE(log.checks, 1);
        QCOMPARE(log.made, 1);
    }

    void checkingFirstMakesTheController() {
        FakeFramework::Log log;
        UpdaterController updater(validFeed, validKey, factoryFor(log));
        updater.checkForUpdates();
        QCOMPARE(log.made, 1);
        QCOMPARE(log.checks, 1);
    }

    void platformWithoutFrameworkStaysWithout() {
        UpdaterController updater(validFeed, validKey);
        updater.startIfConfigured();
        updater.checkForUpdates();
        QVERIFY(updater.isConfigured());
        QVERIFY(!updater.hasController());
    }
};

QTEST_GUILESS_MAIN(UpdaterControllerTest)
#include "tst_UpdaterController.moc"
