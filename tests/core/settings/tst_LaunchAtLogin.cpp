#include "core/settings/GeneralSettingsModel.h"
#include "core/settings/LaunchAtLoginService.h"

#include <QtTest>

using namespace scrivel;
using Control = GeneralSettingsModel::LaunchControl;

Q_DECLARE_METATYPE(LoginItemStatus)

namespace {

// A system login-item registry: registering enables (or asks for approval),
// unregistering clears; either can be made to fail.
struct FakeLoginItems : LoginItemService {
    LoginItemStatus status() const override { return current; }
    std::expected<void, QString> registerItem() override {
        calls.append(QStringLiteral("register"));
        if (failWrites)
            return std::unexpected(QStringLiteral("Operation not permitted"));
        current =
            registerGivesApproval ? LoginItemStatus::requiresApproval : LoginItemStatus::enabled;
        return {};
    }
    std::expected<void, QString> unregisterItem() override {
        calls.append(QStringLiteral("unregister"));
        current = LoginItemStatus::notRegistered;
        return {};
    }
    void openSystemSettingsLoginItems() override { calls.append(QStringLiteral("open")); }

    LoginItemStatus current = LoginItemStatus::notRegistered;
    bool failWrites = false;
    bool registerGivesApproval = false;
    QStringList calls;
};

const auto unknownStatus = LoginItemStatus(7);
const QString failureMessage = QStringLiteral(
    "macOS couldn’t update the Login Item. Launch at login needs a signed copy in Applications.");
const QString approvalMessage = QStringLiteral("Approve Scrivel in Login Items.");

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
        const auto approval = LoginItemStatus::requiresApproval;
        const int unknown = int(LaunchAtLoginError::Kind::unknownStatus);
        const int refusal = int(LaunchAtLoginError::Kind::systemFailure);
        QTest::newRow("on, approval") << true << approval << false << "open" << -1;
        QTest::newRow("off, approval") << false << approval << false << "open" << -1;
        QTest::newRow("on, enabled") << true << LoginItemStatus::enabled << false << "" << -1;
        QTest::newRow("on, not found")
            << true << LoginItemStatus::notFound << false << "register" << -1;
        QTest::newRow("off, enabled")
            << false << LoginItemStatus::enabled << false << "unregister" << -1;
        QTest::newRow("off, not found") << false << LoginItemStatus::notFound << false << "" << -1;
        QTest::newRow("off, not registered")
            << false << LoginItemStatus::notRegistered << false << "" << -1;
        QTest::newRow("unknown status") << true << unknownStatus << false << "" << unknown;
        QTest::newRow("refused") << true << LoginItemStatus::notRegistered << true << "register"
                                 << refusal;
    }
    void serviceActsOnlyWhenNeeded() {
        QFETCH(bool, on);
        QFETCH(LoginItemStatus, status);
        QFETCH(bool, refused);
        QFETCH(QString, calls);
        QFETCH(int, failure);
        FakeLoginItems items;
        items.current = status;
        items.failWrites = refused;
        const auto outcome = LaunchAtLoginService(items).setLaunchAtLogin(on);
        QCOMPARE(items.calls.join(' '), calls);
        QCOMPARE(outcome ? -1 : int(outcome.error().kind()), failure);
        if (!outcome) // never the system's own words
            QCOMPARE(outcome.error().message(), failureMessage);
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
        QCOMPARE(model.footerText().startsWith(QStringLiteral("Approve Scrivel under")), approval);
        QVERIFY(!model.footerText().contains(QStringLiteral("⌘")));
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
        QCOMPARE(model.status(), SettingsStatus::error(failureMessage));
    }
};

QTEST_GUILESS_MAIN(LaunchAtLoginTest)
#include "tst_LaunchAtLogin.moc"
