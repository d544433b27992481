#include "platform/linux/XdgAutostartLoginItemService.h"

#include <QtTest>
#include <unistd.h>

using namespace scrivel;

Q_DECLARE_METATYPE(LoginItemStatus)

namespace {

const QString appID = QStringLiteral("com.scrivel.Scrivel");

QString writeFile(const QString& path, const QByteArray& text, bool executable = false) {
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return {};
    file.write(text);
    file.close();
    if (executable)
        file.setPermissions(file.permissions() | QFileDevice::ExeOwner);
    return path;
}

} // namespace

class XdgAutostartLoginItemServiceTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void registerWritesAnEntryThatStartsTheBinary() {
        QTemporaryDir home;
        // Spaces, quotes, a dollar and a percent sign all survive the Exec
        // quoting.
        const QString binary = writeFile(
            home.filePath(QStringLiteral("my apps/Scrivel \"$x\" 100%")), "#!/bin/sh\n", true);
        XdgAutostartLoginItemService service(appID, home.filePath("config"), binary);
        QCOMPARE(service.entryPath(),
                 home.filePath("config/autostart/com.scrivel.Scrivel.desktop"));
        QCOMPARE(service.status(), LoginItemStatus::notRegistered);
        // Registering repairs a hidden, stale entry.
        writeFile(service.entryPath(), "[Desktop Entry]\nExec=/nowhere/scrivel\nHidden=true\n");

        QVERIFY(service.registerItem().has_value());
        QCOMPARE(service.status(), LoginItemStatus::enabled);
        QFile entry(service.entryPath());
        QVERIFY(entry.open(QIODevice::ReadOnly));
        const QString text = QString::fromUtf8(entry.readAll());
        QVERIFY(text.startsWith(QStringLiteral("[Desktop Entry]\n")));
        QVERIFY(text.contains(QStringLiteral("\nHidden=false\n")));
        QVERIFY(text.contains(QStringLiteral("\nType=Application\n")));
        const QString exec = text.section(QStringLiteral("\nExec="), 1).section('\n', 0, 0);
        QCOMPARE(
            exec,
            QStringLiteral("\"%1/my apps/Scrivel \\\\\"\\\\$x\\\\\" 100%%\"").arg(home.path()));

