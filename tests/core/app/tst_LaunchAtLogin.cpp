#include "app/GeneralSettingsModel.h"
#include "app/LaunchAtLoginService.h"

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
        if (failWrites)
            return std::unexpected(QStringLiteral("Operation not permitted"));
        current = LoginItemStatus::notRegistered;
        return {};
    }
    void openSystemSettingsLoginItems() override { calls.append(QStringLiteral("open")); }

    LoginItemStatus current = LoginItemStatus::notRegistered;
    bool failWrites = false;
    bool registerGivesApproval = false;
    QStringList calls;
};

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
        QTest::addColumn<QStringList>("calls");
        QTest::addColumn<bool>("unknown");
        const auto unknownStatus = LoginItemStatus(7);
        QTest::newRow("on, approval")
            << true << LoginItemStatus::requiresApproval << QStringList{"open"} << false;
        QTest::newRow("on, enabled") << true << LoginItemStatus::enabled << QStringList{} << false;
        QTest::newRow("on, not registered")
            << true << LoginItemStatus::notRegistered << QStringList{"register"} << false;
        QTest::newRow("on, not found")
            << true << LoginItemStatus::notFound << QStringList{"register"} << false;
        QTest::newRow("off, approval")
            << false << LoginItemStatus::requiresApproval << QStringList{"open"} << false;
        QTest::newRow("off, not registered")
            << false << LoginItemStatus::notRegistered << QStringList{} << false;
        QTest::newRow("off, not found")
            << false << LoginItemStatus::notFound << QStringList{} << false;
        QTest::newRow("off, enabled")
            << false << LoginItemStatus::enabled << QStringList{"unregister"} << false;
        QTest::newRow("on, unknown") << true << unknownStatus << QStringList{} << true;
        QTest::newRow("off, unknown") << false << unknownStatus << QStringList{} << true;
    }
    void serviceActsOnlyWhenNeeded() {
        QFETCH(bool, on);
        QFETCH(LoginItemStatus, status);
        QFETCH(QStringList, calls);
        QFETCH(bool, unknown);
        FakeLoginItems items;
        items.current = status;
        LaunchAtLoginService service(items);
        const auto outcome = service.setLaunchAtLogin(on);
        QCOMPARE(items.calls, calls);
        QCOMPARE(!outcome, unknown);
        if (unknown)
            QCOMPARE(outcome.error(), LaunchAtLoginError::unknownStatus());
    }

    void systemRefusalIsAFailureWithTheFixedSentence() {
        FakeLoginItems items;
        items.failWrites = true;
        LaunchAtLoginService service(items);
        const auto outcome = service.setLaunchAtLogin(true);
        QVERIFY(!outcome);
        QCOMPARE(outcome.error().kind(), LaunchAtLoginError::Kind::systemFailure);
        QCOMPARE(outcome.error().message(), failureMessage);
        QVERIFY(!outcome.error().message().contains(QStringLiteral("permitted")));
    }

    void controlFollowsTheStatusRead_data() {
        QTest::addColumn<LoginItemStatus>("status");
        QTest::addColumn<Control>("control");
        QTest::addColumn<bool>("on");
        QTest::addColumn<bool>("approvalFooter");
        QTest::newRow("not registered")
            << LoginItemStatus::notRegistered << Control::toggle << false << false;
        QTest::newRow("enabled") << LoginItemStatus::enabled << Control::toggle << true << false;
        QTest::newRow("not found")
            << LoginItemStatus::notFound << Control::toggle << false << false;
        QTest::newRow("approval") << LoginItemStatus::requiresApproval << Control::approvalButton
                                  << false << true;
        QTest::newRow("unknown") << LoginItemStatus(9) << Control::unavailable << false << false;
    }
    void controlFollowsTheStatusRead() {
        QFETCH(LoginItemStatus, status);
        QFETCH(Control, control);
        QFETCH(bool, on);
        QFETCH(bool, approvalFooter);
        FakeLoginItems items;
        items.current = status;
        GeneralSettingsModel model(items);
        QCOMPARE(model.launchControl(), Control::pendingToggle);
        QVERIFY(!model.isLaunchAtLoginOn());
        QVERIFY(model.footerText().startsWith(QStringLiteral("The shortcut opens")));
        model.refresh();
        QCOMPARE(model.launchControl(), control);
        QCOMPARE(model.isLaunchAtLoginOn(), on);
        QCOMPARE(model.footerText().startsWith(QStringLiteral("Approve Scrivel under")),
                 approvalFooter);
        QVERIFY(!model.footerText().contains(QStringLiteral("⌘")));
        QCOMPARE(model.status(), approvalFooter
                                     ? std::optional(SettingsStatus::warning(approvalMessage))
                                     : std::nullopt);
    }

    void statusLineTransitions() {
        FakeLoginItems items;
        GeneralSettingsModel model(items);
        model.refresh();
        QCOMPARE(model.status(), std::nullopt);

        // A refused change: the error, and the switch shows what was read back.
        items.failWrites = true;
        model.setLaunchAtLogin(true);
        QCOMPARE(model.status(), SettingsStatus::error(failureMessage));
        QVERIFY(!model.isLaunchAtLoginOn());
        // A refresh keeps an error.
        model.refresh();
        QCOMPARE(model.status(), SettingsStatus::error(failureMessage));

        // The next change that works clears it.
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
        QCOMPARE(model.launchControl(), Control::approvalButton);
        items.current = LoginItemStatus::enabled;
        model.refresh();
        QCOMPARE(model.status(), std::nullopt);
        QVERIFY(model.isLaunchAtLoginOn());

        // An unknown status fails like any change.
        items.current = LoginItemStatus(5);
        model.setLaunchAtLogin(false);
        QCOMPARE(model.status(), SettingsStatus::error(failureMessage));
        QCOMPARE(model.launchControl(), Control::unavailable);
    }
};

QTEST_GUILESS_MAIN(LaunchAtLoginTest)
#include "tst_LaunchAtLogin.moc"
