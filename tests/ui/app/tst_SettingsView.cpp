#include "app/GeneralSettingsModel.h"
#include "app/SettingsStatusLabel.h"
#include "app/SettingsView.h"
#include "app/UpdaterController.h"

#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QtTest>

using namespace scrivel;

namespace {

struct FakeLoginItems : LoginItemService {
    LoginItemStatus status() const override { return current; }
    std::expected<void, QString> registerItem() override {
        if (failWrites)
            return std::unexpected(QStringLiteral("Read-only file system"));
        current = LoginItemStatus::enabled;
        return {};
    }
    std::expected<void, QString> unregisterItem() override {
        current = LoginItemStatus::notRegistered;
        return {};
    }
    void openSystemSettingsLoginItems() override { ++opened; }
    LoginItemStatus current = LoginItemStatus::notRegistered;
    bool failWrites = false;
    int opened = 0;
};

struct FakeFramework : UpdateFramework {
    bool canCheckForUpdates() const override { return true; }
    void checkForUpdates() override {}
    bool automaticallyChecksForUpdates() const override { return automatic; }
    void setAutomaticallyChecksForUpdates(bool checks) override { automatic = checks; }
    bool automatic = true;
};

bool showsText(QWidget& view, const QString& text) {
    for (QLabel* label : view.findChildren<QLabel*>())
        if (label->isVisibleTo(&view) && label->text() == text)
            return true;
    return false;
}

QPushButton* button(QWidget& view, const QString& text) {
    for (QPushButton* b : view.findChildren<QPushButton*>())
        if (b->text() == text)
            return b;
    return nullptr;
}

QCheckBox* launchToggle(QWidget& view) {
    for (QCheckBox* box : view.findChildren<QCheckBox*>())
        if (box->accessibleName() == QStringLiteral("Launch at login"))
            return box;
    return nullptr;
}

} // namespace

class SettingsViewTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void refusedChangeShowsTheErrorAndTheStatusReadBack() {
        FakeLoginItems items;
        items.failWrites = true;
        UpdaterController updater{QString(), QString()};
        SettingsView view(items, updater, [](QWidget* parent) { return new QLineEdit(parent); });
        view.show();
        QCheckBox* toggle = launchToggle(view);
        QVERIFY(toggle && toggle->isEnabled() && !toggle->isChecked());
        QVERIFY(view.findChild<QLineEdit*>()); // the recorder's row
        auto* status = view.findChild<SettingsStatusLabel*>();
        QVERIFY(!status->isVisibleTo(&view));

        toggle->click();
        QVERIFY(!toggle->isChecked());
        QVERIFY(status->isVisibleTo(&view));
        QCOMPARE(status->status().kind, SettingsStatus::Kind::error);
        QCOMPARE(status->accessibleName(),
                 QStringLiteral("Error. macOS couldn’t update the Login Item. Launch at login "
                                "needs a signed copy in Applications."));

        items.failWrites = false;
        toggle->click();
        QVERIFY(toggle->isChecked());
        QVERIFY(!status->isVisibleTo(&view));
    }

    void approvalReplacesTheToggleWhenShownAgain() {
        FakeLoginItems items;
        UpdaterController updater{QString(), QString()};
        SettingsView view(items, updater, {});
        view.show();
        QVERIFY(launchToggle(view)->isVisibleTo(&view));
        view.hide();
        items.current = LoginItemStatus::requiresApproval;
        view.show();
        QVERIFY(!launchToggle(view)->isVisibleTo(&view));
        QPushButton* approve = button(view, QStringLiteral("Open Login Items Settings…"));
        QVERIFY(approve && approve->isVisibleTo(&view));
        approve->click();
        QCOMPARE(items.opened, 1);
        QVERIFY(showsText(view, QStringLiteral("Approve Scrivel in Login Items.")));
        QVERIFY(showsText(view, view.generalModel().footerText()));
        QVERIFY(view.generalModel().footerText().startsWith("Approve Scrivel under Login Items"));
    }

    void updatesSectionFollowsTheConfiguration() {
        FakeLoginItems items;
        UpdaterController unconfigured{QString(), QString()};
        SettingsView plain(items, unconfigured, {});
        plain.show();
        QVERIFY(showsText(plain, QStringLiteral("Not configured in this development build")));
        QVERIFY(!button(plain, QStringLiteral("Check for Updates…")));

        FakeFramework* framework = nullptr;
        UpdaterController configured(QStringLiteral("https://updates.scrivel.app/appcast.xml"),
                                     QStringLiteral("AAECAwQFBgcICQoLDA0ODxAREhMUFRYXGBkaGxwdHh8="),
                                     [&framework] {
                                         auto made = std::make_unique<FakeFramework>();
                                         framework = made.get();
                                         return made;
                                     });
        configured.startIfConfigured();
        SettingsView view(items, configured, {});
        view.show();
        QVERIFY(!showsText(view, QStringLiteral("Not configured in this development build")));
        QCheckBox* automatic = nullptr;
        for (QCheckBox* box : view.findChildren<QCheckBox*>())
            if (box->text() == QStringLiteral("Check for updates automatically"))
                automatic = box;
        QVERIFY(automatic && automatic->isChecked()); // the framework's stored preference
        automatic->click();
        QVERIFY(!framework->automatic);
        QVERIFY(button(view, QStringLiteral("Check for Updates…"))->isEnabled());
    }
};

QTEST_MAIN(SettingsViewTest)
#include "tst_SettingsView.moc"