        QVERIFY(service.unregisterItem().has_value());
        QCOMPARE(service.status(), LoginItemStatus::notRegistered);
        QVERIFY(!QFile::exists(service.entryPath()));
        QVERIFY(service.unregisterItem().has_value()); // nothing to remove
    }

    void execValuesReadBack_data() {
        QTest::addColumn<QString>("exec");
        QTest::addColumn<QStringList>("arguments");
        QTest::newRow("plain") << "/usr/bin/scrivel" << QStringList{"/usr/bin/scrivel"};
        QTest::newRow("arguments")
            << "scrivel  --toggle %U" << QStringList{"scrivel", "--toggle", "%U"};
        QTest::newRow("quoted") << "\"/opt/my apps/scrivel\" --x"
                                << QStringList{"/opt/my apps/scrivel", "--x"};
        QTest::newRow("escapes") << "\"/a\\\"b\\`c\\$d\\\\e\"" << QStringList{"/a\"b`c$d\\e"};
        QTest::newRow("literal percent")
            << "\"/opt/100%%/scrivel\"" << QStringList{"/opt/100%/scrivel"};
        QTest::newRow("unterminated quote") << "\"/opt/scrivel" << QStringList{};
        QTest::newRow("empty") << "" << QStringList{};
    }
    void execValuesReadBack() {
        QFETCH(QString, exec);
        QFETCH(QStringList, arguments);
        QCOMPARE(XdgAutostartLoginItemService::execArguments(exec), arguments);
    }

    void statusOfEntriesFoundOnDisk_data() {
        QTest::addColumn<QByteArray>("entry");
        QTest::addColumn<LoginItemStatus>("status");
        // @BIN@ is an existing executable, @GONE@ a path that does not exist.
        QTest::newRow("ours") << XdgAutostartLoginItemService::entryText("@BIN@")
                              << LoginItemStatus::enabled;
        QTest::newRow("hidden by the desktop")
            << XdgAutostartLoginItemService::entryText("@BIN@").replace("Hidden=false",
                                                                        "Hidden=true")
            << LoginItemStatus::notRegistered;
        QTest::newRow("switched off in GNOME")
            << XdgAutostartLoginItemService::entryText("@BIN@").replace(
                   "X-GNOME-Autostart-enabled=true", "X-GNOME-Autostart-enabled=false")
            << LoginItemStatus::notRegistered;
        QTest::newRow("binary gone")
            << XdgAutostartLoginItemService::entryText("@GONE@") << LoginItemStatus::notFound;
        QTest::newRow("binary on PATH")
            << QByteArray("[Desktop Entry]\nExec=sh -c true\n") << LoginItemStatus::enabled;
        QTest::newRow("no Exec") << QByteArray("[Desktop Entry]\nType=Application\n")
                                 << LoginItemStatus::notFound;
        QTest::newRow("Exec of another group only")
            << QByteArray("[Desktop Action x]\nExec=@BIN@\n[Desktop Entry]\nName=S\n")
            << LoginItemStatus::notFound;
        QTest::newRow("not executable")
            << QByteArray("[Desktop Entry]\nExec=@PLAIN@\n") << LoginItemStatus::notFound;
    }
    void statusOfEntriesFoundOnDisk() {
        QFETCH(QByteArray, entry);
        QFETCH(LoginItemStatus, status);
        QTemporaryDir home;
        const QString binary = writeFile(home.filePath("bin/scrivel"), "#!/bin/sh\n", true);
        const QString plain = writeFile(home.filePath("bin/plain"), "text\n");
        entry.replace("@BIN@", binary.toUtf8())
            .replace("@GONE@", home.filePath("gone/scrivel").toUtf8())
            .replace("@PLAIN@", plain.toUtf8());
        XdgAutostartLoginItemService service(appID, home.path(), binary);
        writeFile(service.entryPath(), entry);
        QCOMPARE(service.status(), status);
    }

    void unwritableFolderFails_data() {
        QTest::addColumn<bool>("registering");
        QTest::addColumn<bool>("folderExists");
        QTest::addColumn<int>("reason"); // a LoginItemFailure::Reason
        QTest::newRow("write into a read-only folder")
            << true << true << int(LoginItemFailure::Reason::permissionDenied);
        QTest::newRow("write where the folder can't be made")
            << true << false << int(LoginItemFailure::Reason::folderNotCreated);
        QTest::newRow("remove from a read-only folder")
            << false << true << int(LoginItemFailure::Reason::permissionDenied);
    }
    void unwritableFolderFails() {
        QFETCH(bool, registering);
        QFETCH(bool, folderExists);
        QFETCH(int, reason);
        QTemporaryDir home;
        const QString binary = writeFile(home.filePath("bin/scrivel"), "#!/bin/sh\n", true);
        // The group's bits too: the test runs in root's group, which owns the
        // folders.
        const auto readAndEnter = QFileDevice::ReadOwner | QFileDevice::ExeOwner |
                                  QFileDevice::ReadGroup | QFileDevice::ExeGroup |
                                  QFileDevice::ReadOther | QFileDevice::ExeOther;
        const QString autostart = home.filePath("config/autostart");
        XdgAutostartLoginItemService service(appID, home.filePath("config"), binary);
        QDir().mkpath(folderExists ? autostart : home.filePath("config"));
        if (!registering)
            QVERIFY(service.registerItem().has_value());
        QStringList folders{home.path(), home.filePath("config")};
        if (folderExists)
            folders << autostart;
        for (const QString& folder : folders)
            QVERIFY(QFile::setPermissions(folder, readAndEnter));
        // Root ignores permissions: the write runs under an unprivileged
        // effective user (the real user stays root to come back).
        const bool asRoot = ::geteuid() == 0;
        if (asRoot)
            QCOMPARE(::seteuid(65534), 0);
        const auto outcome = registering ? service.registerItem() : service.unregisterItem();
        if (asRoot)
            QCOMPARE(::seteuid(0), 0);
        for (const QString& folder : folders)
            QVERIFY(QFile::setPermissions(folder, readAndEnter | QFileDevice::WriteOwner));
        QVERIFY(!outcome.has_value());
        QCOMPARE(outcome.error().path, service.entryPath());
        QCOMPARE(int(outcome.error().reason), reason);
        QCOMPARE(service.status(),
                 registering ? LoginItemStatus::notRegistered : LoginItemStatus::enabled);
    }

    void launchExecutablePrefersTheAppImage() {
        QTemporaryDir home;
        const QString appImage = writeFile(home.filePath("Scrivel.AppImage"), "x", true);
        QCOMPARE(XdgAutostartLoginItemService::launchExecutable(appImage, "/tmp/.mount_x/scrivel"),
                 appImage);
        QCOMPARE(XdgAutostartLoginItemService::launchExecutable({}, "/usr/bin/scrivel"),
                 QStringLiteral("/usr/bin/scrivel"));
        QCOMPARE(XdgAutostartLoginItemService::launchExecutable(home.filePath("gone.AppImage"),
                                                                "/usr/bin/scrivel"),
                 QStringLiteral("/usr/bin/scrivel"));
    }
};

QTEST_GUILESS_MAIN(XdgAutostartLoginItemServiceTest)
#include "tst_XdgAutostartLoginItemService.moc"
