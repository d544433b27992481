#include "core/settings/GeneralSettingsModel.h"
#include "core/settings/LaunchAtLoginService.h"

#include <QtTest>

using namespace scrivel;
using Control = GeneralSettingsModel::LaunchControl;

Q_DECLARE_METATYPE(LoginItemStatus)
Q_DECLARE_METATYPE(LoginItemFailure::Reason)

namespace {

// A system login-item registry: registering enables (or asks for approval),
// unregistering clears; either can be made to fail.
struct FakeLoginItems : LoginItemService {
    LoginItemStatus status() const override { return current; }
    std::expected<void, LoginItemFailure> registerItem() override {
        calls.append(QStringLiteral("register"));
        if (failWrites)
            return std::unexpected(refusal);
        current =
            registerGivesApproval ? LoginItemStatus::requiresApproval : LoginItemStatus::enabled;
        return {};
    }
    std::expected<void, LoginItemFailure> unregisterItem() override {
        calls.append(QStringLiteral("unregister"));
        current = LoginItemStatus::notRegistered;
        return {};
    }
    void openSystemSettingsLoginItems() override { calls.append(QStringLiteral("open")); }

    LoginItemFailure refusal{QStringLiteral("/home/u/.config/autostart/com.scrivel.app.desktop"),
                             LoginItemFailure::Reason::permissionDenied,
                             QStringLiteral("Operation not permitted")};
    LoginItemStatus current = LoginItemStatus::notRegistered;
    bool failWrites = false;
    bool registerGivesApproval = false;
    QStringList calls;
};

const auto unknownStatus = LoginItemStatus(7);
const QString failureMessage =
    QStringLiteral("Couldn’t write the autostart entry "
                   "/home/u/.config/autostart/com.scrivel.app.desktop: permission denied.");
const QString unknownMessage =
    QStringLiteral("Couldn’t tell whether Scrivel starts at login. Try again later.");
const QString approvalMessage =
    QStringLiteral("Allow Scrivel in your desktop’s autostart settings.");

} // namespace

class LaunchAtLoginTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void serviceActsOnlyWhenNeeded_data() {
        QTest::addColumn<bool>("on");
        QTest::addColumn<LoginItemStatus>("status");
        QTest::addColumn<bool>("refused");
        QTest::addColumn<QString>("calls");
        QTest::addColumn<int>("failure"); // a LaunchAtLoginError::Kind, or -1
        QTest::addColumn<QString>("message");
        const auto approval = LoginItemStatus::requiresApproval;
        const int unknown = int(LaunchAtLoginError::Kind::unknownStatus);
        const int refusal = int(LaunchAtLoginError::Kind::systemFailure);
        QTest::newRow("on, approval") << true << approval << false << "open" << -1 << QString();
        QTest::newRow("off, approval") << false << approval << false << "open" << -1 << QString();
        QTest::newRow("on, enabled")
            << true << LoginItemStatus::enabled << false << "" << -1 << QString();
        QTest::newRow("on, not found")
            << true << LoginItemStatus::notFound << false << "register" << -1 << QString();
        QTest::newRow("off, enabled")
            << false << LoginItemStatus::enabled << false << "unregister" << -1 << QString();
        QTest::newRow("off, not found")
            << false << LoginItemStatus::notFound << false << "" << -1 << QString();
        QTest::newRow("off, not registered")
            << false << LoginItemStatus::notRegistered << false << "" << -1 << QString();
        QTest::newRow("unknown status")
            << true << unknownStatus << false << "" << unknown << unknownMessage;
        QTest::newRow("refused") << true << LoginItemStatus::notRegistered << true << "register"
                                 << refusal << failureMessage;
    }
    void serviceActsOnlyWhenNeeded() {
        QFETCH(bool, on);
        QFETCH(LoginItemStatus, status);
        QFETCH(bool, refused);
        QFETCH(QString, calls);
        QFETCH(int, failure);
        QFETCH(QString, message);
        FakeLoginItems items;
        items.current = status;
        items.failWrites = refused;
        const auto outcome = LaunchAtLoginService(items).setLaunchAtLogin(on);
        QCOMPARE(items.calls.join(' '), calls);
        QCOMPARE(outcome ? -1 : int(outcome.error().kind()), failure);
        if (!outcome) // never the system's own words
            QCOMPARE(outcome.error().message(), message);
    }

    void failureMessagesNameTheEntryAndTheReason_data() {
        QTest::addColumn<bool>("registering");
        QTest::addColumn<LoginItemFailure::Reason>("reason");
        QTest::addColumn<QString>("message");
        using Reason = LoginItemFailure::Reason;
        QTest::newRow("write, no folder")
            << true << Reason::folderNotCreated
            << "Couldn’t write the autostart entry /a/x.desktop: its folder can’t be created.";
        QTest::newRow("write, disk full")
            << true << Reason::diskFull
            << "Couldn’t write the autostart entry /a/x.desktop: the disk is full.";
        QTest::newRow("write, unknown")
            << true << Reason::unknown << "Couldn’t write the autostart entry /a/x.desktop.";
        QTest::newRow("remove, denied")
            << false << Reason::permissionDenied
            << "Couldn’t remove the autostart entry /a/x.desktop: permission denied.";
        QTest::newRow("remove, unknown")
            << false << Reason::unknown << "Couldn’t remove the autostart entry /a/x.desktop.";
    }
    void failureMessagesNameTheEntryAndTheReason() {
        QFETCH(bool, registering);
        QFETCH(LoginItemFailure::Reason, reason);
        QFETCH(QString, message);
        const LoginItemFailure failure{QStringLiteral("/a/x.desktop"), reason,
                                       QStringLiteral("EIO: the system's words")};
        QCOMPARE(LaunchAtLoginError::systemFailure(registering, failure).message(), message);
    }

    void controlFollowsTheStatusRead_data() {
        QTest::addColumn<LoginItemStatus>("status");
        QTest::addColumn<Control>("control");
        QTest::addColumn<bool>("on");
        QTest::addColumn<bool>("approval");
        QTest::newRow("not registered")
            << LoginItemStatus::notRegistered << Control::toggle << false << false;
        QTest::newRow("enabled") << LoginItemStatus::enabled << Control::toggle << true << false;
        QTest::newRow("approval") << LoginItemStatus::requiresApproval << Control::approvalButton
                                  << false << true;
        QTest::newRow("unknown") << unknownStatus << Control::unavailable << false << false;
    }
    void controlFollowsTheStatusRead() {
        QFETCH(LoginItemStatus, status);
        QFETCH(Control, control);
        QFETCH(bool, on);
        QFETCH(bool, approval);
        FakeLoginItems items;
        items.current = status;
        GeneralSettingsModel model(items);
        QCOMPARE(model.launchControl(), Control::pendingToggle);
        QVERIFY(model.footerText().startsWith(QStringLiteral("The shortcut opens")));
        model.refresh();
        QCOMPARE(model.launchControl(), control);
        QCOMPARE(model.isLaunchAtLoginOn(), on);
        QCOMPARE(model.footerText().startsWith(QStringLiteral("Allow Scrivel in your desktop’s")),
                 approval);
        QVERIFY(model.footerText().contains(QStringLiteral("Ctrl+1–Ctrl+9")));
        QCOMPARE(model.status(),
                 approval ? std::optional(SettingsStatus::warning(approvalMessage)) : std::nullopt);
    }

    void statusLineTransitions() {
        FakeLoginItems items;
        GeneralSettingsModel model(items);
        model.refresh();
        // A refused change: the error, and the switch shows what was read
        // back. A refresh keeps the error; the next change that works clears it.
        items.failWrites = true;
        model.setLaunchAtLogin(true);
        QCOMPARE(model.status(), SettingsStatus::error(failureMessage));
        QVERIFY(!model.isLaunchAtLoginOn());
        model.refresh();
        QCOMPARE(model.status(), SettingsStatus::error(failureMessage));
        items.failWrites = false;
        model.setLaunchAtLogin(true);
        QCOMPARE(model.status(), std::nullopt);
        QVERIFY(model.isLaunchAtLoginOn());

        // A change that needs approval warns; approval given elsewhere clears
        // the warning on the next refresh.
        model.setLaunchAtLogin(false);
        items.registerGivesApproval = true;
        model.setLaunchAtLogin(true);
        QCOMPARE(model.status(), SettingsStatus::warning(approvalMessage));
        items.current = LoginItemStatus::enabled;
        model.refresh();
        QCOMPARE(model.status(), std::nullopt);

        // An unknown status fails like any change.
        items.current = unknownStatus;
        model.setLaunchAtLogin(false);
        QCOMPARE(model.status(), SettingsStatus::error(unknownMessage));
    }
};

QTEST_GUILESS_MAIN(LaunchAtLoginTest)
#include "tst_LaunchAtLogin.moc"
